#include "board/imaging/Stages.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace virtualboard::imaging {
namespace {

// The product is taken from the upper half of a 16 x 16 bit multiplication, which every vector unit has.
std::uint8_t balanced(std::uint8_t pixel, std::uint16_t gain) {
    const auto shifted = static_cast<std::uint16_t>(pixel << 6);  // the gain has 10 fraction bits
    const auto product = static_cast<std::int16_t>((std::uint32_t{shifted} * gain) >> 16);
    return static_cast<std::uint8_t>(product < 255 ? product : 255);
}

constexpr auto alternating() {
    std::array<std::uint8_t, kMaxLine + 1> result{};
    for (std::size_t i = 0; i < result.size(); i += 2) result[i] = 255;
    return result;
}
// 255 where the pixel index is even.
alignas(64) constexpr auto kAlternating = alternating();

std::uint8_t avg2(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a + b + 1) >> 1);
}

std::uint8_t avg4(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
    return static_cast<std::uint8_t>((a + b + c + d + 2) >> 2);
}

std::uint8_t difference(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::max(a, b) - std::min(a, b));
}

// Without a branch, so that both choices become vector operations.
std::uint8_t choose(std::uint8_t mask, std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a & mask) | (b & ~mask));
}

// The nine pixels around a position as pointers of their own: a compiler that sees that they are neighbours
// carries values from one turn of the loop to the next and no longer vectorises it.
struct Neighbours {
    const std::uint8_t *leftAbove, *above, *rightAbove;
    const std::uint8_t *left, *centre, *right;
    const std::uint8_t *leftBelow, *below, *rightBelow;
};

template <bool FollowEdges>
[[gnu::noinline]] void interpolate(const Neighbours& at, const std::uint8_t* __restrict chromaSite,
                                   std::size_t width, std::uint8_t* __restrict own,
                                   std::uint8_t* __restrict green, std::uint8_t* __restrict other) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint8_t left = at.left[x], right = at.right[x], up = at.above[x], down = at.below[x];
        const std::uint8_t centre = at.centre[x], mask = chromaSite[x];
        const std::uint8_t horizontal = avg2(left, right);
        const std::uint8_t vertical = avg2(up, down);
        const std::uint8_t diagonal =
            avg4(at.leftAbove[x], at.rightAbove[x], at.leftBelow[x], at.rightBelow[x]);
        std::uint8_t cross = avg4(left, right, up, down);
        if constexpr (FollowEdges) {
            const std::uint8_t across = difference(left, right), along = difference(up, down);
            const std::uint8_t steep = across < along ? horizontal : vertical;
            cross = across == along ? cross : steep;
        }
        own[x] = choose(mask, centre, horizontal);
        green[x] = choose(mask, cross, centre);
        other[x] = choose(mask, diagonal, vertical);
    }
}

template <bool FollowEdges>
void interpolateRow(BayerRow above, BayerRow row, BayerRow below, std::size_t width, Colour first,
                    Colour second, PlaneRow out) {
    const bool greenFirst = first == Colour::Green;
    const bool redRow = (greenFirst ? second : first) == Colour::Red;
    const std::uint8_t *a = above.pixels, *r = row.pixels, *b = below.pixels;
    interpolate<FollowEdges>({a - 1, a, a + 1, r - 1, r, r + 1, b - 1, b, b + 1},
                             kAlternating.data() + greenFirst, width, redRow ? out.red : out.blue, out.green,
                             redRow ? out.blue : out.red);
}

}  // namespace

float exposureGain(double factor) {
    return factor > 0 ? static_cast<float>(std::min(factor, 65536.0)) : 0;  // also when not a number
}

std::uint16_t whiteBalanceGain(double coefficient) {
    const double scaled = std::round(coefficient * 1024);
    if (!(scaled > 0)) return 0;  // also when not a number
    return static_cast<std::uint16_t>(std::min(scaled, 32767.0));
}

void expose(std::span<std::uint8_t> line, float gain) {
    // Added to a number below 2^22 this leaves its rounded value in the lowest bits.
    constexpr float kRound = 0x1.8p23F;
    for (auto& pixel : line) {
        const float exposed = std::min(static_cast<float>(pixel) * gain, 255.0F);
        pixel = static_cast<std::uint8_t>(std::bit_cast<std::uint32_t>(exposed + kRound));
    }
}

void whiteBalance(std::span<std::uint8_t> line, std::uint16_t even, std::uint16_t odd) {
    std::uint8_t* __restrict pixels = line.data();
    const std::size_t size = line.size();
    for (std::size_t i = 0; i < size; ++i) {
        pixels[i] = choose(kAlternating[i], balanced(pixels[i], even), balanced(pixels[i], odd));
    }
}

void mirror(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    const std::uint8_t* from = in.data() + in.size();
    std::uint8_t* to = out.data();
    std::size_t left = in.size();
    for (; left >= 8; left -= 8, to += 8) {
        std::uint64_t word;
        from -= 8;
        std::memcpy(&word, from, 8);
        word = __builtin_bswap64(word);
        std::memcpy(to, &word, 8);
    }
    while (left-- > 0) *to++ = *--from;
}

void extendEdges(std::uint8_t* pixels, std::size_t width) {
    pixels[-1] = pixels[width > 1 ? 1 : 0];
    pixels[width] = pixels[width > 1 ? width - 2 : 0];
}

void deBayer(BayerRow above, BayerRow row, BayerRow below, std::size_t width, Colour first, Colour second,
             PlaneRow out) {
    interpolateRow<false>(above, row, below, width, first, second, out);
}

void deBayerEnhanced(BayerRow above, BayerRow row, BayerRow below, std::size_t width, Colour first,
                     Colour second, PlaneRow out) {
    interpolateRow<true>(above, row, below, width, first, second, out);
}

void lookUpAndPack(const PlaneRow& planes, std::span<const std::array<std::uint8_t, 256>, 3> tables,
                   std::size_t width, std::uint8_t* out) {
    const std::uint8_t* __restrict blue = planes.blue;
    const std::uint8_t* __restrict green = planes.green;
    const std::uint8_t* __restrict red = planes.red;
    std::uint8_t* __restrict to = out;
    for (std::size_t x = 0; x < width; ++x) {
        to[3 * x] = tables[0][blue[x]];
        to[3 * x + 1] = tables[1][green[x]];
        to[3 * x + 2] = tables[2][red[x]];
    }
}

}  // namespace virtualboard::imaging
