#include "client/Explain.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "base/ErrorCodes.h"
#include "client/VirtualBoard.h"
#include "tables/SdkParameterTable.h"

namespace marovine::host {

namespace {

/// More causes than this confuse; the first ones stand nearest in the parameter list.
constexpr std::size_t kNamedCauses = 3;

std::string joined(const std::vector<std::string>& parts, std::string_view last) {
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) text += i + 1 == parts.size() ? " " + std::string(last) + " " : ", ";
        text += parts[i];
    }
    return text;
}

/// Both ends of the range that a parameter has when nothing narrows it; nothing for parameters without range.
std::optional<std::pair<Value, Value>> widestRange(const Parameter& parameter) {
    if (const auto* row = findSdkParameter(parameter.name)) {
        return std::visit(
            []<class T>(const T& value) -> std::optional<std::pair<Value, Value>> {
                if constexpr (requires { Value(value.minimum); } && !std::is_same_v<T, FieldLimits>) {
                    return std::pair<Value, Value>(value.minimum, value.maximum);
                } else {
                    return std::nullopt;
                }
            },
            row->range);
    }
    if (!parameter.range) return std::nullopt;
    return std::pair(parameter.range->minimum, parameter.range->maximum);
}

/// A value that is accepted now, from which a search for limits can start.
std::optional<Value> acceptedValue(Rehearsal& rehearsal, const Parameter& parameter) {
    std::vector<Value> candidates;
    try {
        candidates.push_back(rehearsal.twin().get(parameter.name));
    } catch (const Refused&) {
    }
    if (parameter.range) {
        candidates.push_back(parameter.range->minimum);
        candidates.push_back(parameter.range->maximum);
    }
    for (const auto& candidate : candidates) {
        // A setting may be no number and be accepted, but no limit lies on the way from there.
        const auto number = numberOf(candidate);
        if (number && std::isnan(*number)) continue;
        if (rehearsal.accepts({parameter.name, candidate})) return candidate;
    }
    return std::nullopt;
}

std::vector<Cause> causesAgainst(Rehearsal& rehearsal, const Setting& setting) {
    return rehearsal.causesAgainst(setting.parameter, [&] { return rehearsal.accepts(setting); });
}

/// Multiples of the step next to a value that are accepted.
std::vector<std::string> nearestSteps(Rehearsal& rehearsal, const Parameter& parameter, const Value& value) {
    std::vector<std::string> result;
    const long double below = stepBelow(parameter, *numberOf(value));
    for (const long double number : {below, below + *numberOf(parameter.range->increment)}) {
        const auto step = valueLike(value, number);
        if (step && rehearsal.accepts({parameter.name, *step})) result.push_back(textOf(*step));
    }
    return result;
}

/// What is accepted now, each end or entry as the twin takes it: a range as reported can be wider or
/// narrower. `known` is a number that was accepted.
std::string acceptedText(Rehearsal& rehearsal, const Parameter& parameter,
                         const std::optional<Value>& known = {}) {
    Parameter taken = parameter;
    if (parameter.kind == FG_KIND_ENUMERATION) {
        std::erase_if(taken.entries, [&](const Entry& entry) {
            return !rehearsal.accepts({parameter.name, entry.value});
        });
    } else if (parameter.range && parameter.elements == 0) {
        const auto anchor = known ? known : acceptedValue(rehearsal, parameter);
        if (!anchor) return {};
        for (Value* end : {&taken.range->minimum, &taken.range->maximum}) {
            if (!rehearsal.accepts({parameter.name, *end}))
                *end = rehearsal.limitTowards(parameter, *anchor, *end);
            const bool beyond = end == &taken.range->minimum ? *numberOf(*anchor) < *numberOf(*end)
                                                             : *numberOf(*anchor) > *numberOf(*end);
            if (beyond) *end = *anchor;
        }
        if (taken.range->minimum == taken.range->maximum) return "only " + textOf(taken.range->minimum);
    }
    return taken.rangeText();
}

/// The first value beyond a limit, upwards or downwards; nothing at the end of the type.
std::optional<Value> beyond(const Parameter& parameter, const Value& limit, bool upwards) {
    const long double number = *numberOf(limit);
    long double distance = 1;
    if (parameter.kind == FG_KIND_DOUBLE) {
        distance = std::max(std::fabs(number) * 1e-5L, 1e-9L);
    } else if (parameter.hasStep()) {
        distance = *numberOf(parameter.range->increment);
    }
    return valueLike(limit, upwards ? number + distance : number - distance);
}

