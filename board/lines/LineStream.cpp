#include "board/lines/LineStream.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace virtualboard {

namespace {

/// Steps that one call takes at most.
constexpr int kSteps = 20'000;

std::optional<BoardTime> earlier(std::optional<BoardTime> a, std::optional<BoardTime> b) {
    return a && b ? std::min(a, b) : a ? a : b;
}

/// Leaves out the pulses that come while the one before still lasts, `gap` long.
Pulses thinned(const Pulses& in, BoardTime gap, BoardTime& busyUntil, std::uint64_t& missed) {
    const std::uint64_t first = in.after(busyUntil - 1);
    missed += first - in.begin;
    if (first >= in.end) return {};
    Pulses rest = in;
    rest.begin = first;
    const auto room = static_cast<double>(gap);
    if (rest.count() > 1 && rest.shortestGap() < room) {
        const auto stride = static_cast<std::uint64_t>(std::ceil(room / rest.time.step));
        rest = rest.every(stride, first);
        missed += in.end - first - rest.count();
    }
    busyUntil = rest.last() + gap;
    return rest;
}

}  // namespace

// ---- time ----

bool LineStream::advance(BoardTime until) {
    int left = kSteps;
    while (now_ < until && left-- > 0) step(until);
    followInputs();
    return now_ >= until;
}

void LineStream::step(BoardTime until) {
    BoardTime horizon = until;
    if (imageFromInput()) {
        if (!imageChange_ && imageSeen_ <= now_) {
            const DebouncedInput::Step seen = image_.advance(until, false);
            imageSeen_ = seen.through;
            if (seen.kind == DebouncedInput::Step::Kind::Change) imageChange_ = seen;
        }
        horizon = std::min(horizon, imageChange_ ? imageChange_->through : imageSeen_);
    }
    take(std::max(horizon, now_));
    flush();
    if (imageChange_ && now_ >= imageChange_->through) {
        const bool high = imageChange_->high;
        imageChange_.reset();
        setImageActive(high != (settings_.imagePolarity != 0));
    }
}

/// The first pulse of a frame comes a clock cycle after it begins, or as the downscaler's phase says.
void LineStream::restart() {
    open_ = true;
    skip_ = std::max(settings_.linePhase, 1u) - 1;
    if (runsItself()) generator_.origin = now_ + kClockCycle;
}

/// Takes what the line trigger brings up to a time, or the first part of it.
void LineStream::take(BoardTime horizon) {
    std::uint64_t room = Pulses::kEndless;
    if (gated()) {
        const std::uint64_t left = frames_.linesLeft(started());
        if (left == 0) open_ = false;
        if (left > 0 && !open_) restart();
        room = left - std::min(left, underWay_);
    }
    const BoardTime from = now_;
    if (directInput_) horizon = fetchDirect(horizon);
    if (triggers_.empty() && fetched_ <= now_) fetch(horizon);
    Pulses in = triggers_;
    if (settings_.exsyncEnable == 0 || room == 0) in.end = in.begin;
    const std::uint64_t most = atOnce(in, room);
    if (!in.empty() && in.count() > most) {
        in.end = triggers_.begin = in.begin + most;
        now_ = std::max(now_, in.last());
    } else {
        triggers_ = {};
        now_ = std::max(now_, fetched_);
    }
    if (external() && !in.empty()) in = downscaled(in);
    exsync(in);
    if (freeGenerator()) start(freeLines_.between(from, now_));
    coming_.take(now_, [&](const Pulses& triggers) {
        underWay_ -= std::min(underWay_, triggers.count());
        lines(triggers);
    });
    // A frame that is full closes the gate, also when the next one begins at once.
    if (gated() && frames_.linesLeft(started()) == 0) open_ = false;
}

/// How many triggers can be taken by one rule, so that no more lines start than a frame takes.
std::uint64_t LineStream::atOnce(const Pulses& in, std::uint64_t room) const {
    const std::uint64_t factor = external() ? std::max(settings_.lineDownscaler, 1u) : 1;
    const auto shortest = static_cast<double>(std::max({exposure_, readout_, generatorLineWait()}));
    const bool even =
        in.time.group == 1 || (in.divides(factor) && (factor > 1 || in.shortestGap() >= shortest));
    std::uint64_t most = even || in.count() < 2 ? Pulses::kEndless : 1;
    if (room < Pulses::kEndless) most = std::min(most, (external() ? skip_ : 0) + (room - 1) * factor + 1);
    if (settings_.generatorEnable != 0) {
        // Where edges start lines a frame's gap must be seen; where lines come by themselves its end.
        const std::uint64_t frame = std::max(settings_.generatorFrameLines, settings_.generatorActiveLines);
        if (settings_.generatorFreeRun == 0 && settings_.generatorValve == 1)
            most = std::min(most, std::max<std::uint64_t>(1, frame - generatorLine_));
        if (gated()) most = 1;
    }
    return most;
}

