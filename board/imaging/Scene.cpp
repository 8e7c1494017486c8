#include "board/imaging/Scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace virtualboard::imaging {
namespace {

constexpr Pixel rgb(unsigned code) {
    return {static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(code >> 8),
            static_cast<std::uint8_t>(code >> 16)};
}
constexpr Pixel grey(std::uint32_t value) {
    const auto level = static_cast<std::uint8_t>(value);
    return {level, level, level};
}

constexpr Pixel kPaper = grey(224);
constexpr Pixel kInk = grey(16);

// Four rows of six: saturated colours, their mixtures, tones of skin, sky and leaf, greys.
constexpr Pixel kPatches[4][6] = {
    {rgb(0xD01818), rgb(0x18B018), rgb(0x1830D0), rgb(0x18C0C8), rgb(0xC818B8), rgb(0xE0C810)},
    {rgb(0xE07018), rgb(0x88C020), rgb(0x18A070), rgb(0x3078C8), rgb(0x7030B0), rgb(0xC82860)},
    {rgb(0x704838), rgb(0xC89078), rgb(0x5878A0), rgb(0x506838), rgb(0x8078A8), rgb(0x60B8A8)},
    {grey(248), grey(200), grey(152), grey(104), grey(56), grey(8)},
};

class Canvas {
 public:
    explicit Canvas(Image& image) : image_(image) {}

    void fill(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height,
              Pixel colour) {
        for (std::uint32_t y = top; y < top + height; ++y) {
            std::fill_n(&image_.at(left, y), width, colour);
        }
    }

    // Colours the pixels of a square around a centre by their distance and angle to it.
    template <typename Ink>
    void polar(std::uint32_t centreX, std::uint32_t centreY, std::uint32_t radius, Ink ink) {
        for (std::uint32_t y = centreY - radius; y < centreY + radius; ++y) {
            for (std::uint32_t x = centreX - radius; x < centreX + radius; ++x) {
                const double dx = x + 0.5 - centreX, dy = y + 0.5 - centreY;
                if (ink(std::hypot(dx, dy), std::atan2(dy, dx))) image_.at(x, y) = kInk;
            }
        }
    }

 private:
    Image& image_;
};

void drawOrientation(Canvas& canvas) {
    canvas.fill(48, 48, 24, 160, kInk);
    canvas.fill(48, 48, 104, 24, kInk);
    canvas.fill(48, 112, 72, 24, kInk);
    // The belt brings the top of the chart first.
    for (std::uint32_t i = 0; i < 40; ++i) canvas.fill(196 - i, 48 + 2 * i, 2 * i + 2, 2, rgb(0xD01818));
    canvas.fill(184, 128, 26, 80, rgb(0xD01818));
}

void drawPatches(Canvas& canvas) {
    for (std::uint32_t row = 0; row < 4; ++row) {
        for (std::uint32_t column = 0; column < 6; ++column) {
            canvas.fill(272 + 120 * column, 48 + 104 * row, 104, 88, kPatches[row][column]);
        }
    }
}

void drawGreys(Canvas& canvas) {
    for (std::uint32_t x = 0; x < 928; ++x) canvas.fill(48 + x, 480, 1, 56, grey(x * 256 / 928));
    for (std::uint32_t step = 0; step < 16; ++step) canvas.fill(48 + 58 * step, 536, 58, 56, grey(17 * step));
}

void drawLineGroups(Canvas& canvas) {
    constexpr std::uint32_t kWidths[] = {1, 2, 3, 4, 6, 8};
    std::uint32_t left = 48;
    for (const std::uint32_t width : kWidths) {
        canvas.fill(left, 640, 80, 248, grey(248));
        for (std::uint32_t i = 0; i + width <= 80; i += 2 * width) {
            canvas.fill(left + i, 640, width, 152, kInk);
            canvas.fill(left, 808 + i, 80, width, kInk);
        }
        left += 96;
    }
}

void drawRingAndStar(Canvas& canvas) {
    canvas.polar(800, 800, 176, [](double distance, double angle) {
        const bool ring = distance >= 160 && distance < 172;
        const bool ray = std::fmod((angle + std::numbers::pi) * 36 / (2 * std::numbers::pi), 1.0) < 0.5;
        return ring || (distance < 144 && ray);
    });
}

}  // namespace

Image testChart() {
    Image chart(kChartSize, kChartSize, kPaper);
    Canvas canvas(chart);
    drawOrientation(canvas);
    drawPatches(canvas);
    drawGreys(canvas);
    drawLineGroups(canvas);
    drawRingAndStar(canvas);
    return chart;
}

Image resize(const ImageView& picture, std::uint32_t width, std::uint32_t height) {
    Image result(width, height);
    if (picture.width == width && picture.height == height) {
        std::ranges::copy(picture.bytes, result.bytes().begin());
        return result;
    }
    if (picture.bytes.empty()) return result;
    // The pixels of `from` that fall on pixel `at` of `to`; at least one.
    const auto span = [](std::uint32_t at, std::uint32_t to, std::uint32_t from) {
        const auto begin = static_cast<std::uint32_t>(std::uint64_t{at} * from / to);
        const auto end = static_cast<std::uint32_t>(std::uint64_t{at + 1} * from / to);
        return std::pair{begin, std::max(begin + 1, end)};
    };
    for (std::uint32_t y = 0; y < height; ++y) {
        const auto [top, bottom] = span(y, height, picture.height);
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto [left, right] = span(x, width, picture.width);
            std::uint64_t blue = 0, green = 0, red = 0;
            for (std::uint32_t v = top; v < bottom; ++v) {
                for (std::uint32_t u = left; u < right; ++u) {
                    const Pixel pixel = picture.at(u, v);
                    blue += pixel.blue, green += pixel.green, red += pixel.red;
                }
            }
            const std::uint64_t count = std::uint64_t{bottom - top} * (right - left);
            const auto mean = [&](std::uint64_t sum) {
                return static_cast<std::uint8_t>((sum + count / 2) / count);
            };
            result.at(x, y) = {mean(blue), mean(green), mean(red)};
        }
    }
    return result;
}

}  // namespace virtualboard::imaging
