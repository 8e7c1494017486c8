#pragma once

/// What a board by itself tells its host of as events, whatever numbers a design gives them.

#include <cstdint>

namespace virtualboard {

/// A sort of event. Its payload stands behind it.
enum class EventSource : std::uint8_t {
    Overflow,                ///< a picture found no buffer: pictures lost so far, this one too
    FirstInputRising,        ///< twelve of them, front inputs last: 1
    FirstInputFalling = 13,  ///< twelve of them: 0
    FrameStart = 25,         ///< number of the frame in the acquisition, from 0
    FrameEnd,                ///< the same number
    LineStart,               ///< number of the line in the acquisition, from 0
    LineEnd,                 ///< the same number
    CustomSignal0,           ///< the signal goes up, after its polarity: 1
    CustomSignal1,           ///< the same
};
inline constexpr unsigned kEventSources = 31;

/// An edge at one of the board's twelve inputs.
constexpr EventSource inputEdge(unsigned input, bool rising) {
    const auto first = rising ? EventSource::FirstInputRising : EventSource::FirstInputFalling;
    return static_cast<EventSource>(static_cast<unsigned>(first) + input);
}

}  // namespace virtualboard
