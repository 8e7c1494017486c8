// The stages in vectors of 32 or 64 bytes. Included by Stages.cpp once for each instruction set.

HWY_BEFORE_NAMESPACE();
namespace virtualboard::imaging::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
using ByteVector = hn::Vec<Bytes>;
using ByteMask = hn::Mask<Bytes>;
constexpr Bytes kBytes;
constexpr std::size_t kLanes = hn::MaxLanes(kBytes);
static_assert(kLanes <= BayerRow::kMargin);

// Calls `vector(pixels)` for each vector of a line, the last one in a buffer of its own.
template <typename Vector>
HWY_INLINE void inPlace(std::uint8_t* line, std::size_t width, std::size_t lanes, Vector vector) {
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) vector(line + x);
    if (x == width) return;
    std::uint8_t last[kLanes] = {};
    std::memcpy(last, line + x, width - x);
    vector(last);
    std::memcpy(line + x, last, width - x);
}

void balanceLine(std::uint8_t* line, std::size_t width, std::uint16_t even, std::uint16_t odd) {
    const hn::ScalableTag<std::uint16_t> pairs;
    const auto evenGain = hn::Set(pairs, even), oddGain = hn::Set(pairs, odd);
    const auto white = hn::Set(pairs, 255), low = hn::Set(pairs, 0x00FF), high = hn::Set(pairs, 0xFF00);
    inPlace(line, width, kLanes, [&](std::uint8_t* at) HWY_ATTR {
        const auto pixels = hn::BitCast(pairs, hn::LoadU(kBytes, at));
        // Both six bits up, so that ten fraction bits of the gain end below the product's upper half.
        const auto first = hn::ShiftLeft<6>(hn::And(pixels, low));
        const auto second = hn::ShiftRight<2>(hn::And(pixels, high));
        const auto balancedFirst = hn::Min(hn::MulHigh(first, evenGain), white);
        const auto balancedSecond = hn::Min(hn::MulHigh(second, oddGain), white);
        const auto both = hn::Or(balancedFirst, hn::ShiftLeft<8>(balancedSecond));
        hn::StoreU(hn::BitCast(kBytes, both), kBytes, at);
    });
}

void rearrangeLine(const Rearrangement& how, const std::uint8_t* in, std::uint8_t* out) {
    const auto from = how.from();
    if (how.runEnds().empty()) {
        for (const std::uint16_t pixel : from)
            *out++ = pixel == Rearrangement::kBlack ? std::uint8_t{0} : in[pixel];
        return;
    }
    const hn::Full128<std::uint8_t> block;
    std::size_t place = 0;
    const Rearrangement::Run* run = how.runs().data();
    for (const std::uint32_t end : how.runEnds()) {
        auto pixels = hn::Zero(block);
        for (const auto* last = how.runs().data() + end; run != last; ++run) {
            const auto picked = hn::TableLookupBytesOr0(hn::LoadU(block, in + run->from),
                                                        hn::LoadU(block, run->places.data()));
            pixels = hn::Or(pixels, picked);
        }
        hn::StoreU(pixels, block, out + std::min(place, from.size() - Rearrangement::kBlock));
        place += Rearrangement::kBlock;
    }
}

// ---- lookup tables ----

#if HWY_TARGET == HWY_AVX3_DL
// The table lies in four registers: two lookups over two of them each, by the lower seven bits.
class Table {
 public:
    explicit Table(const LookupTable& table) {
        for (std::size_t i = 0; i < 4; ++i) parts_[i] = hn::LoadU(kBytes, table.data() + 64 * i);
    }
    HWY_INLINE ByteVector operator()(ByteVector index) const {
        const ByteVector low{_mm512_permutex2var_epi8(parts_[0].raw, index.raw, parts_[1].raw)};
        const ByteVector high{_mm512_permutex2var_epi8(parts_[2].raw, index.raw, parts_[3].raw)};
        return hn::IfThenElse(hn::MaskFromVec(index), high, low);
    }

