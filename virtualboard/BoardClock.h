#pragma once

/// The board's own clock.

#include <chrono>
#include <cstdint>

namespace virtualboard {

/// Nanoseconds since the board was inserted.
using BoardTime = std::int64_t;

/// Runs in real time until it is made manual; from then on it moves only when it is told to.
class BoardClock {
 public:
    BoardTime now() const { return manual_ ? manualTime_ : base_ + sinceStart(); }

    /// Stops the clock at the present time, or lets it run on from there.
    void setManual(bool manual) {
        if (manual == manual_) return;
        if (manual) {
            manualTime_ = now();
        } else {
            base_ = manualTime_ - sinceStart();
        }
        manual_ = manual;
    }

    /// Moves the clock forward, whether it is manual or not.
    void advance(BoardTime time) { (manual_ ? manualTime_ : base_) += time; }

 private:
    BoardTime sinceStart() const {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start_)
            .count();
    }

    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    BoardTime base_ = 0;
    BoardTime manualTime_ = 0;
    bool manual_ = false;
};

}  // namespace virtualboard
