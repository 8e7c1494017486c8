#pragma once

/// The acquisition applet of one board: its parameters, their rules, and its description.
///
/// An SDK parameter is set by the member `set_sdk_param_<NAME>_P0(value, throwOnError)`: it checks the value,
/// keeps it in the parameter cache, writes what follows from it to the design, and narrows the ranges that
/// depend on it. A refused value or a failed write leaves the cache as it was and is thrown as an `int` code
/// when `throwOnError` is set. What a read computes instead of taking it from the cache is a member
/// `get_sdk_param_<NAME>_P0(destination)`; a null destination throws -2070. All of these rely on their
/// caller to serialise calls on one instance.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "base/ErrorCodes.h"
#include "base/Locks.h"
#include "base/PropertiesFile.h"
#include "parameters/DesignAccess.h"
#include "parameters/EventMaps.h"
#include "parameters/HandedOutTexts.h"
#include "parameters/ParameterCache.h"
#include "parameters/ParameterNames.h"
#include "parameters/Setting.h"
#include "runtime/FgGxWrapper.h"
#include "tables/DesignParameters.h"

namespace marovine {
/// Longest text that a getter may write, without its terminator.
inline constexpr std::size_t kTextRoom = 655360;

/// Whether a block of a lookup table may have this value type, all of which are 32 bits wide.
constexpr bool isLookupTableType(std::int32_t type) {
    return type == FG_TYPE_INT32 || type == FG_TYPE_UINT32 || type == FG_TYPE_FIELD_INT;
}
}  // namespace marovine

class FgGxWrapperImpl final : public FgGxWrapper {
 public:
    FgGxWrapperImpl();
    ~FgGxWrapperImpl() override;

    // ---- what the host calls (Dispatch.cpp, Enumeration.cpp, Identity.cpp, Configuration.cpp) ----

