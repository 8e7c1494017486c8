#pragma once

/// The applet on a virtual board, opened once for all runs of a fuzzer.

#include <cstdlib>

#include "marovine/Control.h"
#include "marovine/marovine.h"

namespace marovine::fuzz {

/// The record of the open applet; ends the process when it does not open.
inline Fg_Struct* openApplet() {
    static Fg_Struct record{Std_entry(virtualboard::insertBoard(), nullptr, 0)};
    if (record.instance == nullptr) std::abort();
    return &record;
}

}  // namespace marovine::fuzz
