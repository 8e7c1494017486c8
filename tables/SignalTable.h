#pragma once

/// The signals that can drive an output, as the design's multiplexers number them.

#include <algorithm>
#include <array>
#include <cstdint>

#include "tables/EnumerationTables.h"

namespace marovine {

/// A signal with its input of the multiplexers. Ground and supply share an input: the supply is the inverted
/// ground.
struct Signal {
    std::int32_t value;  ///< the SDK constant
    std::uint32_t multiplexerIndex;
};

/// All signals. The transfer signals exist for the analyzers and the custom events only.
inline constexpr auto signalTable = std::to_array<Signal>({
    {constant("GND"), 0},
    {constant("VCC"), 0},
    {constant("FG_SIGNAL_CAM0_EXSYNC"), 1},
    {constant("FG_SIGNAL_CAM0_EXSYNC2"), 2},
    {constant("FG_SIGNAL_CAM0_FLASH"), 3},
    {constant("FG_SIGNAL_CAM0_LVAL"), 4},
    {constant("FG_SIGNAL_CAM0_FVAL"), 5},
    {constant("FG_SIGNAL_GPI_0"), 21},
    {constant("FG_SIGNAL_GPI_1"), 22},
    {constant("FG_SIGNAL_GPI_2"), 23},
    {constant("FG_SIGNAL_GPI_3"), 24},
    {constant("FG_SIGNAL_GPI_4"), 25},
    {constant("FG_SIGNAL_GPI_5"), 26},
    {constant("FG_SIGNAL_GPI_6"), 27},
    {constant("FG_SIGNAL_GPI_7"), 28},
    {constant("FG_SIGNAL_FRONT_GPI_0"), 29},
    {constant("FG_SIGNAL_FRONT_GPI_1"), 30},
    {constant("FG_SIGNAL_FRONT_GPI_2"), 31},
    {constant("FG_SIGNAL_FRONT_GPI_3"), 32},
    {constant("FG_SIGNAL_CAM0_LINE_START"), 33},
    {constant("FG_SIGNAL_CAM0_LINE_END"), 34},
    {constant("FG_SIGNAL_CAM0_FRAME_START"), 35},
    {constant("FG_SIGNAL_CAM0_FRAME_END"), 36},
});

/// The row of a signal; null for a value that is none.
constexpr const Signal* findSignal(std::int32_t value) {
    const auto* found = std::ranges::find(signalTable, value, &Signal::value);
    return found != signalTable.end() ? found : nullptr;
}

/// Whether a route that offers these entries can be given a multiplexer index for each.
constexpr bool areSignals(EntryList entries) {
    return std::ranges::all_of(entries, [](const auto& entry) {
        return std::ranges::any_of(signalTable,
                                   [&](const Signal& signal) { return signal.value == entry.value; });
    });
}
static_assert(areSignals(SignalMappingLine_1Cam) && areSignals(SignalMappingAnalyzer_1Cam));
static_assert(signalTable.size() == SignalMappingAnalyzer_1Cam.size());

}  // namespace marovine
