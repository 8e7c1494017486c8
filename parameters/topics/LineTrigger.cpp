/// Where the camera's line pulses come from and what they look like: line trigger, shaft encoder filter and
/// ExSync output. Times are in microseconds.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "parameters/FgGxWrapperImpl.h"
#include "tables/TriggerSources.h"

using marovine::applySetting;
using marovine::constant;
using marovine::designParameter;
using marovine::entriesOf;
using marovine::inside;
using marovine::kAccessReadOnly;
using marovine::kAccessReadWrite;
using marovine::limits;
using marovine::Limits;
using marovine::LineTriggerSettings;
using marovine::oneOf;
using marovine::sdkId;

namespace {

/// Longest exposure that the ExSync generator can time.
constexpr double kLongestExposure = 1048.568;

/// Smallest maximum that the registry is given, so that a range stays one above zero.
constexpr double kLeastMaximum = std::numeric_limits<double>::min();

/// What a line trigger mode means for the design, and whether the external input has a use in it.
struct LineMode {
    std::int32_t mode;
    std::uint32_t designMode;
    std::int32_t inputAccess;
};
constexpr auto lineModes = std::to_array<LineMode>({
    {constant("GRABBER_CONTROLLED"), 0, kAccessReadOnly},
    {constant("ASYNC_TRIGGER"), 1, kAccessReadWrite},
    {constant("GRABBER_CONTROLLED_GATED"), 2, kAccessReadOnly},
    {constant("ASYNC_GATED"), 3, kAccessReadWrite},
});

/// The parameters of the external input that have a use in the external modes only.
constexpr std::array inputParameters{
    sdkId("FG_LINETRIGGERINSRC"), sdkId("FG_LINETRIGGERINPOLARITY"), sdkId("FG_LINETRIGGERDEBOUNCING"),
    sdkId("FG_LINE_DOWNSCALE"),   sdkId("FG_LINE_DOWNSCALEINIT"),    sdkId("FG_SHAFTENCODERON"),
};

/// The parameters that have a use while the shaft encoder filter is on.
constexpr std::array encoderParameters{
    sdkId("FG_SHAFTENCODERMODE"),
    sdkId("FG_SHAFTENCODERINSRC"),
    sdkId("FG_SHAFTENCODERLEADING"),
    sdkId("FG_SHAFTENCODER_COMPENSATION_ENABLE"),
    sdkId("FG_SHAFTENCODER_COMPENSATION_COUNT"),
};

/// Period of the prescaler in front of the input filter, to the nearest of its steps of three 8 ns clocks.
std::uint32_t debouncePrescale(double time) {
    return static_cast<std::uint32_t>(std::trunc(125.0 * time / 3.0 + 0.5));
}

/// Longest exposure of a setting: a generator that keeps its own period cannot expose longer than that.
double exposureCeiling(const LineTriggerSettings& settings) {
    const bool ownPeriod = settings.mode == constant("GRABBER_CONTROLLED") ||
                           settings.mode == constant("GRABBER_CONTROLLED_GATED");
    return ownPeriod && settings.period <= kLongestExposure ? settings.period : kLongestExposure;
}

}  // namespace

// ---- mode ----

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERMODE_P0(int value, bool throwOnError) {
    auto& settings = cache_.lineTrigger;
    applySetting(settings.mode, value, oneOf(value, entriesOf("FG_LINETRIGGERMODE")), throwOnError, [&] {
        const LineMode& row = *std::ranges::find(lineModes, value, &LineMode::mode);
        for (const int id : inputParameters) setAccessFlags(id, row.inputAccess);
        if (settings.encoderOn == constant("FG_ON"))
            for (const int id : encoderParameters) setAccessFlags(id, row.inputAccess);
        design().write(designParameter("Trigger_Trigger_LineTriggerMode"), row.designMode);
        update_dynamic_range_FG_LINEEXPOSURE_P0();
    });
}

