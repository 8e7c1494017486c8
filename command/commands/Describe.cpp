#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/Names.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::string name;
    bool json = false;
};

/// Everything that the command knows about a parameter.
struct Facts {
    Parameter parameter;
    std::optional<Value> value;
    std::string text;
    std::vector<Narrowing> narrowings;
    std::vector<Cause> readOnlyCauses;
    std::vector<std::string> designParameters;
};

Facts factsAbout(Applet& applet, const std::string& name) {
    Facts facts{.parameter = applet.parameter(name),
                .value = {},
                .text = applet.description(name),
                .narrowings = narrowings(applet, name),
                .readOnlyCauses = causesOfReadOnly(applet, name),
                .designParameters = drivenDesignParameters(applet, name)};
    try {
        facts.value = applet.get(name);
    } catch (const Refused&) {
    }
    return facts;
}

std::string accessText(const Facts& facts) {
    if (facts.parameter.writable) return facts.parameter.readable ? "read and write" : "write";
    if (facts.readOnlyCauses.empty()) return "read only";
    return "reported read only now, because " + causesText(facts.readOnlyCauses);
}

std::string narrowingText(const Narrowing& narrowing) {
    return std::string(narrowing.upper ? "not above " : "not below ") + narrowing.limit + ", because " +
           causesText(narrowing.causes);
}

/// Design parameters below the process that they all begin with: whole names are too long for a terminal.
void addDesignParameters(Table& table, const std::vector<std::string>& names) {
    std::string process;
    for (const auto& name : names) {
        const auto end = name.find('_', name.find('_') + 1);  // "Device1_Process0"
        if (name.substr(0, end) != process) {
            process = name.substr(0, end);
            table.add({&name == &names.front() ? "drives" : "", "of " + process});
        }
        table.add({"", end == name.npos ? name : "  " + name.substr(end + 1)});
    }
}

void print(const Console& console, const Facts& facts) {
    const Parameter& parameter = facts.parameter;
    console.heading(parameter.name);
    if (!facts.text.empty()) console.paragraph(facts.text);
    console.out() << '\n';
    Table table;
    table.add({"value", facts.value ? parameter.textWithUnit(*facts.value) : "cannot be read now"});
    if (parameter.range) table.add({"range", parameter.rangeText()});
    for (const auto& narrowing : facts.narrowings) table.add({"limited", narrowingText(narrowing)});
    for (const auto& entry : parameter.entries)
        table.add({&entry == &parameter.entries.front() ? "entries" : "",
                   entry.constantName + " = " + std::to_string(entry.value) + "  " + entry.displayName});
    table.add({"access", accessText(facts)});
    if (!parameter.filePattern.empty()) table.add({"file", parameter.filePattern});
    table.add({"id", std::to_string(parameter.id)});
    if (!parameter.displayName.empty())
        table.add({"shown as", parameter.group + " > " + parameter.displayName});
    addDesignParameters(table, facts.designParameters);
    table.print(console);
}

Json jsonOf(const std::vector<Cause>& causes) {
    Json list = Json::array();
    for (const auto& cause : causes)
        list.push_back(
            {{"parameter", cause.parameter}, {"value", cause.value}, {"advice", remedyText(cause)}});
    return list;
}

Json jsonOf(const Facts& facts) {
    Json document = jsonOf(facts.parameter, facts.value);
    document["description"] = facts.text;
    document["limits"] = Json::array();
    for (const auto& narrowing : facts.narrowings)
        document["limits"].push_back({{"end", narrowing.upper ? "maximum" : "minimum"},
                                      {"limit", narrowing.limit},
                                      {"causes", jsonOf(narrowing.causes)}});
    document["readOnlyBecause"] = jsonOf(facts.readOnlyCauses);
    document["drives"] = facts.designParameters;
    return document;
}

void run(const Options& options, Session& session) {
    const Console& console = session.console();
    Json document = Json::array();
    bool first = true;
    for (const auto& name : session.applet().namedBy(options.name)) {
        const Facts facts = factsAbout(session.applet(), name);
        if (options.json) {
            document.push_back(jsonOf(facts));
            continue;
        }
        if (!std::exchange(first, false)) console.out() << '\n';
        print(console, facts);
    }
    if (!options.json) return;
    const bool many = isPattern(options.name);
    console.out() << printed(many ? document : std::get<Json::Array>(document.content()).front()) << '\n';
}

}  // namespace

void defineDescribe(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("NAME", &options->name,
                     "The parameter, in letters of either case, or a pattern with * and ?",
                     {.required = true});
    command.flag("--json", options->json, "As a JSON object, or an array of them for a pattern");
    command.footer(
        "What limits a value, and which design parameters it drives, is tried out on a second instance in\n"
        "the same state; nothing of it reaches the first.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
