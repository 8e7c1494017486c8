#pragma once

/// The enumerations of the SDK parameters: every constant that the applet knows by name stands here, once.
///
/// A table gives a parameter its allowed values and, in registry order, its entries' texts. Code names a
/// value through `constant("FG_LINERATE")`, which the compiler looks up here: an unknown name does not
/// compile.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace marovine {

/// One entry of an enumeration.
struct EnumerationEntry {
    const char* displayName;   ///< text shown to users
    std::int32_t value;        ///< what a set takes and a get gives
    const char* constantName;  ///< the SDK's name of the value
};

/// The entries of one enumeration, in registry order.
using EntryList = std::span<const EnumerationEntry>;

/// Several lists of entries as one.
template <std::size_t... Sizes>
consteval auto joined(const std::array<EnumerationEntry, Sizes>&... lists) {
    std::array<EnumerationEntry, (Sizes + ...)> result{};
    auto end = result.begin();
    ((end = std::copy(lists.begin(), lists.end(), end)), ...);
    return result;
}

inline constexpr auto YesNo = std::to_array<EnumerationEntry>({
    {"Yes", 1, "FG_YES"},
    {"No", 0, "FG_NO"},
});
inline constexpr auto OnOff = std::to_array<EnumerationEntry>({
    {"On", 1, "FG_ON"},
    {"Off", 0, "FG_OFF"},
});
inline constexpr auto LowOnZero = std::to_array<EnumerationEntry>({
    {"Low Active", 0, "FG_LOW"},
    {"High Active", 1, "FG_HIGH"},
});
inline constexpr auto HighOnZero = std::to_array<EnumerationEntry>({
    {"Low Active", 1, "HIGH_ON_ZERO_LOW"},
    {"High Active", 0, "HIGH_ON_ZERO_HIGH"},
});
inline constexpr auto Apply = std::to_array<EnumerationEntry>({
    {"Apply", 1, "FG_APPLY"},
});
inline constexpr auto BusyFlag = std::to_array<EnumerationEntry>({
    {"Busy Flag is set", 1, "IS_BUSY"},
    {"Busy Flag is not set", 0, "IS_NOT_BUSY"},
});
inline constexpr auto EnumWriteFlag = std::to_array<EnumerationEntry>({
    {"EndOfLine", 0, "FG_ENDOFLINE"},
    {"EndOfFrame", 1, "FG_ENDOFFRAME"},
});
inline constexpr auto CameraFormatGrayAreaFull8_10BitAcq = std::to_array<EnumerationEntry>({
    {"8 Tap 8bit", 308, "FG_CL_FULL_8_TAP_8_BIT"},
    {"10 Tap 8bit", 310, "FG_CL_FULL_10_TAP_8_BIT"},
    {"8 Tap 10bit", 311, "FG_CL_FULL_8_TAP_10_BIT"},
});
inline constexpr auto Geometry_8_10TapHorizontalEx = std::to_array<EnumerationEntry>({
    {"1X8", 25165824, "FG_GEOMETRY_1X8"},
    {"1X10", 27262976, "FG_GEOMETRY_1X10"},
    {"4X2", 69206016, "FG_GEOMETRY_4X2"},
    {"4X2E", 69271552, "FG_GEOMETRY_4X2E"},
    {"5X2", 85983232, "FG_GEOMETRY_5X2"},
    {"8X", 135266304, "FG_GEOMETRY_8X"},
    {"10X", 168820736, "FG_GEOMETRY_10X"},
});
inline constexpr auto VantagPointsTopLeftTopRight = std::to_array<EnumerationEntry>({
    {"Top-Left", 0, "FG_VANTAGEPOINT_TOP_LEFT"},
    {"Top-Right", 1, "FG_VANTAGEPOINT_TOP_RIGHT"},
});
inline constexpr auto FormatColor24Only = std::to_array<EnumerationEntry>({
    {"Color 24bit", 2, "FG_COL24"},
});
inline constexpr auto CameraSimulatorSource = std::to_array<EnumerationEntry>({
    {"Camera", 0, "FG_CAMPORT"},
    {"Simulator", 1, "FG_CAMERASIMULATOR"},
});
inline constexpr auto CameraSimulatorPattern = std::to_array<EnumerationEntry>({
    {"Horizontal", 1, "FG_HORIZONTAL"},
    {"Vertical", 2, "FG_VERTICAL"},
    {"Diagonal", 3, "FG_DIAGONAL"},
});
inline constexpr auto CameraSimulatorMode = std::to_array<EnumerationEntry>({
    {"Pixel Frequency", 0, "FG_PIXEL_FREQUENCY"},
    {"Line Rate", 1, "FG_LINERATE"},
    {"Frame Rate", 2, "FG_FRAMERATE"},
});
inline constexpr auto CameraSimulatorTriggerMode = std::to_array<EnumerationEntry>({
    {"Free Run", 0, "SIMULATION_FREE_RUN"},
    {"Rising Edge Triggers Line", 8, "RISING_EDGE_TRIGGERS_LINE"},
    {"Rising Edge Triggers Frame", 9, "RISING_EDGE_TRIGGERS_FRAME"},
});
inline constexpr auto BayerInitValues = std::to_array<EnumerationEntry>({
    {"Green Followed By Red", 3, "GreenFollowedByRed"},
    {"Green Followed By Blue", 0, "GreenFollowedByBlue"},
    {"Red Followed By Green", 2, "RedFollowedByGreen"},
    {"Blue Followed By Green", 1, "BlueFollowedByGreen"},
});
inline constexpr auto ColorInterpolationMethods = std::to_array<EnumerationEntry>({
    {"Single", 1, "FG_SINGLE"},
    {"Double", 2, "FG_DOUBLE"},
});
inline constexpr auto AcqLutTypes = std::to_array<EnumerationEntry>({
    {"Processor", 3, "LUT_TYPE_PROCESSING"},
    {"User file", 0, "LUT_TYPE_CUSTOM"},
});
inline constexpr auto LookupTableImplementations = std::to_array<EnumerationEntry>({
    {"Full LUT", 0, "LUT_IMPLEMENTATION_FULL_LUT"},
    {"KneeLUT", 1, "LUT_IMPLEMENTATION_KNEELUT"},
});
inline constexpr auto LineTriggerModes = std::to_array<EnumerationEntry>({
    {"Grabber controlled", 1, "GRABBER_CONTROLLED"},
    {"Async External Trigger", 2, "ASYNC_TRIGGER"},
    {"Gated, Grabber controlled", 6, "GRABBER_CONTROLLED_GATED"},
    {"Gated, External Triggered", 5, "ASYNC_GATED"},
});
inline constexpr auto TriggerInSource8Plus4 = std::to_array<EnumerationEntry>({
    {"GPI Trigger Source 0", 0, "TRGINSRC_GPI_0"},
    {"GPI Trigger Source 1", 1, "TRGINSRC_GPI_1"},
    {"GPI Trigger Source 2", 2, "TRGINSRC_GPI_2"},
    {"GPI Trigger Source 3", 3, "TRGINSRC_GPI_3"},
    {"GPI Trigger Source 4 (not available on Skiffline)", 4, "TRGINSRC_GPI_4"},
    {"GPI Trigger Source 5 (not available on Skiffline)", 5, "TRGINSRC_GPI_5"},
    {"GPI Trigger Source 6 (not available on Skiffline)", 6, "TRGINSRC_GPI_6"},
    {"GPI Trigger Source 7 (not available on Skiffline)", 7, "TRGINSRC_GPI_7"},
    {"Front GPI Trigger Source 0", 16, "TRGINSRC_FRONT_GPI_0"},
    {"Front GPI Trigger Source 1", 17, "TRGINSRC_FRONT_GPI_1"},
    {"Front GPI Trigger Source 2", 18, "TRGINSRC_FRONT_GPI_2"},
    {"Front GPI Trigger Source 3", 19, "TRGINSRC_FRONT_GPI_3"},
});
inline constexpr auto TriggerInSource8Plus4Software =
    joined(TriggerInSource8Plus4, std::to_array<EnumerationEntry>({
                                      {"Software Trigger", -1, "TRGINSOFTWARE"},
                                  }));
