#pragma once

/// The board's own clock.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>

#include "marovine/ClockMode.h"

namespace virtualboard {

/// Nanoseconds since the board was inserted.
using BoardTime = std::int64_t;

/// The design's own clock: every time of its parameters is a number of these.
inline constexpr BoardTime kClockCycle = 8;  // ns

/// A time of the design, given in µs, as whole clock cycles in ns.
inline BoardTime toCycles(double microseconds) {
    return std::llround(microseconds * 125) * kClockCycle;
}

/// Begins at 0. A change of the mode makes no jump.
class BoardClock {
 public:
    explicit BoardClock(ClockMode mode) : mode_(mode) {}

    BoardTime now() const { return running() ? base_ + sinceStart() : stoodAt_; }

    ClockMode mode() const { return mode_; }
    void setMode(ClockMode mode) {
        const BoardTime time = now();
        mode_ = mode;
        if (running()) {
            base_ = time - sinceStart();
        } else {
            stoodAt_ = time;
        }
    }

    /// No step moves the clock beyond this: sums of two such times still fit.
    static constexpr BoardTime kLatest = 4'000'000'000'000'000'000;

    /// Moves the clock forward, in any mode, at most to `kLatest`.
    void advance(BoardTime time) {
        const BoardTime left = std::max<BoardTime>(0, kLatest - now());
        (running() ? base_ : stoodAt_) += std::min(time, left);
    }

    /// Moves a clock that does not run by itself to a time, if that is still to come.
    void moveTo(BoardTime time) { stoodAt_ = std::max(stoodAt_, time); }

 private:
    bool running() const { return mode_ == ClockMode::RealTime; }
    BoardTime sinceStart() const {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start_)
            .count();
    }

    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    ClockMode mode_;
    BoardTime base_ = 0;     ///< what the running clock showed at `start_`
    BoardTime stoodAt_ = 0;  ///< what the standing clock shows
};

}  // namespace virtualboard