void LineStream::fetch(BoardTime horizon) {
    triggers_ = {};
    fetched_ = horizon;
    if (external()) {
        const LineTrigger::Step step = trigger_.advance(horizon);
        fetched_ = step.through;
        triggers_ = step.pulses;
        return;
    }
    if (!runsItself() || (gated() && !open_)) return;
    // Where the belt's speed changes every line has a place of its own.
    const BeltTravel::Stretch stretch = travel_->at(now_);
    fetched_ = std::min(horizon, stretch.until);
    triggers_ = generator_.between(now_, fetched_);
    if (triggers_.empty()) return;
    if (!stretch.steady()) {
        triggers_.end = triggers_.begin + 1;
        fetched_ = triggers_.first();
    }
    triggers_.way.step = stretch.steady() ? pixels(stretch.speed * static_cast<double>(period_) / 1e9) : 0;
    triggers_.place = pixels(stretch.positionAt(triggers_.first())) -
                      static_cast<double>(triggers_.way.at(triggers_.begin));
}

/// Takes the edges that reach the camera without the line trigger; returns up to where.
BoardTime LineStream::fetchDirect(BoardTime horizon) {
    if (directSeen_ <= now_) {
        const LineTrigger::Step step = direct_.advance(horizon);
        directSeen_ = step.through;
        underWay_ += step.pulses.count();
        coming_.push(step.pulses);
    }
    return std::min(horizon, directSeen_);
}

Pulses LineStream::downscaled(const Pulses& in) {
    const std::uint64_t factor = std::max(settings_.lineDownscaler, 1u), count = in.count();
    if (skip_ >= count) {
        skip_ -= count;
        return {};
    }
    const std::uint64_t first = in.begin + skip_;
    const Pulses passed = in.every(factor, first);
    skip_ = passed.count() * factor - (in.end - first);
    return passed;
}

// ---- from the pulses to the lines ----

void LineStream::exsync(Pulses pulses) {
    std::uint64_t ignored = 0;
    BoardTime width = exposure_;
    if (external()) {
        pulses = thinned(pulses, exposure_, exsyncBusy_, ignored);
    } else {
        width = std::min(exposure_, std::max(period_ - kClockCycle, kClockCycle));
    }
    if (pulses.empty()) return;
    lastExsync_ = pulses.last();
    const bool inverted = settings_.exsyncPolarity != 0;
    output(exsyncOut_, pulses, width, inverted);
    output(exsync2Out_, pulses.delayed(delay_), width, inverted);
    if (settings_.generatorEnable != 0) {
        if (settings_.generatorFreeRun == 0 && lineTime_ > 0) generatorLines(pulses);
    } else if (cameraOnExsync()) {
        // The camera begins a line when its trigger input goes up.
        BoardTime later = settings_.cc1Select == kExsync2 ? delay_ : 0;
        if (inverted != (settings_.cc1Invert != 0)) later += width;
        underWay_ += pulses.count();
        coming_.push(pulses.delayed(later));
    }
}

void LineStream::output(Output& output, const Pulses& pulses, BoardTime width, bool inverted) {
    output.up.push(inverted ? pulses.delayed(width) : pulses);
    output.down.push(inverted ? pulses : pulses.delayed(width));
}

/// Lines or frames of the pattern generator whose valve waits for edges.
void LineStream::generatorLines(const Pulses& edges) {
    const std::uint64_t active = std::max(settings_.generatorActiveLines, 1u);
    const std::uint64_t frame = std::max<std::uint64_t>(settings_.generatorFrameLines, active);
    std::uint64_t ignored = 0;
    const Pulses begun = thinned(edges, generatorLineWait(), generatorBusy_, ignored);
    if (begun.empty()) return;
    Pulses lines = begun;
    if (settings_.generatorValve == 1) {
        lines.end = lines.begin + std::min(begun.count(), active - std::min(active, generatorLine_));
        generatorLine_ = (generatorLine_ + begun.count()) % frame;
    } else {
        const Rhythm rhythm{
            .step = static_cast<double>(lineTime_), .groupStep = begun.time.step, .group = active};
        lines = {.origin = begun.origin,
                 .time = rhythm,
                 .begin = begun.begin * active,
                 .end = begun.end * active,
                 .place = 0,
                 .way = {.group = active}};
    }
    underWay_ += lines.count();
    coming_.push(lines);
}

