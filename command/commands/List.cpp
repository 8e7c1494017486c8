#include <memory>
#include <optional>
#include <string>

#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::string pattern;
    bool ranges = false;
    bool json = false;
};

std::optional<Value> readOrNothing(Applet& applet, const std::string& name) {
    try {
        return applet.get(name);
    } catch (const Refused&) {
        return std::nullopt;
    }
}

void run(const Options& options, Session& session) {
    Applet& applet = session.applet();
    std::vector<std::string> headings{"name", "rw", "value"};
    if (options.ranges) headings.emplace_back("range");
    Table table(headings);
    Json document = Json::array();
    for (const auto& name : applet.matching(options.pattern)) {
        const Parameter parameter = applet.parameter(name);
        const auto value = readOrNothing(applet, name);
        if (options.json) {
            document.push_back(jsonOf(parameter, value));
            continue;
        }
        std::vector<std::string> row{name, parameter.writable ? "rw" : "r",
                                     value ? parameter.textWithUnit(*value) : "-"};
        if (options.ranges) row.push_back(parameter.rangeText());
        table.add(std::move(row));
    }
    if (options.json) {
        session.console().out() << printed(document) << '\n';
        return;
    }
    table.print(session.console());
}

}  // namespace

void defineList(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("PATTERN", &options->pattern,
                     "Part of a name or title, or the whole with * and ?, without regard to case");
    command.flag("--ranges", options->ranges, "Also show ranges and entries as they are now");
    command.flag("--json", options->json, "As a JSON array with ranges and entries");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
