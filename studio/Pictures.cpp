#include "studio/Pictures.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace marovine::studio {

using virtualboard::imaging::Image;
using virtualboard::imaging::ImageView;
using virtualboard::imaging::kBytesPerPixel;

namespace {

constexpr std::uint32_t kLargestFit = 65536;

const std::uint8_t* rowOf(const ImageView& picture, const Region& region, std::uint32_t row) {
    const std::size_t first = (std::size_t{region.y} + row) * picture.width + region.x;
    return picture.bytes.data() + first * kBytesPerPixel;
}

/// Where the pixels of one output column or row begin, from 0 to `to`, which is one past the last.
std::uint32_t begin(std::uint32_t index, std::uint32_t from, std::uint32_t to) {
    return static_cast<std::uint32_t>(std::uint64_t{index} * from / to);
}

/// A side of the result.
std::uint32_t scaledSide(std::uint32_t side, double scale) {
    return std::clamp(static_cast<std::uint32_t>(std::lround(side * scale)), std::uint32_t{1}, side);
}

/// Adds a row's pixels to the sums of the columns that they belong to.
void addRow(const std::uint8_t* row, std::uint32_t width, std::vector<std::uint32_t>& sums) {
    const auto columns = static_cast<std::uint32_t>(sums.size() / kBytesPerPixel);
    for (std::uint32_t column = 0; column < columns; ++column) {
        std::uint32_t blue = 0, green = 0, red = 0;
        const std::uint8_t* const end = row + begin(column + 1, width, columns) * kBytesPerPixel;
        for (const std::uint8_t* p = row + begin(column, width, columns) * kBytesPerPixel; p != end;
             p += kBytesPerPixel) {
            blue += p[0];
            green += p[1];
            red += p[2];
        }
        std::uint32_t* const sum = sums.data() + column * kBytesPerPixel;
        sum[0] += blue;
        sum[1] += green;
        sum[2] += red;
    }
}

}  // namespace

std::optional<Fit> parseFit(std::string_view text) {
    Fit fit;
    const char* const end = text.data() + text.size();
    const auto across = std::from_chars(text.data(), end, fit.width);
    if (across.ec != std::errc{} || across.ptr == end || *across.ptr != 'x') return std::nullopt;
    const auto down = std::from_chars(across.ptr + 1, end, fit.height);
    if (down.ec != std::errc{} || down.ptr != end) return std::nullopt;
    if (fit == Fit{} || fit.width > kLargestFit || fit.height > kLargestFit) return std::nullopt;
    return fit;
}

Region regionOf(const View& view, const ImageView& picture) {
    if (!view.region) return {0, 0, picture.width, picture.height};
    Region region = *view.region;
    region.x = std::min(region.x, picture.width);
    region.y = std::min(region.y, picture.height);
    region.width = std::min(region.width, picture.width - region.x);
    region.height = std::min(region.height, picture.height - region.y);
    return region;
}

Image shown(const ImageView& picture, const Region& region, const Fit& fit) {
    if (region.width == 0 || region.height == 0) return {};
    double scale = 1;
    if (fit.width != 0) scale = std::min(scale, static_cast<double>(fit.width) / region.width);
    if (fit.height != 0) scale = std::min(scale, static_cast<double>(fit.height) / region.height);
    Image result(scaledSide(region.width, scale), scaledSide(region.height, scale));
    const auto bytes = result.bytes();
    const std::size_t rowBytes = std::size_t{result.width} * kBytesPerPixel;
    std::vector<std::uint32_t> sums(rowBytes);
    for (std::uint32_t y = 0; y < result.height; ++y) {
        std::uint8_t* const out = bytes.data() + y * rowBytes;
        const std::uint32_t first = begin(y, region.height, result.height);
        const std::uint32_t end = begin(y + 1, region.height, result.height);
        if (result.width == region.width && end == first + 1) {
            std::copy_n(rowOf(picture, region, first), rowBytes, out);
            continue;
        }
        std::ranges::fill(sums, 0U);
        for (std::uint32_t row = first; row < end; ++row)
            addRow(rowOf(picture, region, row), region.width, sums);
        for (std::uint32_t x = 0; x < result.width; ++x) {
            const std::uint32_t columns =
                begin(x + 1, region.width, result.width) - begin(x, region.width, result.width);
            const std::uint32_t count = columns * (end - first);
            for (std::size_t c = x * kBytesPerPixel; c < (x + 1) * kBytesPerPixel; ++c)
                out[c] = static_cast<std::uint8_t>((sums[c] + count / 2) / count);
        }
    }
    return result;
}

void appendRgba(std::string& text, const ImageView& picture) {
    constexpr std::size_t kBytes = 4;
    const std::size_t start = text.size();
    const std::size_t pixels = std::size_t{picture.width} * picture.height;
    text.resize(start + pixels * kBytes);
    char* out = text.data() + start;
    const std::uint8_t* in = picture.bytes.data();
    for (std::size_t i = 0; i < pixels; ++i, in += kBytesPerPixel, out += kBytes) {
        out[0] = static_cast<char>(in[2]);
        out[1] = static_cast<char>(in[1]);
        out[2] = static_cast<char>(in[0]);
        out[3] = '\xFF';
    }
}

Histogram histogramOf(const ImageView& picture, const Region& region) {
    Histogram counts{};
    for (std::uint32_t y = 0; y < region.height; ++y) {
        const std::uint8_t* p = rowOf(picture, region, y);
        for (std::uint32_t x = 0; x < region.width; ++x, p += kBytesPerPixel)
            for (std::size_t channel = 0; channel < kBytesPerPixel; ++channel) ++counts[channel][p[channel]];
    }
    return counts;
}

}  // namespace marovine::studio