void explainNumber(Rehearsal& rehearsal, const Parameter& parameter, const Setting& setting,
                   Explanation& result) {
    const auto anchor = acceptedValue(rehearsal, parameter);
    if (!anchor) {
        result.rule = "no value is accepted now";
        return;
    }
    const Value limit = rehearsal.limitTowards(parameter, *anchor, setting.value);
    const bool upwards = *numberOf(setting.value) > *numberOf(limit);
    result.accepted = acceptedText(rehearsal, parameter, limit);
    result.rule = (upwards ? "above " : "below ") + textOf(limit);
    result.nearest.push_back(textOf(limit));
    result.causes = causesAgainst(rehearsal, setting);
    if (!result.causes.empty()) return;
    // No other parameter admits this value; but the limit itself may still have moved.
    const auto next = beyond(parameter, limit, upwards);
    if (!next) return;
    result.causes = causesAgainst(rehearsal, {parameter.name, *next});
    for (auto& cause : result.causes) cause.remedies.clear();
}

/// What is wrong with elements that were refused as out of range: one of them, or the place of the last.
std::string ruleForElements(const Parameter& parameter, const Field& elements) {
    const std::uint32_t maximum = std::get<std::uint32_t>(parameter.range->maximum);
    const auto tooLarge =
        std::find_if(elements.begin(), elements.end(), [=](auto element) { return element > maximum; });
    if (tooLarge != elements.end()) return std::to_string(*tooLarge) + " is above " + std::to_string(maximum);
    return "runs past the last element, which is " + std::to_string(parameter.elements - 1);
}

/// The write that the design refused, when the board still has it in its journal.
std::string refusedWrite(Applet& twin) {
    for (const auto& write : boardOf(twin).takeWrites())
        if (write.result != 0)
            return "the design refused " + write.name + " = " + textOf(write.value) + " (" +
                   std::to_string(write.result) + ")";
    return {};
}

}  // namespace

std::string causesText(const std::vector<Cause>& causes) {
    std::vector<std::string> parts;
    for (const auto& cause : causes) {
        if (parts.size() == kNamedCauses) break;
        parts.push_back(cause.parameter + (cause.parked ? " still holds " : " is ") + cause.value +
                        (cause.parked ? " from another mode" : ""));
    }
    return joined(parts, "and");
}

std::string remedyText(const Cause& cause) {
    if (cause.remedies.empty()) return "no value of " + cause.parameter + " alone makes room for it";
    std::string text = "set " + cause.parameter + " to " + joined(cause.remedies, "or");
    if (cause.direction == Cause::Direction::OrMore) text += " or more";
    if (cause.direction == Cause::Direction::OrLess) text += " or less";
    return text;
}

std::string Explanation::sentence() const {
    std::string text = parameter + " = " + value + " refused (" + std::to_string(code) + "): " + rule;
    if (!causes.empty()) text += ", because " + causesText(causes);
    // The nearest multiples belong to the rule; a limit is named by the rule already.
    if (code == error::wrongStep && !nearest.empty())
        text += (nearest.size() > 1 ? "; nearest are " : "; nearest is ") + joined(nearest, "and");
    return text;
}

std::vector<std::string> Explanation::advice() const {
    std::vector<std::string> lines;
    if (code != error::wrongStep && !nearest.empty())
        lines.push_back("nearest accepted: " + joined(nearest, "and"));
    std::size_t named = 0;
    for (const auto& cause : causes) {
        if (named++ == kNamedCauses) break;
        const std::string start = cause.remedies.empty() ? ""
                                  : named == 1           ? "or first "
                                  : cause.together       ? "and then "
                                                         : "or ";
        lines.push_back(start + remedyText(cause));
    }
    if (!accepted.empty()) lines.push_back("accepted now: " + accepted);
    return lines;
}

Explanation explain(const Applet& state, const Setting& setting, int code) {
    const Parameter parameter = state.parameter(setting.parameter);
    Explanation result{.parameter = parameter.name,
                       .value = parameter.textOf(setting.value),
                       .code = code,
                       .rule = meaningOf(code),
                       .nearest = {},
                       .causes = {},
                       .accepted = {}};
    if (code == error::notAllowed && !parameter.writable) {
        result.rule = "it can only be read";
        return result;
    }
    if (code != error::outOfRange && code != error::wrongStep) {
        Rehearsal rehearsal(state);
        boardOf(rehearsal.twin()).recordWrites(true);
        rehearsal.codeOf(setting);
        const std::string write = refusedWrite(rehearsal.twin());
        if (!write.empty()) result.rule += "; " + write;
        return result;
    }

    if (parameter.kind == FG_KIND_TEXT) return result;
    Rehearsal rehearsal(state);
    const auto* entry = std::get_if<std::int32_t>(&setting.value);
    const bool isEntry =
        entry != nullptr && std::any_of(parameter.entries.begin(), parameter.entries.end(),
                                        [&](const auto& known) { return known.value == *entry; });
    if (const auto* elements = std::get_if<Field>(&setting.value)) {
        result.rule = ruleForElements(parameter, *elements);
    } else if (parameter.kind == FG_KIND_ENUMERATION && !isEntry) {
        result.rule = "not one of the entries";
    } else if (rehearsal.accepts(setting)) {
        result.rule += "; another instance in the same state accepts it, so look at the board";
    } else if (code == error::wrongStep && parameter.hasStep()) {
        result.rule = "not a multiple of " + textOf(parameter.range->increment);
        result.nearest = nearestSteps(rehearsal, parameter, setting.value);
    } else if (parameter.kind == FG_KIND_ENUMERATION) {
        result.causes = causesAgainst(rehearsal, setting);
        result.rule = "not accepted now";
    } else if (std::isnan(*numberOf(setting.value))) {
        result.rule = "not a number";
    } else {
        explainNumber(rehearsal, parameter, setting, result);
        return result;
    }
    result.accepted = acceptedText(rehearsal, parameter);
    return result;
}

