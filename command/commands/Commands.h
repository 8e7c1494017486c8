#pragma once

/// The commands of `marovine`, one file each. A new command is a file with its `define` function, a
/// declaration and a row below, and a line in the CMake list.

#include <array>

#include "command/CommandLine.h"
#include "command/Session.h"

namespace marovine::host::commands {

/// Adds a command's options and arguments to its parser and sets what it does.
void defineCheck(CommandLine command, Session& session);
void defineCompletion(CommandLine command, Session& session);
void defineContactSheet(CommandLine command, Session& session);
void defineDebug(CommandLine command, Session& session);
void defineDefaults(CommandLine command, Session& session);
void defineDemo(CommandLine command, Session& session);
void defineDescribe(CommandLine command, Session& session);
void defineDiff(CommandLine command, Session& session);
void defineDocs(CommandLine command, Session& session);
void defineEvents(CommandLine command, Session& session);
void defineGentl(CommandLine command, Session& session);
void defineGet(CommandLine command, Session& session);
void defineGrab(CommandLine command, Session& session);
void defineInfo(CommandLine command, Session& session);
void defineList(CommandLine command, Session& session);
void defineLoad(CommandLine command, Session& session);
void defineLut(CommandLine command, Session& session);
void defineSave(CommandLine command, Session& session);
void defineSet(CommandLine command, Session& session);
void defineStatus(CommandLine command, Session& session);
void defineStudio(CommandLine command, Session& session);
void defineTree(CommandLine command, Session& session);
void defineWiring(CommandLine command, Session& session);
void defineWorld(CommandLine command, Session& session);
void defineXml(CommandLine command, Session& session);

struct Command {
    const char* name;
    const char* summary;
    void (*define)(CommandLine command, Session& session);
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
    Command{"status", "All read-outs: camera, buffer, inputs, analyzers, board", defineStatus},
    Command{"wiring", "Which signal drives which output", defineWiring},
    Command{"defaults", "The defaults, and what differs from them", defineDefaults},
    Command{"lut", "Show, load and save the lookup tables", defineLut},
    Command{"debug", "Inject data at the design's debug points and watch them", defineDebug},
    Command{"save", "Save the configuration to a file", defineSave},
    Command{"load", "Load a configuration and see what it changes", defineLoad},
    Command{"check", "What a load of a configuration would skip or fail on, line by line", defineCheck},
    Command{"diff", "Compare configurations by meaning, or one with the applet as it is", defineDiff},
    Command{"grab", "Take pictures with the virtual board's camera", defineGrab},
    Command{"studio", "Work with the board in a browser, and let programs share it", defineStudio},
    Command{"world", "Check a world file, draw its signals, print its schema", defineWorld},
    Command{"contact-sheet", "Show in one picture what settings do to pictures", defineContactSheet},
    Command{"gentl", "Where the GenTL producer lies, and whether it works", defineGentl},
    Command{"xml", "The XML description of all parameters", defineXml},
    Command{"docs", "The reference documents and manual pages", defineDocs},
    Command{"completion", "The script with which a shell completes this command", defineCompletion},
};

}  // namespace marovine::host::commands
