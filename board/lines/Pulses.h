#pragma once

/// Pulses in a row, told by a rule instead of one by one.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>

#include "board/lines/BoardClock.h"

namespace virtualboard {

/// A value that grows evenly, with a longer (or shorter) way after each `group` steps: encoder edges that
/// come in pairs, a generator's lines with a gap after each frame.
struct Rhythm {
    double step = 0;          ///< from one to the next inside a group
    double groupStep = 0;     ///< from a group's first to the next group's first; not used while `group` is 1
    std::uint64_t group = 1;  ///< how many make a group

    long double at(std::uint64_t index) const {
        if (group == 1) return static_cast<long double>(step) * static_cast<long double>(index);
        const std::uint64_t groups = index / group;
        return static_cast<long double>(groupStep) * static_cast<long double>(groups) +
               static_cast<long double>(step) * static_cast<long double>(index % group);
    }
    bool operator==(const Rhythm&) const = default;
};

/// Pulses `begin` to `end` - 1 of a train that goes on for ever: pulse i comes at `origin` + time.at(i), in
/// whole nanoseconds, rounded down. With each goes the place of the belt at which it was made.
struct Pulses {
    static constexpr std::uint64_t kEndless = std::uint64_t{1} << 62;

    BoardTime origin = 0;  ///< of pulse 0
    Rhythm time{};         ///< ns
    std::uint64_t begin = 0, end = 0;
    double place = 0;  ///< of pulse 0 on the belt, in sensor pixels
    Rhythm way{};      ///< sensor pixels; grouped as `time`

    static Pulses one(BoardTime at, double place = 0) {
        return {.origin = at, .time = {}, .begin = 0, .end = 1, .place = place, .way = {}};
    }

    bool empty() const { return begin >= end; }
    std::uint64_t count() const { return empty() ? 0 : end - begin; }
    BoardTime at(std::uint64_t index) const {
        // No clock shows a time beyond.
        constexpr BoardTime kLatest = BoardClock::kLatest;
        const BoardTime step = wholeStep();
        if (step != 0 && index <= kExact)
            return origin + std::min(step * static_cast<BoardTime>(index), kLatest);
        const long double since = std::min(time.at(index), static_cast<long double>(kLatest));
        return origin + static_cast<BoardTime>(since);  // never negative
    }
    double placeOf(std::uint64_t index) const { return place + static_cast<double>(way.at(index)); }
    BoardTime first() const { return at(begin); }
    BoardTime last() const { return at(end - 1); }

    /// The first index from `begin` on whose time lies after `now`; `end` when none does.
    std::uint64_t after(BoardTime now) const {
        if (empty() || first() > now) return begin;
        if (const BoardTime step = wholeStep(); step != 0) {
            const auto passed = static_cast<std::uint64_t>((now - origin) / step);
            if (passed < kExact) return std::clamp(passed + 1, begin, end);
        }
        const auto since = static_cast<long double>(now - origin);
        std::uint64_t guess = guessAt(since);
        guess = std::clamp(guess, begin, end);
        while (guess > begin && at(guess - 1) > now) --guess;
        while (guess < end && at(guess) <= now) ++guess;
        return guess;
    }
    /// Those after `from` and at or before `until`.
    Pulses between(BoardTime from, BoardTime until) const {
        Pulses part = *this;
        part.begin = after(from);
        part.end = std::max(part.begin, after(until));
        return part;
    }
    Pulses delayed(BoardTime by) const {
        Pulses later = *this;
        later.origin += by;
        return later;
    }
    /// The shortest time from one pulse to the next.
    double shortestGap() const {
        if (time.group == 1) return time.step;
        return std::min(time.step, time.groupStep - time.step * static_cast<double>(time.group - 1));
    }
    /// Whether every `stride`-th pulse can be told by such a rule as well.
    bool divides(std::uint64_t stride) const {
        return stride == 1 || time.group == 1 || stride % time.group == 0;
    }
    /// Every `stride`-th pulse from the index `from` on; to be asked only where `divides` says so.
    Pulses every(std::uint64_t stride, std::uint64_t from) const;

    /// Appends pulses that go on exactly as these would; false, and nothing changed, where they do not.
    bool append(const Pulses& next) {
        if (time != next.time || way != next.way || at(end) != next.first()) return false;
        if (time.group != 1 && end % time.group != next.begin % time.group) return false;
        if (std::abs(placeOf(end) - next.placeOf(next.begin)) > 1e-6) return false;
        end += next.count();
        return true;
    }

 private:
    static constexpr std::uint64_t kExact = std::uint64_t{1} << 31;

    /// The step where it is so many whole nanoseconds, with which all times up to index `kExact` are exact in
    /// whole numbers, which take a tenth of the time; else 0. Most trains are such.
    BoardTime wholeStep() const {
        if (time.group != 1 || !(time.step >= 1 && time.step <= static_cast<double>(kExact))) return 0;
        const auto whole = static_cast<BoardTime>(time.step);
        return static_cast<double>(whole) == time.step ? whole : 0;
    }

    std::uint64_t guessAt(long double since) const {
        const long double step =
            time.group == 1 ? time.step : time.groupStep / static_cast<double>(time.group);
        if (!(step > 0)) return end;
        const long double index = since / step;
        if (!(index < static_cast<long double>(kEndless))) return end;
        const auto near = static_cast<std::uint64_t>(std::max(index, 0.0L));
        if (time.group == 1) return near;
        // Inside its group the pulse is found by the short steps.
        const std::uint64_t groups = static_cast<std::uint64_t>(std::max(since / time.groupStep, 0.0L));
        const long double rest = since - time.groupStep * static_cast<long double>(groups);
        const auto inside = time.step > 0 ? static_cast<std::uint64_t>(rest / time.step) : time.group - 1;
        return groups * time.group + std::min(inside, time.group - 1);
    }
};

inline Pulses Pulses::every(std::uint64_t stride, std::uint64_t from) const {
    if (stride == 1) {
        Pulses rest = *this;
        rest.begin = std::max(begin, from);
        return rest;
    }
    const std::uint64_t groups = stride / time.group;
    const auto strided = [&](const Rhythm& rhythm) {
        const double step = time.group == 1 ? rhythm.step * static_cast<double>(stride)
                                            : rhythm.groupStep * static_cast<double>(groups);
        return Rhythm{.step = step};
    };
    Pulses part{.origin = at(from),
                .time = strided(time),
                .begin = 0,
                .end = from < end ? (end - 1 - from) / stride + 1 : 0,
                .place = placeOf(from),
                .way = strided(way)};
    return part;
}

/// Pulses on their way to a later time.
class DelayLine {
 public:
    void push(const Pulses& pulses) {
        if (pulses.empty()) return;
        if (waiting_.empty() || !waiting_.back().append(pulses)) waiting_.push_back(pulses);
    }
    void clear() { waiting_.clear(); }
    /// When the next one comes; only where any does.
    BoardTime next() const { return waiting_.front().first(); }
    bool empty() const { return waiting_.empty(); }
    /// Hands out, in their order, the pulses that have come by a time.
    template <typename Take>
    void take(BoardTime until, Take take) {
        while (!waiting_.empty() && waiting_.front().first() <= until) {
            Pulses& front = waiting_.front();
            Pulses come = front;
            come.end = front.begin = front.after(until);
            if (front.empty()) waiting_.pop_front();
            take(come);
        }
    }

 private:
    std::deque<Pulses> waiting_;
};

}  // namespace virtualboard
