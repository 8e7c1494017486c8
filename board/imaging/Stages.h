#pragma once

/// The stages of the image path, each one pass over one line. Simple loops that the compiler vectorises;
/// every result is exact integer arithmetic, so a picture can be worked out by hand.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "marovine/Bayer.h"

namespace virtualboard::imaging {

/// Longest line that the frame buffer takes, in pixels.
inline constexpr std::size_t kMaxLine = 16384;

/// A factor of the exposure as the lines take it: 0 to 65536, from where on all but black is white.
float exposureGain(double factor);
/// A fixed-point factor of the white balance, 10 fraction bits, as fine as the design's coefficients.
std::uint16_t whiteBalanceGain(double coefficient);

/// Brightness: each pixel becomes min(255, pixel x gain), the product rounded to the nearest number (halves
/// to the even one).
void expose(std::span<std::uint8_t> line, float gain);

/// White balance on Bayer data: each pixel becomes min(255, floor(pixel x gain / 1024)), with `even` for
/// the span's pixels 0, 2, 4 ... and `odd` for the others.
void whiteBalance(std::span<std::uint8_t> line, std::uint16_t even, std::uint16_t odd);

/// Copies a line back to front. `in` and `out` are equally long and do not overlap.
void mirror(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);

/// One row of Bayer data. `pixels[-1]` and `pixels[width]` are valid, too: they hold the pixels next to the
/// edge once more (`pixels[1]` and `pixels[width - 2]`), so that the pattern goes on beyond the edge.
struct BayerRow {
    const std::uint8_t* pixels;
};

/// Three colour planes of one row, in memory order of a pixel's bytes.
struct PlaneRow {
    std::uint8_t* blue;
    std::uint8_t* green;
    std::uint8_t* red;
};

/// Fills `pixels[-1]` and `pixels[width]` of a row as `BayerRow` wants them.
void extendEdges(std::uint8_t* pixels, std::size_t width);

/// Bilinear interpolation of the missing colours of the middle row. `first` and `second` are the colours of
/// its pixels 0 and 1. With avg2(a, b) = (a + b + 1) / 2 and avg4 = (sum + 2) / 4, rounded down:
/// - on a red pixel green is avg4 of the four neighbours and blue is avg4 of the four diagonal ones;
///   on a blue pixel likewise with red for blue;
/// - on a green pixel the colour of the row's other pixels is avg2 of left and right, the colour of the
///   neighbouring rows is avg2 of above and below.
void deBayer(BayerRow above, BayerRow row, BayerRow below, std::size_t width, Colour first, Colour second,
             PlaneRow out);

/// As `deBayer`, but green on a red or blue pixel follows edges: avg2(left, right) where left and right
/// differ less than above and below, avg2(above, below) where they differ more, avg4 where equally.
void deBayerEnhanced(BayerRow above, BayerRow row, BayerRow below, std::size_t width, Colour first,
                     Colour second, PlaneRow out);

/// Lookup tables and packing: output pixel x is (tables[0][blue[x]], tables[1][green[x]],
/// tables[2][red[x]]) in this byte order.
void lookUpAndPack(const PlaneRow& planes, std::span<const std::array<std::uint8_t, 256>, 3> tables,
                   std::size_t width, std::uint8_t* out);

}  // namespace virtualboard::imaging
