#pragma once

#include <string>

#include "marovine/Image.h"

namespace virtualboard::imaging {

/// The colours of a terminal: any, or the 216 and 24 greys of the usual palette of 256.
enum class Palette { TrueColour, Indexed256 };

/// A picture as text for a terminal with colours: two pixels per character, one above the other, by upper
/// half blocks. The picture is scaled down (or up) to `columns` characters with its proportions kept; each
/// line ends with colours reset and a newline. Empty for an empty picture or no columns.
std::string halfBlocks(const ImageView& picture, std::uint32_t columns,
                       Palette palette = Palette::TrueColour);

}  // namespace virtualboard::imaging
