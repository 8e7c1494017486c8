#include "client/Snapshot.h"

#include <algorithm>

#include "tables/SdkParameterTable.h"

namespace marovine::host {

namespace {

std::optional<Value> readOrNothing(Applet& applet, const std::string& name) {
    try {
        return applet.get(name);
    } catch (const Refused&) {
        return std::nullopt;
    }
}

bool isSetting(const Parameter& parameter) {
    return parameter.writable && parameter.kind != FG_KIND_TEXT && parameter.kind != FG_KIND_UINT32_FIELD;
}

std::string accessText(const Parameter& parameter) {
    return parameter.writable ? "read and write" : "read only";
}

/// The differing stretch of two fields, "[3] 9 8" for the elements 3 and 4.
std::string stretchText(const Field& field, std::size_t first, std::size_t end) {
    const auto begin = field.begin();
    return "[" + std::to_string(first) + "] " +
           textOf(
               Field(begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end)));
}

Change changeOf(const Field& before, const Field& after) {
    const auto [was, is] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto first = static_cast<std::size_t>(was - before.begin());
    const auto [lastWas, lastIs] =
        std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend());
    return {.parameter = {},
            .aspect = Change::Aspect::HeldValue,
            .before = stretchText(before, first, static_cast<std::size_t>(lastWas.base() - before.begin())),
            .after = stretchText(after, first, static_cast<std::size_t>(lastIs.base() - after.begin())),
            .unit = {}};
}

void compare(const ParameterState& before, const ParameterState& after, std::vector<Change>& changes) {
    const Parameter& was = before.parameter;
    const Parameter& is = after.parameter;
    const auto add = [&](Change::Aspect aspect, std::string from, std::string to) {
        if (from != to) changes.push_back({is.name, aspect, std::move(from), std::move(to), is.unit});
    };
    if (before.value && after.value && *before.value != *after.value) {
        Change change{is.name, Change::Aspect::HeldValue, was.textOf(*before.value), is.textOf(*after.value),
                      is.unit};
        const auto* fieldBefore = std::get_if<Field>(&*before.value);
        const auto* fieldAfter = std::get_if<Field>(&*after.value);
        if (fieldBefore != nullptr && fieldAfter != nullptr) {
            change = changeOf(*fieldBefore, *fieldAfter);
            change.parameter = is.name;
        }
        changes.push_back(std::move(change));
    }
    if (was.range && is.range) {
        add(Change::Aspect::Minimum, textOf(was.range->minimum), textOf(is.range->minimum));
        add(Change::Aspect::Maximum, textOf(was.range->maximum), textOf(is.range->maximum));
        add(Change::Aspect::Step, textOf(was.range->increment), textOf(is.range->increment));
    }
    add(Change::Aspect::Access, accessText(was), accessText(is));
}

}  // namespace

bool isReadOut(std::string_view name) {
    const auto* row = findSdkParameter(name);
    return row != nullptr && row->access == Access::ReadOnly;
}

Snapshot::Snapshot(Applet& applet, Scope scope) {
    for (const auto& name : applet.names()) {
        Parameter parameter = applet.parameter(name);
        if (scope == Scope::Settings && !isSetting(parameter)) continue;
        auto value = readOrNothing(applet, name);
        states_.push_back({std::move(parameter), std::move(value)});
    }
}

const ParameterState* Snapshot::find(const std::string& name) const {
    const auto found = std::find_if(states_.begin(), states_.end(),
                                    [&](const auto& state) { return state.parameter.name == name; });
    return found != states_.end() ? &*found : nullptr;
}

const char* nameOf(Change::Aspect aspect) {
    switch (aspect) {
        case Change::Aspect::HeldValue:
            return "value";
        case Change::Aspect::Minimum:
            return "minimum";
        case Change::Aspect::Maximum:
            return "maximum";
        case Change::Aspect::Step:
            return "step";
        case Change::Aspect::Access:
            return "access";
    }
    return "";
}

std::vector<Change> changesBetween(const Snapshot& before, const Snapshot& after) {
    std::vector<Change> changes;
    for (const auto& state : before.states())
        if (const auto* later = after.find(state.parameter.name)) compare(state, *later, changes);
    return changes;
}

}  // namespace marovine::host
