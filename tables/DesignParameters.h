#pragma once

/// The parameters of the design that the setters and getters use, by their full names.
///
/// Code names one by the part after "Device1_Process0_" or "Device1_Process1_":
/// `designParameter("Camera_DvalMode")`, looked up at compile time.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tables/SdkParameterTable.h"

namespace marovine {

// clang-format off
/// What several SDK parameters drive together. All others stand in the rows of the SDK parameters that own them.
inline constexpr auto sharedDesignParameters = std::to_array<const char*>({
    "Device1_Process0_Buffer_0_DRAM_A_0_RamAddressWidth",
    "Device1_Process0_Buffer_0_DRAM_A_0_RamDataWidth",
    "Device1_Process0_Buffer_0_TapGeometrySorter_SensorWidth",
    "Device1_Process0_Buffer_0_TapGeometrySorter_TranslateVantagePoint_Value",
    "Device1_Process0_Buffer_0_TapGeometrySorter_TapWidth",
    "Device1_Process0_Buffer_0_TapGeometrySorter_TapCount",
    "Device1_Process0_Buffer_0_TapGeometrySorter_DummyTaps",
    "Device1_Process0_Buffer_0_TapGeometrySorter_ParallelResort_4X2E_Enable_Value",
    "Device1_Process0_Buffer_0_TapGeometrySorter_TapOrder",
    "Device1_Process0_Buffer_0_TapGeometrySorter_ReferenceTapMirror_Field",
    "Device1_Process0_CameraSimulator_Size_ImageWidth",
    "Device1_Process0_CameraSimulator_LineGap_Number",
    "Device1_Process0_CameraSimulator_Size_ImageHeight",
    "Device1_Process0_CameraSimulator_FrameGap_Number",
    "Device1_Process0_CameraSimulator_PixelFrequency_ActivePixel_Number",
    "Device1_Process0_CameraSimulator_PixelFrequency_SequenceLength_ImageWidth",
    "Device1_Process0_DeBayerEnhancedRAW_Mode_Mode_Value",
    "Device1_Process0_DeBayerRAW_Bayer_BayerInit",
    "Device1_Process0_WhiteBalance_White_BayerInit",
    "Device1_Process0_LookupTable_R_LUTcontent",
    "Device1_Process0_LookupTable_G_LUTcontent",
    "Device1_Process0_LookupTable_B_LUTcontent",
    "Device1_Process0_Trigger_Trigger_YOffset",
    "Device1_Process0_Trigger_Trigger_YLength",
    "Device1_Process0_ImageHeight_ImageHeight",
});
// clang-format on

inline constexpr std::size_t designParameterCount = [] {
    std::size_t count = sharedDesignParameters.size();
    for (const auto& row : sdkParameters)
        for (const auto& name : row.design) count += name.empty() ? 0 : 1;
    return count;
}();

/// The shared ones, then those of the rows.
inline constexpr auto designParameterNames = [] {
    std::array<const char*, designParameterCount> result{};
    std::size_t next = 0;
    for (const char* name : sharedDesignParameters) result[next++] = name;
    for (const auto& row : sdkParameters)
        for (const auto& name : row.design)
            if (!name.empty()) result[next++] = name.data();
    return result;
}();

/// Slot of a design parameter in the id table.
enum class DesignParameter : std::uint16_t {};

/// Length of "Device1_Process0_", which the short names leave out.
inline constexpr std::size_t designPrefixLength = std::string_view("Device1_Process0_").size();

/// The slot of the first design parameter of a row.
constexpr DesignParameter designParameterOf(const SdkParameter& row) {
    for (std::size_t slot = 0; slot < designParameterCount; ++slot)
        if (designParameterNames[slot] == row.design.front()) return static_cast<DesignParameter>(slot);
    throw "the row names no design parameter";
}

/// The slot of a design parameter named by the rest of its name; an unknown name does not compile.
consteval DesignParameter designParameter(std::string_view shortName) {
    for (std::size_t slot = 0; slot < designParameterCount; ++slot)
        if (std::string_view(designParameterNames[slot]).substr(designPrefixLength) == shortName)
            return static_cast<DesignParameter>(slot);
    throw "the design has no parameter of this name";
}

}  // namespace marovine
