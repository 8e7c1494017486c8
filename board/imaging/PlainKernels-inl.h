// The stages on the architecture's baseline, where tables of permutations are missing: mostly plain loops
// that the compiler turns into vectors. Included by Stages.cpp only.

#include <emmintrin.h>

HWY_BEFORE_NAMESPACE();
namespace virtualboard::imaging::HWY_NAMESPACE {
namespace {

__m128i load(const std::uint8_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

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
    const __m128i forward = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const __m128i backward = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    const auto same = [](__m128i a, __m128i b) { return _mm_movemask_epi8(_mm_cmpeq_epi8(a, b)) == 0xFFFF; };
    const auto from = how.from();
    const auto pixelAt = [&](std::size_t x) -> std::uint64_t {
        return from[x] == Rearrangement::kBlack ? 0 : in[from[x]];
    };
    std::size_t x = 0;
    const Rearrangement::Run* run = how.runs().data();
    for (const std::uint32_t end : how.runEnds()) {
        const std::size_t place = std::min(x, from.size() - kBlock);
        const auto* const last = how.runs().data() + end;
        const __m128i places = last - run == 1 ? load(run->places.data()) : _mm_setzero_si128();
        std::uint64_t words[2] = {};
        if (same(places, forward)) {
            std::memcpy(words, in + run->from, kBlock);
        } else if (same(places, backward)) {
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

__m128i select(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}

__m128i difference(__m128i a, __m128i b) {
    return _mm_sub_epi8(_mm_max_epu8(a, b), _mm_min_epu8(a, b));
}

// (a + b + c + d + 2) / 4 from the two rounded means; where one of them was rounded up and theirs is as well,
// it is one too large.
__m128i mean4(__m128i a, __m128i b, __m128i c, __m128i d) {
    const __m128i ab = _mm_avg_epu8(a, b), cd = _mm_avg_epu8(c, d);
    const __m128i rounded = _mm_or_si128(_mm_xor_si128(a, b), _mm_xor_si128(c, d));
    const __m128i tooLarge = _mm_and_si128(_mm_and_si128(rounded, _mm_xor_si128(ab, cd)), _mm_set1_epi8(1));
    return _mm_sub_epi8(_mm_avg_epu8(ab, cd), tooLarge);
}

template <bool kFollowEdges>
__m128i greenOf(__m128i left, __m128i right, __m128i up, __m128i down) {
    const __m128i cross = mean4(left, right, up, down);
    if constexpr (!kFollowEdges) return cross;
    const __m128i across = difference(left, right), along = difference(up, down);
    const __m128i larger = _mm_max_epu8(across, along);
    return select(_mm_cmpeq_epi8(larger, along),
                  select(_mm_cmpeq_epi8(larger, across), cross, _mm_avg_epu8(left, right)),
                  _mm_avg_epu8(up, down));
}

/// Three rows at a position of theirs.
struct Rows {
    const std::uint8_t *above, *row, *below;
};

/// The row's own colour, green, and the colour of the rows beside it.
struct Planes {
    static constexpr std::size_t kWidth = 1024;  // so that rows and planes stay in the first-level cache
    alignas(16) std::uint8_t own[kWidth], green[kWidth], other[kWidth];
};

template <bool kFollowEdges>
[[gnu::noinline]] void interpolate(Rows at, __m128i chroma, std::size_t width, Planes& planes) {
    const auto store = [](std::uint8_t* to, __m128i pixels) {
        _mm_store_si128(reinterpret_cast<__m128i*>(to), pixels);
    };
    for (std::size_t x = 0; x < width; x += 16, at.above += 16, at.row += 16, at.below += 16) {
        const __m128i left = load(at.row - 1), centre = load(at.row), right = load(at.row + 1);
        const __m128i up = load(at.above), down = load(at.below);
        const __m128i cross = greenOf<kFollowEdges>(left, right, up, down);
        const __m128i diagonal =
            mean4(load(at.above - 1), load(at.above + 1), load(at.below - 1), load(at.below + 1));
        store(planes.own + x, select(chroma, centre, _mm_avg_epu8(left, right)));
        store(planes.green + x, select(chroma, cross, centre));
        store(planes.other + x, select(chroma, diagonal, _mm_avg_epu8(up, down)));
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
        const __m128i b = load(blue + x), g = load(green + x), r = load(red + x);
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

/// The tables of blue, green and red with each byte where a pixel has it.
struct PixelTables {
    explicit PixelTables(const LookupTable* tables) {
        for (unsigned plane = 0; plane < 3; ++plane) {
            for (std::size_t i = 0; i < 256; ++i) at[plane][i] = std::uint32_t{tables[plane][i]} << 8 * plane;
        }
    }
    std::uint64_t pixel(std::size_t blue, std::size_t green, std::size_t red) const {
        return at[0][blue] | at[1][green] | at[2][red];
    }
    std::uint32_t at[3][256];
};

void lookUpAndPack(const std::uint8_t* blue, const std::uint8_t* green, const std::uint8_t* red,
                   std::size_t width, const PixelTables& tables, std::uint8_t* out) {
    std::size_t x = 0;
    // Loads are the limit: eight pixels share the one of their blue. A store writes two bytes too many, which
    // the next one puts right.
    for (; x + 9 <= width; x += 8) {
        std::uint64_t blues = 0;
        std::memcpy(&blues, blue + x, sizeof blues);
        for (std::size_t i = x; i < x + 8; i += 2, blues >>= 16, out += 6) {
            const std::uint64_t two = tables.pixel(blues & 255, green[i], red[i]) |
                                      tables.pixel(blues >> 8 & 255, green[i + 1], red[i + 1]) << 24;
            std::memcpy(out, &two, sizeof two);
        }
    }
    for (; x < width; ++x, out += 3) {
        const std::uint64_t one = tables.pixel(blue[x], green[x], red[x]);
        std::memcpy(out, &one, 3);
    }
}

void developLine(const std::uint8_t* a, const std::uint8_t* r, const std::uint8_t* b, std::size_t width,
                 const Development& how, std::uint8_t* out) {
    const bool greenFirst = how.first == Colour::Green;
    const bool redRow = (greenFirst ? how.second : how.first) == Colour::Red;
    // Bytes of the pixels that are red or blue.
    const __m128i chroma = _mm_set1_epi16(static_cast<std::int16_t>(greenFirst ? 0xFF00 : 0x00FF));
    const auto kernel = how.followEdges ? interpolate<true> : interpolate<false>;
    Planes planes;
    const std::uint8_t* const blue = redRow ? planes.other : planes.own;
    const std::uint8_t* const red = redRow ? planes.own : planes.other;
    std::optional<PixelTables> tables;
    if (how.tables != nullptr) tables.emplace(how.tables);
    for (std::size_t x = 0; x < width; x += Planes::kWidth) {
        const std::size_t count = std::min(width - x, Planes::kWidth);
        kernel({a + x, r + x, b + x}, chroma, count, planes);
        if (tables)
            lookUpAndPack(blue, planes.green, red, count, *tables, out + 3 * x);
        else
            pack(blue, planes.green, red, count, out + 3 * x);
    }
}

}  // namespace
}  // namespace virtualboard::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
