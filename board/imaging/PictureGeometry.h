#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace virtualboard::imaging {

/// What a picture shows of the belt, row by row and column by column.
struct PictureGeometry {
    static constexpr std::uint32_t kNoColumn = std::numeric_limits<std::uint32_t>::max();

    std::vector<std::int64_t> rows{};      ///< belt position of each picture row, pixels
    std::vector<std::uint32_t> columns{};  ///< sensor pixel of each picture column; `kNoColumn`: black
};

}  // namespace virtualboard::imaging
