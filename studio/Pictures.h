#pragma once

/// Parts of pictures, as small as they are shown.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "marovine/Image.h"

namespace marovine::studio {

/// A part of a picture, in its pixels.
struct Region {
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Region&) const = default;
};

/// Columns and rows that something is to fit into.
struct Fit {
    std::uint32_t width = 0, height = 0;  ///< 0: any
    bool operator==(const Fit&) const = default;
};

/// What is wanted of a picture.
struct View {
    std::optional<Region> region{};  ///< nothing: the whole
    Fit fit{};
    bool operator==(const View&) const = default;
};

/// "800x600"; nothing for anything else, and for more than 65536 either way.
std::optional<Fit> parseFit(std::string_view text);

/// The region that a view shows of a picture, cut at its edges; it may be empty.
Region regionOf(const View& view, const virtualboard::imaging::ImageView& picture);

/// A region, scaled down with its proportions kept until it fits: each pixel is the mean of those that it
/// stands for. Never scaled up.
virtualboard::imaging::Image shown(const virtualboard::imaging::ImageView& picture, const Region& region,
                                   const Fit& fit);

/// Adds a picture's pixels to a text as red, green, blue and 255.
void appendRgba(std::string& text, const virtualboard::imaging::ImageView& picture);

/// How often each value occurs in a region: blue, green, red.
using Histogram = std::array<std::array<std::uint64_t, 256>, virtualboard::imaging::kBytesPerPixel>;
Histogram histogramOf(const virtualboard::imaging::ImageView& picture, const Region& region);

}  // namespace marovine::studio
