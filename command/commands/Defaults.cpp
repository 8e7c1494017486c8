#include "client/Defaults.h"

#include <memory>
#include <string>

#include "command/Json.h"
#include "command/commands/Commands.h"
#include "tables/SdkParameterTable.h"

namespace marovine::host::commands {

namespace {

struct Options {
    bool changed = false;
    bool json = false;
};

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    Table table({"", "parameter", "default", "now"});
    Json document = Json::array();
    std::size_t differing = 0;
    for (const auto& row : sdkParameters) {
        const Parameter parameter = applet.parameter(row.name);
        const auto value = defaultOf(parameter);
        if (!value) continue;
        const Value now = applet.get(row.name);
        const bool differs = *value != now;
        differing += differs ? 1 : 0;
        if (options.changed && !differs) continue;
        if (options.json) {
            document.push_back({{"name", row.name},
                                {"default", jsonOf(parameter, *value)},
                                {"now", jsonOf(parameter, now)},
                                {"differs", differs}});
        } else {
            table.add({differs ? "*" : "", row.name, parameter.textOf(*value),
                       differs ? parameter.textOf(now) : ""},
                      differs ? Style::Accent : Style::Plain);
        }
    }
    if (options.json) {
        session.console().out() << printed(document) << '\n';
        return;
    }
    if (!table.empty()) table.print(session.console());
    session.console().out() << (differing == 0 ? "all are at their defaults"
                                               : std::to_string(differing) + " differ, marked with *")
                            << '\n';
}

}  // namespace

void defineDefaults(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.flag("--changed", options->changed, "Only those that differ now");
    command.flag("--json", options->json, "As a JSON array");
    command.footer(
        "Nothing differs in the start state; see what a configuration changes with\n"
        "marovine defaults --changed --config FILE.mcf");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
