#pragma once

#include <cstdint>
#include <span>

namespace virtualboard::imaging {

/// Where lines come from: the camera or the pattern generator. Rows are numbered from the start of the
/// acquisition; any row can be asked for at any time.
class LineSource {
 public:
    virtual ~LineSource() = default;

    /// Fills `out` with the sensor pixels from `first` of a row; black beyond the end of the line.
    virtual void readRow(std::uint64_t row, std::uint32_t first, std::span<std::uint8_t> out) const = 0;
};

}  // namespace virtualboard::imaging
