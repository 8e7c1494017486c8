#pragma once

/// Files that the command writes: see `SafeFile` and `writeSafely` of the virtual board's picture files,
/// which are written the same way.

#include "pictures/SafeFile.h"

namespace marovine::host {

using virtualboard::imaging::SafeFile;
using virtualboard::imaging::SignalHold;
using virtualboard::imaging::writeSafely;

}  // namespace marovine::host
