#include "client/Influences.h"

#include <algorithm>

#include "client/Rehearsal.h"

namespace marovine::host {

namespace {

/// Values that between them show what a parameter can do.
std::vector<Value> trialsOf(const Parameter& parameter) {
    std::vector<Value> trials;
    for (const auto& entry : parameter.entries) trials.emplace_back(entry.value);
    if (!trials.empty() || !parameter.range || parameter.elements != 0) return trials;
    const auto minimum = numberOf(parameter.range->minimum);
    const auto maximum = numberOf(parameter.range->maximum);
    if (!minimum || !maximum) return trials;
    trials = {parameter.range->minimum, parameter.range->maximum};
    const long double middle = stepBelow(parameter, *minimum + (*maximum - *minimum) / 2);
    if (auto value = valueLike(parameter.emptyValue(), middle)) trials.push_back(std::move(*value));
    return trials;
}

void note(std::vector<Influence>& found, const Change& change) {
    const auto known = std::ranges::find(found, change.parameter, &Influence::on);
    Influence& influence =
        known != found.end() ? *known : found.emplace_back(Influence{.on = change.parameter});
    switch (change.aspect) {
        case Change::Aspect::HeldValue:
            influence.value = true;
            break;
        case Change::Aspect::Access:
            influence.access = true;
            break;
        default:
            influence.range = true;
            break;
    }
}

}  // namespace

std::vector<Influence> influencesOf(const Applet& state, const std::string& name) {
    std::vector<Influence> found;
    if (isReadOut(name)) return found;
    Rehearsal rehearsal(state);
    const Snapshot before(rehearsal.twin());
    for (const Value& value : trialsOf(state.parameter(name))) {
        rehearsal.reset();
        if (rehearsal.twin().trySet(name, value) != 0) continue;
        for (const Change& change : changesBetween(before, Snapshot(rehearsal.twin())))
            if (change.parameter != name) note(found, change);
    }
    const auto& names = state.names();
    std::ranges::sort(found, {},
                      [&](const Influence& influence) { return std::ranges::find(names, influence.on); });
    return found;
}

namespace {

std::vector<Applet::Standing> standingsOf(Applet& applet) {
    std::vector<Applet::Standing> all;
    all.reserve(applet.names().size());
    for (const auto& name : applet.names()) all.push_back(applet.standing(name));
    return all;
}

/// The first, the last and the middle of the values to try.
std::vector<Value> fewOf(const std::vector<Value>& trials) {
    if (trials.size() <= 4) return trials;
    return {trials.front(), trials[trials.size() / 2], trials.back()};
}

}  // namespace

std::map<std::string, std::vector<std::string>> moversOfAll(const Applet& state) {
    std::map<std::string, std::vector<std::string>> movers;
    auto twin = state.twin();
    const auto base = standingsOf(*twin);
    const auto& names = state.names();
    for (std::size_t mover = 0; mover < names.size(); ++mover) {
        if (isReadOut(names[mover]) || !base[mover].value) continue;
        bool tried = false;
        for (const Value& value : fewOf(trialsOf(state.parameter(names[mover])))) {
            if (twin->trySet(names[mover], value) != 0) continue;
            tried = true;
            const auto now = standingsOf(*twin);
            for (std::size_t i = 0; i < names.size(); ++i) {
                auto& known = movers[names[i]];
                const bool isNew = known.empty() || known.back() != names[mover];
                if (i != mover && isNew && now[i] != base[i]) known.push_back(names[mover]);
            }
        }
        if (!tried) continue;
        // What does not go back as it came needs another instance.
        if (twin->trySet(names[mover], *base[mover].value) != 0 || standingsOf(*twin) != base)
            twin = state.twin();
    }
    return movers;
}

}  // namespace marovine::host
