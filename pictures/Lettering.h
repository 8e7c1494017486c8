#pragma once

/// Small capital letters in pictures.

#include <cstdint>
#include <string_view>

#include "marovine/Image.h"

namespace marovine::host {

/// Pixels from one character to the next, and from one line to the next, at scale 1.
inline constexpr std::uint32_t kLetterWidth = 6;
inline constexpr std::uint32_t kLetterHeight = 9;

/// Writes a text with its upper left corner at (left, top), each point `scale` pixels wide. Letters become
/// capitals; a character that the lettering lacks is left blank, and what lies outside is cut.
void writeText(virtualboard::imaging::Image& picture, std::uint32_t left, std::uint32_t top,
               std::uint32_t scale, virtualboard::imaging::Pixel colour, std::string_view text);

}  // namespace marovine::host
