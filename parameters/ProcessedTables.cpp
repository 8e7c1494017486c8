#include "parameters/ProcessedTables.h"

#include <algorithm>
#include <array>
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

/// What an input becomes, before it is cut down to an entry.
double valueOf(double base, double exponent) {
    return base < 0.0 ? 0.0 : power(base, exponent) * double{kMaximum} + 0.5;
}

/// 2 to the power of 0/32 to 31/32.
constexpr auto powerSteps = [] {
    std::array<double, 32> result{1.0};
    for (std::size_t i = 1; i < result.size(); ++i) result[i] = result[i - 1] * 1.0218971486541166;
    return result;
}();

/// 2 to the power of x, for |x| < 1000, to 11 digits: from a table for the next of 32 steps, and from the
/// first terms of the series for the rest, which is below 0.011 and whose next term is below 2e-12.
double roughExp2(double x) {
    constexpr double ln2 = 0.693147180559945309417;
    // Adding it leaves a whole number in the lowest bits.
    constexpr double kRounding = 0x1.8p52;
    const double shifted = x * 32.0 + kRounding;
    const auto step = static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(shifted));
    const double rest = (x - (shifted - kRounding) / 32.0) * ln2;
    const double series = 1.0 + rest * (1.0 + rest * (0.5 + rest * (1.0 / 6.0 + rest * (1.0 / 24.0))));
    const auto exponent = static_cast<std::uint64_t>(static_cast<std::int32_t>(step) >> 5);
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(powerSteps[step % 32]) + (exponent << 52)) *
           series;
}

}  // namespace

int ProcessedTables::entryOf(std::size_t input, double exponent) const {
    // An entry is the whole part of a value below 256.5. Where the rough value is not next to a whole number
    // it has the same one as the exact value: both are within 1e-9 of the true one.
    constexpr double kDoubt = 1e-6;
    if (const double x = logarithms_[input] * exponent;
        exponent != 1.0 && bases_[input] > 0.0 && x > -900.0 && x < 8.0) {
        const double value = std::min(roughExp2(x) * double{kMaximum} + 0.5, kCeiling + 0.5);
        const int entry = static_cast<int>(value);
        const double behind = value - entry;
        if (behind > kDoubt && behind < 1.0 - kDoubt) return entry;
    }
    const double value = valueOf(bases_[input], exponent);
    // A processing parameter that is not a number gives 0, inverted or not.
    if (std::isnan(value)) return kNoEntry;
    // Limited before the conversion, which is undefined for what no integer can hold.
    return static_cast<int>(std::isinf(value) ? kCeiling : std::min(value, kCeiling));
}

void ProcessedTables::take(const Scale& scale, bool withLogarithms) {
    if (scale != scale_ || made_ == 0) {
        scale_ = scale;
        hasLogarithms_ = false;
        const auto offset = std::bit_cast<double>(scale.offset), gain = std::bit_cast<double>(scale.gain);
        for (std::size_t input = 0; input < kLutEntries; ++input)
            bases_[input] = (static_cast<double>(input) / double{kMaximum} + offset) * gain;
    }
    if (hasLogarithms_ || !withLogarithms) return;
    // The logarithm of any other would raise a floating-point exception, which a host may have trapped.
    std::ranges::transform(bases_, logarithms_.begin(),
                           [](double base) { return base > 0.0 ? std::log2(base) : 0.0; });
    hasLogarithms_ = true;
}

LookupTable ProcessedTables::make(const Inputs& inputs) {
    const double exponent = 1.0 / std::bit_cast<double>(inputs.gamma);
    take(inputs.scale, exponent != 1.0);
    const bool invert = inputs.invert == constant("FG_ON");
    LookupTable table{};
    for (std::size_t input = 0; input < kLutEntries; ++input) {
        const int entry = entryOf(input, exponent);
        if (entry == kNoEntry) continue;
        table[input] = static_cast<std::uint32_t>(std::clamp(invert ? kMaximum - entry : entry, 0, kMaximum));
    }
    return table;
}

const LookupTable& ProcessedTables::of(const ParameterCache& cache) {
    const Inputs inputs{.scale = {.offset = std::bit_cast<std::uint64_t>(cache.FG_PROCESSING_OFFSET),
                                  .gain = std::bit_cast<std::uint64_t>(cache.FG_PROCESSING_GAIN)},
                        .gamma = std::bit_cast<std::uint64_t>(cache.FG_PROCESSING_GAMMA),
                        .invert = cache.FG_PROCESSING_INVERT};
    const auto filled = kept_.begin() + std::min<std::ptrdiff_t>(made_, std::ssize(kept_));
    const auto known =
        std::find_if(kept_.begin(), filled, [&](const Entry& entry) { return entry.inputs == inputs; });
    if (known != filled) return known->table;
    Entry& entry = kept_[made_ % kept_.size()];
    entry.table = make(inputs);
    entry.inputs = inputs;
    ++made_;
    return entry.table;
}

}  // namespace marovine
