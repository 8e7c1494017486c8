#include "board/imaging/Settings.h"

#include <algorithm>
#include <string>

namespace virtualboard::imaging {
namespace {

template <typename Member>
struct Row {
    std::string_view name;  // below "Device1_"
    Member DesignSettings::*member;
};

/// A value that says when lines come.
template <typename Member>
struct LineRow {
    std::string_view name;  // below "Device1_"
    Member LineSettings::*member;
};

constexpr LineRow<std::uint32_t> kLineNumbers[] = {
    {"Process0_Camera_FullMode", &LineSettings::fullMode},
    {"Process0_Camera_CameraLinkCoreReset", &LineSettings::coreReset},
    {"Process0_Camera_PixelClockX", &LineSettings::pixelClock},
    {"Process0_Buffer_0_TapGeometrySorter_TapWidth", &LineSettings::tapWidth},
    {"Process0_Buffer_0_TapGeometrySorter_TapCount", &LineSettings::tapCount},
    {"Process0_Buffer_0_TapGeometrySorter_DummyTaps", &LineSettings::dummyTaps},
    {"Process0_CameraSimulator_Enable_SelectSource", &LineSettings::generatorEnable},
    {"Process0_CameraSimulator_Size_ImageWidth", &LineSettings::generatorLineWords},
    {"Process0_CameraSimulator_Size_ImageHeight", &LineSettings::generatorFrameLines},
    {"Process0_CameraSimulator_FrameGap_Number", &LineSettings::generatorActiveLines},
    {"Process0_CameraSimulator_ControlPixelClock_Mode", &LineSettings::generatorClockMode},
    {"Process0_CameraSimulator_PixelFrequency_ActivePixel_Number", &LineSettings::generatorActivePixel},
    {"Process0_CameraSimulator_PixelFrequency_SequenceLength_ImageWidth", &LineSettings::generatorSequence},
    {"Process0_CameraSimulator_TriggerValve_FreeRun_Select", &LineSettings::generatorFreeRun},
    {"Process0_CameraSimulator_TriggerValve_TriggerValve_Mode", &LineSettings::generatorValve},
    {"Process0_Trigger_Trigger_LineTriggerMode", &LineSettings::lineTriggerMode},
    {"Process0_Trigger_Trigger_ExsyncEnable", &LineSettings::exsyncEnable},
    {"Process0_Trigger_Trigger_ExsyncPolarity", &LineSettings::exsyncPolarity},
    {"Process0_Trigger_Trigger_LineTrgDownscaler", &LineSettings::lineDownscaler},
    {"Process0_Trigger_Trigger_EncoderABMode", &LineSettings::encoderMode},
    {"Process1_Trigger_OutputMapping_CamTrigger0_CC1_SelectSignal_Select", &LineSettings::cc1Select},
    {"Process1_Trigger_OutputMapping_CamTrigger0_CC1_Polarity_Invert", &LineSettings::cc1Invert},
    {"Process0_Trigger_Trigger_LineTrgInPolarity", &LineSettings::linePolarity},
    {"Process0_Trigger_InputSignal_LineTrgInSourceA_Input_Select", &LineSettings::lineSourceA},
    {"Process0_Trigger_InputSignal_LineTrgInSourceB_Input_Select", &LineSettings::lineSourceB},
    {"Process0_Trigger_Trigger_LineTrgPhase", &LineSettings::linePhase},
    {"Process0_Trigger_Trigger_EncoderABLead", &LineSettings::encoderLead},
    {"Process0_Trigger_Trigger_EncoderCompensation", &LineSettings::encoderCompensation},
    {"Process0_Trigger_Trigger_ImgTrgInSource", &LineSettings::imageSource},
    {"Process0_Trigger_InputSignal_ImgTrgInSource_Input_Select", &LineSettings::imageSelect},
    {"Process0_Trigger_Trigger_ImgTrgInPolarity", &LineSettings::imagePolarity},
    {"Process0_Trigger_Trigger_SoftwareTrgInput", &LineSettings::softwareLevel},
};

constexpr LineRow<double> kLineReals[] = {
    {"Process0_Trigger_Trigger_ExsyncPeriod", &LineSettings::exsyncPeriod},
    {"Process0_Trigger_Trigger_ExsyncExposure", &LineSettings::exsyncExposure},
    {"Process0_Trigger_Trigger_Exsync2Delay", &LineSettings::exsync2Delay},
    {"Process0_Trigger_Trigger_LineTrgDebouncingTime", &LineSettings::lineDebouncing},
    {"Process0_Trigger_Trigger_ImgTrgDebouncingTime", &LineSettings::imageDebouncing},
};

constexpr Row<std::uint32_t> kNumbers[] = {
    {"Process0_Buffer_0_TapGeometrySorter_TranslateVantagePoint_Value",
     &DesignSettings::translateVantagePoint},
    {"Process0_Buffer_0_DRAM_A_0_XOffset", &DesignSettings::xOffset},
    {"Process0_Buffer_0_DRAM_A_0_XLength", &DesignSettings::xLength},
    {"Process0_Buffer_0_DRAM_A_0_YLength", &DesignSettings::yLength},
    {"Process0_CameraSimulator_EnableX_Enable_Value", &DesignSettings::generatorEnableX},
    {"Process0_CameraSimulator_Y_Divisor", &DesignSettings::generatorYDivisor},
    {"Process0_CameraSimulator_Offset_Value", &DesignSettings::generatorOffset},
    {"Process0_CameraSimulator_Frame_Divisor", &DesignSettings::generatorFrameDivisor},
    {"Process0_CameraSimulator_LineGap_Number", &DesignSettings::generatorActiveWords},
    {"Process0_Trigger_Trigger_YOffset", &DesignSettings::triggerYOffset},
    {"Process0_Trigger_Trigger_YLength", &DesignSettings::triggerYLength},
    {"Process0_ImageHeight_ImageHeight", &DesignSettings::imageHeight},
    {"Process0_Trigger_Trigger_ImgTriggerMode", &DesignSettings::imageTriggerMode},
    {"Process0_Trigger_Trigger_ImgTriggerEnable", &DesignSettings::imageTriggerEnable},
    {"Process0_Trigger_Trigger_ImgTrgDelay", &DesignSettings::imageTriggerDelay},
    {"Process0_Trigger_CameraFVALMode_SelectSource", &DesignSettings::cameraFval},
    {"Process0_Trigger_Trigger_MaxGatedHeight", &DesignSettings::maxGatedHeight},
    {"Process0_EnableFast_SelectSource", &DesignSettings::fastDeBayer},
    {"Process0_DeBayerRAW_Bayer_BayerInit", &DesignSettings::deBayerPhase},
    {"Process0_DeBayerEnhancedRAW_Mode_Mode_Value", &DesignSettings::deBayerMode},
    {"Process0_WhiteBalance_White_BayerInit", &DesignSettings::whiteBalancePhase},
    {"Process0_ImageSelector_FG_IMG_SELECT_PERIOD_Divisor", &DesignSettings::selectPeriod},
    {"Process0_ImageSelector_FG_IMG_SELECT_PHASE_Number", &DesignSettings::selectPhase},
    {"Process0_Trigger_Trigger_FlashEnable", &DesignSettings::flashEnable},
    {"Process0_Trigger_Trigger_FlashPolarity", &DesignSettings::flashPolarity},
    {"Process0_Trigger_Trigger_FlashDelay", &DesignSettings::flashDelay},
};

constexpr Row<double> kReals[] = {
    {"Process0_WhiteBalance_White_RedCoefficient", &DesignSettings::redGain},
    {"Process0_WhiteBalance_White_GreenCoefficient", &DesignSettings::greenGain},
    {"Process0_WhiteBalance_White_BlueCoefficient", &DesignSettings::blueGain},
};

constexpr Row<std::array<std::uint32_t, 10>> kTapFields[] = {
    {"Process0_Buffer_0_TapGeometrySorter_TapOrder", &DesignSettings::tapOrder},
    {"Process0_Buffer_0_TapGeometrySorter_ReferenceTapMirror_Field", &DesignSettings::tapMirror},
};

// In the order of the colours in a pixel.
constexpr std::string_view kTables[] = {
    "Process0_LookupTable_B_LUTcontent",
    "Process0_LookupTable_G_LUTcontent",
    "Process0_LookupTable_R_LUTcontent",
};

}  // namespace

double exposureTime(const LineSettings& settings, double linePeriod) {
    const double active = std::clamp(settings.exsyncExposure, 0.0, linePeriod);
    const bool inverted = (settings.exsyncPolarity != 0) != (settings.cc1Invert != 0);
    return inverted ? linePeriod - active : active;
}

void forEachLineNumber(const std::function<void(std::string_view, std::uint32_t LineSettings::*)>& visit) {
    for (const auto& row : kLineNumbers) visit("Device1_" + std::string(row.name), row.member);
}

void forEachLineReal(const std::function<void(std::string_view, double LineSettings::*)>& visit) {
    for (const auto& row : kLineReals) visit("Device1_" + std::string(row.name), row.member);
}

DesignSettings readSettings(const ValueReader& design) {
    DesignSettings result;
    std::string buffer;
    const auto full = [&](std::string_view rest) -> std::string_view {
        return buffer.assign("Device1_").append(rest);
    };
    forEachLineNumber([&](std::string_view name, auto member) { result.*member = design.u32(name); });
    forEachLineReal([&](std::string_view name, auto member) { result.*member = design.real(name); });
    for (const auto& row : kNumbers) result.*row.member = design.u32(full(row.name));
    for (const auto& row : kReals) result.*row.member = design.real(full(row.name));
    for (const auto& row : kTapFields) design.field(full(row.name), result.*row.member);
    for (std::size_t colour = 0; colour < result.tables.size(); ++colour) {
        std::array<std::uint32_t, 256> entries;
        std::ranges::copy(result.tables[colour], entries.begin());
        design.field(full(kTables[colour]), entries);
        std::ranges::transform(entries, result.tables[colour].begin(), [](std::uint32_t entry) {
            return static_cast<std::uint8_t>(std::min<std::uint32_t>(entry, 255));
        });
    }
    return result;
}

}  // namespace virtualboard::imaging
