#include "command/Run.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "base/AppletIdentity.h"
#include "command/Completion.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host {

namespace {

constexpr const char* kAbout = "Speaks to the Marovine applet on a virtual board.";
constexpr const char* kFooter =
    "Every run has a virtual board of its own, in its start state: nothing is kept from run to run.\n"
    "Chain steps in one run: --config FILE.mcf is loaded first, then every --set is applied, then the\n"
    "command runs. Keep a state with `marovine save` and come back to it with --config. Or let\n"
    "`marovine studio` run: every command with --at ADDRESS then works on its board.\n"
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
    line.option("--at", &options.address, "Work on the board of the studio at this address, not on a new one",
                {.type = "ADDRESS", .notEmpty = true});
    line.option("--config", &options.config, "Load this configuration first",
                {.type = "FILE.mcf", .exists = true, .file = FileRole::Read});
    line.option("--set", &options.settings, "Set a parameter before the command runs; may be repeated",
                {.type = "NAME=VALUE"});
    line.option("--world", &options.world, "Put this world around the board (see `marovine world`)",
                {.type = "FILE.json", .exists = true, .file = FileRole::Read});
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

std::vector<std::string> withTraceFileJoined(std::vector<std::string> result) {
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

Json jsonOf(const Told& what, int status) {
    const Json error{{"message", what.message},
                     {"code", what.code ? Json(*what.code) : Json()},
                     {"advice", what.advice},
                     {"status", status}};
    return {{"error", error}};
}

/// What an exception says, with the reasons for a refused value.
Told toldOf(Session& session, const std::exception& error) {
    if (const auto* refusal = dynamic_cast<const Refused*>(&error)) return told(session, *refusal);
    return {.message = error.what()};
}

int statusOf(const std::exception& error) {
    return dynamic_cast<const UsageError*>(&error) != nullptr ? kUsage : kFailed;
}

/// Says why the command ends with `status`: on standard error and, where a program reads the results, there
/// as an object.
int fail(Session& session, int status, bool json, const Told& what) {
    constexpr std::size_t indent = 2;
    if (json) session.console().out() << printed(jsonOf(what, status)) << '\n';
    session.console().out() << std::flush;
    const Console& errors = session.errors();
    std::istringstream lines("marovine: " + what.message);
    for (std::string line; std::getline(lines, line);) errors.paragraph(line, 0, Style::Plain, 2 * indent);
    for (const auto& line : what.advice) errors.paragraph(line, indent, Style::Plain, indent);
    return status;
}

}  // namespace

void runOrThrow(Session& session, std::vector<std::string> arguments, BeforeCommand before) {
    std::ostream& out = session.out();
    Program program({.name = "marovine",
                     .version = identity::version,
                     .about = kAbout,
                     .footer = kFooter,
                     .whereToBegin = kWhereToBegin},
                    out);
    addGlobalOptions(program.top(), session.options);
    for (const auto& command : commands::all)
        command.define(program.top().command(command.name, command.summary), session);
    // What a shell asks at TAB; the words are no command line of ours, so the parser does not see them.
    if (!arguments.empty() && arguments.front() == "complete")
        return printCompletions(out, complete(program.text(), {arguments.begin() + 1, arguments.end()}));
    if (before) program.intercept(std::move(before));
    if (const auto status = program.run(withTraceFileJoined(std::move(arguments)))) session.status = *status;
    out << std::flush;
    if (!out) throw Failure("the results could not be written to standard output");
}

int run(Session& session, std::vector<std::string> arguments, BeforeCommand before) {
    const bool json = std::ranges::find(arguments, "--json") != arguments.end();
    try {
        runOrThrow(session, std::move(arguments), std::move(before));
        return session.status;
    } catch (const std::exception& error) {
        return fail(session, statusOf(error), json, toldOf(session, error));
    }
}

std::string errorDocument(Session& session, const std::exception& error) {
    return printed(jsonOf(toldOf(session, error), statusOf(error)));
}

}  // namespace marovine::host
