#pragma once

/// Pictures on a terminal.

#include "command/Console.h"
#include "marovine/Image.h"

namespace marovine::host {

/// Shows a picture in the console's width, at most `widest` columns: coloured half blocks, or grey shades
/// where there is no colour. Long pictures are shown narrower, so that they fit a screen or two.
void showPicture(const Console& console, const virtualboard::imaging::ImageView& picture,
                 std::size_t widest = 100);

}  // namespace marovine::host
