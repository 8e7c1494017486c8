#include "board/lines/ShaftEncoder.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace virtualboard {

namespace {

constexpr std::array<double, 4> kPhases[] = {{0}, {0}, {0, 0.25}, {0, 0.25, 0.5, 0.75}};
constexpr int kStepsPerPitch[] = {1, 1, 2, 4};

}  // namespace

// ---- the tracks ----

bool EncoderTrack::present(double pulse) const {
    return encoder_.missing <= 0 || random_.share(placeOf(pulse)) >= encoder_.missing;
}

double EncoderTrack::edge(double pulse, bool end) const {
    using imaging::Randomness;
    double place = pulse + phase_ + (end ? 0.5 : 0);
    if (encoder_.jitter > 0) {
        const Randomness edges = random_.stream((end ? 1 : 0) + (phase_ != 0 ? 2 : 0));
        const double off = encoder_.jitter / Randomness::kBell * Randomness::bell(edges.at(placeOf(pulse)));
        place += std::clamp(off, -0.12, 0.12);  // edges stay in their order
    }
    return place * pitch_;
}

bool EncoderTrack::level(double position) const {
    const double near = std::floor(position / pitch_ - phase_);
    for (double pulse = near - 1; pulse <= near + 1; ++pulse)
        if (position >= edge(pulse, false) && position < edge(pulse, true)) return present(pulse);
    return false;
}

double EncoderTrack::edgeAbove(double position) const {
    double pulse = std::floor(position / pitch_ - phase_) - 1;
    for (int left = 1000; left > 0; --left, ++pulse) {
        if (!present(pulse)) continue;
        for (const bool end : {false, true})
            if (edge(pulse, end) > position) return edge(pulse, end);
    }
    return edge(pulse, false);  // nothing for so long: look again from there
}

double EncoderTrack::edgeBelow(double position) const {
    double pulse = std::floor(position / pitch_ - phase_) + 1;
    for (int left = 1000; left > 0; --left, --pulse) {
        if (!present(pulse)) continue;
        for (const bool end : {true, false})
            if (edge(pulse, end) <= position) return edge(pulse, end);
    }
    return edge(pulse, true);
}

// ---- the line trigger ----

void LineTrigger::start(const imaging::LineSettings& settings, Wiring wiring, BoardTime now) {
    now_ = now;
    a_.start(wiring.a, lineDebounce(settings), now);
    b_.start(wiring.b, lineDebounce(settings), now);
    configure(settings, std::move(wiring), now);
}

void LineTrigger::configure(const imaging::LineSettings& settings, Wiring wiring, BoardTime now) {
    now_ = now;
    settings_ = settings;
    const BoardTime debounce = lineDebounce(settings);
    const bool wasStraight = wiring_.straightFromEncoder;
    wiring_ = std::move(wiring);
    filter_ = static_cast<Filter>(std::min(settings.encoderMode, 3u));
    compensation_.configure(settings.encoderCompensation != 0);
    stretchFrom_ = kNoStretch;
    pendingA_.reset();
    pendingB_.reset();
    const auto follow = [&](DebouncedInput& input, const std::shared_ptr<const InputLevel>& level) {
        if (level == input.level() && debounce == input.debounce() && !wasStraight) return;
        if (wasStraight) {
            input.start(level, debounce, now);
        } else {
            input.change(level, debounce);
        }
    };
    if (wiring_.straightFromEncoder) return;
    follow(a_, wiring_.a);
    follow(b_, wiring_.b);
    levelA_ = a_.high();
    levelB_ = b_.high();
}

LineTrigger::Step LineTrigger::advance(BoardTime until) {
    const Step step = wiring_.straightFromEncoder ? followBelt(until)
                      : filter_ == Filter::None   ? followInputA(until)
                                                  : followTracks(until);
    now_ = step.through;
    return step;
}

double LineTrigger::pixels(double millimetres) const {
    return millimetres / wiring_.travel->belt().objectPixel;
}

