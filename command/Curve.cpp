#include "command/Curve.h"

#include <algorithm>
#include <cmath>

namespace marovine::host {

namespace {

constexpr std::size_t kAcross = 2;  ///< points in a character
constexpr std::size_t kDown = 4;

/// Bit of a point in a braille pattern, by row and column.
constexpr std::array<std::array<unsigned, kAcross>, kDown> kBits{
    {{0x01, 0x08}, {0x02, 0x10}, {0x04, 0x20}, {0x40, 0x80}}};

std::size_t rounded(std::size_t dividend, std::size_t divisor) {
    return (dividend + divisor / 2) / divisor;
}

/// The braille character with these points as UTF-8.
std::string brailleCharacter(unsigned points) {
    const unsigned code = 0x2800 + points;
    return {static_cast<char>(0xE0 | (code >> 12)), static_cast<char>(0x80 | ((code >> 6) & 0x3F)),
            static_cast<char>(0x80 | (code & 0x3F))};
}

// ---- the picture ----

using virtualboard::imaging::Image;
using virtualboard::imaging::Pixel;

constexpr std::uint32_t kPlot = 512;   ///< pixels of the plot, each way
constexpr std::uint32_t kBorder = 24;  ///< pixels around it
constexpr std::uint32_t kGridStep = 64;
constexpr Pixel kBackground{24, 20, 18};
constexpr Pixel kGrid{64, 56, 52};
constexpr double kHalfWidth = 1.2;  ///< of a curve's line, pixels

struct Point {
    double x, y;
};

double distanceToSegment(Point p, Point a, Point b) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double length = dx * dx + dy * dy;
    const double t = length > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

/// Lights one channel along a line, soft at its edges.
void drawSegment(Image& image, Point a, Point b, std::uint8_t Pixel::*channel) {
    const double reach = kHalfWidth + 1;
    const auto first = [&](double v) { return static_cast<std::uint32_t>(std::max(0.0, v - reach)); };
    const auto last = [&](double v) {
        return std::min(image.width - 1, static_cast<std::uint32_t>(v + reach));
    };
    for (std::uint32_t y = first(std::min(a.y, b.y)); y <= last(std::max(a.y, b.y)); ++y)
        for (std::uint32_t x = first(std::min(a.x, b.x)); x <= last(std::max(a.x, b.x)); ++x) {
            const Point center{static_cast<double>(x), static_cast<double>(y)};
            const double light = std::clamp(kHalfWidth + 0.5 - distanceToSegment(center, a, b), 0.0, 1.0);
            std::uint8_t& level = image.at(x, y).*channel;
            level = std::max(level, static_cast<std::uint8_t>(light * 255));
        }
}

void drawGrid(Image& image) {
    for (std::uint32_t along = 0; along <= kPlot; ++along)
        for (std::uint32_t line = 0; line <= kPlot; line += kGridStep) {
            image.at(kBorder + along, kBorder + line) = kGrid;
            image.at(kBorder + line, kBorder + along) = kGrid;
        }
}

}  // namespace

virtualboard::imaging::Image curvePicture(const Channels& channels, std::uint32_t maximum) {
    constexpr std::array places{&Pixel::red, &Pixel::green, &Pixel::blue};
    Image image(kPlot + 2 * kBorder + 1, kPlot + 2 * kBorder + 1, kBackground);
    drawGrid(image);
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        const Field& table = channels[channel];
        const auto pointOf = [&](std::size_t i) {
            const double value = std::min(table[i], maximum);
            return Point{kBorder + static_cast<double>(kPlot) * static_cast<double>(i) /
                                       static_cast<double>(table.size() - 1),
                         kBorder + kPlot - kPlot * value / maximum};
        };
        for (std::size_t i = 1; i < table.size(); ++i)
            drawSegment(image, pointOf(i - 1), pointOf(i), places[channel]);
    }
    return image;
}

std::vector<std::string> curveLines(std::span<const std::uint32_t> values, std::uint32_t maximum,
                                    std::size_t columns, std::size_t rows) {
    std::vector<std::vector<unsigned>> cells(rows, std::vector<unsigned>(columns));
    const std::size_t width = columns * kAcross;
    const std::size_t height = rows * kDown;
    const auto pointOf = [&](std::size_t x) {
        const std::size_t index = rounded(x * (values.size() - 1), width - 1);
        return rounded(std::size_t{std::min(values[index], maximum)} * (height - 1), maximum);
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
