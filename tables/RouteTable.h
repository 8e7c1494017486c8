#pragma once

/// Everything that a source and a polarity are chosen for: the camera's control lines, the outputs, the
/// signal analyzers and the custom events. Each has a multiplexer and an inverter in the design. All of it
/// follows from the rows of the source and polarity parameters.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tables/DesignParameters.h"
#include "tables/SdkParameterTable.h"

namespace marovine {

/// Position of a route in the table, which has the order of the parameters.
enum class Route : std::uint8_t {};

/// The parameters of a route on both sides, and what it may be given.
struct RouteRow {
    const char* source;    ///< SDK name of the source parameter
    const char* polarity;  ///< SDK name of the polarity parameter
    EntryList signals;     ///< what the source may be
    bool readsApplied;     ///< a read gives what the design was last given, not what was asked for
    DesignParameter select;
    DesignParameter invert;
};

inline constexpr auto kRouteCount = static_cast<std::size_t>(std::count_if(
    sdkParameters.begin(), sdkParameters.end(), [](const auto& row) { return row.set == SetBy::Source; }));

/// One row per route. A source's polarity follows it in the list of parameters.
inline constexpr auto routeTable = [] {
    std::array<RouteRow, kRouteCount> result{};
    auto* route = result.begin();
    for (std::size_t i = 0; i < sdkParameterCount; ++i) {
        const auto& source = sdkParameters[i];
        if (source.set != SetBy::Source) continue;
        const auto& polarity = sdkParameters[i + 1];
        if (polarity.set != SetBy::Polarity) throw "a source without polarity";
        *route++ = {source.name,
                    polarity.name,
                    std::get<EntryList>(source.range),
                    source.read == ReadFrom::Applied,
                    designParameterOf(source),
                    designParameterOf(polarity)};
    }
    return result;
}();

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