/// ns for which the generator hears no further edge.
BoardTime LineStream::generatorLineWait() const {
    if (settings_.generatorEnable == 0 || settings_.generatorFreeRun != 0) return 0;
    const std::uint64_t frame = std::max({settings_.generatorFrameLines, settings_.generatorActiveLines, 1u});
    return settings_.generatorValve == 1 ? lineTime_ : lineTime_ * static_cast<BoardTime>(frame);
}

void LineStream::lines(const Pulses& triggers) {
    if (settings_.generatorEnable != 0) {
        start(triggers);
    } else {
        start(thinned(triggers, readout_, cameraBusy_, lost_));
    }
}

double LineStream::linePeriod(const Pulses& starts) const {
    if (!external() && !directInput_) return settings_.exsyncPeriod;
    if (starts.time.step > 0) return starts.time.step / 1000;
    return static_cast<double>(starts.first() - lastStart_) / 1000;
}

/// µs that the camera is exposed for a line.
double LineStream::exposureOf(const Pulses& starts) const {
    const double period = linePeriod(starts);
    if (!directInput_) return imaging::exposureTime(settings_, period);
    // The input's own pulse, as far as it is known.
    const BoardTime begin = starts.first();
    const auto end = levelOf(*directInput_)->nextChange(begin, begin + std::llround(period * 1000));
    return end ? std::min(period, static_cast<double>(*end - begin) / 1000) : period;
}

void LineStream::start(const Pulses& starts) {
    if (starts.empty()) return;
    const std::uint64_t first = started();
    const BoardTime begin = starts.first();
    const double exposure = exposureOf(starts);
    const double speed = travel_->at(begin).speedAt(begin);
    log_.append({.starts = starts,
                 .readout = readout_,
                 .exposure = exposure,
                 .way = imaging::Motion::stepOf(pixels(speed * exposure * 1e-6))});
    lastStart_ = starts.last();
    const Pulses ends = starts.delayed(readout_);
    ends_.push(ends);
    output(lineValid_, starts, readout_, false);
    output(lineStart_, starts, kClockCycle, false);
    output(lineEnd_, ends, kClockCycle, false);
    // Frame valid: from the first line of the source's frame to the end of its last one.
    const std::uint64_t length = linesPerFrame_, place = (first - frameOrigin_) % length;
    const auto every = [&](std::uint64_t from, DelayLine& edge, BoardTime later) {
        if (starts.begin + from >= starts.end) return;
        Pulses lines = starts;
        if (lines.count() <= from + length) {
            lines.begin += from;
            lines.end = lines.begin + 1;
        } else if (lines.divides(length)) {
            lines = lines.every(length, lines.begin + from);
        } else {
            return;
        }
        edge.push(lines.delayed(later));
    };
    if (first >= frameOrigin_) {
        every((length - place) % length, frameValid_.up, 0);
        every(length - 1 - place, frameValid_.down, readout_);
    }
}

/// Tells the listener of all edges that have come by now.
void LineStream::flush() {
    ends_.take(now_, [&](const Pulses& ends) { completed_ += ends.count(); });
    for (Output* output : {&exsyncOut_, &exsync2Out_, &lineValid_, &frameValid_, &lineStart_, &lineEnd_}) {
        for (const bool up : {true, false}) {
            (up ? output->up : output->down).take(now_, [&](const Pulses& pulses) {
                listener_.edges(output->signal, up, pulses);
            });
        }
    }
}

void LineStream::followInputs() {
    using Kind = DebouncedInput::Step::Kind;
    for (unsigned i = 0; i < kInputs; ++i) {
        if (!watched_[i]) continue;
        for (int left = kSteps; left > 0; --left) {
            const DebouncedInput::Step step = watched_[i]->advance(now_, true);
            if (step.kind == Kind::Train) {
                listener_.edges(kFirstInput + i, true, step.rising);
                listener_.edges(kFirstInput + i, false, step.rising.delayed(step.width));
            } else if (step.kind == Kind::Change) {
                const bool ruled = step.high && !step.rising.empty();
                listener_.edges(kFirstInput + i, step.high, ruled ? step.rising : Pulses::one(step.through));
            } else if (step.through >= now_) {
                break;
            }
        }
    }
}

