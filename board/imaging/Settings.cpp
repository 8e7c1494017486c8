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

constexpr Row<std::uint32_t> kNumbers[] = {
    {"Process0_Camera_FullMode", &DesignSettings::fullMode},
    {"Process0_Camera_CameraLinkCoreReset", &DesignSettings::coreReset},
    {"Process0_Camera_PixelClockX", &DesignSettings::pixelClock},
    {"Process0_Buffer_0_TapGeometrySorter_TranslateVantagePoint_Value",
     &DesignSettings::translateVantagePoint},
    {"Process0_Buffer_0_TapGeometrySorter_TapWidth", &DesignSettings::tapWidth},
    {"Process0_Buffer_0_TapGeometrySorter_TapCount", &DesignSettings::tapCount},
    {"Process0_Buffer_0_TapGeometrySorter_DummyTaps", &DesignSettings::dummyTaps},
    {"Process0_Buffer_0_DRAM_A_0_XOffset", &DesignSettings::xOffset},
    {"Process0_Buffer_0_DRAM_A_0_XLength", &DesignSettings::xLength},
    {"Process0_Buffer_0_DRAM_A_0_YLength", &DesignSettings::yLength},
    {"Process0_CameraSimulator_Enable_SelectSource", &DesignSettings::generatorEnable},
    {"Process0_CameraSimulator_EnableX_Enable_Value", &DesignSettings::generatorEnableX},
    {"Process0_CameraSimulator_Y_Divisor", &DesignSettings::generatorYDivisor},
    {"Process0_CameraSimulator_Offset_Value", &DesignSettings::generatorOffset},
    {"Process0_CameraSimulator_Frame_Divisor", &DesignSettings::generatorFrameDivisor},
    {"Process0_CameraSimulator_Size_ImageWidth", &DesignSettings::generatorLineWords},
    {"Process0_CameraSimulator_LineGap_Number", &DesignSettings::generatorActiveWords},
    {"Process0_CameraSimulator_Size_ImageHeight", &DesignSettings::generatorFrameLines},
    {"Process0_CameraSimulator_FrameGap_Number", &DesignSettings::generatorActiveLines},
    {"Process0_CameraSimulator_ControlPixelClock_Mode", &DesignSettings::generatorClockMode},
    {"Process0_CameraSimulator_PixelFrequency_ActivePixel_Number", &DesignSettings::generatorActivePixel},
    {"Process0_CameraSimulator_PixelFrequency_SequenceLength_ImageWidth", &DesignSettings::generatorSequence},
    {"Process0_CameraSimulator_TriggerValve_FreeRun_Select", &DesignSettings::generatorFreeRun},
    {"Process0_CameraSimulator_TriggerValve_TriggerValve_Mode", &DesignSettings::generatorValve},
    {"Process0_Trigger_Trigger_YOffset", &DesignSettings::triggerYOffset},
    {"Process0_Trigger_Trigger_YLength", &DesignSettings::triggerYLength},
    {"Process0_ImageHeight_ImageHeight", &DesignSettings::imageHeight},
    {"Process0_Trigger_Trigger_ImgTriggerMode", &DesignSettings::imageTriggerMode},
    {"Process0_Trigger_Trigger_ImgTriggerEnable", &DesignSettings::imageTriggerEnable},
    {"Process0_Trigger_Trigger_ImgTrgDelay", &DesignSettings::imageTriggerDelay},
    {"Process0_Trigger_CameraFVALMode_SelectSource", &DesignSettings::cameraFval},
    {"Process0_Trigger_Trigger_MaxGatedHeight", &DesignSettings::maxGatedHeight},
    {"Process0_Trigger_Trigger_LineTriggerMode", &DesignSettings::lineTriggerMode},
    {"Process0_Trigger_Trigger_ExsyncEnable", &DesignSettings::exsyncEnable},
    {"Process0_Trigger_Trigger_ExsyncPolarity", &DesignSettings::exsyncPolarity},
    {"Process0_Trigger_Trigger_LineTrgDownscaler", &DesignSettings::lineDownscaler},
    {"Process0_Trigger_Trigger_EncoderABMode", &DesignSettings::encoderMode},
    {"Process1_Trigger_OutputMapping_CamTrigger0_CC1_SelectSignal_Select", &DesignSettings::cc1Select},
    {"Process1_Trigger_OutputMapping_CamTrigger0_CC1_Polarity_Invert", &DesignSettings::cc1Invert},
    {"Process0_EnableFast_SelectSource", &DesignSettings::fastDeBayer},
    {"Process0_DeBayerRAW_Bayer_BayerInit", &DesignSettings::deBayerPhase},
    {"Process0_DeBayerEnhancedRAW_Mode_Mode_Value", &DesignSettings::deBayerMode},
    {"Process0_WhiteBalance_White_BayerInit", &DesignSettings::whiteBalancePhase},
    {"Process0_ImageSelector_FG_IMG_SELECT_PERIOD_Divisor", &DesignSettings::selectPeriod},
    {"Process0_ImageSelector_FG_IMG_SELECT_PHASE_Number", &DesignSettings::selectPhase},
};

constexpr Row<double> kReals[] = {
    {"Process0_Trigger_Trigger_ExsyncPeriod", &DesignSettings::exsyncPeriod},
    {"Process0_Trigger_Trigger_ExsyncExposure", &DesignSettings::exsyncExposure},
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

DesignSettings readSettings(const ValueReader& design) {
    DesignSettings result;
    std::string name;
    const auto full = [&](std::string_view rest) -> std::string_view {
        return name.assign("Device1_").append(rest);
    };
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