/// Where a step lies, in mm.
double LineTrigger::placeOf(std::int64_t step) const {
    const int steps = kStepsPerPitch[static_cast<int>(filter_)];
    const std::int64_t pitch = step >= 0 ? step / steps : -((-step + steps - 1) / steps);
    double phase = kPhases[static_cast<int>(filter_)][static_cast<std::size_t>(step - pitch * steps)];
    if (settings_.linePolarity != 0) phase += 0.5;
    // Seen from the other side it is the other edge of track A that rises.
    if (filter_ == Filter::None && direction_ < 0) phase += 0.5;
    return (static_cast<double>(pitch) + phase) * wiring_.travel->belt().encoderPitch;
}

void LineTrigger::enter(const BeltTravel::Stretch& stretch) {
    const bool turned = filter_ == Filter::None && stretch.direction() != direction_;
    const bool anew = stretchFrom_ == kNoStretch || turned;
    stretchFrom_ = stretch.from;
    direction_ = stretch.direction();
    if (anew) {
        // The first step above the belt's position; one that lies at it is over.
        const double position = stretch.positionAt(std::max(stretch.from, now_ - lineDebounce(settings_)));
        const double pitch = wiring_.travel->belt().encoderPitch;
        const int steps = kStepsPerPitch[static_cast<int>(filter_)];
        next_ = static_cast<std::int64_t>(std::floor(position / pitch) - 1) * steps;
        while (placeOf(next_) <= position) ++next_;
    }
    if (stretch.steady() && direction_ != 0) steps_ = stepsOf(stretch, upcoming());
}

/// The steps of a stretch of even speed, counted in its direction from the step `from` on.
Pulses LineTrigger::stepsOf(const BeltTravel::Stretch& stretch, std::int64_t from) const {
    const double speed = std::abs(stretch.speed), pitch = wiring_.travel->belt().encoderPitch;
    const int steps = kStepsPerPitch[static_cast<int>(filter_)];
    // Times of a millionth of a nanosecond: a pitch that takes whole nanoseconds does so for ever.
    const double perPitch = std::round(pitch / speed * 1e15) / 1e6;
    const double way = pixels(pitch) * direction_;
    Pulses pulses{.time = {.step = perPitch / steps}, .end = Pulses::kEndless, .way = {.step = way / steps}};
    if (filter_ == Filter::X2) {
        // Two tracks a quarter of a pitch apart; backwards the long way comes first.
        const bool shortFirst = (from % 2 == 0) == (direction_ > 0);
        pulses.time = {.step = perPitch / 4, .groupStep = perPitch, .group = 2};
        pulses.way = {.step = way / 4, .groupStep = way, .group = 2};
        if (!shortFirst) pulses.begin = 1;
    }
    const std::int64_t first = from - direction_ * static_cast<std::int64_t>(pulses.begin);
    const double since = (placeOf(first) - stretch.position) / stretch.speed;
    pulses.origin = stretch.from + static_cast<BoardTime>(std::llround(since * 1e9));
    pulses.place = pixels(placeOf(first));
    return pulses;
}

LineTrigger::Step LineTrigger::followBelt(BoardTime until) {
    const BoardTime debounce = lineDebounce(settings_);
    const BoardTime from = now_ - debounce;
    const BeltTravel::Stretch stretch = wiring_.travel->at(from);
    if (stretch.from != stretchFrom_) enter(stretch);
    const BoardTime end = std::min(until - debounce, stretch.until);
    Step step{.through = end + debounce};
    if (direction_ == 0) return step;
    Pulses passed;
    if (stretch.steady()) {
        passed = steps_;
        passed.end = steps_.begin = steps_.after(end);
    } else if (const BoardTime at = stretch.reaches(placeOf(upcoming()), from);
               at <= end && at < stretch.until) {
        passed = Pulses::one(at, pixels(placeOf(upcoming())));
        step.through = at + debounce;
    }
    if (passed.empty()) return step;
    next_ += direction_ * static_cast<std::int64_t>(passed.count());
    const bool backwards = (direction_ > 0) == (settings_.encoderLead != 0);
    if (filter_ != Filter::None && backwards) {
        compensation_.backward(passed.count());
        return step;
    }
    if (filter_ != Filter::None) passed.begin += compensation_.forward(passed.count());
    step.pulses = passed.delayed(debounce);
    return step;
}

