#pragma once

/// The SDK parameters of the applet, in the order in which a host enumerates them.
///
/// Name and id maps, dispatch, defaults and the configuration file are all loops over this table; the order
/// of its rows is also the order of the defaults and of the keys in a configuration file.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "tables/EnumerationTables.h"

namespace marovine {

/// The type in which a parameter's value crosses the host's untyped pointer.
enum class ValueType {
    Int32,
    Enumeration,  ///< signed 32-bit; the catalogue names the allowed entries
    UInt32,
    Int64,
    UInt64,
    Double,
    Text,
    UInt32Field,  ///< table of 32-bit values, reached through field records
    Forwarded,    ///< the host runtime's own parameter; the type code of the call says what it is
};

/// Whether a host may set the parameter.
enum class Access { ReadOnly, ReadWrite };

/// What the configuration file does with a parameter.
enum class FileUse {
    NotStored,   ///< not in the file
    StoredOnly,  ///< written, never read back: read-outs and selections
    Preloaded,   ///< read back into the parameter cache; reaches the design through other parameters
    Applied,     ///< read back into the cache, then given to the setter; these parameters have the defaults
};

/// The value a new instance gives to a parameter: none, a whole number, a time or factor, or a text.
using DefaultValue = std::variant<std::monostate, std::int32_t, double, const char*>;

/// One SDK parameter.
struct SdkParameter {
    const char* name;
    std::int32_t id;
    ValueType type;
    Access access;
    DefaultValue defaultValue;
    FileUse fileUse;
};

namespace sdk_rows {

using enum ValueType;
using enum Access;
using enum FileUse;

// clang-format off
inline constexpr auto sdkParameterRows = std::to_array<SdkParameter>({
    {"FG_TIMEOUT", 600, UInt32, ReadWrite, 1000000, Applied},
    {"FG_APPLET_VERSION", 24020, UInt32, ReadOnly, {}, NotStored},
    {"FG_APPLET_REVISION", 24030, UInt32, ReadOnly, {}, NotStored},
    {"FG_APPLET_ID", 24010, Text, ReadOnly, {}, NotStored},
    {"FG_APPLET_BUILD_TIME", 24011, Text, ReadOnly, {}, NotStored},
    {"FG_HAP_FILE", 24108, Text, ReadOnly, {}, NotStored},
    {"FG_DMASTATUS", 24092, UInt32, ReadOnly, {}, NotStored},
    {"FG_CAMSTATUS", 2000, UInt32, ReadOnly, {}, NotStored},
    {"FG_CAMSTATUS_EXTENDED", 2050, UInt32, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_FPGA_TEMPERATURE", 200341, Double, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_FPGA_VCC_INT", 200342, Double, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_FPGA_VCC_AUX", 200343, Double, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_FPGA_VCC_BRAM", 200372, Double, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH", 200373, UInt32, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_CURRENT_LINK_SPEED", 200374, Double, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_PCIE_LINK_GEN2_CAPABLE", 200375, Enumeration, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_PCIE_LINK_PARTNER_GEN2_CAPABLE", 200376, Enumeration, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_PCIE_TRAINED_PAYLOAD_SIZE", 200377, UInt32, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_EXTENSION_CONNECTOR_PRESENT", 200378, Enumeration, ReadOnly, {}, NotStored},
    {"FG_ALTERNATIVE_BOARD_DETECTION", 200381, Enumeration, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_POCL_STATE_PORT_A", 200379, Enumeration, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_POCL_STATE_PORT_B", 200380, Enumeration, ReadOnly, {}, NotStored},
    {"FG_SYSTEMMONITOR_FPGA_DNA", 200349, UInt64, ReadOnly, {}, NotStored},
    {"FG_TRANSFER_LEN", 5210, Forwarded, ReadOnly, {}, NotStored},
    {"FG_NR_OF_PROCESSES", 3070, Forwarded, ReadOnly, {}, NotStored},
    {"FG_NR_OF_DMAS", 3050, Forwarded, ReadOnly, {}, NotStored},
    {"FG_NR_OF_CAMS", 3060, Forwarded, ReadOnly, {}, NotStored},
    {"FG_DMA_PORT", 3080, Forwarded, ReadOnly, {}, NotStored},
    {"FG_CAM_PORT", 3090, Forwarded, ReadOnly, {}, NotStored},
    {"FG_APC_STOP_TIMEOUT", 601, Forwarded, ReadOnly, {}, NotStored},
    {"FG_CAMERA_LINK_CAMTYPE", 11011, Enumeration, ReadWrite, constant("FG_CL_FULL_8_TAP_8_BIT"), Applied},
    {"FG_USEDVAL", 5025, Enumeration, ReadWrite, constant("FG_YES"), Applied},
    {"FG_CAMERA_LINK_CORE_RESET", 11012, UInt32, ReadWrite, {}, NotStored},
    {"FG_CAMERA_LINK_PIXEL_CLOCK_X", 11014, UInt32, ReadOnly, {}, NotStored},
    {"FG_CAMERA_LINK_PIXEL_CLOCK_Y", 11015, UInt32, ReadOnly, {}, NotStored},
    {"FG_CAMERA_LINK_PIXEL_CLOCK_Z", 11016, UInt32, ReadOnly, {}, NotStored},
    {"FG_DEBUGSOURCE", 900001, UInt32, ReadWrite, {}, StoredOnly},
    {"FG_DEBUGSOURCENAME", 900006, Text, ReadOnly, {}, NotStored},
    {"FG_DEBUGINENABLE", 900002, Enumeration, ReadWrite, {}, StoredOnly},
    {"FG_DEBUGFILE", 900000, Text, ReadWrite, "", Applied},
    {"FG_DEBUGINSERT", 900003, Enumeration, ReadWrite, {}, NotStored},
    {"FG_DEBUGWRITEPIXEL", 900010, UInt64, ReadWrite, {}, NotStored},
    {"FG_DEBUGWRITEFLAG", 900011, Enumeration, ReadWrite, {}, NotStored},
    {"FG_DEBUGOUTENABLE", 900004, Enumeration, ReadWrite, {}, StoredOnly},
    {"FG_DEBUGOUTXPOS", 900007, UInt32, ReadOnly, {}, NotStored},
    {"FG_DEBUGOUTYPOS", 900008, UInt32, ReadOnly, {}, NotStored},
    {"FG_DEBUGOUTPIXEL", 900009, UInt32, ReadOnly, {}, NotStored},
    {"FG_DEBUGREADY", 900012, Enumeration, ReadOnly, {}, NotStored},
    {"FG_DEBUGSAVECONFIG", 900013, Text, ReadWrite, {}, NotStored},
    {"FG_TAPGEOMETRY", 300111, Enumeration, ReadWrite, constant("FG_GEOMETRY_1X8"), Applied},
    {"FG_SENSORWIDTH", 200220, UInt32, ReadWrite, 1024, Applied},
    {"FG_VANTAGEPOINT", 300112, Enumeration, ReadWrite, constant("FG_VANTAGEPOINT_TOP_LEFT"), Applied},
    {"FG_WIDTH", 100, UInt32, ReadWrite, 1024, Applied},
    {"FG_HEIGHT", 200, UInt32, ReadWrite, 1024, Applied},
    {"FG_XOFFSET", 300, UInt32, ReadWrite, 0, Applied},
    {"FG_YOFFSET", 400, UInt32, ReadWrite, 0, Applied},
    {"FG_FILLLEVEL", 110086, UInt32, ReadOnly, {}, NotStored},
    {"FG_OVERFLOW", 110087, UInt32, ReadOnly, {}, NotStored},
    {"FG_FORMAT", 700, Enumeration, ReadWrite, constant("FG_COL24"), Applied},
    {"FG_PIXELDEPTH", 4000, UInt32, ReadOnly, {}, NotStored},
    {"FG_CAMERASIMULATOR_ENABLE", 30099, Enumeration, ReadWrite, constant("FG_CAMPORT"), Applied},
    {"FG_CAMERASIMULATOR_WIDTH", 30102, UInt32, ReadWrite, {}, Preloaded},
    {"FG_CAMERASIMULATOR_LINE_GAP", 30105, UInt32, ReadWrite, {}, Preloaded},
    {"FG_CAMERASIMULATOR_HEIGHT", 200322, UInt32, ReadWrite, {}, Preloaded},
    {"FG_CAMERASIMULATOR_FRAME_GAP", 200325, UInt32, ReadWrite, {}, Preloaded},
    {"FG_CAMERASIMULATOR_PATTERN", 200326, Enumeration, ReadWrite, constant("FG_DIAGONAL"), Applied},
    {"FG_CAMERASIMULATOR_PATTERN_OFFSET", 200356, UInt32, ReadWrite, 0, Applied},
    {"FG_CAMERASIMULATOR_ROLL", 200327, Enumeration, ReadWrite, constant("FG_ON"), Applied},
    {"FG_CAMERASIMULATOR_SELECT_MODE", 200328, Enumeration, ReadWrite, constant("FG_LINERATE"), Applied},
    {"FG_CAMERASIMULATOR_PIXEL_FREQUENCY", 30106, Double, ReadWrite, {}, Preloaded},
    {"FG_CAMERASIMULATOR_LINERATE", 200329, Double, ReadWrite, {}, Preloaded},
    {"FG_CAMERASIMULATOR_FRAMERATE", 200352, Double, ReadWrite, {}, Preloaded},
    {"FG_CAMERASIMULATOR_TRIGGER_MODE", 200355, Enumeration, ReadWrite, constant("SIMULATION_FREE_RUN"), Applied},
    {"FG_CAMERASIMULATOR_ACTIVE", 30101, UInt32, ReadOnly, {}, StoredOnly},
    {"FG_CAMERASIMULATOR_PASSIVE", 30100, UInt32, ReadOnly, {}, StoredOnly},
    {"FG_IMG_SELECT_PERIOD", 25110, UInt32, ReadWrite, 1, Applied},
    {"FG_IMG_SELECT", 25111, UInt32, ReadWrite, 0, Applied},
    {"FG_SCALINGFACTOR_RED", 13000, Double, ReadWrite, 1.0, Applied},
    {"FG_SCALINGFACTOR_BLUE", 13010, Double, ReadWrite, 1.0, Applied},
    {"FG_SCALINGFACTOR_GREEN", 13030, Double, ReadWrite, 1.0, Applied},
    {"FG_BAYERINIT", 13020, Enumeration, ReadWrite, constant("RedFollowedByGreen"), Applied},
    {"FG_SAMPLING_RATE", 200365, Enumeration, ReadWrite, constant("FG_DOUBLE"), Applied},
    {"FG_LUT_TYPE", 110017, Enumeration, ReadWrite, constant("LUT_TYPE_PROCESSING"), Applied},
    {"FG_LUT_IMPLEMENTATION_TYPE", 300006, Enumeration, ReadOnly, {}, NotStored},
    {"FG_LUT_IN_BITS", 300007, UInt32, ReadOnly, {}, NotStored},
    {"FG_LUT_OUT_BITS", 300008, UInt32, ReadOnly, {}, NotStored},
    {"FG_LUT_VALUE_RED", 300009, UInt32Field, ReadWrite, {}, NotStored},
    {"FG_LUT_VALUE_GREEN", 300010, UInt32Field, ReadWrite, {}, NotStored},
    {"FG_LUT_VALUE_BLUE", 300011, UInt32Field, ReadWrite, {}, NotStored},
    {"FG_LUT_CUSTOM_FILE", 300000, Text, ReadWrite, {}, Preloaded},
    {"FG_LUT_SAVE_FILE", 110021, Text, ReadWrite, {}, NotStored},
    {"FG_PROCESSING_OFFSET", 300004, Double, ReadWrite, {}, Preloaded},
    {"FG_PROCESSING_GAIN", 300002, Double, ReadWrite, {}, Preloaded},
    {"FG_PROCESSING_GAMMA", 300003, Double, ReadWrite, {}, Preloaded},
    {"FG_PROCESSING_INVERT", 300005, Enumeration, ReadWrite, {}, Preloaded},
    {"FG_LINETRIGGERMODE", 8102, Enumeration, ReadWrite, constant("GRABBER_CONTROLLED"), Applied},
    {"FG_EXSYNCON", 8300, Enumeration, ReadWrite, constant("FG_ON"), Applied},
    {"FG_LINETRIGGERINSRC", 8112, Enumeration, ReadWrite, constant("TRGINSRC_GPI_1"), Applied},
    {"FG_LINETRIGGERINPOLARITY", 8115, Enumeration, ReadWrite, constant("HIGH_ON_ZERO_HIGH"), Applied},
    {"FG_LINETRIGGERDEBOUNCING", 110063, Double, ReadWrite, 0.112, Applied},
    {"FG_LINE_DOWNSCALE", 24040, UInt32, ReadWrite, 1, Applied},
    {"FG_LINE_DOWNSCALEINIT", 24050, UInt32, ReadWrite, 1, Applied},
    {"FG_SHAFTENCODERON", 9110, Enumeration, ReadWrite, constant("FG_OFF"), Applied},
    {"FG_SHAFTENCODERMODE", 110065, Enumeration, ReadWrite, constant("FILTER_X1"), Applied},
    {"FG_SHAFTENCODERINSRC", 9100, Enumeration, ReadWrite, constant("TRGINSRC_GPI_2"), Applied},
    {"FG_SHAFTENCODERLEADING", 9120, Enumeration, ReadWrite, constant("SOURCE_A"), Applied},
    {"FG_SHAFTENCODER_COMPENSATION_ENABLE", 200370, Enumeration, ReadWrite, constant("FG_ON"), Applied},
    {"FG_SHAFTENCODER_COMPENSATION_COUNT", 200371, UInt32, ReadWrite, 0, Applied},
    {"FG_LINEPERIODE", 96, Double, ReadWrite, 200.0, Applied},
    {"FG_LINEEXPOSURE", 10030, Double, ReadWrite, 19.0, Applied},
    {"FG_EXSYNCPOLARITY", 8420, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_LINETRIGGERDELAY", 8900, Double, ReadWrite, 0.0, Applied},
    {"FG_IMGTRIGGERMODE", 8104, Enumeration, ReadWrite, constant("FREE_RUN"), Applied},
    {"FG_IMGTRIGGERON", 8106, Enumeration, ReadWrite, constant("FG_ON"), Applied},
    {"FG_FLASHON", 8600, Enumeration, ReadWrite, constant("FG_ON"), Applied},
    {"FG_IMGTRIGGER_ASYNC_HEIGHT", 110067, UInt32, ReadWrite, 1024, Applied},
    {"FG_IMGTRIGGER_IS_BUSY", 110066, Enumeration, ReadOnly, {}, NotStored},
    {"FG_IMGTRIGGERINSRC", 8113, Enumeration, ReadWrite, constant("TRGINSRC_GPI_0"), Applied},
    {"FG_IMGTRIGGERINPOLARITY", 8116, Enumeration, ReadWrite, constant("HIGH_ON_ZERO_HIGH"), Applied},
    {"FG_IMGTRIGGERGATEDELAY", 8118, UInt32, ReadWrite, 0, Applied},
    {"FG_IMGTRIGGERDEBOUNCING", 110064, Double, ReadWrite, 0.112, Applied},
    {"FG_FLASH_POLARITY", 24060, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_STROBEPULSEDELAY", 8700, UInt32, ReadWrite, 0, Applied},
    {"FG_SENDSOFTWARETRIGGER", 8800, Enumeration, ReadWrite, {}, NotStored},
    {"FG_SETSOFTWARETRIGGER", 8801, Enumeration, ReadWrite, constant("FG_LOW"), Applied},
    {"FG_CC1_SOURCE", 14041, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_EXSYNC"), Applied},
    {"FG_CC1_POLARITY", 14031, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_CC2_SOURCE", 14042, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_CC2_POLARITY", 14032, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_CC3_SOURCE", 14043, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_CC3_POLARITY", 14033, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_CC4_SOURCE", 14044, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_CC4_POLARITY", 14034, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_0_SOURCE", 200384, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_FLASH"), Applied},
    {"FG_TRIGGEROUT_GPO_0_POLARITY", 200410, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_1_SOURCE", 200385, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_EXSYNC2"), Applied},
    {"FG_TRIGGEROUT_GPO_1_POLARITY", 200411, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_2_SOURCE", 200386, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_EXSYNC"), Applied},
    {"FG_TRIGGEROUT_GPO_2_POLARITY", 200412, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_3_SOURCE", 200387, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_TRIGGEROUT_GPO_3_POLARITY", 200413, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_4_SOURCE", 200388, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_TRIGGEROUT_GPO_4_POLARITY", 200414, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_5_SOURCE", 200389, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_TRIGGEROUT_GPO_5_POLARITY", 200415, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_6_SOURCE", 200390, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_TRIGGEROUT_GPO_6_POLARITY", 200416, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_GPO_7_SOURCE", 200391, Enumeration, ReadWrite, constant("VCC"), Applied},
    {"FG_TRIGGEROUT_GPO_7_POLARITY", 200417, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_FRONT_GPO_0_SOURCE", 200392, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_FLASH"), Applied},
    {"FG_TRIGGEROUT_FRONT_GPO_0_POLARITY", 200418, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_TRIGGEROUT_FRONT_GPO_1_SOURCE", 200393, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_EXSYNC2"), Applied},
    {"FG_TRIGGEROUT_FRONT_GPO_1_POLARITY", 200419, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_DIGIO_OUTPUT", 14020, Int32, ReadWrite, 3, Applied},
    {"FG_DIGIO_INPUT", 14010, UInt32, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_0_SOURCE", 200420, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_EXSYNC"), Applied},
    {"FG_SIGNAL_ANALYZER_0_POLARITY", 200421, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT", 200422, Double, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_0_PERIOD_MAX", 200423, Double, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_0_PERIOD_MIN", 200424, Double, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_0_PULSE_COUNT", 200425, UInt32, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_1_SOURCE", 200430, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_LINE_START"), Applied},
    {"FG_SIGNAL_ANALYZER_1_POLARITY", 200431, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_SIGNAL_ANALYZER_1_PERIOD_CURRENT", 200432, Double, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_1_PERIOD_MAX", 200433, Double, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_1_PERIOD_MIN", 200434, Double, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_1_PULSE_COUNT", 200435, UInt32, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE", 200439, Int64, ReadOnly, {}, StoredOnly},
    {"FG_SIGNAL_ANALYZER_CLEAR", 200438, Enumeration, ReadWrite, constant("FG_APPLY"), Applied},
    {"FG_CCSEL0", 14001, Enumeration, ReadWrite, constant("CC_EXSYNC"), Applied},
    {"FG_CCSEL1", 14002, Enumeration, ReadWrite, constant("CC_VCC"), Applied},
    {"FG_CCSEL2", 14003, Enumeration, ReadWrite, constant("CC_VCC"), Applied},
    {"FG_CCSEL3", 14004, Enumeration, ReadWrite, constant("CC_VCC"), Applied},
    {"FG_CUSTOM_SIGNAL_EVENT_0_SOURCE", 200440, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_EXSYNC"), Applied},
    {"FG_CUSTOM_SIGNAL_EVENT_0_POLARITY", 200441, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
    {"FG_CUSTOM_SIGNAL_EVENT_1_SOURCE", 200442, Enumeration, ReadWrite, constant("FG_SIGNAL_CAM0_FLASH"), Applied},
    {"FG_CUSTOM_SIGNAL_EVENT_1_POLARITY", 200443, Enumeration, ReadWrite, constant("FG_HIGH"), Applied},
});
// clang-format on

}  // namespace sdk_rows

/// All SDK parameters in list order.
inline constexpr auto& sdkParameters = sdk_rows::sdkParameterRows;
inline constexpr std::size_t sdkParameterCount = sdkParameters.size();

/// Position of a parameter in the list.
enum class SdkIndex : std::uint16_t {};

/// Pairs of id and list position, ordered by id: what the dispatch searches.
struct SdkIdEntry {
    std::int32_t id;
    SdkIndex index;
};
inline constexpr auto sdkParametersById = [] {
    std::array<SdkIdEntry, sdkParameterCount> result{};
    for (std::size_t i = 0; i < sdkParameterCount; ++i)
        result[i] = {sdkParameters[i].id, static_cast<SdkIndex>(i)};
    std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
    return result;
}();

/// The row of an id, found by an ordered search; null for an unknown id.
constexpr const SdkParameter* findSdkParameter(std::int32_t id) {
    const auto* found =
        std::lower_bound(sdkParametersById.begin(), sdkParametersById.end(), id,
                         [](const SdkIdEntry& entry, std::int32_t key) { return entry.id < key; });
    if (found == sdkParametersById.end() || found->id != id) return nullptr;
    return &sdkParameters[static_cast<std::size_t>(found->index)];
}

/// The row of a name, searched one by one: for compile time and for tools; null for an unknown name.
constexpr const SdkParameter* findSdkParameter(std::string_view name) {
    for (const auto& row : sdkParameters)
        if (row.name == name) return &row;
    return nullptr;
}

/// The id of a parameter named in the code; an unknown name does not compile.
consteval std::int32_t sdkId(std::string_view name) {
    // Not by `findSdkParameter`: under the sanitizers g++ compares no address with null at compile time.
    for (const auto& row : sdkParameters)
        if (row.name == name) return row.id;
    throw "no SDK parameter of this name";
}

/// Position of a row in the list.
constexpr std::size_t indexOf(const SdkParameter& row) {
    return static_cast<std::size_t>(&row - sdkParameters.data());
}

static_assert(sdkParameterCount == 177);
static_assert(std::adjacent_find(sdkParametersById.begin(), sdkParametersById.end(),
                                 [](const auto& a, const auto& b) { return a.id >= b.id; }) ==
                  sdkParametersById.end(),
              "ids are unique");
static_assert(std::all_of(sdkParameters.begin(), sdkParameters.end(),
                          [](const SdkParameter& row) {
                              return (row.fileUse == FileUse::Applied) !=
                                     std::holds_alternative<std::monostate>(row.defaultValue);
                          }),
              "the parameters with a default are those that a configuration load applies");

}  // namespace marovine
