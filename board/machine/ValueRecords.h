#pragma once

/// Values and writes, as Control.h and as the C interface have them.

#include <vector>

#include "marovine/Control.h"
#include "marovine/VirtualBoard.h"

namespace virtualboard {

/// A record that points into the value, which must outlive it.
VirtualBoardValue recordOf(const Value& value);
/// Throws what `Guarded.h` makes codes of.
Value fromRecord(const VirtualBoardValue& record);

/// The record of one write, which points into the write and to `value`.
VirtualBoardWrite recordOf(const Write& write, VirtualBoardValue& value);
Write fromRecord(const VirtualBoardWrite& record);

/// A copy for `VirtualBoardFree`. All throw `std::bad_alloc`.
const char* handedOut(std::string_view text);
const std::uint32_t* handedOut(std::span<const std::uint32_t> elements);
/// Linked in their order, in one block; null without any.
const VirtualBoardWrite* handedOut(const std::vector<Write>& writes);

}  // namespace virtualboard
