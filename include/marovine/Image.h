#pragma once

/// Pictures in the board's own byte order: rows of 24-bit pixels, each blue, green, red, without padding.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace virtualboard::imaging {

inline constexpr std::size_t kBytesPerPixel = 3;

/// One pixel; the channels in memory order.
struct Pixel {
    std::uint8_t blue = 0, green = 0, red = 0;
    bool operator==(const Pixel&) const = default;
};
static_assert(sizeof(Pixel) == kBytesPerPixel);

/// A picture in somebody else's memory, such as a buffer of the frame ring.
struct ImageView {
    std::uint32_t width = 0;              ///< pixels
    std::uint32_t height = 0;             ///< rows
    std::span<const std::uint8_t> bytes;  ///< width x height x 3

    Pixel at(std::uint32_t x, std::uint32_t y) const {
        const auto* p = &bytes[(std::size_t{y} * width + x) * kBytesPerPixel];
        return {p[0], p[1], p[2]};
    }
};

/// A picture that owns its memory.
struct Image {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<Pixel> pixels;  ///< width x height, row after row

    Image() = default;
    Image(std::uint32_t w, std::uint32_t h, Pixel fill = {})
        : width(w), height(h), pixels(std::size_t{w} * h, fill) {}

    Pixel& at(std::uint32_t x, std::uint32_t y) { return pixels[std::size_t{y} * width + x]; }
    Pixel at(std::uint32_t x, std::uint32_t y) const { return pixels[std::size_t{y} * width + x]; }

    std::span<const std::uint8_t> bytes() const {
        return {reinterpret_cast<const std::uint8_t*>(pixels.data()), pixels.size() * kBytesPerPixel};
    }
    std::span<std::uint8_t> bytes() {
        return {reinterpret_cast<std::uint8_t*>(pixels.data()), pixels.size() * kBytesPerPixel};
    }
    operator ImageView() const { return {width, height, bytes()}; }
};

}  // namespace virtualboard::imaging
