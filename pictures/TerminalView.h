#pragma once

#include <string>

#include "marovine/Image.h"

namespace virtualboard::imaging {

/// A picture as text for a terminal with 24-bit colours: two pixels per character, one above the other, by
/// upper half blocks. The picture is scaled down (or up) to `columns` characters with its proportions kept;
/// each line ends with colours reset and a newline. Empty for an empty picture or no columns.
std::string halfBlocks(const ImageView& picture, std::uint32_t columns);

}  // namespace virtualboard::imaging