// ---- external input ----

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERINSRC_P0(int value, bool throwOnError) {
    applySetting(cache_.lineTrigger.sourceA, value, oneOf(value, entriesOf("FG_LINETRIGGERINSRC")),
                 throwOnError, [&] {
                     design().write(designParameter("Trigger_Trigger_LineTrgInSourceA"), 0U);
                     design().write(designParameter("Trigger_InputSignal_LineTrgInSourceA_Input_Select"),
                                    marovine::inputSelectOf(value));
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERINPOLARITY_P0(int value, bool throwOnError) {
    applyUnchanged(cache_.lineTrigger.inputPolarity, value,
                   oneOf(value, entriesOf("FG_LINETRIGGERINPOLARITY")),
                   designParameter("Trigger_Trigger_LineTrgInPolarity"), throwOnError);
}

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERDEBOUNCING_P0(double value, bool throwOnError) {
    applySetting(cache_.lineTrigger.debouncing, value,
                 inside(value, limits<double>("FG_LINETRIGGERDEBOUNCING")), throwOnError, [&] {
                     design().write(designParameter("Trigger_Trigger_LineTrgDebouncingTime"), value);
                     design().write(designParameter("Trigger_Inputs_Debounce8_Prescale_Period"),
                                    debouncePrescale(value));
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_LINE_DOWNSCALE_P0(unsigned int value, bool throwOnError) {
    applyUnchanged(cache_.lineTrigger.downscale, value,
                   inside(value, limits<std::uint32_t>("FG_LINE_DOWNSCALE")),
                   designParameter("Trigger_Trigger_LineTrgDownscaler"), throwOnError);
}

void FgGxWrapperImpl::set_sdk_param_FG_LINE_DOWNSCALEINIT_P0(unsigned int value, bool throwOnError) {
    applyUnchanged(cache_.lineTrigger.downscalePhase, value,
                   inside(value, limits<std::uint32_t>("FG_LINE_DOWNSCALEINIT")),
                   designParameter("Trigger_Trigger_LineTrgPhase"), throwOnError);
}

// ---- shaft encoder filter ----

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODERON_P0(int value, bool throwOnError) {
    auto& settings = cache_.lineTrigger;
    applySetting(settings.encoderOn, value, oneOf(value, entriesOf("FG_SHAFTENCODERON")), throwOnError, [&] {
        const bool on = value == constant("FG_ON");
        design().write(designParameter("Trigger_Trigger_EncoderABMode"),
                       on ? static_cast<std::uint32_t>(settings.encoderMode) : 0U);
        // The switch is itself read-only while the line trigger mode has no use for the input.
        const int access = on ? accessFlags(sdkId("FG_SHAFTENCODERON")) : kAccessReadOnly;
        for (const int id : encoderParameters) setAccessFlags(id, access);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODERMODE_P0(int value, bool throwOnError) {
    auto& settings = cache_.lineTrigger;
    applySetting(settings.encoderMode, value, oneOf(value, entriesOf("FG_SHAFTENCODERMODE")), throwOnError,
                 [&] {
                     // The design's mode is also the filter's switch: it stays 0 until that is on.
                     if (settings.encoderOn == constant("FG_ON"))
                         design().write(designParameter("Trigger_Trigger_EncoderABMode"),
                                        static_cast<std::uint32_t>(value));
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODERINSRC_P0(int value, bool throwOnError) {
    applySetting(cache_.lineTrigger.sourceB, value, oneOf(value, entriesOf("FG_SHAFTENCODERINSRC")),
                 throwOnError, [&] {
                     design().write(designParameter("Trigger_Trigger_LineTrgInSourceB"), 0U);
                     design().write(designParameter("Trigger_InputSignal_LineTrgInSourceB_Input_Select"),
                                    marovine::inputSelectOf(value));
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODERLEADING_P0(int value, bool throwOnError) {
    applyUnchanged(cache_.lineTrigger.encoderLeading, value,
                   oneOf(value, entriesOf("FG_SHAFTENCODERLEADING")),
                   designParameter("Trigger_Trigger_EncoderABLead"), throwOnError);
}

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODER_COMPENSATION_ENABLE_P0(int value, bool throwOnError) {
    applyUnchanged(cache_.lineTrigger.compensationEnable, value,
                   oneOf(value, entriesOf("FG_SHAFTENCODER_COMPENSATION_ENABLE")),
                   designParameter("Trigger_Trigger_EncoderCompensation"), throwOnError);
}

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODER_COMPENSATION_COUNT_P0(unsigned int value,
                                                                          bool throwOnError) {
    applyUnchanged(cache_.lineTrigger.compensationCount, value,
                   inside(value, limits<std::uint32_t>("FG_SHAFTENCODER_COMPENSATION_COUNT")),
                   designParameter("Trigger_Trigger_EncoderCompensationCount"), throwOnError);
}

// ---- ExSync output ----

void FgGxWrapperImpl::set_sdk_param_FG_EXSYNCON_P0(int value, bool throwOnError) {
    applyUnchanged(cache_.lineTrigger.exsyncOn, value, oneOf(value, entriesOf("FG_EXSYNCON")),
                   designParameter("Trigger_Trigger_ExsyncEnable"), throwOnError);
}

void FgGxWrapperImpl::set_sdk_param_FG_LINEPERIODE_P0(double value, bool throwOnError) {
    applySetting(cache_.lineTrigger.period, value, inside(value, limits<double>("FG_LINEPERIODE")),
                 throwOnError, [&] {
                     design().write(designParameter("Trigger_Trigger_ExsyncPeriod"), value);
                     // An exposure or delay beyond the new limit stays as it is until it is set again.
                     update_dynamic_range_FG_LINEEXPOSURE_P0();
                     update_dynamic_range_FG_LINETRIGGERDELAY_P0();
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_LINEEXPOSURE_P0(double value, bool throwOnError) {
    auto& settings = cache_.lineTrigger;
    Limits<double> range = limits<double>("FG_LINEEXPOSURE");
    range.maximum = exposureCeiling(settings);
    applySetting(settings.exposure, value, inside(value, range), throwOnError, [&] {
        design().write(designParameter("Trigger_Trigger_ExsyncExposure"), value);
        update_dynamic_range_FG_LINEEXPOSURE_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_EXSYNCPOLARITY_P0(int value, bool throwOnError) {
    applySetting(cache_.lineTrigger.exsyncPolarity, value, oneOf(value, entriesOf("FG_EXSYNCPOLARITY")),
                 throwOnError, [&] {
                     design().write(designParameter("Trigger_Trigger_ExsyncPolarity"),
                                    value == constant("FG_LOW") ? 1U : 0U);
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERDELAY_P0(double value, bool throwOnError) {
    auto& settings = cache_.lineTrigger;
    Limits<double> range = limits<double>("FG_LINETRIGGERDELAY");
    range.maximum = settings.period;
    applyUnchanged(settings.delay, value, inside(value, range),
                   designParameter("Trigger_Trigger_Exsync2Delay"), throwOnError);
}

// ---- ranges that follow the mode and the period ----

void FgGxWrapperImpl::update_dynamic_range_FG_LINEEXPOSURE_P0() {
    setMaximum(sdkId("FG_LINEEXPOSURE"), std::max(exposureCeiling(cache_.lineTrigger), kLeastMaximum));
}

void FgGxWrapperImpl::update_dynamic_range_FG_LINETRIGGERDELAY_P0() {
    setMaximum(sdkId("FG_LINETRIGGERDELAY"), std::max(cache_.lineTrigger.period, kLeastMaximum));
}
