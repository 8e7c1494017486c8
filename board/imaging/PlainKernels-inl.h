// The stages on the architecture's baseline, where tables of permutations are missing: mostly plain loops
// that the compiler turns into vectors. Included by Stages.cpp only.

#include <emmintrin.h>

HWY_BEFORE_NAMESPACE();
namespace virtualboard::imaging::HWY_NAMESPACE {
namespace {

__m128i exposed(__m128i pixels, __m128 gain) {
    return _mm_cvtps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(pixels), gain));
}

// Sixteen pixels at a time: conversion rounds to the nearest, packing saturates.
__m128i exposed16(__m128i pixels, __m128 gain) {
    const __m128i none = _mm_setzero_si128();
    const __m128i low = _mm_unpacklo_epi8(pixels, none), high = _mm_unpackhi_epi8(pixels, none);
    return _mm_packus_epi16(_mm_packs_epi32(exposed(_mm_unpacklo_epi16(low, none), gain),
                                            exposed(_mm_unpackhi_epi16(low, none), gain)),
                            _mm_packs_epi32(exposed(_mm_unpacklo_epi16(high, none), gain),
                                            exposed(_mm_unpackhi_epi16(high, none), gain)));
}

void exposeLine(std::uint8_t* line, std::size_t width, float gain) {
    const __m128 factor = _mm_set1_ps(gain);
    std::size_t x = 0;
    for (; x + 16 <= width; x += 16) {
        auto* const at = reinterpret_cast<__m128i*>(line + x);
        _mm_storeu_si128(at, exposed16(_mm_loadu_si128(at), factor));
    }
    __m128i last{};
    std::memcpy(&last, line + x, width - x);
    last = exposed16(last, factor);
    std::memcpy(line + x, &last, width - x);
}

constexpr auto alternating() {
    std::array<std::uint8_t, kMaxLine + 1> result{};
    for (std::size_t i = 0; i < result.size(); i += 2) result[i] = 255;
    return result;
}
// 255 where the pixel index is even.
alignas(64) constexpr auto kAlternating = alternating();

// Without a branch, so that both choices become vector operations.
std::uint8_t choose(std::uint8_t mask, std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a & mask) | (b & ~mask));
}

// The product is taken from the upper half of a 16 x 16 bit multiplication, which every vector unit has.
std::uint8_t balanced(std::uint8_t pixel, std::uint16_t gain) {
    const auto shifted = static_cast<std::uint16_t>(pixel << 6);  // the gain has 10 fraction bits
    const auto product = static_cast<std::int16_t>((std::uint32_t{shifted} * gain) >> 16);
    return static_cast<std::uint8_t>(product < 255 ? product : 255);
}

void balanceLine(std::uint8_t* __restrict line, std::size_t width, std::uint16_t even, std::uint16_t odd) {
    for (std::size_t x = 0; x < width; ++x)
        line[x] = choose(kAlternating[x], balanced(line[x], even), balanced(line[x], odd));
}

void rearrangeLine(const Rearrangement& how, const std::uint8_t* in, std::uint8_t* out) {
    constexpr std::size_t kBlock = Rearrangement::kBlock;
    constexpr std::array<std::uint8_t, kBlock> kBackward{15, 14, 13, 12, 11, 10, 9, 8,
                                                         7,  6,  5,  4,  3,  2,  1, 0};
    const auto from = how.from();
    const auto pixelAt = [&](std::size_t x) -> std::uint64_t {
        return from[x] == Rearrangement::kBlack ? 0 : in[from[x]];
    };
    std::size_t x = 0;
    const Rearrangement::Run* run = how.runs().data();
    for (const std::uint32_t end : how.runEnds()) {
        const std::size_t place = std::min(x, from.size() - kBlock);
        const auto* const last = how.runs().data() + end;
        std::uint64_t words[2] = {};
        if (last - run == 1 && run->places == kBackward) {
            std::memcpy(words, in + run->from, kBlock);
            words[0] = __builtin_bswap64(std::exchange(words[1], __builtin_bswap64(words[0])));
        } else {
            for (std::size_t i = 0; i < kBlock; ++i) words[i / 8] |= pixelAt(place + i) << i % 8 * 8;
        }
        std::memcpy(out + place, words, kBlock);
        run = last;
        x = place + kBlock;
    }
    for (; x < from.size(); ++x) out[x] = static_cast<std::uint8_t>(pixelAt(x));
}

std::uint8_t mean2(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a + b + 1) >> 1);
}

std::uint8_t mean4(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
    return static_cast<std::uint8_t>((a + b + c + d + 2) >> 2);
}

std::uint8_t difference(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::max(a, b) - std::min(a, b));
}

// The nine pixels around a position as pointers of their own: a compiler that sees that they are neighbours
// carries values from one turn of the loop to the next and no longer vectorises it.
struct Neighbours {
    const std::uint8_t *leftAbove, *above, *rightAbove;
    const std::uint8_t *left, *centre, *right;
    const std::uint8_t *leftBelow, *below, *rightBelow;
};

