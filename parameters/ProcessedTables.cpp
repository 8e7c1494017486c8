#include "parameters/ProcessedTables.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

#include "tables/EnumerationTables.h"

namespace marovine {

namespace {

/// Largest entry, and largest input, of 8 bits.
constexpr int kMaximum = 255;
/// Where values are cut before they become entries.
constexpr double kCeiling = 256.0;

/// `std::pow` without its cost for the exponent 1, which gamma has unless somebody asks for a curve.
double power(double base, double exponent) {
    return exponent == 1.0 ? base : std::pow(base, exponent);
}

/// What the processing parameters make of each input.
LookupTable processedTable(const ParameterCache& cache) {
    const double exponent = 1.0 / cache.FG_PROCESSING_GAMMA;
    const bool invert = cache.FG_PROCESSING_INVERT == constant("FG_ON");
    LookupTable table{};
    for (std::size_t input = 0; input < kLutEntries; ++input) {
        const double base = (static_cast<double>(input) / double{kMaximum} + cache.FG_PROCESSING_OFFSET) *
                            cache.FG_PROCESSING_GAIN;
        const double value = base < 0.0 ? 0.0 : power(base, exponent) * double{kMaximum} + 0.5;
        // A processing parameter that is not a number gives 0, inverted or not.
        if (std::isnan(value)) continue;
        // Limited before the conversion, which is undefined for what no integer can hold.
        const int entry = static_cast<int>(std::isinf(value) ? kCeiling : std::min(value, kCeiling));
        table[input] = static_cast<std::uint32_t>(std::clamp(invert ? kMaximum - entry : entry, 0, kMaximum));
    }
    return table;
}

}  // namespace

const LookupTable& ProcessedTables::of(const ParameterCache& cache) {
    const Inputs inputs{.offset = std::bit_cast<std::uint64_t>(cache.FG_PROCESSING_OFFSET),
                        .gain = std::bit_cast<std::uint64_t>(cache.FG_PROCESSING_GAIN),
                        .gamma = std::bit_cast<std::uint64_t>(cache.FG_PROCESSING_GAMMA),
                        .invert = cache.FG_PROCESSING_INVERT};
    const auto filled = kept_.begin() + std::min<std::ptrdiff_t>(made_, std::ssize(kept_));
    const auto known =
        std::find_if(kept_.begin(), filled, [&](const Entry& entry) { return entry.inputs == inputs; });
    if (known != filled) return known->table;
    Entry& entry = kept_[made_++ % kept_.size()];
    entry.inputs = inputs;
    entry.table = processedTable(cache);
    return entry.table;
}

}  // namespace marovine