    tavr::tools::logging::Logger* getDefaultLogger() const override;
    bool loadConfig(Fg_ConfigFileParser& parser) override;
    bool saveConfig(Fg_ConfigFileParser& parser) override;
    int processChannelToDma(int process, int channel) override;
    int mapDmaToFormat(int dmaIndex) override;
    int setDmaAlignment(int dmaIndex, int alignment) override;
    int getDmaAlignment(int dmaIndex) override;
    void createUserParameters() override;
    int Fg_setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) override;
    int Fg_getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) override;
    int Fg_freeParameterString(int id, void* value, int dmaIndex, FgParamTypes type) override;
    int Fg_getParameterIdByName(const char* name) override;
    const char* Fg_getParameterName(int index) override;
    int Fg_getParameterId(int index) override;
    int Fg_getParameterCount() override;
    int Fg_saveConfig(Fg_Struct* inner, const char* fileName) override;
    int Fg_loadConfig(Fg_Struct* inner, const char* fileName) override;
    std::uint64_t Fg_getEventMask(const char* name) override;
    const char* Fg_getEventName(unsigned long mask) override;
    const char* getManufacturer() override;
    const char* getCameraType() override;
    const char* getCameraVersion() override;
    int getAppletID() override;

    // ---- start-up, in this order (InternalMaps.cpp, UserParameters.cpp, Initialisation.cpp) ----

    /// Builds the name, index and event maps and the pseudo-parameters of direct access.
    void initInternalMaps();
    /// Asks the inner handle for the id of every design parameter; unknown names are logged, nothing fails.
    void retrieveIds();
    /// Reads the design's debug points and sets the start values of the camera simulator. Never throws.
    void executeInitRoutines();
    /// Gives every parameter that has a default its default; a refused one is skipped. Never throws.
    void setDefaultValues();

    // ---- typed access without lock: throws the code ----

    void setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type);
    void getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type);
    /// The process of a DMA index; throws -2070 for an unknown one.
    int mapDmaToProcess(int dmaIndex) const;

    /// First node of a kind other than group, from `node` on through children and next nodes, with this id.
    static RegisterInfo* findRegisterInfoByParamId_P0(RegisterInfo* node, int id) {
        return marovine::findRegisterInfoByParamId(node, id);
    }

    // ---- camera interface (parameters/topics/CameraInterface.cpp) ----

    void set_sdk_param_FG_TIMEOUT_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_CAMERA_LINK_CAMTYPE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_USEDVAL_P0(int value, bool throwOnError);
    void set_sdk_param_FG_CAMERA_LINK_CORE_RESET_P0(unsigned int value, bool throwOnError);

    // ---- image window (parameters/topics/CameraWindow.cpp) ----

    void set_sdk_param_FG_TAPGEOMETRY_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SENSORWIDTH_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_VANTAGEPOINT_P0(int value, bool throwOnError);
    void set_sdk_param_FG_WIDTH_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_HEIGHT_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_XOFFSET_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_YOFFSET_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_FORMAT_P0(int value, bool throwOnError);

    // ---- colour path and image selector (parameters/topics/ColourPath.cpp) ----

    void set_sdk_param_FG_IMG_SELECT_PERIOD_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_IMG_SELECT_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_SCALINGFACTOR_RED_P0(double value, bool throwOnError);
    void set_sdk_param_FG_SCALINGFACTOR_BLUE_P0(double value, bool throwOnError);
    void set_sdk_param_FG_SCALINGFACTOR_GREEN_P0(double value, bool throwOnError);
    void set_sdk_param_FG_BAYERINIT_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SAMPLING_RATE_P0(int value, bool throwOnError);

    // ---- camera simulator (parameters/topics/CameraSimulator.cpp, getters in
    // parameters/topics/SimulatorLimits.cpp) ----

    void set_sdk_param_FG_CAMERASIMULATOR_ENABLE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_WIDTH_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_LINE_GAP_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_HEIGHT_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_FRAME_GAP_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_PATTERN_P0(int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_PATTERN_OFFSET_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_ROLL_P0(int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_SELECT_MODE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_PIXEL_FREQUENCY_P0(double value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_LINERATE_P0(double value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0(double value, bool throwOnError);
    void set_sdk_param_FG_CAMERASIMULATOR_TRIGGER_MODE_P0(int value, bool throwOnError);
    void get_sdk_param_FG_CAMERASIMULATOR_WIDTH_P0(std::uint32_t* destination);
    void get_sdk_param_FG_CAMERASIMULATOR_LINE_GAP_P0(std::uint32_t* destination);
    void get_sdk_param_FG_CAMERASIMULATOR_FRAME_GAP_P0(std::uint32_t* destination);
    void get_sdk_param_FG_CAMERASIMULATOR_PIXEL_FREQUENCY_P0(double* destination);
    void get_sdk_param_FG_CAMERASIMULATOR_LINERATE_P0(double* destination);
    void get_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0(double* destination);
    void get_sdk_param_FG_CAMERASIMULATOR_ACTIVE_P0(std::uint32_t* destination);
    void get_sdk_param_FG_CAMERASIMULATOR_PASSIVE_P0(std::uint32_t* destination);

    // ---- lookup table and processing (parameters/topics/LookupTable.cpp) ----

    void set_sdk_param_FG_LUT_TYPE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_LUT_VALUE_RED_P0(const FieldParameterInt_s* element, bool throwOnError) {
        setLutElement(marovine::LutChannel::Red, element, throwOnError);
    }
    void set_sdk_param_FG_LUT_VALUE_RED_P0(const FieldParameterAccess* block, bool throwOnError) {
        setLutBlock(marovine::LutChannel::Red, block, throwOnError);
    }
    void set_sdk_param_FG_LUT_VALUE_GREEN_P0(const FieldParameterInt_s* element, bool throwOnError) {
        setLutElement(marovine::LutChannel::Green, element, throwOnError);
    }
    void set_sdk_param_FG_LUT_VALUE_GREEN_P0(const FieldParameterAccess* block, bool throwOnError) {
        setLutBlock(marovine::LutChannel::Green, block, throwOnError);
    }
    void set_sdk_param_FG_LUT_VALUE_BLUE_P0(const FieldParameterInt_s* element, bool throwOnError) {
        setLutElement(marovine::LutChannel::Blue, element, throwOnError);
    }
    void set_sdk_param_FG_LUT_VALUE_BLUE_P0(const FieldParameterAccess* block, bool throwOnError) {
        setLutBlock(marovine::LutChannel::Blue, block, throwOnError);
    }
    void set_sdk_param_FG_LUT_CUSTOM_FILE_P0(const char* value, bool throwOnError);
    void set_sdk_param_FG_LUT_SAVE_FILE_P0(const char* value, bool throwOnError);
    void set_sdk_param_FG_PROCESSING_OFFSET_P0(double value, bool throwOnError);
    void set_sdk_param_FG_PROCESSING_GAIN_P0(double value, bool throwOnError);
    void set_sdk_param_FG_PROCESSING_GAMMA_P0(double value, bool throwOnError);
    void set_sdk_param_FG_PROCESSING_INVERT_P0(int value, bool throwOnError);
    void get_sdk_param_FG_LUT_CUSTOM_FILE_P0(char* destination) {
        copyText(cache_.lookupTable.customFile, destination);
    }
    void get_sdk_param_FG_LUT_SAVE_FILE_P0(char* destination) {
        copyText(cache_.lookupTable.saveFile, destination);
    }

    // ---- debug injection (parameters/topics/DebugInjection.cpp) ----

    void set_sdk_param_FG_DEBUGSOURCE_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_DEBUGINENABLE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_DEBUGFILE_P0(const char* value, bool throwOnError);
    void set_sdk_param_FG_DEBUGINSERT_P0(int value, bool throwOnError);
    void set_sdk_param_FG_DEBUGWRITEPIXEL_P0(unsigned long value, bool throwOnError);
    void set_sdk_param_FG_DEBUGWRITEFLAG_P0(int value, bool throwOnError);
    void set_sdk_param_FG_DEBUGOUTENABLE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_DEBUGSAVECONFIG_P0(const char* value, bool throwOnError);
    void get_sdk_param_FG_DEBUGSOURCENAME_P0(char* destination);
    void get_sdk_param_FG_DEBUGINENABLE_P0(std::int32_t* destination);
    void get_sdk_param_FG_DEBUGFILE_P0(char* destination);
    void get_sdk_param_FG_DEBUGOUTENABLE_P0(std::int32_t* destination);
    void get_sdk_param_FG_DEBUGOUTXPOS_P0(std::uint32_t* destination) {
        readMonitor("_XPosition", destination);
    }
    void get_sdk_param_FG_DEBUGOUTYPOS_P0(std::uint32_t* destination) {
        readMonitor("_YPosition", destination);
    }
    void get_sdk_param_FG_DEBUGOUTPIXEL_P0(std::uint32_t* destination) {
        readMonitor("_PixelValue", destination);
    }
    void get_sdk_param_FG_DEBUGREADY_P0(std::int32_t* destination);
    void get_sdk_param_FG_DEBUGSAVECONFIG_P0(char* destination) {
        copyText(cache_.debug.saveConfigFile, destination);
    }

    // ---- status read-outs (parameters/topics/StatusReadouts.cpp) ----

    void get_sdk_param_FG_APPLET_ID_P0(char* destination) {
        readDesign(destination, marovine::designParameter("AppletProperties_AppletUid"));
    }
    void get_sdk_param_FG_APPLET_BUILD_TIME_P0(char* destination) {
        readDesign(destination, marovine::designParameter("AppletProperties_BuildTime"));
    }
    void get_sdk_param_FG_CAMSTATUS_P0(std::uint32_t* destination);
    void get_sdk_param_FG_CAMSTATUS_EXTENDED_P0(std::uint32_t* destination);
    void get_sdk_param_FG_SYSTEMMONITOR_FPGA_TEMPERATURE_P0(double* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_FpgaTemperature"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_FPGA_VCC_INT_P0(double* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_FpgaVccInt"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_FPGA_VCC_AUX_P0(double* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_FpgaVccAux"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_FPGA_VCC_BRAM_P0(double* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_FpgaVccBram"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_PcieCurrentLinkWidth"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_CURRENT_LINK_SPEED_P0(double* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_PcieCurrentLinkSpeed"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_PCIE_LINK_GEN2_CAPABLE_P0(std::int32_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_PcieLinkGen2Capable"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_PCIE_LINK_PARTNER_GEN2_CAPABLE_P0(std::int32_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_PcieLinkPartnerGen2Capable"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_PCIE_TRAINED_PAYLOAD_SIZE_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_PcieTrainedPayloadSize"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_EXTENSION_CONNECTOR_PRESENT_P0(std::int32_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_ExtensionConnectorPresent"));
    }
    void get_sdk_param_FG_ALTERNATIVE_BOARD_DETECTION_P0(std::int32_t* destination);
    void get_sdk_param_FG_SYSTEMMONITOR_POCL_STATE_PORT_A_P0(std::int32_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_PoCLStatePortA"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_POCL_STATE_PORT_B_P0(std::int32_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_PoCLStatePortB"));
    }
    void get_sdk_param_FG_SYSTEMMONITOR_FPGA_DNA_P0(std::uint64_t* destination) {
        readDesign(destination, marovine::designParameter("BoardStatus_FpgaDNA"));
    }
    void get_sdk_param_FG_CAMERA_LINK_PIXEL_CLOCK_X_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("Camera_PixelClockX"));
    }
    void get_sdk_param_FG_CAMERA_LINK_PIXEL_CLOCK_Y_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("Camera_PixelClockY"));
    }
    void get_sdk_param_FG_CAMERA_LINK_PIXEL_CLOCK_Z_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("Camera_PixelClockZ"));
    }
    void get_sdk_param_FG_FILLLEVEL_P0(std::uint32_t* destination);
    void get_sdk_param_FG_OVERFLOW_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("Overflow_OverflowOccurred"));
    }

    // ---- line trigger, shaft encoder and ExSync (parameters/topics/LineTrigger.cpp) ----

    void set_sdk_param_FG_LINETRIGGERMODE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_EXSYNCON_P0(int value, bool throwOnError);
    void set_sdk_param_FG_LINETRIGGERINSRC_P0(int value, bool throwOnError);
    void set_sdk_param_FG_LINETRIGGERINPOLARITY_P0(int value, bool throwOnError);
    void set_sdk_param_FG_LINETRIGGERDEBOUNCING_P0(double value, bool throwOnError);
    void set_sdk_param_FG_LINE_DOWNSCALE_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_LINE_DOWNSCALEINIT_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_SHAFTENCODERON_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SHAFTENCODERMODE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SHAFTENCODERINSRC_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SHAFTENCODERLEADING_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SHAFTENCODER_COMPENSATION_ENABLE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SHAFTENCODER_COMPENSATION_COUNT_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_LINEPERIODE_P0(double value, bool throwOnError);
    void set_sdk_param_FG_LINEEXPOSURE_P0(double value, bool throwOnError);
    void set_sdk_param_FG_EXSYNCPOLARITY_P0(int value, bool throwOnError);
    void set_sdk_param_FG_LINETRIGGERDELAY_P0(double value, bool throwOnError);
    void get_sdk_param_FG_SHAFTENCODER_COMPENSATION_COUNT_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Trigger_EncoderCompensationCount"));
    }

    // ---- image trigger, flash and software trigger (parameters/topics/ImageTrigger.cpp) ----

    void set_sdk_param_FG_IMGTRIGGERMODE_P0(int value, bool throwOnError);
    void set_sdk_param_FG_IMGTRIGGERON_P0(int value, bool throwOnError);
    void set_sdk_param_FG_FLASHON_P0(int value, bool throwOnError);
    void set_sdk_param_FG_IMGTRIGGER_ASYNC_HEIGHT_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_IMGTRIGGERINSRC_P0(int value, bool throwOnError);
    void set_sdk_param_FG_IMGTRIGGERINPOLARITY_P0(int value, bool throwOnError);
    void set_sdk_param_FG_IMGTRIGGERGATEDELAY_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_IMGTRIGGERDEBOUNCING_P0(double value, bool throwOnError);
    void set_sdk_param_FG_FLASH_POLARITY_P0(int value, bool throwOnError);
    void set_sdk_param_FG_STROBEPULSEDELAY_P0(unsigned int value, bool throwOnError);
    void set_sdk_param_FG_SENDSOFTWARETRIGGER_P0(int value, bool throwOnError);
    void set_sdk_param_FG_SETSOFTWARETRIGGER_P0(int value, bool throwOnError);
    void get_sdk_param_FG_IMGTRIGGER_IS_BUSY_P0(std::int32_t* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Trigger_ImgTrgIsBusy"));
    }

    // ---- output signal mapping (parameters/topics/OutputMapping.cpp) ----

    void set_sdk_param_FG_CC1_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::CC1, value, throwOnError);
    }
    void set_sdk_param_FG_CC1_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::CC1, value, throwOnError);
    }
    void set_sdk_param_FG_CC2_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::CC2, value, throwOnError);
    }
    void set_sdk_param_FG_CC2_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::CC2, value, throwOnError);
    }
    void set_sdk_param_FG_CC3_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::CC3, value, throwOnError);
    }
    void set_sdk_param_FG_CC3_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::CC3, value, throwOnError);
    }
    void set_sdk_param_FG_CC4_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::CC4, value, throwOnError);
    }
    void set_sdk_param_FG_CC4_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::CC4, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_0_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo0, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_0_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo0, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_1_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo1, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_1_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo1, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_2_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo2, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_2_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo2, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_3_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo3, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_3_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo3, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_4_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo4, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_4_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo4, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_5_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo5, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_5_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo5, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_6_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo6, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_6_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo6, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_7_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Gpo7, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_GPO_7_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Gpo7, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_0_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::FrontGpo0, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_0_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::FrontGpo0, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_1_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::FrontGpo1, value, throwOnError);
    }
    void set_sdk_param_FG_TRIGGEROUT_FRONT_GPO_1_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::FrontGpo1, value, throwOnError);
    }
    void set_sdk_param_FG_DIGIO_OUTPUT_P0(int value, bool throwOnError);
    void set_sdk_param_FG_CCSEL0_P0(int value, bool throwOnError) { setLegacyCc(0, value, throwOnError); }
    void set_sdk_param_FG_CCSEL1_P0(int value, bool throwOnError) { setLegacyCc(1, value, throwOnError); }
    void set_sdk_param_FG_CCSEL2_P0(int value, bool throwOnError) { setLegacyCc(2, value, throwOnError); }
    void set_sdk_param_FG_CCSEL3_P0(int value, bool throwOnError) { setLegacyCc(3, value, throwOnError); }
    void get_sdk_param_FG_DIGIO_OUTPUT_P0(std::int32_t* destination);
    void get_sdk_param_FG_DIGIO_INPUT_P0(std::uint32_t* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Inputs_InputStatus_Status"));
    }
    void get_sdk_param_FG_CCSEL0_P0(std::int32_t* destination) { getLegacyCc(0, destination); }
    void get_sdk_param_FG_CCSEL1_P0(std::int32_t* destination) { getLegacyCc(1, destination); }
    void get_sdk_param_FG_CCSEL2_P0(std::int32_t* destination) { getLegacyCc(2, destination); }
    void get_sdk_param_FG_CCSEL3_P0(std::int32_t* destination) { getLegacyCc(3, destination); }

    // ---- signal analyzers and custom events (parameters/topics/SignalAnalyzer.cpp) ----

    void set_sdk_param_FG_SIGNAL_ANALYZER_0_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Analyzer0, value, throwOnError);
    }
    void set_sdk_param_FG_SIGNAL_ANALYZER_0_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Analyzer0, value, throwOnError);
    }
    void set_sdk_param_FG_SIGNAL_ANALYZER_1_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::Analyzer1, value, throwOnError);
    }
    void set_sdk_param_FG_SIGNAL_ANALYZER_1_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::Analyzer1, value, throwOnError);
    }
    void set_sdk_param_FG_SIGNAL_ANALYZER_CLEAR_P0(int value, bool throwOnError);
    void set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_0_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::CustomEvent0, value, throwOnError);
    }
    void set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_0_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::CustomEvent0, value, throwOnError);
    }
    void set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_1_SOURCE_P0(int value, bool throwOnError) {
        setRouteSource(marovine::Route::CustomEvent1, value, throwOnError);
    }
    void set_sdk_param_FG_CUSTOM_SIGNAL_EVENT_1_POLARITY_P0(int value, bool throwOnError) {
        setRoutePolarity(marovine::Route::CustomEvent1, value, throwOnError);
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT_P0(double* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Analyzer_Analyzer0_PeriodCurrent"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_0_PERIOD_MAX_P0(double* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Analyzer_Analyzer0_PeriodMax"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_0_PERIOD_MIN_P0(double* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Analyzer_Analyzer0_PeriodMin"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_0_PULSE_COUNT_P0(std::uint32_t* destination) {
        readDesign(destination,
                   marovine::designParameter("Trigger_Analyzer_Analyzer0_PulseCountSignal_Status"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_1_PERIOD_CURRENT_P0(double* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Analyzer_Analyzer1_PeriodCurrent"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_1_PERIOD_MAX_P0(double* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Analyzer_Analyzer1_PeriodMax"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_1_PERIOD_MIN_P0(double* destination) {
        readDesign(destination, marovine::designParameter("Trigger_Analyzer_Analyzer1_PeriodMin"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_1_PULSE_COUNT_P0(std::uint32_t* destination) {
        readDesign(destination,
                   marovine::designParameter("Trigger_Analyzer_Analyzer1_PulseCountSignal_Status"));
    }
    void get_sdk_param_FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE_P0(std::int64_t* destination);

 private:
    // ---- shared by the topics ----

    /// The one way out to the design.
    const marovine::DesignAccess& design() const { return design_; }
    /// Reads a design parameter straight into a destination; -2070 for a null one, else the read's code.
    template <class T>
    void readDesign(T* destination, marovine::DesignParameter parameter) const {
        requireDestination(destination);
        design_.read(parameter, destination);
    }
    /// Throws -2070 when there is nowhere to put a result.
    static void requireDestination(const void* destination) {
        if (destination == nullptr) throw marovine::error::invalidArgument;
    }
    /// Carries out a setting whose value the design takes unchanged.
    template <class T>
    void applyUnchanged(T& cached, T value, marovine::Verdict verdict, marovine::DesignParameter parameter,
                        bool throwOnError) const {
        marovine::applySetting(cached, value, verdict, throwOnError, [&] {
            if constexpr (std::is_same_v<T, double>)
                design_.write(parameter, value);
            else
                design_.write(parameter, static_cast<std::uint32_t>(value));
        });
    }
    /// Copies a text, cut to `kTextRoom` characters, into a buffer of that room; -2070 for a null one.
    static void copyText(const std::string& text, char* destination);
    /// Changes the access flags of a parameter's registry node.
    void setAccessFlags(int id, int flags);
    /// Changes the maximum of a parameter's registry node, which must be of the type's kind.
    void setMaximum(int id, std::uint32_t maximum);
    void setMaximum(int id, double maximum);
    /// The access flags of a parameter's registry node, 0 without node.
    int accessFlags(int id) const;

    // parameters/topics/TapGeometry.cpp
    /// Sets the sorter for a tap geometry and a window; throws -6000 for an unknown geometry or vantage point
    /// before anything is written. The third argument, the y offset and the height do not count.
    void setTapGeometry_P0(std::uint32_t geometry, std::uint32_t sensorWidth, std::uint32_t ignored,
                           std::uint32_t vantagePoint, std::uint32_t xOffset, std::uint32_t width,
                           std::uint32_t yOffset, std::uint32_t height);
    // parameters/topics/CameraWindow.cpp
    /// Columns that a window may reach: the sensor's when the line is mirrored, else what the design buffers.
    std::uint32_t horizontalLimit() const;
    /// What the cached x offset leaves for the width, and the cached width for the x offset.
    std::uint32_t widthLimit() const;
    std::uint32_t xOffsetLimit() const;
    /// Throw -6000 when the cached window does not fit.
    void checkHorizontal_P0() const;
    void checkVertical_P0() const;
    /// Throws -2031 when the cached camera format is none that the SDK knows.
    void requireKnownCameraFormat() const;
    void applyCachedTapGeometry();
    /// Tap geometry and Bayer phase of the cached window.
    void applyCachedGeometry();
    /// Trigger window and image height from a height, an offset and an image trigger mode; throws -6000 for
    /// an unknown mode before anything is written.
    void setTriggerHeightAndOffset_P0(std::uint32_t height, std::uint32_t yOffset, std::int32_t mode);
    /// The same from the cached height, y offset and image trigger mode.
    void applyCachedTriggerWindow();
    void update_dynamic_range_FG_SENSORWIDTH_P0();
    void update_dynamic_range_FG_WIDTH_P0();
    void update_dynamic_range_FG_HEIGHT_P0();
    void update_dynamic_range_FG_XOFFSET_P0();
    void update_dynamic_range_FG_YOFFSET_P0();
    // parameters/topics/ColourPath.cpp
    /// Gives the colour stages the phase of a Bayer pattern in the cached window and keeps the pattern as the
    /// effective one; throws -6000 for an unknown pattern.
    void updateBayerInit_P0(std::int32_t bayerInit, std::int32_t vantagePoint);
    // parameters/topics/SimulatorLimits.cpp
    bool inPixelFrequencyMode() const {
        return cache_.simulator.speedMode == marovine::constant("FG_PIXEL_FREQUENCY");
    }
    /// Clock cycles of a line and pixels per second, read back from the design.
    std::uint32_t simulatorSequence() const;
    double simulatorPixelRate() const;
    /// Line rate and frame rate in Hz that a speed mode gives now; -2075 for a mode without formula.
    double getCamSimLinerate_P0(std::int32_t mode) const;
    double simulatorFrameRate(std::int32_t mode) const;
    /// Largest values that the cached speed mode allows now, in pixels, lines and Hz.
    std::uint32_t simulatorWidthLimit() const;
    std::uint32_t simulatorLineGapLimit() const;
    std::uint32_t simulatorHeightLimit() const;
    std::uint32_t simulatorFrameGapLimit() const;
    double simulatorLineRateLimit() const;
    double simulatorFrameRateLimit() const;
    void update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_LINE_GAP_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_HEIGHT_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_FRAME_GAP_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_LINERATE_P0();
    void update_dynamic_range_FG_CAMERASIMULATOR_FRAMERATE_P0();
    // parameters/topics/CameraSimulator.cpp
    /// Make a size and its gap effective and write them; throw -6000 when they do not fit together.
    void setWidth_P0(std::uint32_t width, std::uint32_t gap);
    void setHeight_P0(std::uint32_t height, std::uint32_t gap);
    void writeSimulatorSequence(std::uint32_t sequence);
    /// Gives the cached speed mode its speed again.
    void reapplySimulatorSpeed();
    // parameters/topics/LookupTable.cpp
    /// Computes the tables from the processing parameters and writes them, while they are what fills them.
    void updateLutProcessing_P0();
    /// Reads the custom file, if one is named, and writes its tables: -2076 without the file, -5001 for one
    /// that is no table.
    void loadCustomTables();
    template <class Fill>
    void replaceTables(Fill&& fill);
    void setLutElement(marovine::LutChannel channel, const FieldParameterInt_s* element, bool throwOnError);
    void setLutBlock(marovine::LutChannel channel, const FieldParameterAccess* block, bool throwOnError);
    // parameters/topics/DebugInjection.cpp
    /// The selected debug point; -2031 when there is none of its number.
    const marovine::DebugEntry& debugEntry() const;
    bool debugEntryMonitors() const { return debugEntry().kind == marovine::DebugEntry::Kind::InjectMonitor; }
    /// Full name of a parameter of the selected debug point.
    std::string debugName(const char* ending) const;
    /// Typed access by full name, looked up at each call; any failure is -2031.
    int requireId(const std::string& name) const;
    void readByName(const std::string& name, void* value, FgParamTypes type) const;
    void writeByName(const std::string& name, const void* value, FgParamTypes type) const;
    std::uint32_t readDebug(const char* ending) const;
    void writeDebug(const char* ending, std::uint32_t value) const;
    /// A position or pixel value that only a monitor has; 0 at other debug points.
    void readMonitor(const char* ending, std::uint32_t* destination) const;
    void update_dynamic_range_FG_DEBUGOUTPIXEL_P0();
    // parameters/topics/StatusReadouts.cpp
    /// Fill level of the buffer in percent: 100 while it overflows.
    std::uint32_t bufferFillLevel() const;
    std::uint32_t extendedCameraStatus() const;
    // parameters/topics/LineTrigger.cpp
    void update_dynamic_range_FG_LINEEXPOSURE_P0();
    void update_dynamic_range_FG_LINETRIGGERDELAY_P0();
    // parameters/topics/OutputMapping.cpp
    /// Multiplexer index and invert bit of an output; -2031 for a signal outside the mapping.
    static void getOutputMapping_P0(std::uint32_t* select, std::uint32_t* invert, std::int32_t signal,
                                    std::int32_t polarity);
    /// Multiplexer and inverter of a route, in this order.
    void writeRoute(marovine::Route route, std::int32_t source, std::int32_t polarity) const;
    /// Sets one of a route's two values, computing the design's from it and from the other in force.
    void setRouteSource(marovine::Route route, std::int32_t source, bool throwOnError);
    void setRoutePolarity(marovine::Route route, std::int32_t polarity, bool throwOnError);
    /// Source and polarity of control line 0 to 3 as one legacy selection.
    void setLegacyCc(std::size_t line, std::int32_t value, bool throwOnError);
    void getLegacyCc(std::size_t line, std::int32_t* destination) const;

    // InternalMaps.cpp
    void recordScalarDesignParameters();
    void addRegisterNames();
    void addDesignNames();
    void buildEventMaps();
    // UserParameters.cpp
    void enterInRegistryMap(RegisterInfo* node);
    void addRegisterGroup();
    void addDesignGroup();
    // Initialisation.cpp
    /// A text of the design's list of debug points, cut to its room; -2031 when it cannot be read.
    std::string readDebugText(const std::string& name, std::size_t room) const;
    int readDebugEntryCount() const;
    void readDebugEntries();
    // parameters/Configuration.cpp
    void writeStoredValue(Fg_ConfigFileParser& parser, const marovine::SdkParameter& row);
    // Dispatch.cpp
    int writeRegister(int number, const void* value) const;
    int readRegister(int number, void* value) const;
    void requireProcess(int dmaIndex, int id, const char* verb) const;
    template <class WriteText>
    void giveText(void* value, FgParamTypes type, WriteText&& writeText);
    void giveDescription(void* value, FgParamTypes type);
    void readLookupTable(const marovine::LookupTable& table, void* value, FgParamTypes type) const;

    mutable tavr::tools::logging::Logger* logger_ = nullptr;
    tavr::templates::platform::CriticalSection lock_;
    tavr::templates::platform::PropertiesFile properties_;
    std::string propertiesSection_;
    marovine::HandedOutTexts handedOutTexts_;
    std::unique_ptr<char[]> textBuffer_;
    std::array<int, marovine::designParameterCount> designIds_{};
    marovine::DesignAccess design_;
    marovine::ParameterCache cache_;
    marovine::SimulatorState simulator_;
    std::int32_t effectiveBayerInit_ = 0;
    std::vector<marovine::DebugEntry> debugEntries_;
    marovine::ParameterNames names_;
    marovine::EventMaps events_;
};
