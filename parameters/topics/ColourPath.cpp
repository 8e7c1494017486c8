/// From Bayer pattern to colour: white balance, the phase of the pattern, line sampling, and which images of
/// a sequence are delivered.

#include <array>
#include <cstdint>

#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;
using marovine::applySetting;
using marovine::constant;
using marovine::designParameter;
using marovine::DesignParameter;
using marovine::entriesOf;
using marovine::inside;
using marovine::limits;
using marovine::notOutside;
using marovine::oneOf;

namespace {

/// Mode of the interpolation stage for each phase.
constexpr std::array<std::uint32_t, 4> modeOfPhase{2, 1, 0, 3};

/// Every gain has the same range.
constexpr auto kGain = limits<double>("FG_SCALINGFACTOR_RED");

void setGain(const marovine::DesignAccess& design, double& gain, double value, DesignParameter coefficient,
             marovine::OnError onError) {
    applySetting(gain, value, notOutside(value, kGain), onError, [&] { design.write(coefficient, value); });
}

}  // namespace

// ---- white balance ----

void FgGxWrapperImpl::set_sdk_param_FG_SCALINGFACTOR_RED_P0(double value, marovine::OnError onError) {
    setGain(design(), cache_.FG_SCALINGFACTOR_RED, value,
            designParameter("WhiteBalance_White_RedCoefficient"), onError);
}
void FgGxWrapperImpl::set_sdk_param_FG_SCALINGFACTOR_BLUE_P0(double value, marovine::OnError onError) {
    setGain(design(), cache_.FG_SCALINGFACTOR_BLUE, value,
            designParameter("WhiteBalance_White_BlueCoefficient"), onError);
}
void FgGxWrapperImpl::set_sdk_param_FG_SCALINGFACTOR_GREEN_P0(double value, marovine::OnError onError) {
    setGain(design(), cache_.FG_SCALINGFACTOR_GREEN, value,
            designParameter("WhiteBalance_White_GreenCoefficient"), onError);
}

// ---- Bayer pattern ----

void FgGxWrapperImpl::updateBayerInit_P0(std::int32_t bayerInit, std::int32_t vantagePoint) {
    if (!marovine::isEntry(bayerInit, entriesOf("FG_BAYERINIT"))) throw error::outOfRange;
    const bool mirrored = vantagePoint == constant("FG_VANTAGEPOINT_TOP_RIGHT");
    // The first pixel of the window lies this many columns from where the line is read first.
    const std::uint32_t column =
        mirrored ? cache_.FG_SENSORWIDTH - cache_.FG_XOFFSET - cache_.FG_WIDTH : cache_.FG_XOFFSET;
    const auto colour = static_cast<std::uint32_t>(bayerInit);
    // Bit 0 swaps the colours within a line, bit 1 the two kinds of lines.
    const std::uint32_t phase =
        colour ^ (mirrored ? 1U : 0U) ^ (column & 1U) ^ ((cache_.FG_YOFFSET & 1U) << 1);

    effectiveBayerInit_ = bayerInit;
    design().write(designParameter("DeBayerEnhancedRAW_Mode_Mode_Value"), modeOfPhase[phase]);
    design().write(designParameter("DeBayerRAW_Bayer_BayerInit"), phase);
    // The white balance works on the sensor's own pattern, whatever part of it is delivered.
    design().write(designParameter("WhiteBalance_White_BayerInit"), colour);
}

void FgGxWrapperImpl::set_sdk_param_FG_BAYERINIT_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_BAYERINIT, value, oneOf(value, entriesOf("FG_BAYERINIT")), onError,
                 [&] { updateBayerInit_P0(value, cache_.FG_VANTAGEPOINT); });
}

void FgGxWrapperImpl::set_sdk_param_FG_SAMPLING_RATE_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_SAMPLING_RATE, value, oneOf(value, entriesOf("FG_SAMPLING_RATE")), onError, [&] {
        // The design does not know the rate; it shows in the trigger window of both.
        set_sdk_param_FG_HEIGHT_P0(cache_.FG_HEIGHT, true);
        set_sdk_param_FG_YOFFSET_P0(cache_.FG_YOFFSET, true);
    });
}

// ---- image selector ----

void FgGxWrapperImpl::set_sdk_param_FG_IMG_SELECT_PERIOD_P0(unsigned int value, marovine::OnError onError) {
    const auto verdict = inside(value, limits<std::uint32_t>("FG_IMG_SELECT_PERIOD"));
    applySetting(cache_.FG_IMG_SELECT_PERIOD, value, verdict, onError, [&] {
        if (cache_.FG_IMG_SELECT_PERIOD <= cache_.FG_IMG_SELECT) throw error::outOfRange;
        design().write(designParameter("ImageSelector_FG_IMG_SELECT_PERIOD_Divisor"), value);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_IMG_SELECT_P0(unsigned int value, marovine::OnError onError) {
    const auto verdict = inside(value, limits<std::uint32_t>("FG_IMG_SELECT"));
    applySetting(cache_.FG_IMG_SELECT, value, verdict, onError, [&] {
        if (cache_.FG_IMG_SELECT >= cache_.FG_IMG_SELECT_PERIOD) throw error::outOfRange;
        design().write(designParameter("ImageSelector_FG_IMG_SELECT_PHASE_Number"), value);
    });
}
