#pragma once

/// The stages of the image path, each one pass over one line, in exact integer arithmetic, so that a picture
/// can be worked out by hand. They come for several vector instruction sets; the best that the machine has is
/// chosen at the first call, and all give the same lines.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

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

/// A line put into another order, prepared for the vector units: sixteen pixels at a time are picked from
/// runs of sixteen neighbours.
class Rearrangement {
 public:
    static constexpr std::size_t kBlock = 16;
    static constexpr std::uint16_t kBlack = 0xFFFF;

    Rearrangement() = default;
    /// `from` names the pixel of the old line for each pixel of the new one, or `kBlack`; the old line has
    /// `count` pixels.
    Rearrangement(std::vector<std::uint16_t> from, std::size_t count);

    /// `in` holds the old line's pixels, `out` takes as many as were named. They do not overlap.
    void apply(const std::uint8_t* in, std::uint8_t* out) const;

    /// Neighbours from one of the old line's pixels on, and which of them goes to each place of a block
    /// (0x80: none).
    struct Run {
        std::uint16_t from = 0;
        std::array<std::uint8_t, kBlock> places{};
    };
    std::span<const std::uint16_t> from() const { return from_; }
    std::span<const Run> runs() const { return runs_; }
    /// Per block the end of its runs. The last block ends with the line, so it may overlap the one before it.
    /// Empty for lines shorter than a block.
    std::span<const std::uint32_t> runEnds() const { return runEnds_; }

 private:
    std::vector<std::uint16_t> from_;
    std::vector<Run> runs_;
    std::vector<std::uint32_t> runEnds_;
};

/// One row of Bayer data. `pixels[-1]` and `pixels[width]` hold the pixels next to the edge once more
/// (`pixels[1]` and `pixels[width - 2]`), so that the pattern goes on beyond the edge. Up to `kMargin` bytes
/// beyond the row may be read, whatever they hold.
struct BayerRow {
    const std::uint8_t* pixels;
    static constexpr std::size_t kMargin = 64;
};

/// Fills `pixels[-1]` and `pixels[width]` of a row as `BayerRow` wants them.
void extendEdges(std::uint8_t* pixels, std::size_t width);

using LookupTable = std::array<std::uint8_t, 256>;

/// How raw rows become colour.
struct Development {
    bool followEdges = true;              ///< the enhanced interpolation
    Colour first = Colour::Red;           ///< colour of the row's pixel 0
    Colour second = Colour::Green;        ///< colour of its pixel 1
    const LookupTable* tables = nullptr;  ///< blue, green, red; null where all keep every value
};

/// Interpolates the missing colours of the middle row, looks all up in the tables and packs them: `width`
/// pixels of three bytes, blue, green, red. With avg2(a, b) = (a + b + 1) / 2 and avg4 = (sum + 2) / 4,
/// rounded down:
/// - on a red pixel green is avg4 of the four neighbours and blue is avg4 of the four diagonal ones;
///   on a blue pixel likewise with red for blue;
/// - on a green pixel the colour of the row's other pixels is avg2 of left and right, the colour of the
///   neighbouring rows is avg2 of above and below.
/// With `followEdges` green on a red or blue pixel is avg2(left, right) where left and right differ less than
/// above and below, avg2(above, below) where they differ more, avg4 where equally.
void develop(BayerRow above, BayerRow row, BayerRow below, std::size_t width, const Development& how,
             std::uint8_t* out);

/// Names of the instruction sets that this machine has and the stages know, the best first; the last one is
/// the baseline of the architecture.
std::vector<const char*> instructionSets();
/// For tests and measurements: takes the stages of one of `instructionSets`, for the whole process.
void useInstructionSet(const char* name);

}  // namespace virtualboard::imaging
