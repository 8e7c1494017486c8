#pragma once

/// The line pulse generators of the design and the two signal analyzers that watch them.

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

#include "board/design/Slot.h"
#include "board/lines/BoardClock.h"

namespace virtualboard {

/// A train of pulses at a fixed period from a given moment on.
struct PulseTrain {
    BoardTime start = 0;   ///< the first pulse comes one period later
    BoardTime period = 0;  ///< 0 while nothing pulses

    /// Pulses up to and including `now`.
    std::int64_t pulses(BoardTime now) const {
        return period > 0 && now > start ? (now - start) / period : 0;
    }
};

/// Follows the settings on the board's clock. The analyzers' read-outs stand in the board's slots and are
/// brought up to date by `settle`; nothing runs in between.
class SignalAnalyzers {
 public:
    // Signals that come one by one, by their number in an analyzer's selector.
    static constexpr Number kFrameStart = 35;
    static constexpr Number kFrameEnd = 36;

    /// Finds a slot by the parameter's full name; null when the design lacks it.
    using FindSlot = std::function<Slot*(std::string_view)>;

    /// Takes the slots of a newly configured board and marks those that act or are live.
    void attach(const FindSlot& find, BoardTime now);

    /// Brings the read-outs to `now`. To be called before a live slot is read or an acting one is changed.
    void settle(BoardTime now);

    /// Follows a change of an acting slot.
    void changed(const Slot& slot, BoardTime now);

    /// Counts a pulse of a signal that comes one by one.
    void pulse(Number signal, BoardTime time);

    /// The train that carries lines from the camera or the generator.
    const PulseTrain& lines() const { return lines_; }

 private:
    struct Analyzer {
        Slot* select = nullptr;
        Slot* periodCurrent = nullptr;
        Slot* periodMax = nullptr;
        Slot* periodMin = nullptr;
        Slot* count = nullptr;
        const PulseTrain* train = nullptr;  ///< null when the selected signal does not pulse
        std::int64_t counted = 0;           ///< pulses of the present train that are in the count
        std::int64_t seen = 0;              ///< pulses in a row, from which periods can be told
        BoardTime lastPulse = 0;            ///< of a signal that comes one by one
    };

    const PulseTrain* trainOf(Number signal) const;
    void restartTrains(BoardTime now);
    void follow(Analyzer& analyzer, BoardTime now);
    void clear(BoardTime now);
    static void count(Analyzer& analyzer, std::int64_t pulses, BoardTime time);
    void updateDifference();

    Slot* mode_ = nullptr;
    Slot* enable_ = nullptr;
    Slot* period_ = nullptr;
    Slot* delay_ = nullptr;
    Slot* pixelClock_ = nullptr;
    Slot* linkReset_ = nullptr;
    Slot* cameraTrigger_ = nullptr;
    Slot* source_ = nullptr;
    Slot* freeRun_ = nullptr;
    Slot* clockMode_ = nullptr;
    Slot* sequence_ = nullptr;
    Slot* active_ = nullptr;
    Slot* words_ = nullptr;
    Slot* clear_ = nullptr;
    Slot* difference_ = nullptr;
    std::array<Analyzer, 2> analyzers_;
    PulseTrain exsync_, exsync2_, lines_;
    BoardTime exsync2Delay_ = 0;
};

}  // namespace virtualboard
