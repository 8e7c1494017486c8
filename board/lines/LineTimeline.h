#pragma once

/// Lines on the board's clock.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "board/imaging/LineClock.h"
#include "board/lines/BoardClock.h"

namespace virtualboard {

/// Numbers the lines of one acquisition while their clock may change under way. Line numbers go on through
/// every change, so that the source's frames stay where the numbers say; the line that was running when the
/// clock changed begins anew.
class LineTimeline {
 public:
    /// Takes over another clock; the same one disturbs nothing.
    void setClock(const imaging::LineClock& clock, BoardTime now) {
        if (clock.linePeriod == clock_.linePeriod && clock.linesPerFrame == clock_.linesPerFrame &&
            clock.framePeriod == clock_.framePeriod) {
            return;
        }
        line_ = lineAt(now);
        clock_ = clock;
        origin_ = now - nanoseconds(clock.startOf(line_));
    }

    /// Lines complete by now; never less than before.
    std::uint64_t lineAt(BoardTime now) const {
        if (!clock_.running()) return line_;
        return std::max(line_, clock_.linesBy(static_cast<double>(now - origin_) / 1000));
    }

    /// When that many lines are complete; nothing while no line comes.
    std::optional<BoardTime> timeFor(std::uint64_t lines) const {
        if (!clock_.running()) return std::nullopt;
        return origin_ + nanoseconds(clock_.timeFor(lines));
    }

    std::uint64_t linesPerFrame() const { return clock_.linesPerFrame; }

 private:
    static BoardTime nanoseconds(double microseconds) {
        constexpr auto kLatest = static_cast<double>(BoardClock::kLatest);
        return static_cast<BoardTime>(std::ceil(std::min(microseconds * 1000, kLatest)));
    }

    imaging::LineClock clock_;
    BoardTime origin_ = 0;    ///< when line 0 would have begun by the present clock
    std::uint64_t line_ = 0;  ///< lines complete when the present clock was set
};

}  // namespace virtualboard
