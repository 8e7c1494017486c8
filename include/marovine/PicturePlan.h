#pragma once

/// What pictures a board's design is set to give, worked out from its values without taking any.

#include <cstdint>

#include "marovine/Control.h"
#include "marovine/World.h"

#pragma GCC visibility push(default)

namespace virtualboard {

/// The pictures that the design's values ask for as they stand.
struct PicturePlan {
    /// What a picture waits for: nothing, a pulse of the image trigger, or its level.
    enum class Start { FreeRun, Pulse, Gate };

    std::uint32_t width = 0;         ///< pixels
    std::uint64_t rows = 0;          ///< of a picture at most
    bool generated = false;          ///< whether the pattern generator stands in for the camera
    bool linesCome = false;          ///< whether the camera or the generator ever gives a line
    bool passesAny = false;          ///< whether a picture has lines and the image selector passes some on
    Start start = Start::FreeRun;    ///< without image trigger pictures run free
    std::uint32_t selectPeriod = 1;  ///< pictures of which the image selector passes one on
    double seconds = 0;              ///< that one picture passed on takes; 0 when no line comes
};

/// The plan of a board in front of such a belt. Throws `std::invalid_argument` when the board is not in the
/// machine, `std::out_of_range` when it holds no design.
PicturePlan picturePlan(const Control& board, const imaging::Belt& belt);

}  // namespace virtualboard

#pragma GCC visibility pop
