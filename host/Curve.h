#pragma once

/// Lookup tables as pictures.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace marovine::host {

/// A curve in braille characters, top line first: each character carries 2 by 4 points. Values run from 0 at
/// the bottom to `maximum` at the top; larger ones are drawn at the top.
std::vector<std::string> curveLines(std::span<const std::uint32_t> values, std::uint32_t maximum,
                                    std::size_t columns, std::size_t rows);

}  // namespace marovine::host
