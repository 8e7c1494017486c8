#include "client/Rehearsal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace marovine::host {

namespace {

/// How far short of a limit a rounded value may stay, relative to the limit.
constexpr long double kRounding = 1e-6L;
/// Halvings that lead from the largest double to the smallest.
constexpr int kHalvings = 2200;
constexpr int kMostDigits = 17;

bool isWhole(const Parameter& parameter) {
    return parameter.kind != FG_KIND_DOUBLE;
}

/// A number rounded to some significant digits.
double roundedTo(double number, int digits) {
    std::array<char, 64> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                            std::chars_format::scientific, digits - 1);
    double result = number;
    if (error == std::errc{}) std::from_chars(buffer.data(), end, result);
    return result;
}

/// Halves the way between an accepted and a refused number until nothing lies between them.
template <class Accepts>
long double lastAccepted(long double good, long double bad, long double step, const Accepts& accepts) {
    for (int i = 0; i < kHalvings; ++i) {
        long double middle = good + (bad - good) / 2;
        if (step > 0) {
            middle = good + std::trunc((bad - good) / 2 / step) * step;
            // One step is left: it has not been tried when `bad` is no multiple.
            if (middle == good) middle = bad > good ? good + step : good - step;
            if (bad > good ? middle >= bad : middle <= bad) return good;
        } else if (std::fabs(bad - good) <= std::fabs(good) * 1e-12L + 1e-15L) {
            return good;
        }
        (accepts(middle) ? good : bad) = middle;
    }
    return good;
}

/// A number of few digits next to `number` that is accepted as well; `number` itself if there is none.
template <class Accepts>
long double shortened(long double number, const Accepts& accepts) {
    for (int digits = 1; digits < kMostDigits; ++digits) {
        const double rounded = roundedTo(static_cast<double>(number), digits);
        if (std::fabs(rounded - number) <= std::fabs(number) * kRounding && accepts(rounded)) return rounded;
    }
    return number;
}

/// The distance of neighbouring values: 1 for whole numbers without step, 0 for doubles, which may take any
/// value whatever step they state.
long double stepOf(const Parameter& parameter) {
    if (!isWhole(parameter)) return 0;
    return parameter.hasStep() ? *numberOf(parameter.range->increment) : 1;
}

}  // namespace

long double stepBelow(const Parameter& parameter, long double number) {
    if (!parameter.hasStep()) return number;
    const long double step = *numberOf(parameter.range->increment);
    const long double minimum = *numberOf(parameter.range->minimum);
    // Steps count from 0 where the minimum is a multiple itself, else from the minimum.
    const long double origin = std::fmod(minimum, step) == 0 ? 0 : minimum;
    return origin + std::floor((number - origin) / step) * step;
}

Rehearsal::Rehearsal(const Applet& original) : original_(original), twin_(original.twin()) {}

bool Rehearsal::set(const Setting& setting) {
    try {
        return twin_->trySet(setting.parameter, setting.value) == 0;
    } catch (const Failure&) {
        return false;
    }
}

int Rehearsal::codeOf(const Setting& setting) {
    std::optional<Value> before;
    try {
        before = twin_->get(setting.parameter);
    } catch (const Refused&) {
        // Without a value to go back to, a new twin is the only way back.
    }
    if (const int code = twin_->trySet(setting.parameter, setting.value)) return code;
    if (!before || !set({setting.parameter, *before})) reset();
    return 0;
}

Value Rehearsal::limitTowards(const Parameter& parameter, const Value& accepted, const Value& refused) {
    const Value own = parameter.emptyValue();
    const auto acceptsNumber = [&](long double number) {
        const auto value = valueLike(own, number);
        return value && accepts({parameter.name, *value});
    };
    const long double good = *numberOf(accepted);
    const auto largest = static_cast<long double>(std::numeric_limits<double>::max());
    const long double bad = std::clamp(*numberOf(refused), -largest, largest);
    const long double limit = lastAccepted(good, bad, stepOf(parameter), acceptsNumber);
    if (isWhole(parameter)) return *valueLike(own, limit);
    if (parameter.range) {
        const Value& end = bad > good ? parameter.range->maximum : parameter.range->minimum;
        if (std::fabs(*numberOf(end) - limit) <= std::fabs(limit) * kRounding &&
            accepts({parameter.name, end}))
            return end;
    }
    return *valueLike(own, shortened(limit, acceptsNumber));
}

bool Rehearsal::trueAfter(const Setting& setting, const std::function<bool()>& condition) {
    return set(setting) && condition();
}