 private:
    ByteVector parts_[4];
};
#else
// Sixteen lookups by the lower four bits, of which each upper bit keeps half.
class Table {
 public:
    explicit Table(const LookupTable& table) : table_(table.data()) {}
    HWY_INLINE ByteVector operator()(ByteVector index) const {
        ByteVector bits[4];  // from bit 4 to bit 7, each as its byte's highest
        bits[3] = index;
        for (int i = 3; i > 0; --i) bits[i - 1] = hn::Add(bits[i], bits[i]);
        return half<4>(0, hn::And(index, hn::Set(kBytes, 15)), bits);
    }

 private:
    // A mask of which only the highest bits count, as the instruction has it.
    static HWY_INLINE ByteVector choose(ByteVector bits, ByteVector high, ByteVector low) {
        const hn::RebindToSigned<Bytes> wholes;
        return hn::BitCast(kBytes,
                           hn::IfNegativeThenElse(hn::BitCast(wholes, bits), hn::BitCast(wholes, high),
                                                  hn::BitCast(wholes, low)));
    }
    // The lookup over 16 x 2^kBits entries from `first` on.
    template <int kBits>
    HWY_INLINE ByteVector half(std::size_t first, ByteVector index, const ByteVector* bits) const {
        if constexpr (kBits == 0) {
            return hn::TableLookupBytes(hn::LoadDup128(kBytes, table_ + first), index);
        } else {
            const ByteVector low = half<kBits - 1>(first, index, bits);
            const ByteVector high = half<kBits - 1>(first + (std::size_t{8} << kBits), index, bits);
            return choose(bits[kBits - 1], high, low);
        }
    }

    const std::uint8_t* table_;
};
#endif

// ---- exposure ----

// Numbers of 16 bits to bytes, saturating; halves of the lanes' own order, which unpacking gave them.
HWY_INLINE ByteVector packed(hn::Vec<hn::Repartition<std::int16_t, Bytes>> low,
                             hn::Vec<hn::Repartition<std::int16_t, Bytes>> high) {
#if HWY_TARGET == HWY_AVX3_DL
    return ByteVector{_mm512_packus_epi16(low.raw, high.raw)};
#else
    return ByteVector{_mm256_packus_epi16(low.raw, high.raw)};
#endif
}

void exposeLine(std::uint8_t* line, std::size_t width, float gain) {
    const hn::ScalableTag<float> real;
    const hn::ScalableTag<std::int32_t> whole;
    const hn::ScalableTag<std::int16_t> half;
    const hn::ScalableTag<std::uint16_t> unsignedHalf;
    const auto factor = hn::Set(real, gain);
    const auto none = hn::Zero(unsignedHalf);
    // Conversion rounds to the nearest. No addition may follow the product, it could be fused with it.
    const auto scaled = [&](auto pixels) HWY_ATTR {
        return hn::NearestInt(hn::Mul(hn::ConvertTo(real, hn::BitCast(whole, pixels)), factor));
    };
    const auto scaledHalf = [&](auto pixels) HWY_ATTR {
        const auto wide = hn::BitCast(unsignedHalf, pixels);
        return hn::ReorderDemote2To(half, scaled(hn::InterleaveLower(unsignedHalf, wide, none)),
                                    scaled(hn::InterleaveUpper(unsignedHalf, wide, none)));
    };
    const auto exposed = [&](ByteVector pixels) HWY_ATTR {
        const auto black = hn::Zero(kBytes);
        const auto low = scaledHalf(hn::InterleaveLower(kBytes, pixels, black));
        const auto high = scaledHalf(hn::InterleaveUpper(kBytes, pixels, black));
        return packed(low, high);
    };
#if HWY_TARGET == HWY_AVX3_DL
    // A lookup costs a quarter of the conversions: those are made once for each value.
    LookupTable values;
    for (std::size_t i = 0; i < values.size(); i += kLanes)
        hn::StoreU(exposed(hn::Iota(kBytes, static_cast<std::uint8_t>(i))), kBytes, values.data() + i);
    const Table pixelOf(values);
#else
    const auto& pixelOf = exposed;
#endif
    inPlace(line, width, kLanes,
            [&](std::uint8_t* at) HWY_ATTR { hn::StoreU(pixelOf(hn::LoadU(kBytes, at)), kBytes, at); });
}

// ---- packing ----

