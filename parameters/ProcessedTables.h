#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "parameters/ParameterCache.h"

namespace marovine {

/// Lookup tables as the processing parameters make them. The last few are kept: hosts switch between settings
/// they have used. For a new gamma the powers come from the logarithms of the inputs, which stay as they are
/// while a host moves gamma alone; an entry that this leaves in doubt costs a real power.
class ProcessedTables {
 public:
    /// The table of the cached offset, gain, gamma and inversion; valid until the next call.
    const LookupTable& of(const ParameterCache& cache);

 private:
    /// Compared bit by bit, as what is not a number must be told apart as well.
    struct Scale {
        std::uint64_t offset;
        std::uint64_t gain;
        bool operator==(const Scale&) const = default;
    };
    struct Inputs {
        Scale scale;
        std::uint64_t gamma;
        std::int32_t invert;
        bool operator==(const Inputs&) const = default;
    };
    struct Entry {
        Inputs inputs;
        LookupTable table;
    };

    /// In place of an entry, for what is not a number.
    static constexpr int kNoEntry = -1;

    /// Makes the inputs' bases, and where asked for their logarithms, those of an offset and a gain.
    void take(const Scale& scale, bool withLogarithms);
    LookupTable make(const Inputs& inputs);
    int entryOf(std::size_t input, double exponent) const;

    Scale scale_{};
    std::array<double, kLutEntries> bases_{};       ///< of the powers
    std::array<double, kLutEntries> logarithms_{};  ///< to the base 2
    bool hasLogarithms_ = false;
    std::array<Entry, 4> kept_{};
    std::uint32_t made_ = 0;  ///< the oldest gives way to the next
};

}  // namespace marovine