inline constexpr auto ShaftEncoderMode = std::to_array<EnumerationEntry>({
    {"Filter x1", 1, "FILTER_X1"},
    {"Filter x2", 2, "FILTER_X2"},
    {"Filter x4", 3, "FILTER_X4"},
});
inline constexpr auto ShaftEncoderLeadSource = std::to_array<EnumerationEntry>({
    {"Source A", 0, "SOURCE_A"},
    {"Source B", 1, "SOURCE_B"},
});
inline constexpr auto ImageTriggerModesWithMultiBufferAndFVAL = std::to_array<EnumerationEntry>({
    {"Free Run", 0, "FREE_RUN"},
    {"Async External Trigger", 2, "ASYNC_TRIGGER"},
    {"Async Multi Buffer External Trigger", 8, "ASYNC_TRIGGER_MULTIFRAME"},
    {"Gated, External Triggered", 5, "ASYNC_GATED"},
    {"Gated Multi Buffer, External Triggered", 6, "ASYNC_GATED_MULTIFRAME"},
    {"Camera FVAL Multiframe", 9, "CAMERA_FVAL_MULTIFRAME"},
});
/// Levels, and what the trigger and the camera make.
inline constexpr auto OutputSignals = std::to_array<EnumerationEntry>({
    {"Gnd", 4, "GND"},
    {"Vcc", 5, "VCC"},
    {"Cam0 Exsync", 2000, "FG_SIGNAL_CAM0_EXSYNC"},
    {"Cam0 Exsync2", 2001, "FG_SIGNAL_CAM0_EXSYNC2"},
    {"Cam0 Flash", 2002, "FG_SIGNAL_CAM0_FLASH"},
    {"Cam0 LVAL", 2007, "FG_SIGNAL_CAM0_LVAL"},
    {"Cam0 FVAL", 2008, "FG_SIGNAL_CAM0_FVAL"},
});
/// Where lines and frames begin and end on their way through the buffer.
inline constexpr auto TransferSignals = std::to_array<EnumerationEntry>({
    {"Cam0 Line Transfer Start", 2100, "FG_SIGNAL_CAM0_LINE_START"},
    {"Cam0 Line Transfer End", 2101, "FG_SIGNAL_CAM0_LINE_END"},
    {"Cam0 Frame Transfer Start", 2102, "FG_SIGNAL_CAM0_FRAME_START"},
    {"Cam0 Frame Transfer End", 2103, "FG_SIGNAL_CAM0_FRAME_END"},
});
/// The inputs as they are.
inline constexpr auto InputSignals = std::to_array<EnumerationEntry>({
    {"GPI 0", 1001, "FG_SIGNAL_GPI_0"},
    {"GPI 1", 1011, "FG_SIGNAL_GPI_1"},
    {"GPI 2", 1021, "FG_SIGNAL_GPI_2"},
    {"GPI 3", 1031, "FG_SIGNAL_GPI_3"},
    {"GPI 4", 1041, "FG_SIGNAL_GPI_4"},
    {"GPI 5", 1051, "FG_SIGNAL_GPI_5"},
    {"GPI 6", 1061, "FG_SIGNAL_GPI_6"},
    {"GPI 7", 1071, "FG_SIGNAL_GPI_7"},
    {"Front GPI 0", 1081, "FG_SIGNAL_FRONT_GPI_0"},
    {"Front GPI 1", 1091, "FG_SIGNAL_FRONT_GPI_1"},
    {"Front GPI 2", 1101, "FG_SIGNAL_FRONT_GPI_2"},
    {"Front GPI 3", 1111, "FG_SIGNAL_FRONT_GPI_3"},
});
inline constexpr auto SignalMappingLine_1Cam = joined(OutputSignals, InputSignals);
inline constexpr auto SignalMappingAnalyzer_1Cam = joined(OutputSignals, TransferSignals, InputSignals);
inline constexpr auto CcSignalMappingLineExtended = std::to_array<EnumerationEntry>({
    {"Exsync", 0, "CC_EXSYNC"},
    {"!Exsync", 6, "CC_NOT_EXSYNC"},
    {"Prescaler", 1, "CC_PRESCALER"},
    {"!Prescaler", 7, "CC_NOT_PRESCALER"},
    {"Flash", 2, "CC_STROBEPULSE"},
    {"!Flash", 8, "CC_NOT_STROBEPULSE"},
    {"Gnd", 4, "CC_GND"},
    {"Vcc", 5, "CC_VCC"},
    {"Input 0", 1001, "CC_GPI_0"},
    {"Not Input 0", 1000, "CC_NOT_GPI_0"},
    {"Input 1", 1011, "CC_GPI_1"},
    {"Not Input 1", 1010, "CC_NOT_GPI_1"},
    {"Input 2", 1021, "CC_GPI_2"},
    {"Not Input 2", 1020, "CC_NOT_GPI_2"},
    {"Input 3", 1031, "CC_GPI_3"},
    {"Not Input 3", 1030, "CC_NOT_GPI_3"},
    {"Input 4", 1041, "CC_GPI_4"},
    {"Not Input 4", 1040, "CC_NOT_GPI_4"},
    {"Input 5", 1051, "CC_GPI_5"},
    {"Not Input 5", 1050, "CC_NOT_GPI_5"},
    {"Input 6", 1061, "CC_GPI_6"},
    {"Not Input 6", 1060, "CC_NOT_GPI_6"},
    {"Input 7", 1071, "CC_GPI_7"},
    {"Not Input 7", 1070, "CC_NOT_GPI_7"},
    {"Front Input 0", 1081, "CC_FRONT_GPI_0"},
    {"Not Front Input 0", 1080, "CC_NOT_FRONT_GPI_0"},
    {"Front Input 1", 1091, "CC_FRONT_GPI_1"},
    {"Not Front Input 1", 1090, "CC_NOT_FRONT_GPI_1"},
    {"Front Input 2", 1101, "CC_FRONT_GPI_2"},
    {"Not Front Input 2", 1100, "CC_NOT_FRONT_GPI_2"},
    {"Front Input 3", 1111, "CC_FRONT_GPI_3"},
    {"Not Front Input 3", 1110, "CC_NOT_FRONT_GPI_3"},
    {"Other", -1, "FG_OTHER"},
});
inline constexpr auto PoCLState = std::to_array<EnumerationEntry>({
    {"Initialize", 0, "FG_INITIALIZE"},
    {"PoCL Connection Sense", 1, "FG_POCL_CONNECTION_SENSE"},
    {"PoCL wait for Connection", 6, "FG_POCL_WAIT_FOR_CONNECTION"},
    {"PoCL Camera and Cable Detected", 2, "FG_POCL_CAMERA_DETECTED"},
    {"PoCL Camera Clock Detected", 3, "FG_POCL_CAMERA_CLOCK_DETECTED"},
    {"CL wait for Connection", 7, "FG_CL_WAIT_FOR_CONNECTION"},
    {"CL Camera Detected", 4, "FG_CL_CAMERA_DETECTED"},
    {"CL Camera Clock Detected", 5, "FG_CL_CAMERA_CLOCK_DETECTED"},
    {"PoCL Disabled", 8, "FG_POCL_DISABLED"},
});