#if HWY_TARGET == HWY_AVX3_DL
constexpr std::size_t kBlock = 64;
#else
constexpr std::size_t kBlock = 16;
#endif
static_assert(kBlock % 3 == 1);

// In blocks that leave a remainder of one when divided by three, one permutation of each plane puts its bytes
// where all three packed blocks want them.
struct Places {
    alignas(64) std::uint8_t from[3][kLanes] = {};     // of a plane, in its block
    alignas(64) std::uint8_t remains[3][kLanes] = {};  // 255 where the place has this remainder by three
};
constexpr Places kPlaces = [] {
    Places places;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        for (std::size_t i = 0; i < kLanes; ++i) {
            const std::size_t place = i % kBlock, packed = (plane + 3 - place % 3) % 3;
            places.from[plane][i] = static_cast<std::uint8_t>((packed * kBlock + place - plane) / 3);
            places.remains[plane][i] = place % 3 == plane ? 255 : 0;
        }
    }
    return places;
}();

/// Packs three planes into pixels.
class Packer {
 public:
    Packer() {
        for (std::size_t i = 0; i < 3; ++i) from_[i] = hn::Load(kBytes, kPlaces.from[i]);
        for (std::size_t i = 0; i < 2; ++i)
            remains_[i] = hn::MaskFromVec(hn::Load(kBytes, kPlaces.remains[i]));
    }

    HWY_INLINE void operator()(ByteVector blue, ByteVector green, ByteVector red, std::uint8_t* out) const {
        const ByteVector b = permute(blue, from_[0]), g = permute(green, from_[1]),
                         r = permute(red, from_[2]);
        const auto merge = [this](ByteVector first, ByteVector second, ByteVector third) HWY_ATTR {
            return hn::IfThenElse(remains_[0], first, hn::IfThenElse(remains_[1], second, third));
        };
        store(merge(b, g, r), merge(g, r, b), merge(r, b, g), out);
    }

 private:
#if HWY_TARGET == HWY_AVX3_DL
    static HWY_INLINE ByteVector permute(ByteVector plane, ByteVector places) {
        return ByteVector{_mm512_permutexvar_epi8(places.raw, plane.raw)};
    }
    static HWY_INLINE void store(ByteVector first, ByteVector second, ByteVector third, std::uint8_t* out) {
        hn::StoreU(first, kBytes, out);
        hn::StoreU(second, kBytes, out + kLanes);
        hn::StoreU(third, kBytes, out + 2 * kLanes);
    }
#else
    static HWY_INLINE ByteVector permute(ByteVector plane, ByteVector places) {
        return hn::TableLookupBytes(plane, places);
    }
    // Each half of a vector holds one block of its half of the planes.
    static HWY_INLINE void store(ByteVector first, ByteVector second, ByteVector third, std::uint8_t* out) {
        hn::StoreU(hn::ConcatLowerLower(kBytes, second, first), kBytes, out);
        hn::StoreU(hn::ConcatUpperLower(kBytes, first, third), kBytes, out + kLanes);
        hn::StoreU(hn::ConcatUpperUpper(kBytes, third, second), kBytes, out + 2 * kLanes);
    }
#endif

    ByteVector from_[3];
    ByteMask remains_[2];
};

// ---- interpolation ----

// (a + b + c + d + 2) / 4 from the two rounded means; `differences` is odd where one of them was rounded up.
// Where the mean of the means is rounded up as well it is one too large.
HWY_INLINE ByteVector mean4(ByteVector ab, ByteVector cd, ByteVector differences) {
    const auto tooLarge = hn::And(hn::And(differences, hn::Xor(ab, cd)), hn::Set(kBytes, 1));
    return hn::Sub(hn::AverageRound(ab, cd), tooLarge);
}

template <bool kFollowEdges>
HWY_INLINE ByteVector greenOf(ByteVector left, ByteVector right, ByteVector up, ByteVector down,
                              ByteVector horizontal, ByteVector vertical) {
    const auto cross = mean4(horizontal, vertical, hn::Or(hn::Xor(left, right), hn::Xor(up, down)));
    if constexpr (!kFollowEdges) return cross;
    const auto across = hn::Sub(hn::Max(left, right), hn::Min(left, right));
    const auto along = hn::Sub(hn::Max(up, down), hn::Min(up, down));
    const auto larger = hn::Max(across, along);
    return hn::IfThenElse(hn::Eq(larger, along), hn::IfThenElse(hn::Eq(larger, across), cross, horizontal),
                          vertical);
}

