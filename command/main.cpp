/// The command `marovine`.

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/AppletIdentity.h"
#include "command/CommandLine.h"
#include "command/Json.h"
#include "command/Session.h"
#include "command/TerminalText.h"
#include "command/commands/Commands.h"

namespace {

using namespace marovine::host;

constexpr const char* kAbout = "Speaks to the Marovine applet on a virtual board.";
constexpr const char* kFooter =
    "Every run has a virtual board of its own, in its start state: nothing is kept from run to run.\n"
    "Chain steps in one run: --config FILE.mcf is loaded first, then every --set is applied, then the\n"
    "command runs. Keep a state with `marovine save` and come back to it with --config.\n"
    "\n"
    "Exit status: 0 done, 1 refused by the applet or failed, 2 the command line makes no sense,\n"
    "128 and the signal's number after a signal (130 for Ctrl-C, 143 for SIGTERM, 129 for SIGHUP).";
constexpr const char* kWhereToBegin =
    "no command is given. Where to begin:\n"
    "  marovine demo                watch the applet at work\n"
    "  marovine list 'FG_LINE*'     see parameters with their values\n"
    "  marovine describe FG_WIDTH   what a parameter means and what limits it\n"
    "  marovine set FG_WIDTH=2048   set one and see what else moves\n"
    "  marovine grab -o belt.png    take a picture\n"
    "  marovine help [COMMAND]      all commands, or one with its options";

void addGlobalOptions(CommandLine line, GlobalOptions& options) {
    line.option("--config", &options.config, "Load this configuration first",
                {.type = "FILE.mcf", .exists = true});
    line.option("--set", &options.settings, "Set a parameter before the command runs; may be repeated",
                {.type = "NAME=VALUE"});
    line.flag("--attach", options.attach, "Open without writing the defaults");
    line.option("--applet", &options.library, "The applet's library, if not the one beside this command",
                {.type = "PATH", .exists = true});
    line.option("--log", &options.logLevel, "Write log lines from this level on to standard error, 0 to 7",
                {.type = "LEVEL", .minimum = 0, .maximum = 7});
    line.option("--color", &options.colour, "Colour: auto, always or never",
                {.type = "WHEN", .choices = {"auto", "always", "never"}});
}

/// An optional file name cannot be told from the argument that follows it; its look decides. A name with
/// another ending is taken as well, to be refused with the endings that count.
bool looksLikeTraceFile(std::string_view text) {
    return text.find('.') != text.npos && text.find('=') == text.npos && !text.starts_with('-') &&
           !text.ends_with(".mcf") && !text.ends_with(".lut");
}

std::vector<std::string> withTraceFileJoined(int count, char** arguments) {
    std::vector<std::string> result(arguments + 1, arguments + count);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (result[i] != "--trace") continue;
        const auto next = result.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        const bool file = next != result.end() && looksLikeTraceFile(*next);
        result[i] = "--trace=" + (file ? *next : std::string("-"));
        if (file) result.erase(next);
    }
    return result;
}

/// What went wrong, for a person and for a program.
struct Told {
    std::string message;
    std::vector<std::string> advice{};
    std::optional<int> code{};  ///< the applet's, when it was the applet that refused
};

Told told(Session& session, const Refused& refusal) {
    if (const auto why = explained(session, refusal)) return {why->sentence(), why->advice(), refusal.code};
    return {refusal.what(), {}, refusal.code};
}

/// Says why the command ends with `status`: on standard error and, where a program reads the results, there
/// as an object.
int fail(Session& session, int status, bool json, const Told& what) {
    constexpr std::size_t indent = 2;
    if (json) {
        const Json error{{"message", what.message},
                         {"code", what.code ? Json(*what.code) : Json()},
                         {"advice", what.advice},
                         {"status", status}};
        session.console().out() << printed({{"error", error}}) << '\n';
    }
    session.console().out() << std::flush;
    const Console errors = Console::forErrors();
    std::istringstream lines("marovine: " + what.message);
    for (std::string line; std::getline(lines, line);) errors.paragraph(line, 0, Style::Plain, 2 * indent);
    for (const auto& line : what.advice) errors.paragraph(line, indent, Style::Plain, indent);
    return status;
}

int run(Program& program, Session& session, std::vector<std::string> arguments) {
    const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    try {
        if (const auto status = program.run(std::move(arguments))) return *status;
        std::cout << std::flush;
        if (!std::cout) throw Failure("the results could not be written to standard output");
        return session.status;
    } catch (const UsageError& error) {
        return fail(session, kUsage, json, {.message = error.what()});
    } catch (const Refused& refusal) {
        return fail(session, kFailed, json, told(session, refusal));
    } catch (const std::exception& error) {
        return fail(session, kFailed, json, {.message = error.what()});
    }
}

}  // namespace

int main(int count, char** arguments) {
    // A file that may not grow any more is a failed write, told like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    const TerminalText output(std::cout, STDOUT_FILENO);
    const TerminalText errors(std::cerr, STDERR_FILENO);
    Session session;
    Program program({.name = "marovine",
                     .version = marovine::identity::version,
                     .about = kAbout,
                     .footer = kFooter,
                     .whereToBegin = kWhereToBegin});
    addGlobalOptions(program.top(), session.options);
    for (const auto& command : commands::all)
        command.define(program.top().command(command.name, command.summary), session);
    return run(program, session, withTraceFileJoined(count, arguments));
}
