#include "host/Curve.h"

#include <algorithm>
#include <array>

namespace marovine::host {

namespace {

constexpr std::size_t kAcross = 2;  ///< points in a character
constexpr std::size_t kDown = 4;

/// Bit of a point in a braille pattern, by row and column.
constexpr std::array<std::array<unsigned, kAcross>, kDown> kBits{
    {{0x01, 0x08}, {0x02, 0x10}, {0x04, 0x20}, {0x40, 0x80}}};

/// The braille character with these points as UTF-8.
std::string brailleCharacter(unsigned points) {
    const unsigned code = 0x2800 + points;
    return {static_cast<char>(0xE0 | (code >> 12)), static_cast<char>(0x80 | ((code >> 6) & 0x3F)),
            static_cast<char>(0x80 | (code & 0x3F))};
}

}  // namespace

std::vector<std::string> curveLines(std::span<const std::uint32_t> values, std::uint32_t maximum,
                                    std::size_t columns, std::size_t rows) {
    std::vector<std::vector<unsigned>> cells(rows, std::vector<unsigned>(columns));
    const std::size_t width = columns * kAcross;
    const std::size_t height = rows * kDown;
    const auto pointOf = [&](std::size_t x) {
        const std::size_t index = x * (values.size() - 1) / (width - 1);
        const std::uint64_t value = std::min(values[index], maximum);
        return static_cast<std::size_t>(value * (height - 1) / maximum);
    };
    if (values.empty() || maximum == 0 || columns == 0 || rows == 0) return {};
    std::size_t previous = pointOf(0);
    for (std::size_t x = 0; x < width; ++x) {
        const std::size_t point = pointOf(x);
        // Steep parts are filled, so that the line does not break.
        for (std::size_t y = previous;; y < point ? ++y : --y) {
            const std::size_t fromTop = height - 1 - y;
            if (y != previous || previous == point)
                cells[fromTop / kDown][x / kAcross] |= kBits[fromTop % kDown][x % kAcross];
            if (y == point) break;
        }
        previous = point;
    }
    std::vector<std::string> lines;
    for (const auto& row : cells) {
        std::string line;
        for (const unsigned points : row) line += brailleCharacter(points);
        lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace marovine::host
