#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "client/ConfigDiff.h"
#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace fs = std::filesystem;

namespace {

struct Options {
    fs::path first;
    fs::path second;
    bool all = false;
    bool json = false;
};

/// A value for the table.
std::string shown(const Difference& difference, const DifferentSide& side) {
    if (!side.value) return side.hasPlace ? "(missing)" : "(no place in a file)";
    return difference.parameter.textOf(*side.value) + (side.note.empty() ? "" : " (" + side.note + ")");
}

/// Adds a value to an entry of the document.
void add(Json& entry, const std::string& key, const Parameter& parameter, const DifferentSide& side) {
    entry[key] = side.value ? jsonOf(parameter, *side.value) : Json();
    if (!side.note.empty()) entry[key + "Note"] = side.note;
}

std::string nameOf(const fs::path& file) {
    return file.empty() ? "now" : file.filename().string();
}

void run(const Options& options, Session& session) {
    const std::string first = nameOf(options.first), second = nameOf(options.second);
    Table table({"parameter", first, second});
    Json document = Json::array();
    for (const auto& difference :
         differencesBetween(session.applet(), options.first, options.second, options.all)) {
        session.status = kFailed;
        const Parameter& parameter = difference.parameter;
        table.add(
            {parameter.name, shown(difference, difference.first), shown(difference, difference.second)});
        Json entry{{"name", parameter.name}};
        add(entry, "first", parameter, difference.first);
        add(entry, "second", parameter, difference.second);
        document.push_back(std::move(entry));
    }
    if (options.json)
        session.console().out() << printed(document) << '\n';
    else if (!table.empty())
        table.print(session.console());
    else
        session.console().out() << first << " and " << second << " say the same\n";
}

}  // namespace

void defineDiff(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.argument("A.mcf", &options->first, "A configuration",
                     {.required = true, .exists = true, .file = FileRole::Read});
    command.argument("B.mcf", &options->second, "Another one; without it, the applet as it is now",
                     {.exists = true, .file = FileRole::Read});
    command.flag("--all", options->all, "Compare read-outs as well");
    command.flag("--json", options->json, "As a JSON array");
    command.footer(
        "Compares values, not lines: 200 and 200.0 are the same, and entries are named. Status 0 when both "
        "say\n"
        "the same, 1 when they differ. For instance: marovine diff line3.mcf --set FG_WIDTH=2048");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
