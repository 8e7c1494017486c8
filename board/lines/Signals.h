#pragma once

/// The signals of the board, as its selectors number them.

#include "board/design/Slot.h"
#include "board/lines/Pulses.h"

namespace virtualboard {

inline constexpr Number kExsync = 1, kExsync2 = 2, kFlash = 3;
inline constexpr Number kLineValid = 4, kFrameValid = 5;
inline constexpr Number kFirstInput = 21;  ///< twelve of them, front inputs last
inline constexpr Number kLineStart = 33, kLineEnd = 34, kFrameStart = 35, kFrameEnd = 36;
inline constexpr unsigned kInputs = 12;

/// Who watches signals. Edges of one signal and direction come in the order of their times.
class SignalListener {
 public:
    SignalListener() = default;
    SignalListener(const SignalListener&) = delete;
    SignalListener& operator=(const SignalListener&) = delete;
    virtual ~SignalListener() = default;
    /// The signal went up (or down) at these times.
    virtual void edges(Number signal, bool up, const Pulses& pulses) = 0;
};

/// A pulse of one clock cycle, as the transfer signals give it.
inline void strobe(SignalListener& listener, Number signal, const Pulses& pulses) {
    listener.edges(signal, true, pulses);
    listener.edges(signal, false, pulses.delayed(kClockCycle));
}

}  // namespace virtualboard