std::string Remedy::text() const {
    std::string text;
    for (const auto& [parameter, value] : settings)
        text.append(text.empty() ? "" : ", then ").append(parameter).append(" = ").append(value);
    return text;
}

std::vector<Remedy> remediesFor(const Applet& state, const Setting& setting, const Explanation& why) {
    std::vector<Remedy> candidates;
    for (const auto& value : why.nearest) candidates.push_back({{{why.parameter, value}}});
    for (std::size_t i = 0; i < std::min(why.causes.size(), kNamedCauses); ++i) {
        const Cause& cause = why.causes[i];
        Remedy way;
        if (cause.together && i > 0 && !why.causes[i - 1].remedies.empty())
            way.settings.emplace_back(why.causes[i - 1].parameter, why.causes[i - 1].remedies.front());
        for (const auto& value : cause.remedies) {
            candidates.push_back(way);
            candidates.back().settings.emplace_back(cause.parameter, value);
            candidates.back().settings.emplace_back(why.parameter, textOf(setting.value, true));
        }
    }
    Rehearsal rehearsal(state);
    std::erase_if(candidates, [&](const Remedy& remedy) {
        rehearsal.reset();
        return !std::ranges::all_of(remedy.settings, [&](const auto& step) {
            const Parameter parameter = rehearsal.twin().parameter(step.first);
            return rehearsal.twin().trySet(step.first, parameter.parse(step.second)) == 0;
        });
    });
    return candidates;
}

std::vector<Narrowing> narrowings(const Applet& state, const std::string& name) {
    const Parameter parameter = state.parameter(name);
    const auto widest = widestRange(parameter);
    if (!widest || !parameter.writable || parameter.kind == FG_KIND_UINT32_FIELD) return {};
    Rehearsal rehearsal(state);
    const auto anchor = acceptedValue(rehearsal, parameter);
    if (!anchor) return {};
    std::vector<Narrowing> result;
    for (const bool upper : {false, true}) {
        const Value& end = upper ? widest->second : widest->first;
        if (rehearsal.accepts({name, end})) continue;
        const Value limit = rehearsal.limitTowards(parameter, *anchor, end);
        const auto next = beyond(parameter, limit, upper);
        if (!next) continue;
        auto causes = causesAgainst(rehearsal, {name, *next});
        // An end that no parameter moves is no narrowing: the widest range ends a little further on.
        if (!causes.empty()) result.push_back({upper, textOf(limit), std::move(causes)});
    }
    return result;
}

std::vector<Cause> causesOfReadOnly(const Applet& state, const std::string& name) {
    if (state.parameter(name).writable) return {};
    Rehearsal rehearsal(state);
    return rehearsal.causesAgainst(name, [&] { return rehearsal.twin().parameter(name).writable; });
}

std::vector<std::string> drivenDesignParameters(const Applet& state, const std::string& name) {
    const Parameter parameter = state.parameter(name);
    Rehearsal rehearsal(state);
    Applet& twin = rehearsal.twin();
    Value value = parameter.emptyValue();
    try {
        value = twin.get(name);
    } catch (const Refused&) {
    }
    if (parameter.kind == FG_KIND_TEXT) value = std::string();
    boardOf(twin).recordWrites(true);
    boardOf(twin).takeWrites();
    try {
        twin.set(name, value);
    } catch (const Failure&) {
        // Triggers take one entry only, which is not what they read back as.
        if (parameter.entries.empty()) return {};
        try {
            twin.set(name, parameter.entries.front().value);
        } catch (const Failure&) {
            return {};
        }
    }
    std::vector<std::string> names;
    for (const auto& write : boardOf(twin).takeWrites())
        if (std::find(names.begin(), names.end(), write.name) == names.end()) names.push_back(write.name);
    return names;
}

}  // namespace marovine::host