/// The row's own colour, green, and the colour of the rows beside it.
struct Planes {
    static constexpr std::size_t kWidth = 1024;  // so that rows and planes stay in the first-level cache
    alignas(16) std::uint8_t own[kWidth], green[kWidth], other[kWidth];
};

template <bool kFollowEdges>
[[gnu::noinline]] void interpolate(const Neighbours& at, const std::uint8_t* __restrict chromaSite,
                                   std::size_t width, std::uint8_t* __restrict own,
                                   std::uint8_t* __restrict green, std::uint8_t* __restrict other) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint8_t left = at.left[x], right = at.right[x], up = at.above[x], down = at.below[x];
        const std::uint8_t centre = at.centre[x], mask = chromaSite[x];
        const std::uint8_t horizontal = mean2(left, right);
        const std::uint8_t vertical = mean2(up, down);
        const std::uint8_t diagonal =
            mean4(at.leftAbove[x], at.rightAbove[x], at.leftBelow[x], at.rightBelow[x]);
        std::uint8_t cross = mean4(left, right, up, down);
        if constexpr (kFollowEdges) {
            const std::uint8_t across = difference(left, right), along = difference(up, down);
            const std::uint8_t steep = across < along ? horizontal : vertical;
            cross = across == along ? cross : steep;
        }
        own[x] = choose(mask, centre, horizontal);
        green[x] = choose(mask, cross, centre);
        other[x] = choose(mask, diagonal, vertical);
    }
}

// Two pixels of four bytes become six bytes.
__m128i withoutFourth(__m128i pixels) {
    const __m128i first = _mm_and_si128(pixels, _mm_set1_epi64x(0xFFFFFF));
    const __m128i second = _mm_and_si128(_mm_srli_epi64(pixels, 8), _mm_set1_epi64x(0xFFFFFF000000));
    return _mm_or_si128(first, second);
}

void pack(const std::uint8_t* blue, const std::uint8_t* green, const std::uint8_t* red, std::size_t width,
          std::uint8_t* out) {
    std::size_t x = 0;
    // Each store of eight bytes writes two too many, which the next one puts right.
    for (; x + 17 <= width; x += 16) {
        const auto load = [x](const std::uint8_t* plane) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(plane + x));
        };
        const __m128i b = load(blue), g = load(green), r = load(red);
        for (const bool high : {false, true}) {
            const __m128i bg = high ? _mm_unpackhi_epi8(b, g) : _mm_unpacklo_epi8(b, g);
            const __m128i rr = high ? _mm_unpackhi_epi8(r, r) : _mm_unpacklo_epi8(r, r);
            for (const __m128i four : {_mm_unpacklo_epi16(bg, rr), _mm_unpackhi_epi16(bg, rr)}) {
                const __m128i packed = withoutFourth(four);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(out), packed);
                _mm_storeh_pd(reinterpret_cast<double*>(out + 6), _mm_castsi128_pd(packed));
                out += 12;
            }
        }
    }
    for (; x < width; ++x) {
        *out++ = blue[x];
        *out++ = green[x];
        *out++ = red[x];
    }
}

void lookUpAndPack(const std::uint8_t* blue, const std::uint8_t* green, const std::uint8_t* red,
                   std::size_t width, const LookupTable* tables, std::uint8_t* out) {
    const auto pixel = [&](std::size_t x) {
        return tables[0][blue[x]] | std::uint32_t{tables[1][green[x]]} << 8 |
               std::uint32_t{tables[2][red[x]]} << 16;
    };
    std::size_t x = 0;
    for (; x + 3 <= width; x += 2, out += 6) {
        const std::uint64_t two = pixel(x) | std::uint64_t{pixel(x + 1)} << 24;
        std::memcpy(out, &two, sizeof two);
    }
    for (; x < width; ++x, out += 3) {
        const std::uint32_t one = pixel(x);
        std::memcpy(out, &one, 3);
    }
}

void developLine(const std::uint8_t* a, const std::uint8_t* r, const std::uint8_t* b, std::size_t width,
                 const Development& how, std::uint8_t* out) {
    const bool greenFirst = how.first == Colour::Green;
    const bool redRow = (greenFirst ? how.second : how.first) == Colour::Red;
    const auto kernel = how.followEdges ? interpolate<true> : interpolate<false>;
    Planes planes;
    const std::uint8_t* const blue = redRow ? planes.other : planes.own;
    const std::uint8_t* const red = redRow ? planes.own : planes.other;
    for (std::size_t x = 0; x < width; x += Planes::kWidth) {
        const std::size_t count = std::min(width - x, Planes::kWidth);
        kernel({a - 1, a, a + 1, r - 1, r, r + 1, b - 1, b, b + 1}, kAlternating.data() + greenFirst, count,
               planes.own, planes.green, planes.other);
        if (how.tables != nullptr)
            lookUpAndPack(blue, planes.green, red, count, how.tables, out);
        else
            pack(blue, planes.green, red, count, out);
        a += count, r += count, b += count, out += 3 * count;
    }
}

}  // namespace
}  // namespace virtualboard::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
