#pragma once

/// The lines that came: when, and over which part of the belt.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>

#include "board/imaging/LineScanCamera.h"
#include "board/lines/Pulses.h"

namespace virtualboard {

/// Lines that follow each other by one rule. Lines are numbered since the board was opened, from 0.
struct LineRun {
    std::uint64_t first = 0;  ///< number of the first one
    Pulses starts{};
    BoardTime readout = 0;      ///< ns that a line is transferred
    std::int64_t position = 0;  ///< of the first one on the belt, pixels with `kBeltBits` fraction bits
    double exposure = 0;        ///< µs
    std::int64_t way = 0;       ///< of the belt during an exposure, as `position`

    std::uint64_t end() const { return first + starts.count(); }
    BoardTime startOf(std::uint64_t line) const { return starts.at(starts.begin + (line - first)); }
    std::int64_t positionOf(std::uint64_t line) const {
        return position + wayTo(starts.begin + (line - first)) - wayTo(starts.begin);
    }

 private:
    /// Every line goes the same rounded way, so that whole pixels stay whole after any number of lines.
    std::int64_t wayTo(std::uint64_t index) const {
        const Rhythm& rhythm = starts.way;
        const auto times = [](std::uint64_t n, double step) {  // may wrap round after light years
            return static_cast<std::int64_t>(n * static_cast<std::uint64_t>(imaging::Motion::stepOf(step)));
        };
        if (rhythm.group == 1) return times(index, rhythm.step);
        return times(index / rhythm.group, rhythm.groupStep) + times(index % rhythm.group, rhythm.step);
    }
};

/// Keeps the runs that somebody still needs.
class LineLog {
 public:
    std::uint64_t lines() const { return lines_; }

    void append(LineRun run) {
        const std::uint64_t count = run.starts.count();
        if (count == 0) return;
        run.first = lines_;
        lines_ += count;
        if (!runs_.empty()) {
            LineRun& last = runs_.back();
            if (last.readout == run.readout && last.exposure == run.exposure && last.way == run.way &&
                last.starts.append(run.starts)) {
                return;
            }
            // The rounded ways add up to what the scene shows: the next run begins there, whatever its rule.
            const Pulses& starts = last.starts;
            shift_ += last.positionOf(run.first) - last.position -
                      (beltPosition(starts.placeOf(starts.end)) - beltPosition(starts.placeOf(starts.begin)));
        }
        run.position = beltPosition(run.starts.placeOf(run.starts.begin)) + shift_;
        runs_.push_back(run);
    }

    /// The run that holds a line; null when it was forgotten or has not come.
    const LineRun* find(std::uint64_t line) const {
        if (line >= lines_) return nullptr;
        auto run = std::upper_bound(runs_.begin(), runs_.end(), line,
                                    [](std::uint64_t number, const LineRun& r) { return number < r.first; });
        return run != runs_.begin() ? &*(run - 1) : nullptr;
    }

    /// Lines before this one are not needed any more; the last run stays in any case.
    void forget(std::uint64_t before) {
        while (runs_.size() > 1 && runs_.front().end() <= before) runs_.pop_front();
    }

    /// The belt counts from another place from now on, in pixels, but the scene on it does not move.
    void moveOrigin(double from, double to) { shift_ += beltPosition(from) - beltPosition(to); }
    /// Positions are those of the belt again.
    void resetOrigin() { shift_ = 0; }
    /// A place on the belt as what the scene shows there.
    std::int64_t sceneAt(double place) const { return beltPosition(place) + shift_; }

    const std::deque<LineRun>& runs() const { return runs_; }

 private:
    static std::int64_t beltPosition(double pixels) {
        return std::llround(std::clamp(std::ldexp(pixels, imaging::kBeltBits), -0x1p62, 0x1p62));
    }

    std::deque<LineRun> runs_;
    std::uint64_t lines_ = 0;
    std::int64_t shift_ = 0;  ///< what the scene shows, less the place on the belt
};

}  // namespace virtualboard