/// The pointers of a line's three rows, and where its pixels go.
struct Rows {
    const std::uint8_t *above, *row, *below;
    std::size_t width;
    std::uint8_t* out;
};

template <bool kFollowEdges, bool kRedRow, typename LookUp>
void developRow(const Rows rows, bool greenFirst, const LookUp lookUp) {
    const Packer pack;
    // Bytes of the pixels that are red or blue.
    const hn::ScalableTag<std::uint16_t> pairs;
    const ByteMask chroma = hn::MaskFromVec(
        hn::BitCast(kBytes, hn::Set(pairs, static_cast<std::uint16_t>(greenFirst ? 0xFF00 : 0x00FF))));
    const auto vector = [&](std::size_t x, std::uint8_t* out) HWY_ATTR {
        const auto load = [x](const std::uint8_t* row, int shift) HWY_ATTR {
            return hn::LoadU(kBytes, row + static_cast<std::ptrdiff_t>(x) + shift);
        };
        const auto left = load(rows.row, -1), centre = load(rows.row, 0), right = load(rows.row, 1);
        const auto up = load(rows.above, 0), down = load(rows.below, 0);
        const auto leftUp = load(rows.above, -1), rightUp = load(rows.above, 1);
        const auto leftDown = load(rows.below, -1), rightDown = load(rows.below, 1);
        const auto horizontal = hn::AverageRound(left, right), vertical = hn::AverageRound(up, down);
        const auto diagonal = mean4(hn::AverageRound(leftUp, rightUp), hn::AverageRound(leftDown, rightDown),
                                    hn::Or(hn::Xor(leftUp, rightUp), hn::Xor(leftDown, rightDown)));
        const auto cross = greenOf<kFollowEdges>(left, right, up, down, horizontal, vertical);
        const auto own = hn::IfThenElse(chroma, centre, horizontal);
        const auto green = hn::IfThenElse(chroma, cross, centre);
        const auto other = hn::IfThenElse(chroma, diagonal, vertical);
        pack(lookUp(0, kRedRow ? other : own), lookUp(1, green), lookUp(2, kRedRow ? own : other), out);
    };
    // One place that calls it, so that it becomes part of the loop.
    std::uint8_t last[3 * kLanes];
    for (std::size_t x = 0; x < rows.width; x += kLanes)
        vector(x, x + kLanes <= rows.width ? rows.out + 3 * x : last);
    const std::size_t rest = rows.width % kLanes;
    std::memcpy(rows.out + 3 * (rows.width - rest), last, 3 * rest);
}

struct NoTables {
    HWY_INLINE ByteVector operator()(int /*plane*/, ByteVector values) const { return values; }
};

struct ThreeTables {
    HWY_INLINE ByteVector operator()(int plane, ByteVector values) const { return tables[plane](values); }
    Table tables[3];
};

template <bool kFollowEdges, typename LookUp>
void developRow(const Rows& rows, const Development& how, const LookUp& lookUp) {
    const bool greenFirst = how.first == Colour::Green;
    const bool redRow = (greenFirst ? how.second : how.first) == Colour::Red;
    (redRow ? developRow<kFollowEdges, true, LookUp>
            : developRow<kFollowEdges, false, LookUp>)(rows, greenFirst, lookUp);
}

void developLine(const std::uint8_t* above, const std::uint8_t* row, const std::uint8_t* below,
                 std::size_t width, const Development& how, std::uint8_t* out) {
    const Rows rows{above, row, below, width, out};
    if (how.tables == nullptr) {
        (how.followEdges ? developRow<true, NoTables> : developRow<false, NoTables>)(rows, how, {});
    } else {
        const ThreeTables tables{{Table(how.tables[0]), Table(how.tables[1]), Table(how.tables[2])}};
        (how.followEdges ? developRow<true, ThreeTables> : developRow<false, ThreeTables>)(rows, how, tables);
    }
}

}  // namespace
}  // namespace virtualboard::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
