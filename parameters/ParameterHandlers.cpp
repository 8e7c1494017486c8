#include "parameters/ParameterHandlers.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <type_traits>

namespace marovine {

namespace {

using Impl = FgGxWrapperImpl;

/// The cache field `member` of the topic `topic`.
template <auto topic, auto member>
inline constexpr auto field = +[](ParameterCache& cache) -> auto& {
    return (cache.*topic).*member;
};

template <auto member>
inline constexpr auto camera = field<&ParameterCache::camera, member>;
template <auto member>
inline constexpr auto window = field<&ParameterCache::window, member>;
template <auto member>
inline constexpr auto simulator = field<&ParameterCache::simulator, member>;
template <auto member>
inline constexpr auto imageSelector = field<&ParameterCache::imageSelector, member>;
template <auto member>
inline constexpr auto colour = field<&ParameterCache::colour, member>;
template <auto member>
inline constexpr auto lookupTable = field<&ParameterCache::lookupTable, member>;
template <auto member>
inline constexpr auto debug = field<&ParameterCache::debug, member>;
template <auto member>
inline constexpr auto lineTrigger = field<&ParameterCache::lineTrigger, member>;
template <auto member>
inline constexpr auto imageTrigger = field<&ParameterCache::imageTrigger, member>;
template <auto member>
inline constexpr auto outputs = field<&ParameterCache::outputs, member>;

template <Route route, auto member>
inline constexpr auto requested = +[](ParameterCache& cache) -> std::int32_t& {
    return (cache.outputs[route].*member).requested;
};
template <Route route, auto member>
inline constexpr auto applied = +[](ParameterCache& cache) -> std::int32_t& {
    return (cache.outputs[route].*member).applied;
};
template <std::size_t line>
inline constexpr auto legacyCc = +[](ParameterCache& cache) -> std::int32_t& {
    return cache.outputs.legacyCc[line];
};

// clang-format off
constexpr auto rows = std::to_array<ParameterHandlers>({
    {"FG_TIMEOUT", &Impl::set_sdk_param_FG_TIMEOUT_P0, FromCache{}, camera<&CameraSettings::timeout>},
    {"FG_APPLET_VERSION", ReadOnly{}, Constant{2}, {}},
    {"FG_APPLET_REVISION", ReadOnly{}, Constant{1}, {}},
    {"FG_APPLET_ID", ReadOnly{}, &Impl::get_sdk_param_FG_APPLET_ID_P0, {}},
    {"FG_APPLET_BUILD_TIME", ReadOnly{}, &Impl::get_sdk_param_FG_APPLET_BUILD_TIME_P0, {}},
    {"FG_HAP_FILE", ReadOnly{}, FixedText{kHapFile}, {}},
    {"FG_DMASTATUS", ReadOnly{}, InnerHandle{}, {}},
    {"FG_CAMSTATUS", ReadOnly{}, &Impl::get_sdk_param_FG_CAMSTATUS_P0, {}},
    {"FG_CAMSTATUS_EXTENDED", ReadOnly{}, &Impl::get_sdk_param_FG_CAMSTATUS_EXTENDED_P0, {}},
    {"FG_SYSTEMMONITOR_FPGA_TEMPERATURE", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_FPGA_TEMPERATURE_P0, {}},
    {"FG_SYSTEMMONITOR_FPGA_VCC_INT", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_FPGA_VCC_INT_P0, {}},
    {"FG_SYSTEMMONITOR_FPGA_VCC_AUX", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_FPGA_VCC_AUX_P0, {}},
    {"FG_SYSTEMMONITOR_FPGA_VCC_BRAM", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_FPGA_VCC_BRAM_P0, {}},
    {"FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH_P0, {}},
    {"FG_SYSTEMMONITOR_CURRENT_LINK_SPEED", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_CURRENT_LINK_SPEED_P0, {}},
    {"FG_SYSTEMMONITOR_PCIE_LINK_GEN2_CAPABLE", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_PCIE_LINK_GEN2_CAPABLE_P0, {}},
    {"FG_SYSTEMMONITOR_PCIE_LINK_PARTNER_GEN2_CAPABLE", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_PCIE_LINK_PARTNER_GEN2_CAPABLE_P0, {}},
    {"FG_SYSTEMMONITOR_PCIE_TRAINED_PAYLOAD_SIZE", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_PCIE_TRAINED_PAYLOAD_SIZE_P0, {}},
    {"FG_SYSTEMMONITOR_EXTENSION_CONNECTOR_PRESENT", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_EXTENSION_CONNECTOR_PRESENT_P0, {}},
    {"FG_ALTERNATIVE_BOARD_DETECTION", ReadOnly{}, &Impl::get_sdk_param_FG_ALTERNATIVE_BOARD_DETECTION_P0, {}},
    {"FG_SYSTEMMONITOR_POCL_STATE_PORT_A", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_POCL_STATE_PORT_A_P0, {}},
    {"FG_SYSTEMMONITOR_POCL_STATE_PORT_B", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_POCL_STATE_PORT_B_P0, {}},
    {"FG_SYSTEMMONITOR_FPGA_DNA", ReadOnly{}, &Impl::get_sdk_param_FG_SYSTEMMONITOR_FPGA_DNA_P0, {}},
    {"FG_TRANSFER_LEN", ReadOnly{}, Forwarded{}, {}},
    {"FG_NR_OF_PROCESSES", ReadOnly{}, Constant{1}, {}},
    {"FG_NR_OF_DMAS", ReadOnly{}, Forwarded{}, {}},
    {"FG_NR_OF_CAMS", ReadOnly{}, Forwarded{}, {}},
    {"FG_DMA_PORT", ReadOnly{}, Forwarded{}, {}},
    {"FG_CAM_PORT", ReadOnly{}, Forwarded{}, {}},
    {"FG_APC_STOP_TIMEOUT", ReadOnly{}, Forwarded{}, {}},
    {"FG_CAMERA_LINK_CAMTYPE", &Impl::set_sdk_param_FG_CAMERA_LINK_CAMTYPE_P0, FromCache{}, camera<&CameraSettings::format>},
    {"FG_USEDVAL", &Impl::set_sdk_param_FG_USEDVAL_P0, FromCache{}, camera<&CameraSettings::useDval>},
    {"FG_CAMERA_LINK_CORE_RESET", &Impl::set_sdk_param_FG_CAMERA_LINK_CORE_RESET_P0, FromCache{}, camera<&CameraSettings::coreReset>},
    {"FG_CAMERA_LINK_PIXEL_CLOCK_X", ReadOnly{}, &Impl::get_sdk_param_FG_CAMERA_LINK_PIXEL_CLOCK_X_P0, {}},
    {"FG_CAMERA_LINK_PIXEL_CLOCK_Y", ReadOnly{}, &Impl::get_sdk_param_FG_CAMERA_LINK_PIXEL_CLOCK_Y_P0, {}},
    {"FG_CAMERA_LINK_PIXEL_CLOCK_Z", ReadOnly{}, &Impl::get_sdk_param_FG_CAMERA_LINK_PIXEL_CLOCK_Z_P0, {}},
    {"FG_DEBUGSOURCE", &Impl::set_sdk_param_FG_DEBUGSOURCE_P0, FromCache{}, debug<&DebugSettings::source>},
    {"FG_DEBUGSOURCENAME", ReadOnly{}, &Impl::get_sdk_param_FG_DEBUGSOURCENAME_P0, {}},
    {"FG_DEBUGINENABLE", &Impl::set_sdk_param_FG_DEBUGINENABLE_P0, &Impl::get_sdk_param_FG_DEBUGINENABLE_P0, debug<&DebugSettings::inputEnable>},
    {"FG_DEBUGFILE", &Impl::set_sdk_param_FG_DEBUGFILE_P0, &Impl::get_sdk_param_FG_DEBUGFILE_P0, debug<&DebugSettings::file>},
    {"FG_DEBUGINSERT", &Impl::set_sdk_param_FG_DEBUGINSERT_P0, FromCache{}, debug<&DebugSettings::insert>},
    {"FG_DEBUGWRITEPIXEL", &Impl::set_sdk_param_FG_DEBUGWRITEPIXEL_P0, FromCache{}, debug<&DebugSettings::writePixel>},
    {"FG_DEBUGWRITEFLAG", &Impl::set_sdk_param_FG_DEBUGWRITEFLAG_P0, FromCache{}, debug<&DebugSettings::writeFlag>},
    {"FG_DEBUGOUTENABLE", &Impl::set_sdk_param_FG_DEBUGOUTENABLE_P0, &Impl::get_sdk_param_FG_DEBUGOUTENABLE_P0, debug<&DebugSettings::outputEnable>},
    {"FG_DEBUGOUTXPOS", ReadOnly{}, &Impl::get_sdk_param_FG_DEBUGOUTXPOS_P0, {}},
    {"FG_DEBUGOUTYPOS", ReadOnly{}, &Impl::get_sdk_param_FG_DEBUGOUTYPOS_P0, {}},
    {"FG_DEBUGOUTPIXEL", ReadOnly{}, &Impl::get_sdk_param_FG_DEBUGOUTPIXEL_P0, {}},
    {"FG_DEBUGREADY", ReadOnly{}, &Impl::get_sdk_param_FG_DEBUGREADY_P0, {}},
    {"FG_DEBUGSAVECONFIG", &Impl::set_sdk_param_FG_DEBUGSAVECONFIG_P0, &Impl::get_sdk_param_FG_DEBUGSAVECONFIG_P0, debug<&DebugSettings::saveConfigFile>},
    {"FG_TAPGEOMETRY", &Impl::set_sdk_param_FG_TAPGEOMETRY_P0, FromCache{}, window<&WindowSettings::tapGeometry>},
    {"FG_SENSORWIDTH", &Impl::set_sdk_param_FG_SENSORWIDTH_P0, FromCache{}, window<&WindowSettings::sensorWidth>},
    {"FG_VANTAGEPOINT", &Impl::set_sdk_param_FG_VANTAGEPOINT_P0, FromCache{}, window<&WindowSettings::vantagePoint>},
    {"FG_WIDTH", &Impl::set_sdk_param_FG_WIDTH_P0, FromCache{}, window<&WindowSettings::width>},
    {"FG_HEIGHT", &Impl::set_sdk_param_FG_HEIGHT_P0, FromCache{}, window<&WindowSettings::height>},
    {"FG_XOFFSET", &Impl::set_sdk_param_FG_XOFFSET_P0, FromCache{}, window<&WindowSettings::xOffset>},
    {"FG_YOFFSET", &Impl::set_sdk_param_FG_YOFFSET_P0, FromCache{}, window<&WindowSettings::yOffset>},
    {"FG_FILLLEVEL", ReadOnly{}, &Impl::get_sdk_param_FG_FILLLEVEL_P0, {}},
    {"FG_OVERFLOW", ReadOnly{}, &Impl::get_sdk_param_FG_OVERFLOW_P0, {}},
    {"FG_FORMAT", &Impl::set_sdk_param_FG_FORMAT_P0, FromCache{}, window<&WindowSettings::format>},
    {"FG_PIXELDEPTH", ReadOnly{}, Constant{8}, {}},
    {"FG_CAMERASIMULATOR_ENABLE", &Impl::set_sdk_param_FG_CAMERASIMULATOR_ENABLE_P0, FromCache{}, simulator<&SimulatorSettings::source>},
    {"FG_CAMERASIMULATOR_WIDTH", &Impl::set_sdk_param_FG_CAMERASIMULATOR_WIDTH_P0, &Impl::get_sdk_param_FG_CAMERASIMULATOR_WIDTH_P0, simulator<&SimulatorSettings::requestedWidth>},
    {"FG_CAMERASIMULATOR_LINE_GAP", &Impl::set_sdk_param_FG_CAMERASIMULATOR_LINE_GAP_P0, &Impl::get_sdk_param_FG_CAMERASIMULATOR_LINE_GAP_P0, simulator<&SimulatorSettings::requestedLineGap>},
    {"FG_CAMERASIMULATOR_HEIGHT", &Impl::set_sdk_param_FG_CAMERASIMULATOR_HEIGHT_P0, FromCache{}, simulator<&SimulatorSettings::height>},
    {"FG_CAMERASIMULATOR_FRAME_GAP", &Impl::set_sdk_param_FG_CAMERASIMULATOR_FRAME_GAP_P0, &Impl::get_sdk_param_FG_CAMERASIMULATOR_FRAME_GAP_P0, simulator<&SimulatorSettings::requestedFrameGap>},
    {"FG_CAMERASIMULATOR_PATTERN", &Impl::set_sdk_param_FG_CAMERASIMULATOR_PATTERN_P0, FromCache{}, simulator<&SimulatorSettings::pattern>},
    {"FG_CAMERASIMULATOR_PATTERN_OFFSET", &Impl::set_sdk_param_FG_CAMERASIMULATOR_PATTERN_OFFSET_P0, FromCache{}, simulator<&SimulatorSettings::patternOffset>},
    {"FG_CAMERASIMULATOR_ROLL", &Impl::set_sdk_param_FG_CAMERASIMULATOR_ROLL_P0, FromCache{}, simulator<&SimulatorSettings::roll>},
    {"FG_CAMERASIMULATOR_SELECT_MODE", &Impl::set_sdk_param_FG_CAMERASIMULATOR_SELECT_MODE_P0, FromCache{}, simulator<&SimulatorSettings::speedMode>},
    {"FG_CAMERASIMULATOR_PIXEL_FREQUENCY", &Impl::set_sdk_param_FG_CAMERASIMULATOR_PIXEL_FREQUENCY_P0, &Impl::get_sdk_param_FG_CAMERASIMULATOR_PIXEL_FREQUENCY_P0, simulator<&SimulatorSettings::pixelFrequency>},
    {"FG_CAMERASIMULATOR_LINERATE", &Impl::set_sdk_param_FG_CAMERASIMULATOR_LINERATE_P0, &Impl::get_sdk_param_FG_CAMERASIMULATOR_LINERATE_P0, simulator<&SimulatorSettings::lineRate>},
    {"FG_CAMERASIMULATOR_FRAMERATE", &Impl::set_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0, &Impl::get_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0, simulator<&SimulatorSettings::frameRate>},
    {"FG_CAMERASIMULATOR_TRIGGER_MODE", &Impl::set_sdk_param_FG_CAMERASIMULATOR_TRIGGER_MODE_P0, FromCache{}, simulator<&SimulatorSettings::triggerMode>},
    {"FG_CAMERASIMULATOR_ACTIVE", ReadOnly{}, &Impl::get_sdk_param_FG_CAMERASIMULATOR_ACTIVE_P0, {}},
    {"FG_CAMERASIMULATOR_PASSIVE", ReadOnly{}, &Impl::get_sdk_param_FG_CAMERASIMULATOR_PASSIVE_P0, {}},
    {"FG_IMG_SELECT_PERIOD", &Impl::set_sdk_param_FG_IMG_SELECT_PERIOD_P0, FromCache{}, imageSelector<&ImageSelectorSettings::period>},
    {"FG_IMG_SELECT", &Impl::set_sdk_param_FG_IMG_SELECT_P0, FromCache{}, imageSelector<&ImageSelectorSettings::phase>},
    {"FG_SCALINGFACTOR_RED", &Impl::set_sdk_param_FG_SCALINGFACTOR_RED_P0, FromCache{}, colour<&ColourSettings::redGain>},
    {"FG_SCALINGFACTOR_BLUE", &Impl::set_sdk_param_FG_SCALINGFACTOR_BLUE_P0, FromCache{}, colour<&ColourSettings::blueGain>},
    {"FG_SCALINGFACTOR_GREEN", &Impl::set_sdk_param_FG_SCALINGFACTOR_GREEN_P0, FromCache{}, colour<&ColourSettings::greenGain>},
    {"FG_BAYERINIT", &Impl::set_sdk_param_FG_BAYERINIT_P0, FromCache{}, colour<&ColourSettings::bayerInit>},
    {"FG_SAMPLING_RATE", &Impl::set_sdk_param_FG_SAMPLING_RATE_P0, FromCache{}, colour<&ColourSettings::samplingRate>},
    {"FG_LUT_TYPE", &Impl::set_sdk_param_FG_LUT_TYPE_P0, FromCache{}, lookupTable<&LookupTableSettings::type>},
    {"FG_LUT_IMPLEMENTATION_TYPE", ReadOnly{}, Constant{0}, {}},
    {"FG_LUT_IN_BITS", ReadOnly{}, Constant{8}, {}},
    {"FG_LUT_OUT_BITS", ReadOnly{}, Constant{8}, {}},
    {"FG_LUT_VALUE_RED", FieldSetters{&Impl::set_sdk_param_FG_LUT_VALUE_RED_P0, &Impl::set_sdk_param_FG_LUT_VALUE_RED_P0}, FieldCache{}, lookupTable<&LookupTableSettings::red>},
    {"FG_LUT_VALUE_GREEN", FieldSetters{&Impl::set_sdk_param_FG_LUT_VALUE_GREEN_P0, &Impl::set_sdk_param_FG_LUT_VALUE_GREEN_P0}, FieldCache{}, lookupTable<&LookupTableSettings::green>},
    {"FG_LUT_VALUE_BLUE", FieldSetters{&Impl::set_sdk_param_FG_LUT_VALUE_BLUE_P0, &Impl::set_sdk_param_FG_LUT_VALUE_BLUE_P0}, FieldCache{}, lookupTable<&LookupTableSettings::blue>},
    {"FG_LUT_CUSTOM_FILE", &Impl::set_sdk_param_FG_LUT_CUSTOM_FILE_P0, &Impl::get_sdk_param_FG_LUT_CUSTOM_FILE_P0, lookupTable<&LookupTableSettings::customFile>},
    {"FG_LUT_SAVE_FILE", &Impl::set_sdk_param_FG_LUT_SAVE_FILE_P0, &Impl::get_sdk_param_FG_LUT_SAVE_FILE_P0, lookupTable<&LookupTableSettings::saveFile>},
    {"FG_PROCESSING_OFFSET", &Impl::set_sdk_param_FG_PROCESSING_OFFSET_P0, FromCache{}, lookupTable<&LookupTableSettings::offset>},
    {"FG_PROCESSING_GAIN", &Impl::set_sdk_param_FG_PROCESSING_GAIN_P0, FromCache{}, lookupTable<&LookupTableSettings::gain>},
    {"FG_PROCESSING_GAMMA", &Impl::set_sdk_param_FG_PROCESSING_GAMMA_P0, FromCache{}, lookupTable<&LookupTableSettings::gamma>},
    {"FG_PROCESSING_INVERT", &Impl::set_sdk_param_FG_PROCESSING_INVERT_P0, FromCache{}, lookupTable<&LookupTableSettings::invert>},
    {"FG_LINETRIGGERMODE", &Impl::set_sdk_param_FG_LINETRIGGERMODE_P0, FromCache{}, lineTrigger<&LineTriggerSettings::mode>},
    {"FG_EXSYNCON", &Impl::set_sdk_param_FG_EXSYNCON_P0, FromCache{}, lineTrigger<&LineTriggerSettings::exsyncOn>},
    {"FG_LINETRIGGERINSRC", &Impl::set_sdk_param_FG_LINETRIGGERINSRC_P0, FromCache{}, lineTrigger<&LineTriggerSettings::sourceA>},
    {"FG_LINETRIGGERINPOLARITY", &Impl::set_sdk_param_FG_LINETRIGGERINPOLARITY_P0, FromCache{}, lineTrigger<&LineTriggerSettings::inputPolarity>},
    {"FG_LINETRIGGERDEBOUNCING", &Impl::set_sdk_param_FG_LINETRIGGERDEBOUNCING_P0, FromCache{}, lineTrigger<&LineTriggerSettings::debouncing>},
    {"FG_LINE_DOWNSCALE", &Impl::set_sdk_param_FG_LINE_DOWNSCALE_P0, FromCache{}, lineTrigger<&LineTriggerSettings::downscale>},
    {"FG_LINE_DOWNSCALEINIT", &Impl::set_sdk_param_FG_LINE_DOWNSCALEINIT_P0, FromCache{}, lineTrigger<&LineTriggerSettings::downscalePhase>},
    {"FG_SHAFTENCODERON", &Impl::set_sdk_param_FG_SHAFTENCODERON_P0, FromCache{}, lineTrigger<&LineTriggerSettings::encoderOn>},
    {"FG_SHAFTENCODERMODE", &Impl::set_sdk_param_FG_SHAFTENCODERMODE_P0, FromCache{}, lineTrigger<&LineTriggerSettings::encoderMode>},
    {"FG_SHAFTENCODERINSRC", &Impl::set_sdk_param_FG_SHAFTENCODERINSRC_P0, FromCache{}, lineTrigger<&LineTriggerSettings::sourceB>},
    {"FG_SHAFTENCODERLEADING", &Impl::set_sdk_param_FG_SHAFTENCODERLEADING_P0, FromCache{}, lineTrigger<&LineTriggerSettings::encoderLeading>},
    {"FG_SHAFTENCODER_COMPENSATION_ENABLE", &Impl::set_sdk_param_FG_SHAFTENCODER_COMPENSATION_ENABLE_P0, FromCache{}, lineTrigger<&LineTriggerSettings::compensationEnable>},
    {"FG_SHAFTENCODER_COMPENSATION_COUNT", &Impl::set_sdk_param_FG_SHAFTENCODER_COMPENSATION_COUNT_P0, &Impl::get_sdk_param_FG_SHAFTENCODER_COMPENSATION_COUNT_P0, lineTrigger<&LineTriggerSettings::compensationCount>},
    {"FG_LINEPERIODE", &Impl::set_sdk_param_FG_LINEPERIODE_P0, FromCache{}, lineTrigger<&LineTriggerSettings::period>},
    {"FG_LINEEXPOSURE", &Impl::set_sdk_param_FG_LINEEXPOSURE_P0, FromCache{}, lineTrigger<&LineTriggerSettings::exposure>},
    {"FG_EXSYNCPOLARITY", &Impl::set_sdk_param_FG_EXSYNCPOLARITY_P0, FromCache{}, lineTrigger<&LineTriggerSettings::exsyncPolarity>},
    {"FG_LINETRIGGERDELAY", &Impl::set_sdk_param_FG_LINETRIGGERDELAY_P0, FromCache{}, lineTrigger<&LineTriggerSettings::delay>},
    {"FG_IMGTRIGGERMODE", &Impl::set_sdk_param_FG_IMGTRIGGERMODE_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::mode>},
    {"FG_IMGTRIGGERON", &Impl::set_sdk_param_FG_IMGTRIGGERON_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::on>},
    {"FG_FLASHON", &Impl::set_sdk_param_FG_FLASHON_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::flashOn>},
    {"FG_IMGTRIGGER_ASYNC_HEIGHT", &Impl::set_sdk_param_FG_IMGTRIGGER_ASYNC_HEIGHT_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::asyncHeight>},
    {"FG_IMGTRIGGER_IS_BUSY", ReadOnly{}, &Impl::get_sdk_param_FG_IMGTRIGGER_IS_BUSY_P0, {}},
    {"FG_IMGTRIGGERINSRC", &Impl::set_sdk_param_FG_IMGTRIGGERINSRC_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::source>},
    {"FG_IMGTRIGGERINPOLARITY", &Impl::set_sdk_param_FG_IMGTRIGGERINPOLARITY_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::inputPolarity>},
    {"FG_IMGTRIGGERGATEDELAY", &Impl::set_sdk_param_FG_IMGTRIGGERGATEDELAY_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::gateDelay>},
    {"FG_IMGTRIGGERDEBOUNCING", &Impl::set_sdk_param_FG_IMGTRIGGERDEBOUNCING_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::debouncing>},
    {"FG_FLASH_POLARITY", &Impl::set_sdk_param_FG_FLASH_POLARITY_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::flashPolarity>},
    {"FG_STROBEPULSEDELAY", &Impl::set_sdk_param_FG_STROBEPULSEDELAY_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::flashDelay>},
    {"FG_SENDSOFTWARETRIGGER", &Impl::set_sdk_param_FG_SENDSOFTWARETRIGGER_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::softwarePulse>},
    {"FG_SETSOFTWARETRIGGER", &Impl::set_sdk_param_FG_SETSOFTWARETRIGGER_P0, FromCache{}, imageTrigger<&ImageTriggerSettings::softwareState>},
    {"FG_CC1_SOURCE", &Impl::set_sdk_param_FG_CC1_SOURCE_P0, FromCache{}, requested<Route::CC1, &RouteSettings::source>},
    {"FG_CC1_POLARITY", &Impl::set_sdk_param_FG_CC1_POLARITY_P0, FromCache{}, requested<Route::CC1, &RouteSettings::polarity>},
    {"FG_CC2_SOURCE", &Impl::set_sdk_param_FG_CC2_SOURCE_P0, FromCache{}, requested<Route::CC2, &RouteSettings::source>},
    {"FG_CC2_POLARITY", &Impl::set_sdk_param_FG_CC2_POLARITY_P0, FromCache{}, requested<Route::CC2, &RouteSettings::polarity>},
    {"FG_CC3_SOURCE", &Impl::set_sdk_param_FG_CC3_SOURCE_P0, FromCache{}, requested<Route::CC3, &RouteSettings::source>},
    {"FG_CC3_POLARITY", &Impl::set_sdk_param_FG_CC3_POLARITY_P0, FromCache{}, requested<Route::CC3, &RouteSettings::polarity>},
    {"FG_CC4_SOURCE", &Impl::set_sdk_param_FG_CC4_SOURCE_P0, FromCache{}, requested<Route::CC4, &RouteSettings::source>},
    {"FG_CC4_POLARITY", &Impl::set_sdk_param_FG_CC4_POLARITY_P0, FromCache{}, requested<Route::CC4, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_0_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_0_SOURCE_P0, FromApplied{applied<Route::Gpo0, &RouteSettings::source>}, requested<Route::Gpo0, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_0_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_0_POLARITY_P0, FromApplied{applied<Route::Gpo0, &RouteSettings::polarity>}, requested<Route::Gpo0, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_1_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_1_SOURCE_P0, FromApplied{applied<Route::Gpo1, &RouteSettings::source>}, requested<Route::Gpo1, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_1_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_1_POLARITY_P0, FromApplied{applied<Route::Gpo1, &RouteSettings::polarity>}, requested<Route::Gpo1, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_2_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_2_SOURCE_P0, FromApplied{applied<Route::Gpo2, &RouteSettings::source>}, requested<Route::Gpo2, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_2_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_2_POLARITY_P0, FromApplied{applied<Route::Gpo2, &RouteSettings::polarity>}, requested<Route::Gpo2, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_3_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_3_SOURCE_P0, FromApplied{applied<Route::Gpo3, &RouteSettings::source>}, requested<Route::Gpo3, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_3_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_3_POLARITY_P0, FromApplied{applied<Route::Gpo3, &RouteSettings::polarity>}, requested<Route::Gpo3, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_4_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_4_SOURCE_P0, FromApplied{applied<Route::Gpo4, &RouteSettings::source>}, requested<Route::Gpo4, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_4_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_4_POLARITY_P0, FromApplied{applied<Route::Gpo4, &RouteSettings::polarity>}, requested<Route::Gpo4, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_5_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_5_SOURCE_P0, FromApplied{applied<Route::Gpo5, &RouteSettings::source>}, requested<Route::Gpo5, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_5_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_5_POLARITY_P0, FromApplied{applied<Route::Gpo5, &RouteSettings::polarity>}, requested<Route::Gpo5, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_6_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_6_SOURCE_P0, FromApplied{applied<Route::Gpo6, &RouteSettings::source>}, requested<Route::Gpo6, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_6_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_6_POLARITY_P0, FromApplied{applied<Route::Gpo6, &RouteSettings::polarity>}, requested<Route::Gpo6, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_GPO_7_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_7_SOURCE_P0, FromApplied{applied<Route::Gpo7, &RouteSettings::source>}, requested<Route::Gpo7, &RouteSettings::source>},
    {"FG_TRIGGEROUT_GPO_7_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_GPO_7_POLARITY_P0, FromApplied{applied<Route::Gpo7, &RouteSettings::polarity>}, requested<Route::Gpo7, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_FRONT_GPO_0_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_0_SOURCE_P0, FromApplied{applied<Route::FrontGpo0, &RouteSettings::source>}, requested<Route::FrontGpo0, &RouteSettings::source>},
    {"FG_TRIGGEROUT_FRONT_GPO_0_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_0_POLARITY_P0, FromApplied{applied<Route::FrontGpo0, &RouteSettings::polarity>}, requested<Route::FrontGpo0, &RouteSettings::polarity>},
    {"FG_TRIGGEROUT_FRONT_GPO_1_SOURCE", &Impl::set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_1_SOURCE_P0, FromApplied{applied<Route::FrontGpo1, &RouteSettings::source>}, requested<Route::FrontGpo1, &RouteSettings::source>},
    {"FG_TRIGGEROUT_FRONT_GPO_1_POLARITY", &Impl::set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_1_POLARITY_P0, FromApplied{applied<Route::FrontGpo1, &RouteSettings::polarity>}, requested<Route::FrontGpo1, &RouteSettings::polarity>},
    {"FG_DIGIO_OUTPUT", &Impl::set_sdk_param_FG_DIGIO_OUTPUT_P0, &Impl::get_sdk_param_FG_DIGIO_OUTPUT_P0, outputs<&OutputSettings::digitalOutput>},
    {"FG_DIGIO_INPUT", ReadOnly{}, &Impl::get_sdk_param_FG_DIGIO_INPUT_P0, {}},
    {"FG_SIGNAL_ANALYZER_0_SOURCE", &Impl::set_sdk_param_FG_SIGNAL_ANALYZER_0_SOURCE_P0, FromApplied{applied<Route::Analyzer0, &RouteSettings::source>}, requested<Route::Analyzer0, &RouteSettings::source>},
    {"FG_SIGNAL_ANALYZER_0_POLARITY", &Impl::set_sdk_param_FG_SIGNAL_ANALYZER_0_POLARITY_P0, FromApplied{applied<Route::Analyzer0, &RouteSettings::polarity>}, requested<Route::Analyzer0, &RouteSettings::polarity>},
    {"FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT_P0, {}},
    {"FG_SIGNAL_ANALYZER_0_PERIOD_MAX", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_0_PERIOD_MAX_P0, {}},
    {"FG_SIGNAL_ANALYZER_0_PERIOD_MIN", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_0_PERIOD_MIN_P0, {}},
    {"FG_SIGNAL_ANALYZER_0_PULSE_COUNT", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_0_PULSE_COUNT_P0, {}},
    {"FG_SIGNAL_ANALYZER_1_SOURCE", &Impl::set_sdk_param_FG_SIGNAL_ANALYZER_1_SOURCE_P0, FromApplied{applied<Route::Analyzer1, &RouteSettings::source>}, requested<Route::Analyzer1, &RouteSettings::source>},
    {"FG_SIGNAL_ANALYZER_1_POLARITY", &Impl::set_sdk_param_FG_SIGNAL_ANALYZER_1_POLARITY_P0, FromApplied{applied<Route::Analyzer1, &RouteSettings::polarity>}, requested<Route::Analyzer1, &RouteSettings::polarity>},
    {"FG_SIGNAL_ANALYZER_1_PERIOD_CURRENT", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_1_PERIOD_CURRENT_P0, {}},
    {"FG_SIGNAL_ANALYZER_1_PERIOD_MAX", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_1_PERIOD_MAX_P0, {}},
    {"FG_SIGNAL_ANALYZER_1_PERIOD_MIN", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_1_PERIOD_MIN_P0, {}},
    {"FG_SIGNAL_ANALYZER_1_PULSE_COUNT", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_1_PULSE_COUNT_P0, {}},
    {"FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE", ReadOnly{}, &Impl::get_sdk_param_FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE_P0, {}},
    {"FG_SIGNAL_ANALYZER_CLEAR", &Impl::set_sdk_param_FG_SIGNAL_ANALYZER_CLEAR_P0, FromCache{}, outputs<&OutputSettings::analyzerClear>},
    {"FG_CCSEL0", &Impl::set_sdk_param_FG_CCSEL0_P0, &Impl::get_sdk_param_FG_CCSEL0_P0, legacyCc<0>},
    {"FG_CCSEL1", &Impl::set_sdk_param_FG_CCSEL1_P0, &Impl::get_sdk_param_FG_CCSEL1_P0, legacyCc<1>},
    {"FG_CCSEL2", &Impl::set_sdk_param_FG_CCSEL2_P0, &Impl::get_sdk_param_FG_CCSEL2_P0, legacyCc<2>},
    {"FG_CCSEL3", &Impl::set_sdk_param_FG_CCSEL3_P0, &Impl::get_sdk_param_FG_CCSEL3_P0, legacyCc<3>},
    {"FG_CUSTOM_SIGNAL_EVENT_0_SOURCE", &Impl::set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_0_SOURCE_P0, FromApplied{applied<Route::CustomEvent0, &RouteSettings::source>}, requested<Route::CustomEvent0, &RouteSettings::source>},
    {"FG_CUSTOM_SIGNAL_EVENT_0_POLARITY", &Impl::set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_0_POLARITY_P0, FromApplied{applied<Route::CustomEvent0, &RouteSettings::polarity>}, requested<Route::CustomEvent0, &RouteSettings::polarity>},
    {"FG_CUSTOM_SIGNAL_EVENT_1_SOURCE", &Impl::set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_1_SOURCE_P0, FromApplied{applied<Route::CustomEvent1, &RouteSettings::source>}, requested<Route::CustomEvent1, &RouteSettings::source>},
    {"FG_CUSTOM_SIGNAL_EVENT_1_POLARITY", &Impl::set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_1_POLARITY_P0, FromApplied{applied<Route::CustomEvent1, &RouteSettings::polarity>}, requested<Route::CustomEvent1, &RouteSettings::polarity>},
});
// clang-format on

consteval bool rowsFollowTheParameterTable() {
    for (std::size_t i = 0; i < sdkParameterCount; ++i) {
        if (std::string_view(rows[i].name) != sdkParameters[i].name) return false;
        if (std::holds_alternative<ReadOnly>(rows[i].set) != (sdkParameters[i].access == Access::ReadOnly))
            return false;
    }
    return true;
}
static_assert(rows.size() == sdkParameterCount);
static_assert(rowsFollowTheParameterTable());

/// Whether a default reaches its setter as it stands: none, or one of the setter's kind.
constexpr bool fits(const DefaultValue& value, const SetHandler& set) {
    return std::visit(
        []<class V, class H>(const V&, const H&) {
            if constexpr (std::is_same_v<V, std::monostate>)
                return true;
            else if constexpr (std::is_same_v<V, std::int32_t>)
                return std::is_same_v<H, Setter<int>> || std::is_same_v<H, Setter<unsigned int>>;
            else
                return std::is_same_v<H, Setter<V>>;
        },
        value, set);
}

consteval bool defaultsFitTheirSetters() {
    for (std::size_t i = 0; i < sdkParameterCount; ++i)
        if (!fits(sdkParameters[i].defaultValue, rows[i].set)) return false;
    return true;
}
static_assert(defaultsFitTheirSetters(), "a default of another kind would be skipped or cut");

consteval bool loadedParametersHaveAField() {
    for (std::size_t i = 0; i < sdkParameterCount; ++i) {
        const bool loaded =
            sdkParameters[i].fileUse == FileUse::Preloaded || sdkParameters[i].fileUse == FileUse::Applied;
        if (loaded && (std::holds_alternative<std::monostate>(rows[i].slot) ||
                       std::holds_alternative<CacheField<LookupTable>>(rows[i].slot)))
            return false;
    }
    return true;
}
static_assert(loadedParametersHaveAField(), "a key without a field would be passed over, even when missing");

}  // namespace

const std::span<const ParameterHandlers, sdkParameterCount> parameterHandlers = rows;

}  // namespace marovine
