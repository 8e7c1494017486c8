#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Names.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::vector<std::string> names;
    bool json = false;
};

/// A value that was asked for.
struct Reading {
    std::string name;  ///< with the index of an element
    Parameter parameter;
    std::optional<Value> value;  ///< nothing for a match of a pattern that cannot be read
};

std::vector<Reading> readingsOf(Applet& applet, const std::string& text) {
    const SettingText wanted = parseName(text);
    std::vector<Reading> readings;
    for (const auto& name : applet.namedBy(wanted.name)) {
        Reading reading{.name = name, .parameter = applet.parameter(name), .value = {}};
        if (wanted.firstElement && reading.parameter.elements == 0)
            throw UsageError(name + " has no elements");
        if (wanted.firstElement) reading.name += "[" + std::to_string(*wanted.firstElement) + "]";
        try {
            reading.value =
                wanted.firstElement ? applet.getElements(name, *wanted.firstElement, 1) : applet.get(name);
        } catch (const Refused&) {
            if (!isPattern(wanted.name)) throw;
        }
        readings.push_back(std::move(reading));
    }
    return readings;
}

void run(const Options& options, Session& session) {
    std::vector<Reading> readings;
    for (const auto& name : options.names)
        std::ranges::move(readingsOf(session.applet(), name), std::back_inserter(readings));
    std::ostream& out = session.console().out();
    if (options.json) {
        Json document = Json::object();
        for (const auto& [name, parameter, value] : readings)
            document[name] = value ? jsonOf(parameter, *value) : Json();
        out << printed(document) << '\n';
        return;
    }
    const bool bare = readings.size() == 1 && !isPattern(options.names.front());
    for (const auto& [name, parameter, value] : readings)
        if (value) out << (bare ? "" : name + "=") << parameter.textOf(*value, true) << '\n';
}

}  // namespace

void defineGet(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("NAME", &options->names,
                     "Parameters to read, in letters of either case, or patterns with * and ?; "
                     "NAME[INDEX] for an element of a table",
                     {.required = true});
    command.flag("--json", options->json, "As a JSON object, name to value");
    command.footer(
        "One parameter prints its bare value, several or a pattern NAME=VALUE lines that\n"
        "`marovine set` takes; what a pattern matches but cannot be read is left out.\n"
        "Enumerations show the constant's name; `marovine describe NAME` gives units and ranges.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
