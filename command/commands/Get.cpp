#include <memory>
#include <string>
#include <vector>

#include "command/Json.h"
#include "command/commands/Commands.h"

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
        const SettingText wanted = parseName(name);
        const Parameter parameter = applet.parameter(wanted.name);
        if (wanted.firstElement && parameter.elements == 0)
            throw UsageError(wanted.name + " has no elements");
        const Value value = wanted.firstElement ? applet.getElements(wanted.name, *wanted.firstElement, 1)
                                                : applet.get(wanted.name);
        if (options.json) {
            document[name] = jsonOf(parameter, value);
        } else if (options.names.size() == 1) {
            out << parameter.textOf(value, true) << '\n';
        } else {
            out << name << '=' << parameter.textOf(value, true) << '\n';
        }
    }
    if (options.json) out << printed(document) << '\n';
}

}  // namespace

void defineGet(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("NAME", &options->names, "Parameters to read; NAME[INDEX] for an element of a table",
                     {.required = true});
    command.flag("--json", options->json, "As a JSON object, name to value");
    command.footer(
        "One parameter prints its bare value, several print NAME=VALUE lines that `marovine set` takes.\n"
        "Enumerations show the constant's name; `marovine describe NAME` gives units and ranges.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
