#pragma once

/// The Bayer pattern's phases, numbered as the design numbers them.

#include <cstdint>

namespace virtualboard::imaging {

/// Colour channels in the order of their bytes in a pixel.
enum class Colour : std::uint8_t { Blue, Green, Red };

/// A phase is named after the first two pixels of row 0: 0 green, blue; 1 blue, green; 2 red, green;
/// 3 green, red. Bit 0 swaps the columns and a clear bit 1 swaps the rows of red, green / green, blue.
inline constexpr std::uint32_t kRedFollowedByGreen = 2;

/// Colour of the pixel in column x of row y.
constexpr Colour bayerColour(std::uint32_t phase, std::uint64_t x, std::uint64_t y) {
    const bool oddColumn = ((x ^ phase) & 1) != 0;
    const bool oddRow = ((y ^ (phase >> 1) ^ 1) & 1) != 0;
    if (oddColumn != oddRow) return Colour::Green;
    return oddRow ? Colour::Blue : Colour::Red;
}

/// The enhanced interpolation codes its phase as a mode: mode 0 is phase 2, mode 2 is phase 0.
constexpr std::uint32_t phaseOfMode(std::uint32_t mode) {
    return mode % 2 == 0 ? (2 - mode) & 3 : mode & 3;
}

static_assert(phaseOfMode(0) == 2 && phaseOfMode(1) == 1 && phaseOfMode(2) == 0 && phaseOfMode(3) == 3);

}  // namespace virtualboard::imaging
