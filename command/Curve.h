#pragma once

/// Lookup tables as pictures.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "client/Value.h"
#include "marovine/Image.h"

namespace marovine::host {

/// The tables of the three channels: red, green, blue.
using Channels = std::array<Field, 3>;

/// A curve in braille characters, top line first: each character carries 2 by 4 points. Values run from 0 at
/// the bottom to `maximum` at the top; larger ones are drawn at the top.
std::vector<std::string> curveLines(std::span<const std::uint32_t> values, std::uint32_t maximum,
                                    std::size_t columns, std::size_t rows);

/// The three curves on a dark square with a grid. Colours add up, so curves that agree are white.
virtualboard::imaging::Image curvePicture(const Channels& channels, std::uint32_t maximum);

}  // namespace marovine::host
