#include <memory>
#include <string>
#include <vector>

#include "host/Json.h"
#include "host/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::vector<std::string> names;
    bool json = false;
};

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    std::ostream& out = session.console().out();
    Json document = Json::object();
    for (const auto& name : options.names) {
        const Parameter parameter = applet.parameter(name);
        const Value value = applet.get(name);
        if (options.json) {
            document[parameter.name] = jsonOf(parameter, value);
        } else if (options.names.size() == 1) {
            out << parameter.textOf(value, true) << '\n';
        } else {
            out << parameter.name << '=' << parameter.textOf(value, true) << '\n';
        }
    }
    if (options.json) out << printed(document) << '\n';
}

}  // namespace

void defineGet(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("NAME", &options->names, "Parameters to read", {.required = true});
    command.flag("--json", options->json, "As a JSON object, name to value");
    command.footer(
        "One parameter prints its bare value, several print NAME=VALUE lines that `marovine set` takes.\n"
        "Enumerations show the constant's name; `marovine describe NAME` gives units and ranges.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