// ---- what is to come ----

std::optional<BoardTime> LineStream::imageTriggerNotBefore() const {
    if (!imageFromInput()) return std::nullopt;
    if (imageChange_) return imageChange_->through;
    const auto next = image_.notBefore();
    return next ? std::optional(std::max(*next, now_ + 1)) : std::nullopt;
}

std::optional<BoardTime> LineStream::completeNotBefore(std::uint64_t line) const {
    if (const LineRun* run = log_.find(line)) return run->startOf(line) + run->readout;
    if (line < started()) return now_;
    std::uint64_t missing = line - started();  // lines before this one
    if (freeGenerator()) {
        const std::uint64_t next = freeLines_.after(now_);
        return freeLines_.at(next + missing) + readout_;
    }
    if (underWay_ > missing && !coming_.empty()) return std::max(coming_.next(), now_ + 1);
    missing -= std::min(missing, underWay_);
    const bool brings = settings_.generatorEnable != 0 ? lineTime_ > 0 : cameraListens();
    if (!running_ || !brings) return std::nullopt;
    if (directInput_) {
        const auto next = direct_.notBefore();
        if (!next) return std::nullopt;
        return std::max(now_ + 1, *next + readout_ * static_cast<BoardTime>(
                                                         std::min<std::uint64_t>(missing + 1, 1'000'000)));
    }
    if (settings_.exsyncEnable == 0 || (gated() && frames_.linesLeft(started()) == 0)) return std::nullopt;
    // Lines lie apart as far as the slowest link in the chain says.
    double gap = static_cast<double>(std::max({exposure_ * (external() ? 1 : 0), readout_, kClockCycle}));
    if (settings_.generatorEnable != 0) gap = static_cast<double>(lineTime_);
    std::optional<BoardTime> first;
    if (external()) {
        first = trigger_.notBefore();
        gap = std::max(gap, trigger_.shortestGap() * std::max(settings_.lineDownscaler, 1u));
        if (!triggers_.empty()) first = std::max(triggers_.first(), now_ + 1);
    } else {
        if (!open_ && gated()) return now_ + kClockCycle;
        first = generator_.at(generator_.after(now_));
        if (settings_.generatorEnable == 0)
            gap = std::ceil(gap / static_cast<double>(period_)) * static_cast<double>(period_);
    }
    if (!first) return std::nullopt;
    const double wait =
        std::min(gap * static_cast<double>(missing), static_cast<double>(BoardClock::kLatest));
    return std::max(now_ + 1, *first + static_cast<BoardTime>(wait) + readout_);
}

std::optional<BoardTime> LineStream::inputNotBefore() const {
    std::optional<BoardTime> first;
    for (const auto& input : watched_)
        if (input) first = earlier(first, input->notBefore());
    return first ? std::optional(std::max(*first, now_ + 1)) : std::nullopt;
}

std::optional<BoardTime> LineStream::lineNotBefore() const {
    std::optional<BoardTime> first;
    const auto next = [&](const DelayLine& edges) {
        if (!edges.empty()) first = earlier(first, edges.next());
    };
    for (const Output* output :
         {&exsyncOut_, &exsync2Out_, &lineValid_, &frameValid_, &lineStart_, &lineEnd_}) {
        next(output->up);
        next(output->down);
    }
    next(coming_);
    if (freeGenerator()) first = earlier(first, freeLines_.at(freeLines_.after(now_)));
    if (directInput_) first = earlier(first, direct_.notBefore());
    if (gated()) first = earlier(first, imageTriggerNotBefore());
    const bool closed = gated() && frames_.linesLeft(started()) == 0;
    if (running_ && settings_.exsyncEnable != 0 && !closed) {
        if (external()) {
            first = earlier(first, triggers_.empty() ? trigger_.notBefore() : triggers_.first());
        } else {
            first = earlier(first, gated() && !open_ ? now_ + 1 : generator_.at(generator_.after(now_)));
        }
    }
    return first ? std::optional(std::max(*first, now_ + 1)) : std::nullopt;
}

}  // namespace virtualboard
