#pragma once

#include <array>
#include <cstdint>

#include "parameters/ParameterCache.h"

namespace marovine {

/// Lookup tables as the processing parameters make them. The last few are kept: hosts switch between settings
/// they have used, and a table costs 256 powers.
class ProcessedTables {
 public:
    /// The table of the cached offset, gain, gamma and inversion; valid until the next call.
    const LookupTable& of(const ParameterCache& cache);

 private:
    /// Compared bit by bit, as what is not a number must be told apart as well.
    struct Inputs {
        std::uint64_t offset;
        std::uint64_t gain;
        std::uint64_t gamma;
        std::int32_t invert;
        bool operator==(const Inputs&) const = default;
    };
    struct Entry {
        Inputs inputs;
        LookupTable table;
    };

    std::array<Entry, 4> kept_{};
    std::uint32_t made_ = 0;  ///< the oldest gives way to the next
};

}  // namespace marovine
