#pragma once

/// Where the board's signals go.

#include <array>

#include "board/lines/SignalAnalyzers.h"
#include "board/machine/EventQueue.h"

namespace virtualboard {

/// Hands every edge to the analyzers and makes events of those that somebody waits for. The board's lock
/// guards it.
class BoardSignals : public SignalListener {
 public:
    explicit BoardSignals(EventQueue& events) : events_(events) {}

    /// Takes the slots of a newly configured board.
    void attach(const SignalAnalyzers::FindSlot& find);
    /// Lines and frames are counted from here.
    void beginAcquisition() { counts_ = {}; }

    void edges(Number signal, bool up, const Pulses& pulses) override;
    void overflow(BoardTime at, std::int64_t lost) { events_.post(EventSource::Overflow, at, lost); }
    /// Follows a change of an acting slot.
    void changed(const Slot& slot) { analyzers_.changed(slot); }
    /// Inputs that anybody listens to, bit by bit.
    std::uint32_t inputs() const;
    /// The signals behind an event source and whether they go up; signal 0 where there is none.
    struct Edge {
        Number signal = 0;
        bool up = true;
    };
    Edge edgeOf(EventSource source) const;

 private:
    struct Custom {
        Slot* select = nullptr;
        Slot* invert = nullptr;
    };
    void post(EventSource source, const Pulses& pulses, std::int64_t payload, bool counted);

    EventQueue& events_;
    SignalAnalyzers analyzers_;
    std::array<Custom, 2> custom_;
    std::array<std::int64_t, 4> counts_{};  ///< of line starts and ends, frame starts and ends
};

}  // namespace virtualboard