/// An enumeration with the name that the catalogue uses for it.
struct EnumerationTable {
    std::string_view name;
    EntryList entries;
};

/// All enumerations; together they hold every named constant.
inline constexpr auto enumerationTables = std::to_array<EnumerationTable>({
    EnumerationTable{"YesNo", YesNo},
    EnumerationTable{"OnOff", OnOff},
    EnumerationTable{"LowOnZero", LowOnZero},
    EnumerationTable{"HighOnZero", HighOnZero},
    EnumerationTable{"Apply", Apply},
    EnumerationTable{"BusyFlag", BusyFlag},
    EnumerationTable{"EnumWriteFlag", EnumWriteFlag},
    EnumerationTable{"CameraFormatGrayAreaFull8_10BitAcq", CameraFormatGrayAreaFull8_10BitAcq},
    EnumerationTable{"Geometry_8_10TapHorizontalEx", Geometry_8_10TapHorizontalEx},
    EnumerationTable{"VantagPointsTopLeftTopRight", VantagPointsTopLeftTopRight},
    EnumerationTable{"FormatColor24Only", FormatColor24Only},
    EnumerationTable{"CameraSimulatorSource", CameraSimulatorSource},
    EnumerationTable{"CameraSimulatorPattern", CameraSimulatorPattern},
    EnumerationTable{"CameraSimulatorMode", CameraSimulatorMode},
    EnumerationTable{"CameraSimulatorTriggerMode", CameraSimulatorTriggerMode},
    EnumerationTable{"BayerInitValues", BayerInitValues},
    EnumerationTable{"ColorInterpolationMethods", ColorInterpolationMethods},
    EnumerationTable{"AcqLutTypes", AcqLutTypes},
    EnumerationTable{"LookupTableImplementations", LookupTableImplementations},
    EnumerationTable{"LineTriggerModes", LineTriggerModes},
    EnumerationTable{"TriggerInSource8Plus4", TriggerInSource8Plus4},
    EnumerationTable{"TriggerInSource8Plus4Software", TriggerInSource8Plus4Software},
    EnumerationTable{"ShaftEncoderMode", ShaftEncoderMode},
    EnumerationTable{"ShaftEncoderLeadSource", ShaftEncoderLeadSource},
    EnumerationTable{"ImageTriggerModesWithMultiBufferAndFVAL", ImageTriggerModesWithMultiBufferAndFVAL},
    EnumerationTable{"SignalMappingLine_1Cam", SignalMappingLine_1Cam},
    EnumerationTable{"SignalMappingAnalyzer_1Cam", SignalMappingAnalyzer_1Cam},
    EnumerationTable{"CcSignalMappingLineExtended", CcSignalMappingLineExtended},
    EnumerationTable{"PoCLState", PoCLState},
});

/// Finds a constant by its exact name; null when no enumeration has it.
constexpr const EnumerationEntry* findConstant(std::string_view name) {
    for (const auto& table : enumerationTables)
        for (const auto& entry : table.entries)
            if (entry.constantName == name) return &entry;
    return nullptr;
}

/// The value of a constant named in the code; a name that no enumeration holds does not compile.
consteval std::int32_t constant(std::string_view name) {
    // Not by `findConstant`: under the sanitizers g++ compares no address with null at compile time.
    for (const auto& table : enumerationTables)
        for (const auto& entry : table.entries)
            if (entry.constantName == name) return entry.value;
    throw "no enumeration has a constant of this name";
}

/// Whether a value is one of an enumeration's entries.
constexpr bool isEntry(std::int32_t value, EntryList entries) {
    return std::any_of(entries.begin(), entries.end(),
                       [=](const auto& entry) { return entry.value == value; });
}

}  // namespace marovine