std::vector<Cause> Rehearsal::causesAgainst(const std::string& parameter,
                                            const std::function<bool()>& condition) {
    takeBase();
    std::vector<Cause> causes = parkedCauses(parameter, condition);
    const std::size_t parked = causes.size();
    for (const auto& other : base_->states()) {
        const std::string& name = other.parameter.name;
        const bool named = std::any_of(causes.begin(), causes.begin() + static_cast<std::ptrdiff_t>(parked),
                                       [&](const Cause& cause) { return cause.parameter == name; });
        if (name == parameter || !other.value || named) continue;
        const bool holdsOther = parkedIn(name).has_value();
        if (auto cause = causeIn(other, condition)) causes.push_back(std::move(*cause));
        if (holdsOther) {
            reset();
        } else {
            set({name, *other.value});
            restore();
        }
    }
    return causes.empty() ? jointCauses(parameter, condition) : causes;
}

std::vector<Cause> Rehearsal::jointCauses(const std::string& parameter,
                                          const std::function<bool()>& condition) {
    for (const auto& name : original_.names()) {
        const auto held = name == parameter ? std::nullopt : parkedIn(name);
        if (!held) continue;
        const Parameter first = original_.parameter(name);
        const Value reads = twin_->get(name);
        Cause released{.parameter = name,
                       .value = first.textOf(*held),
                       .remedies = {first.textOf(reads)},
                       .parked = true};
        for (const auto& other : base_->states()) {
            const auto& [second, value] = other;
            if (second.group != first.group || second.name == name || second.name == parameter || !value)
                continue;
            std::optional<Cause> cause;
            if (set({name, reads})) cause = causeIn(other, condition);
            reset();
            if (!cause) continue;
            cause->together = true;
            return {std::move(released), std::move(*cause)};
        }
    }
    return {};
}

std::optional<Value> Rehearsal::parkedIn(const std::string& name) {
    auto held = original_.lastSet(name);
    if (!held || !numberOf(*held)) return std::nullopt;
    const auto reads = twin_->standing(name).value;
    if (!reads || *reads == *held) return std::nullopt;
    return held;
}

std::vector<Cause> Rehearsal::parkedCauses(const std::string& parameter,
                                           const std::function<bool()>& condition) {
    std::vector<Cause> causes;
    for (const auto& name : original_.names()) {
        const auto held = name == parameter ? std::nullopt : parkedIn(name);
        if (!held) continue;
        const Value reads = twin_->get(name);
        const Parameter other = original_.parameter(name);
        Cause cause{.parameter = name, .value = other.textOf(*held), .remedies = {}, .parked = true};
        if (trueAfter({name, reads}, condition)) {
            if (other.range)
                refine(other, *held, *numberOf(reads), condition, cause);
            else
                cause.remedies.push_back(other.textOf(reads));
            causes.push_back(std::move(cause));
        }
        reset();  // what it held cannot be seen, so it cannot be put back
    }
    return causes;
}

std::optional<Cause> Rehearsal::causeIn(const ParameterState& other, const std::function<bool()>& condition) {
    const Parameter& parameter = other.parameter;
    const Value& now = *other.value;
    Cause cause{.parameter = parameter.name, .value = parameter.textOf(now), .remedies = {}};
    if (parameter.kind == FG_KIND_ENUMERATION) {
        for (const auto& entry : parameter.entries)
            if (Value(entry.value) != now && trueAfter({parameter.name, entry.value}, condition))
                cause.remedies.push_back(entry.constantName);
    } else if (parameter.range) {
        const auto takes = [&](long double number) {
            const auto value = valueLike(now, number);
            return value && set({parameter.name, *value});
        };
        for (const Value& end : {parameter.range->minimum, parameter.range->maximum}) {
            if (end == now) continue;
            // The reported range may be wider than what is accepted.
            long double far = *numberOf(end);
            if (!takes(far)) far = lastAccepted(*numberOf(now), far, stepOf(parameter), takes);
            const auto value = valueLike(now, far);
            if (!value || *value == now || !trueAfter({parameter.name, *value}, condition)) continue;
            refine(parameter, now, far, condition, cause);
            break;
        }
    }
    if (cause.remedies.empty()) return std::nullopt;
    return cause;
}

void Rehearsal::refine(const Parameter& parameter, const Value& held, long double good,
                       const std::function<bool()>& condition, Cause& cause) {
    const auto holdsFor = [&](long double number) {
        const auto value = valueLike(held, number);
        return value && trueAfter({parameter.name, *value}, condition);
    };
    const long double now = *numberOf(held);
    long double nearest = lastAccepted(good, now, stepOf(parameter), holdsFor);
    if (!isWhole(parameter) && nearest != good) nearest = shortened(nearest, holdsFor);
    cause.remedies.push_back(textOf(*valueLike(held, nearest)));
    if (nearest != good) cause.direction = good > now ? Cause::Direction::OrMore : Cause::Direction::OrLess;
}

void Rehearsal::takeBase() {
    if (base_) return;
    base_.emplace(*twin_, Snapshot::Scope::Settings);
    for (const auto& state : base_->states()) standings_.push_back(twin_->standing(state.parameter.name));
}

void Rehearsal::restore() {
    for (std::size_t i = 0; i < standings_.size(); ++i)
        if (twin_->standing(base_->states()[i].parameter.name) != standings_[i]) return reset();
}

}  // namespace marovine::host
