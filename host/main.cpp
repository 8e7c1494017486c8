/// The command `marovine`.

#include <csignal>
#include <iostream>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Session.h"
#include "host/commands/Commands.h"

namespace {

using namespace marovine::host;

constexpr const char* kAbout = "Speaks to the Marovine applet on a virtual board.";
constexpr const char* kFooter =
    "Every run has a virtual board of its own, in its start state: nothing is kept from run to run.\n"
    "Chain steps in one run: --config FILE.mcf is loaded first, then every --set is applied, then the\n"
    "command runs. Keep a state with `marovine save` and come back to it with --config.\n"
    "\n"
    "Exit status: 0 done, 1 refused by the applet or failed, 2 the command line makes no sense.";

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

/// An optional file name cannot be told from the argument that follows it; its ending decides.
std::vector<std::string> withTraceFileJoined(int count, char** arguments) {
    std::vector<std::string> result(arguments + 1, arguments + count);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (result[i] != "--trace") continue;
        const auto next = result.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        const bool file = next != result.end() && (next->ends_with(".json") || next->ends_with(".csv"));
        result[i] = "--trace=" + (file ? *next : std::string("-"));
        if (file) result.erase(next);
    }
    return result;
}

void printFailure(Session& session, const std::string& message, const std::vector<std::string>& advice = {}) {
    session.console().out() << std::flush;
    std::cerr << "marovine: " << message << '\n';
    for (const auto& line : advice) std::cerr << "  " << line << '\n';
}

int run(Program& program, Session& session, std::vector<std::string> arguments) {
    try {
        if (const auto status = program.run(std::move(arguments))) return *status;
        std::cout << std::flush;
        if (!std::cout) throw Failure("the results could not be written to standard output");
        return session.status;
    } catch (const UsageError& error) {
        printFailure(session, error.what());
        return kUsage;
    } catch (const Refused& refusal) {
        if (const auto explanation = explained(session, refusal)) {
            printFailure(session, explanation->sentence(), explanation->advice());
        } else {
            printFailure(session, refusal.what());
        }
    } catch (const std::exception& error) {
        printFailure(session, error.what());
    }
    return kFailed;
}

}  // namespace

int main(int count, char** arguments) {
    // A file that may not grow any more is a failed write, told like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    Session session;
    Program program(kAbout, "marovine", kFooter);
    addGlobalOptions(program.top(), session.options);
    for (const auto& command : commands::all)
        command.define(program.top().command(command.name, command.summary), session);
    return run(program, session, withTraceFileJoined(count, arguments));
}
