#include "command/Reference.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/ErrorCodes.h"
#include "client/Explain.h"
#include "client/Influences.h"
#include "marovine/BoardCodes.h"
#include "marovine/EnvironmentVariables.h"
#include "tables/EventTable.h"
#include "tables/SdkParameterTable.h"

namespace marovine::host {

namespace {

/// A text in Markdown: what would be taken for markup is marked as plain.
std::string plain(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (std::string_view("|<>*`[]").find(c) != std::string_view::npos) result += '\\';
        result += c == '\n' ? ' ' : c;
    }
    return result;
}

std::string code(std::string_view text) {
    return '`' + std::string(text) + '`';
}

std::string linkTo(std::string_view name) {
    std::string anchor(name);
    std::ranges::transform(anchor, anchor.begin(), [](unsigned char c) { return std::tolower(c); });
    return "[`" + std::string(name) + "`](#" + anchor + ")";
}

template <class List, class Text>
std::string joined(const List& list, const Text& text) {
    std::string result;
    for (const auto& each : list) {
        if (!result.empty()) result += ", ";
        result += text(each);
    }
    return result;
}

std::string kindText(const Parameter& parameter) {
    switch (parameter.kind) {
        case FG_KIND_UINT32:
        case FG_KIND_UINT64:
        case FG_KIND_INT32:
        case FG_KIND_INT64:
            return "whole number";
        case FG_KIND_ENUMERATION:
            return "enumeration";
        case FG_KIND_DOUBLE:
            return "real number";
        case FG_KIND_TEXT:
            return parameter.filePattern.empty() ? "text" : "file name, " + code(parameter.filePattern);
        default:
            return "table of " + std::to_string(parameter.elements) + " numbers";
    }
}

/// What each parameter moves, and the other way round what limits it.
struct Relations {
    std::map<std::string, std::vector<Influence>> moves;
    std::map<std::string, std::vector<std::string>> limitedBy;
};

Relations relationsIn(const Applet& applet) {
    Relations relations;
    for (const auto& name : applet.names()) {
        auto moved = influencesOf(applet, name);
        for (const auto& influence : moved)
            if (influence.range || influence.access) relations.limitedBy[influence.on].push_back(name);
        relations.moves[name] = std::move(moved);
    }
    return relations;
}

std::string movesText(const Influence& influence) {
    std::vector<std::string> aspects;
    if (influence.value) aspects.emplace_back("value");
    if (influence.range) aspects.emplace_back("range");
    if (influence.access) aspects.emplace_back("access");
    return linkTo(influence.on) + " (" + joined(aspects, [](const auto& text) { return text; }) + ")";
}

void writeParameter(std::ostream& out, Applet& applet, const Parameter& parameter,
                    const Relations& relations) {
    const std::string& name = parameter.name;
    const bool readOnly = isReadOut(name);
    out << "\n### " << name << "\n\n";
    if (!parameter.displayName.empty()) out << "*" << plain(parameter.displayName) << "*";
    out << (parameter.displayName.empty() ? "" : " · ") << "id " << parameter.id << " · "
        << kindText(parameter) << " · " << (readOnly ? "read only" : "read and write") << "\n\n";
    const std::string description = applet.description(name);
    if (!description.empty()) out << plain(description) << "\n\n";

    const auto row = [&](const char* what, const std::string& text) {
        if (!text.empty()) out << "- " << what << ": " << text << '\n';
    };
    if (parameter.entries.empty() && parameter.range)
        row("range", plain(parameter.rangeText()) + (parameter.unit.empty() ? "" : " " + parameter.unit));
    const auto* data = findSdkParameter(name);
    if (data != nullptr && isGiven(data->defaultValue))
        row("default", code(parameter.textWithUnit(applet.get(name))));
    row("entries", joined(parameter.entries, [](const Entry& entry) {
            return code(entry.constantName) + " = " + std::to_string(entry.value);
        }));
    row("writes", readOnly ? "" : joined(drivenDesignParameters(applet, name), code));
    if (const auto found = relations.limitedBy.find(name); found != relations.limitedBy.end())
        row("limited by", joined(found->second, linkTo));
    row("moves", joined(relations.moves.at(name), movesText));
}

}  // namespace

void writeParameterReference(std::ostream& out, Applet& applet) {
    const Relations relations = relationsIn(applet);
    out << "# Parameters\n\n"
           "Made by `marovine docs parameters`: the texts stand in `tables/`; defaults and ranges are those "
           "of the "
           "start\nstate. What a parameter writes, what limits it and what it moves was found by setting it, "
           "on a "
           "second\ninstance, to each entry or to its smallest, middle and largest value. `marovine describe "
           "NAME` "
           "says the same\nfor any other state.\n";
    std::string group;
    for (const auto& parameter : applet.tree()) {
        if (parameter.group != group) {
            group = parameter.group;
            out << "\n## " << plain(group) << '\n';
        }
        writeParameter(out, applet, parameter, relations);
    }
    out << "\n## The host runtime's own\n\n"
           "They reach the board's runtime as they are and have no description.\n";
    for (const auto& name : applet.names()) {
        const Parameter parameter = applet.parameter(name);
        if (!parameter.described) writeParameter(out, applet, parameter, relations);
    }
}

void writeCodeReference(std::ostream& out, Applet& applet) {
    out << "# Codes, events, environment\n\nMade by `marovine docs codes` from the tables of the code.\n"
           "\n## Codes of the applet\n\n| code | meaning |\n|---:|---|\n";
    for (const auto& meaning : error::meanings)
        out << "| " << meaning.code << " | " << plain(meaning.text) << " |\n";
    out << "\n## Codes of the virtual board\n\nThe applet passes them on unchanged.\n\n"
           "| code | meaning |\n|---:|---|\n";
    for (const auto& meaning : virtualboard::kCodeMeanings)
        out << "| " << meaning.code << " | " << plain(meaning.meaning) << " |\n";
    out << "\n## Events\n\n| bit of the mask | event | of the design |\n|---:|---|---|\n";
    for (const auto& event : applet.events()) {
        const auto* known = std::ranges::find(sdkEvents, std::string_view(event.name),
                                              [](const auto& row) { return std::string_view(row.sdkName); });
        out << "| " << std::countr_zero(event.mask) << " | " << code(event.name) << " | "
            << code(known != sdkEvents.end() ? known->designName : event.name.c_str()) << " |\n";
    }
    out << "\n## Environment variables\n\n| variable | read by | effect |\n|---|---|---|\n";
    for (const auto& variable : environment::kVariables)
        out << "| " << code(variable.name) << " | " << variable.read << " | " << variable.effect << " |\n";
}

}  // namespace marovine::host
