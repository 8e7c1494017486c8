#pragma once

/// The environment variables that the applet, the board and the programs around them heed.

#include <array>

namespace marovine::environment {

/// Shows the design's registers as parameters.
inline constexpr const char* kDirectRegisters = "TAVR_ENABLE_DRA";
/// Shows the design's parameters as parameters.
inline constexpr const char* kDirectDesign = "TAVR_ENABLE_DGXA";
/// Takes the design from a file.
inline constexpr const char* kExternalDesign = "__TAVR_FORCE_EXTERNAL_HAP";
/// Installation folders, the first one that is set.
inline constexpr std::array kInstallation{"TAVRDIR5_64", "TAVRDIR5"};
/// From which level on the board's dispatcher writes.
inline constexpr const char* kLogLevel = "MAROVINE_LOG_LEVEL";

/// World files, separated by colons: a board for each.
inline constexpr const char* kWorlds = "MAROVINE_WORLD";

/// A variable and what it does.
struct Variable {
    const char* name;
    const char* read;    ///< by whom
    const char* effect;  ///< Markdown
};

inline constexpr std::array kVariables{
    Variable{kDirectRegisters, "applet",
             "a true word (yes, true, on, 1) lists the design's registers as parameters `DRA_...`"},
    Variable{kDirectDesign, "applet", "a true word lists the design's parameters as `DGXA_...`"},
    Variable{kExternalDesign, "applet",
             "set at all: the design comes from the file `Marovine.hap` in the current folder instead of the "
             "library"},
    Variable{kInstallation[0], "applet",
             "the installation folder, where the library does not lie in one; its `lib64` holds the log "
             "dispatcher"},
    Variable{kInstallation[1], "applet", "the same, heeded where `TAVRDIR5_64` is not set"},
    Variable{kLogLevel, "virtual board",
             "its dispatcher writes lines of this level and above to standard error: 0 (everything) to 7 "
             "(nothing)"},
    Variable{
        kWorlds, "GenTL producer",
        "world files, separated by colons: an interface with a board for each; without it one board with the "
        "built-in scene"},
    Variable{"NO_COLOR", "command", "set to anything: no colour, unless `--color always` asks for it"},
    Variable{"COLUMNS", "command", "the width of its lines, where standard output is no terminal"},
};

}  // namespace marovine::environment