/// A single pulse, at the place where the belt was when its edge came to the filter.
Pulses LineTrigger::single(BoardTime at) const {
    const double place = pixels(wiring_.travel->position(at - lineDebounce(settings_)));
    // A time in whole nanoseconds blurs the place by millionths of a pixel; that must not look like a row.
    return Pulses::one(at, std::ldexp(std::round(std::ldexp(place, 14)), -14));
}

LineTrigger::Step LineTrigger::followInputA(BoardTime until) {
    const bool falling = settings_.linePolarity != 0;
    // The belt goes its way meanwhile; where its speed changes each pulse has a place of its own.
    const BoardTime debounce = lineDebounce(settings_);
    const BeltTravel::Stretch stretch = wiring_.travel->at(now_ - debounce);
    const BoardTime end = std::min(until, stretch.until + debounce);
    const DebouncedInput::Step input = a_.advance(end, stretch.steady());
    Step step{.through = input.through};
    if (input.kind == DebouncedInput::Step::Kind::Train) {
        step.pulses = falling ? input.rising.delayed(input.width) : input.rising;
    } else if (input.kind == DebouncedInput::Step::Kind::Change && input.high != falling) {
        step.pulses = stretch.steady() && !input.rising.empty() ? input.rising : Pulses::one(input.through);
    }
    if (step.pulses.empty()) return step;
    if (step.pulses.time.step == 0) {
        step.pulses = single(step.through);
    } else {
        const std::uint64_t first = step.pulses.begin;
        step.pulses.way = {.step = pixels(stretch.speed * step.pulses.time.step / 1e9)};
        step.pulses.place = pixels(stretch.positionAt(step.pulses.first() - debounce)) -
                            static_cast<double>(step.pulses.way.at(first));
    }
    return step;
}

LineTrigger::Step LineTrigger::followTracks(BoardTime until) {
    using Kind = DebouncedInput::Step::Kind;
    const auto look = [&](DebouncedInput& input, std::optional<DebouncedInput::Step>& pending) {
        if (!pending) pending = input.advance(until, false);
        return pending->through;
    };
    const BoardTime a = look(a_, pendingA_), b = look(b_, pendingB_);
    const bool first = a <= b;
    auto& pending = first ? pendingA_ : pendingB_;
    const DebouncedInput::Step input = *pending;
    pending.reset();
    Step step{.through = std::max(now_, input.through)};
    if (input.kind != Kind::Change) return step;
    const bool inverted = settings_.linePolarity != 0;
    (first ? levelA_ : levelB_) = input.high;
    const bool other = (first ? levelB_ : levelA_) != inverted, rises = input.high != inverted;
    // Forwards A rises while B is low and falls while it is high; B the other way round.
    const bool forwards = (first ? rises != other : rises == other) != (settings_.encoderLead != 0);
    const int place = first ? (other ? 2 : 0) : (other ? 1 : 3);  // quarters of a pitch
    const bool counts = filter_ == Filter::X4 || place == 0 || (filter_ == Filter::X2 && place == 1);
    if (!counts) return step;
    if (!forwards) {
        compensation_.backward(1);
    } else if (compensation_.forward(1) == 0) {
        step.pulses = single(step.through);
    }
    return step;
}

std::optional<BoardTime> LineTrigger::notBefore() const {
    if (wiring_.straightFromEncoder) {
        const BoardTime from = now_ - lineDebounce(settings_);
        const BeltTravel::Stretch stretch = wiring_.travel->at(from);
        if (stretch.from != stretchFrom_) return now_ + 1;
        BoardTime next = stretch.until;
        if (direction_ != 0)
            next = std::min(next,
                            stretch.steady() ? steps_.first() : stretch.reaches(placeOf(upcoming()), from));
        return next < BoardClock::kLatest ? std::optional(next + lineDebounce(settings_)) : std::nullopt;
    }
    const auto a = a_.notBefore();
    if (filter_ == Filter::None) return a;
    const auto b = b_.notBefore();
    return a && b ? std::min(a, b) : a ? a : b;
}

}  // namespace virtualboard
