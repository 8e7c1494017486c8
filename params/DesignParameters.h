#pragma once

/// The parameters of the hardware design that the setters and getters use, by their full names.
///
/// Code names one by the part after "Device1_Process0_" or "Device1_Process1_":
/// `designParameter("Camera_DvalMode")`, looked up at compile time.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace marovine {

// clang-format off
inline constexpr auto designParameterNames = std::to_array<const char*>({
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
    "Device1_Process0_AppletProperties_AppletUid",
    "Device1_Process0_AppletProperties_BuildTime",
    "Device1_Process0_BoardStatus_FpgaTemperature",
    "Device1_Process0_BoardStatus_FpgaVccInt",
    "Device1_Process0_BoardStatus_FpgaVccAux",
    "Device1_Process0_BoardStatus_FpgaVccBram",
    "Device1_Process0_BoardStatus_PcieCurrentLinkWidth",
    "Device1_Process0_BoardStatus_PcieCurrentLinkSpeed",
    "Device1_Process0_BoardStatus_PcieLinkGen2Capable",
    "Device1_Process0_BoardStatus_PcieLinkPartnerGen2Capable",
    "Device1_Process0_BoardStatus_PcieTrainedPayloadSize",
    "Device1_Process0_BoardStatus_ExtensionConnectorPresent",
    "Device1_Process0_BoardStatus_AlternativeBoardDetection",
    "Device1_Process0_BoardStatus_PoCLStatePortA",
    "Device1_Process0_BoardStatus_PoCLStatePortB",
    "Device1_Process0_BoardStatus_FpgaDNA",
    "Device1_Process0_Camera_FullMode",
    "Device1_Process0_Camera_DvalMode",
    "Device1_Process0_Camera_CameraLinkCoreReset",
    "Device1_Process0_Camera_PixelClockX",
    "Device1_Process0_Camera_PixelClockY",
    "Device1_Process0_Camera_PixelClockZ",
    "Device1_Process0_Buffer_0_DRAM_A_0_XLength",
    "Device1_Process0_Buffer_0_DRAM_A_0_YLength",
    "Device1_Process0_Buffer_0_DRAM_A_0_XOffset",
    "Device1_Process0_Overflow_OverflowOccurred",
    "Device1_Process0_Buffer_0_DRAM_A_0_FillLevel",
    "Device1_Process0_CameraSimulator_Enable_SelectSource",
    "Device1_Process0_CameraSimulator_EnableX_Enable_Value",
    "Device1_Process0_CameraSimulator_Y_Divisor",
    "Device1_Process0_CameraSimulator_Offset_Value",
    "Device1_Process0_CameraSimulator_Frame_Divisor",
    "Device1_Process0_CameraSimulator_ControlPixelClock_Mode",
    "Device1_Process0_CameraSimulator_PixelFrequency_RepeatPat_Divisor",
    "Device1_Process0_CameraSimulator_TriggerValve_FreeRun_Select",
    "Device1_Process0_CameraSimulator_TriggerValve_TriggerValve_Mode",
    "Device1_Process0_ImageSelector_FG_IMG_SELECT_PERIOD_Divisor",
    "Device1_Process0_ImageSelector_FG_IMG_SELECT_PHASE_Number",
    "Device1_Process0_WhiteBalance_White_RedCoefficient",
    "Device1_Process0_WhiteBalance_White_BlueCoefficient",
    "Device1_Process0_WhiteBalance_White_GreenCoefficient",
    "Device1_Process0_EnableFast_SelectSource",
    "Device1_Process0_Trigger_Trigger_LineTriggerMode",
    "Device1_Process0_Trigger_Trigger_ExsyncEnable",
    "Device1_Process0_Trigger_Trigger_LineTrgInSourceA",
    "Device1_Process0_Trigger_InputSignal_LineTrgInSourceA_Input_Select",
    "Device1_Process0_Trigger_Trigger_LineTrgInPolarity",
    "Device1_Process0_Trigger_Trigger_LineTrgDebouncingTime",
    "Device1_Process1_Trigger_Inputs_Debounce8_Prescale_Period",
    "Device1_Process0_Trigger_Trigger_LineTrgDownscaler",
    "Device1_Process0_Trigger_Trigger_LineTrgPhase",
    "Device1_Process0_Trigger_Trigger_EncoderABMode",
    "Device1_Process0_Trigger_Trigger_LineTrgInSourceB",
    "Device1_Process0_Trigger_InputSignal_LineTrgInSourceB_Input_Select",
    "Device1_Process0_Trigger_Trigger_EncoderABLead",
    "Device1_Process0_Trigger_Trigger_EncoderCompensation",
    "Device1_Process0_Trigger_Trigger_EncoderCompensationCount",
    "Device1_Process0_Trigger_Trigger_ExsyncPeriod",
    "Device1_Process0_Trigger_Trigger_ExsyncExposure",
    "Device1_Process0_Trigger_Trigger_ExsyncPolarity",
    "Device1_Process0_Trigger_Trigger_Exsync2Delay",
    "Device1_Process0_Camera_FvalMode",
    "Device1_Process0_Trigger_CameraFVALMode_SelectSource",
    "Device1_Process0_Trigger_Trigger_ImgTriggerMode",
    "Device1_Process0_Trigger_Trigger_MaxGatedHeight",
    "Device1_Process0_Trigger_Trigger_ImgTriggerEnable",
    "Device1_Process0_Trigger_Trigger_FlashEnable",
    "Device1_Process0_Trigger_Trigger_ImgTrgIsBusy",
    "Device1_Process0_Trigger_Trigger_ImgTrgInSource",
    "Device1_Process0_Trigger_InputSignal_ImgTrgInSource_Input_Select",
    "Device1_Process0_Trigger_Trigger_ImgTrgInPolarity",
    "Device1_Process0_Trigger_Trigger_ImgTrgDelay",
    "Device1_Process0_Trigger_Trigger_ImgTrgDebouncingTime",
    "Device1_Process0_Trigger_Trigger_FlashPolarity",
    "Device1_Process0_Trigger_Trigger_FlashDelay",
    "Device1_Process0_Trigger_Trigger_SoftwareTrgPulse",
    "Device1_Process0_Trigger_Trigger_SoftwareTrgInput",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC1_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC1_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC2_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC2_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC3_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC3_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC4_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC4_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select0_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select0_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select1_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select1_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select2_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select2_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select3_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select3_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select4_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select4_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select5_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select5_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select6_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select6_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select7_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectGPO_Select7_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectFrontGPO_Select0_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectFrontGPO_Select0_Polarity_Invert",
    "Device1_Process1_Trigger_OutputMapping_SelectFrontGPO_Select1_SelectSignal_Select",
    "Device1_Process1_Trigger_OutputMapping_SelectFrontGPO_Select1_Polarity_Invert",
    "Device1_Process1_Trigger_Inputs_InputStatus_Status",
    "Device1_Process1_Trigger_Analyzer_Analyzer0_Select_SelectSignal_Select",
    "Device1_Process1_Trigger_Analyzer_Analyzer0_Select_Polarity_Invert",
    "Device1_Process1_Trigger_Analyzer_Analyzer0_PeriodCurrent",
    "Device1_Process1_Trigger_Analyzer_Analyzer0_PeriodMax",
    "Device1_Process1_Trigger_Analyzer_Analyzer0_PeriodMin",
    "Device1_Process1_Trigger_Analyzer_Analyzer0_PulseCountSignal_Status",
    "Device1_Process1_Trigger_Analyzer_Analyzer1_Select_SelectSignal_Select",
    "Device1_Process1_Trigger_Analyzer_Analyzer1_Select_Polarity_Invert",
    "Device1_Process1_Trigger_Analyzer_Analyzer1_PeriodCurrent",
    "Device1_Process1_Trigger_Analyzer_Analyzer1_PeriodMax",
    "Device1_Process1_Trigger_Analyzer_Analyzer1_PeriodMin",
    "Device1_Process1_Trigger_Analyzer_Analyzer1_PulseCountSignal_Status",
    "Device1_Process1_Trigger_Analyzer_Difference_Status",
    "Device1_Process1_Trigger_Analyzer_Clear_Value",
    "Device1_Process1_Trigger_Events_SelectCustomSignalEvent0_SelectSignal_Select",
    "Device1_Process1_Trigger_Events_SelectCustomSignalEvent0_Polarity_Invert",
    "Device1_Process1_Trigger_Events_SelectCustomSignalEvent1_SelectSignal_Select",
    "Device1_Process1_Trigger_Events_SelectCustomSignalEvent1_Polarity_Invert",
});
// clang-format on
inline constexpr std::size_t designParameterCount = designParameterNames.size();
static_assert(designParameterCount == 149);

/// Slot of a design parameter in the id table.
enum class DesignParameter : std::uint16_t {};

/// Length of "Device1_Process0_", which the short names leave out.
inline constexpr std::size_t designPrefixLength = std::string_view("Device1_Process0_").size();

/// The slot of a design parameter named by the rest of its name; an unknown name does not compile.
consteval DesignParameter designParameter(std::string_view shortName) {
    for (std::size_t slot = 0; slot < designParameterCount; ++slot)
        if (std::string_view(designParameterNames[slot]).substr(designPrefixLength) == shortName)
            return static_cast<DesignParameter>(slot);
    throw "the design has no parameter of this name";
}

/// The slot `offset` places after another one: outputs of a family follow each other.
constexpr DesignParameter operator+(DesignParameter parameter, std::size_t offset) {
    return static_cast<DesignParameter>(static_cast<std::size_t>(parameter) + offset);
}

}  // namespace marovine
