#pragma once

/// The commands of `marovine`, one file each. A new command is a file with its `define` function, a
/// declaration and a row below, and a line in the CMake list.

#include <array>

#include <CLI/CLI.hpp>

#include "host/Session.h"

namespace marovine::host::commands {

/// Adds a command's options and arguments to its parser and sets what it does.
void defineDemo(CLI::App& command, Session& session);
void defineDescribe(CLI::App& command, Session& session);
void defineEvents(CLI::App& command, Session& session);
void defineGet(CLI::App& command, Session& session);
void defineInfo(CLI::App& command, Session& session);
void defineList(CLI::App& command, Session& session);
void defineSet(CLI::App& command, Session& session);
void defineTree(CLI::App& command, Session& session);

struct Command {
    const char* name;
    const char* summary;
    void (*define)(CLI::App& command, Session& session);
};

/// All commands, in the order of the help.
inline constexpr std::array all{
    Command{"demo", "Watch the applet at work", defineDemo},
    Command{"info", "Who the applet is and what it can do", defineInfo},
    Command{"list", "Parameters with their values", defineList},
    Command{"tree", "Parameters in the groups in which a host shows them", defineTree},
    Command{"get", "Read parameters", defineGet},
    Command{"set", "Set parameters and see what else moves", defineSet},
    Command{"describe", "Explain a parameter: range, what limits it, what it drives", defineDescribe},
    Command{"events", "Events with the masks to wait for them", defineEvents},
};

}  // namespace marovine::host::commands
