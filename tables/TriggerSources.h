#pragma once

/// The inputs that can trigger, as the design numbers them.

#include <cstdint>

#include "tables/EnumerationTables.h"

namespace marovine {

/// Input select index of a trigger source. The design numbers its inputs in the order in which the
/// enumeration lists them: the eight inputs, then the four front inputs. Anything else gives the number after
/// the last input; callers check the source against the enumeration first.
constexpr std::uint32_t inputSelectOf(std::int32_t source) {
    std::uint32_t index = 0;
    for (const auto& entry : TriggerInSource8Plus4) {
        if (entry.value == source) break;
        ++index;
    }
    return index;
}
static_assert(inputSelectOf(constant("TRGINSRC_GPI_0")) == 0);
static_assert(inputSelectOf(constant("TRGINSRC_GPI_7")) == 7);
static_assert(inputSelectOf(constant("TRGINSRC_FRONT_GPI_0")) == 8);
static_assert(inputSelectOf(constant("TRGINSRC_FRONT_GPI_3")) == 11);

}  // namespace marovine
