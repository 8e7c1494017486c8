#pragma once

/// Everything that a source and a polarity are chosen for: the camera's control lines, the outputs, the
/// signal analyzers and the custom events. Each has a multiplexer and an inverter in the design.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tables/DesignParameters.h"
#include "tables/SdkParameterTable.h"

namespace marovine {

/// Everything that a source and a polarity are chosen for. The design lists their parameters in this order.
enum class Route : std::uint8_t {
    CC1,
    CC2,
    CC3,
    CC4,
    Gpo0,
    Gpo1,
    Gpo2,
    Gpo3,
    Gpo4,
    Gpo5,
    Gpo6,
    Gpo7,
    FrontGpo0,
    FrontGpo1,
    Analyzer0,
    Analyzer1,
    CustomEvent0,
    CustomEvent1,
};

/// The parameters of a route on both sides, and what it may be given.
struct RouteRow {
    const char* source;    ///< SDK name of the source parameter
    const char* polarity;  ///< SDK name of the polarity parameter
    EntryList signals;     ///< what the source may be
    DesignParameter select;
    DesignParameter invert;
};

/// A row whose design parameters are the stem's multiplexer and inverter.
consteval RouteRow routeRow(const char* source, const char* polarity, std::string_view stem) {
    const auto find = [stem](std::string_view ending) {
        for (std::size_t slot = 0; slot < designParameterCount; ++slot) {
            std::string_view name = designParameterNames[slot];
            name.remove_prefix(designPrefixLength);
            if (name.starts_with(stem) && name.substr(stem.size()) == ending)
                return static_cast<DesignParameter>(slot);
        }
        throw "the design has no multiplexer or inverter of this name";
    };
    return {source, polarity, entriesOf(source), find("_SelectSignal_Select"), find("_Polarity_Invert")};
}

// clang-format off
/// One row per route, in the order of `Route`.
inline constexpr auto routeTable = std::to_array<RouteRow>({
    routeRow("FG_CC1_SOURCE", "FG_CC1_POLARITY", "Trigger_OutputMapping_CamTrigger0_CC1"),
    routeRow("FG_CC2_SOURCE", "FG_CC2_POLARITY", "Trigger_OutputMapping_CamTrigger0_CC2"),
    routeRow("FG_CC3_SOURCE", "FG_CC3_POLARITY", "Trigger_OutputMapping_CamTrigger0_CC3"),
    routeRow("FG_CC4_SOURCE", "FG_CC4_POLARITY", "Trigger_OutputMapping_CamTrigger0_CC4"),
    routeRow("FG_TRIGGEROUT_GPO_0_SOURCE", "FG_TRIGGEROUT_GPO_0_POLARITY", "Trigger_OutputMapping_SelectGPO_Select0"),
    routeRow("FG_TRIGGEROUT_GPO_1_SOURCE", "FG_TRIGGEROUT_GPO_1_POLARITY", "Trigger_OutputMapping_SelectGPO_Select1"),
    routeRow("FG_TRIGGEROUT_GPO_2_SOURCE", "FG_TRIGGEROUT_GPO_2_POLARITY", "Trigger_OutputMapping_SelectGPO_Select2"),
    routeRow("FG_TRIGGEROUT_GPO_3_SOURCE", "FG_TRIGGEROUT_GPO_3_POLARITY", "Trigger_OutputMapping_SelectGPO_Select3"),
    routeRow("FG_TRIGGEROUT_GPO_4_SOURCE", "FG_TRIGGEROUT_GPO_4_POLARITY", "Trigger_OutputMapping_SelectGPO_Select4"),
    routeRow("FG_TRIGGEROUT_GPO_5_SOURCE", "FG_TRIGGEROUT_GPO_5_POLARITY", "Trigger_OutputMapping_SelectGPO_Select5"),
    routeRow("FG_TRIGGEROUT_GPO_6_SOURCE", "FG_TRIGGEROUT_GPO_6_POLARITY", "Trigger_OutputMapping_SelectGPO_Select6"),
    routeRow("FG_TRIGGEROUT_GPO_7_SOURCE", "FG_TRIGGEROUT_GPO_7_POLARITY", "Trigger_OutputMapping_SelectGPO_Select7"),
    routeRow("FG_TRIGGEROUT_FRONT_GPO_0_SOURCE", "FG_TRIGGEROUT_FRONT_GPO_0_POLARITY", "Trigger_OutputMapping_SelectFrontGPO_Select0"),
    routeRow("FG_TRIGGEROUT_FRONT_GPO_1_SOURCE", "FG_TRIGGEROUT_FRONT_GPO_1_POLARITY", "Trigger_OutputMapping_SelectFrontGPO_Select1"),
    routeRow("FG_SIGNAL_ANALYZER_0_SOURCE", "FG_SIGNAL_ANALYZER_0_POLARITY", "Trigger_Analyzer_Analyzer0_Select"),
    routeRow("FG_SIGNAL_ANALYZER_1_SOURCE", "FG_SIGNAL_ANALYZER_1_POLARITY", "Trigger_Analyzer_Analyzer1_Select"),
    routeRow("FG_CUSTOM_SIGNAL_EVENT_0_SOURCE", "FG_CUSTOM_SIGNAL_EVENT_0_POLARITY", "Trigger_Events_SelectCustomSignalEvent0"),
    routeRow("FG_CUSTOM_SIGNAL_EVENT_1_SOURCE", "FG_CUSTOM_SIGNAL_EVENT_1_POLARITY", "Trigger_Events_SelectCustomSignalEvent1"),
});
// clang-format on
inline constexpr std::size_t kRouteCount = routeTable.size();

/// The row of a route.
constexpr const RouteRow& rowOf(Route route) {
    return routeTable[static_cast<std::size_t>(route)];
}

/// The route whose source or polarity a parameter is; another parameter does not compile.
consteval Route routeOf(std::string_view parameter) {
    for (std::size_t i = 0; i < kRouteCount; ++i)
        if (parameter == routeTable[i].source || parameter == routeTable[i].polarity)
            return static_cast<Route>(i);
    throw "no route has this parameter";
}

}  // namespace marovine
