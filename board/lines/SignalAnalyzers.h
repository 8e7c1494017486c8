#pragma once

/// The two signal analyzers of the design.

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

#include "board/lines/Signals.h"

namespace virtualboard {

/// Count edges and measure the times between them. A high active analyzer takes the edges that go up, a low
/// active one those that go down. The read-outs stand in the board's slots and are as new as what `edges` was
/// told last.
class SignalAnalyzers : public SignalListener {
 public:
    /// Finds a slot by the parameter's full name; null when the design lacks it.
    using FindSlot = std::function<Slot*(std::string_view)>;

    /// Takes the slots of a newly configured board and marks those that act or are live.
    void attach(const FindSlot& find);

    void edges(Number signal, bool up, const Pulses& pulses) override;
    /// Follows a change of an acting slot, or of a read-out that the control interface set.
    void changed(const Slot& slot);
    /// Inputs that an analyzer listens to, bit by bit.
    std::uint32_t inputs() const;

 private:
    struct Analyzer {
        Slot* select = nullptr;
        Slot* invert = nullptr;
        Slot* periodCurrent = nullptr;
        Slot* periodMax = nullptr;
        Slot* periodMin = nullptr;
        Slot* count = nullptr;
        bool follows = false;  ///< an edge was seen since the last clear or change: periods can be told
        BoardTime last = 0;    ///< that edge
    };

    void clear();
    static void take(Analyzer& analyzer, const Pulses& pulses);
    void updateDifference();

    Slot* clear_ = nullptr;
    Slot* difference_ = nullptr;
    std::array<Analyzer, 2> analyzers_;
};

}  // namespace virtualboard
