#pragma once

/// The catalogue: the described parameters in the order in which a host displays them. The description
/// registry is a loop over it.

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "tables/SdkParameterTable.h"

namespace marovine {

/// Paths of the groups in display order; the parameters of a group follow in list order.
inline constexpr auto displayGroups = std::to_array<std::string_view>({
    "Camera Link",
    "Tap Geometry",
    "ROI",
    "Digital I/O > GPO",
    "Digital I/O > GPI",
    "Digital I/O > Event Source",
    "CC Signal Mapping",
    "Line Trigger / ExSync > Line Trigger Input > Downscale",
    "Line Trigger / ExSync > Line Trigger Input",
    "Line Trigger / ExSync > Shaft Encoder A/B Filter",
    "Line Trigger / ExSync > ExSync Output",
    "Line Trigger / ExSync",
    "Image Trigger / Flash > Image Trigger Input > Flash",
    "Image Trigger / Flash > Image Trigger Input > Software Trigger",
    "Image Trigger / Flash > Image Trigger Input",
    "Image Trigger / Flash",
    "Signal Analyzer",
    "Overflow",
    "Image Selector",
    "White Balance",
    "Color Interpolation",
    "Lookup Table > Applet Properties",
    "Lookup Table",
    "Processing",
    "Output Format",
    "Camera Simulator",
    "Miscellaneous > Debug > Input",
    "Miscellaneous > Debug > Output",
    "Miscellaneous > Debug",
    "Miscellaneous",
    "Legacy Parameter",
});

/// Whether a host sees the parameter in the registry: all but those that the host runtime answers itself.
constexpr bool isDescribed(const SdkParameter& row) {
    return row.type != ValueType::Forwarded;
}

inline constexpr auto describedCount =
    static_cast<std::size_t>(std::count_if(sdkParameters.begin(), sdkParameters.end(), isDescribed));

/// List positions of the described parameters, in display order.
inline constexpr auto catalogue = [] {
    std::array<SdkIndex, describedCount> result{};
    std::size_t next = 0;
    for (const auto& group : displayGroups)
        for (std::size_t i = 0; i < sdkParameterCount; ++i)
            if (isDescribed(sdkParameters[i]) && sdkParameters[i].group == group)
                result[next++] = static_cast<SdkIndex>(i);
    if (next != describedCount) throw "a row names a group that is not in the list of groups";
    return result;
}();

/// The same parameters ordered by id.
inline constexpr auto catalogueById = [] {
    auto result = catalogue;
    std::sort(result.begin(), result.end(), [](SdkIndex a, SdkIndex b) { return rowOf(a).id < rowOf(b).id; });
    return result;
}();

}  // namespace marovine
