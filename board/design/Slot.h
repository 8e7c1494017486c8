#pragma once

/// Where a board keeps the value of one design parameter.

#include <cstdint>

#include "board/design/DesignData.h"

namespace virtualboard {

struct Slot {
    Number value = 0;
    Number minimum = 0, maximum = 0;  ///< of a number or of a field's elements
    ParameterKind kind{};
    bool readOnly = false;
    bool hidden = false;
    bool acts = false;            ///< writing it changes the pulses that the analyzers see
    bool drivesPictures = false;  ///< writing it changes what an acquisition does
    bool live = false;            ///< the board itself changes it
    bool pinned = false;          ///< a live value that the control interface has set and that stays
    std::uint32_t store = 0;      ///< position among the board's texts or fields
    std::uint32_t limit = 0;      ///< a field's number of elements, a text's longest length
    int writeFault = 0;           ///< code with which every write fails; 0 for none
    int readFault = 0;
};

}  // namespace virtualboard
