/// The command `marovine`.

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/Names.h"
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

void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
    app.add_option("--config", options.config, "Load this configuration first")
        ->type_name("FILE.mcf")
        ->check(CLI::ExistingFile);
    app.add_option("--set", options.settings, "Set a parameter before the command runs; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    app.add_flag("--attach", options.attach, "Open without writing the defaults");
    app.add_option("--applet", options.library, "The applet's library, if not the one beside this command")
        ->type_name("PATH")
        ->check(CLI::ExistingFile);
    app.add_option("--log", options.logLevel,
                   "Write log lines of this level and above to standard error, 0 to 7")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 7));
    const std::vector<std::pair<std::string, Colour>> colours{
        {"auto", Colour::Auto}, {"always", Colour::Always}, {"never", Colour::Never}};
    app.add_option("--color", options.colour, "Colour: auto, always or never")
        ->type_name("WHEN")
        ->transform(CLI::CheckedTransformer(colours).description(""));
}

/// An optional file name cannot be told from the argument that follows it; its ending decides.
std::vector<std::string> withTraceFileJoined(int count, char** arguments) {
    std::vector<std::string> result(arguments + 1, arguments + count);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (result[i] != "--trace") continue;
        const bool file =
            i + 1 < result.size() && (result[i + 1].ends_with(".json") || result[i + 1].ends_with(".csv"));
        result[i] = "--trace=" + (file ? result[i + 1] : std::string("-"));
        if (file) result.erase(result.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    }
    return result;
}

void printFailure(Session& session, const std::string& message, const std::vector<std::string>& advice = {}) {
    session.console().out() << std::flush;
    std::cerr << "marovine: " << message << '\n';
    for (const auto& line : advice) std::cerr << "  " << line << '\n';
}

/// The message about a word that stands where a command should; empty when there is none.
std::string unknownCommand(const CLI::App& app) {
    std::vector<std::string> names;
    for (const auto& command : commands::all) names.emplace_back(command.name);
    for (const auto& word : app.remaining()) {
        if (word.starts_with('-')) continue;
        const auto nearest = nearestNames(word, names, 1);
        return "no command is named " + word +
               (nearest.empty() ? "; marovine --help lists them" : "; did you mean " + nearest.front() + "?");
    }
    return {};
}

int run(CLI::App& app, Session& session, std::vector<std::string> arguments) {
    try {
        std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
        app.parse(std::move(arguments));
        std::cout << std::flush;
        if (!std::cout) throw Failure("the results could not be written to standard output");
        return session.status;
    } catch (const CLI::ParseError& error) {
        if (app.get_subcommands().empty() && error.get_exit_code() != 0) {
            const auto unknown = unknownCommand(app);
            if (!unknown.empty()) {
                printFailure(session, unknown);
                return kUsage;
            }
        }
        return app.exit(error) == 0 ? kSuccess : kUsage;
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
    Session session;
    CLI::App app(kAbout, "marovine");
    app.footer(kFooter);
    app.require_subcommand(1);
    app.fallthrough();
    addGlobalOptions(app, session.options);
    for (const auto& command : commands::all)
        command.define(*app.add_subcommand(command.name, command.summary), session);
    return run(app, session, withTraceFileJoined(count, arguments));
}
