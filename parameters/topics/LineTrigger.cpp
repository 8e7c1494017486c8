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
using marovine::oneOf;
using marovine::ParameterCache;
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
double exposureCeiling(const ParameterCache& cache) {
    const bool ownPeriod = cache.FG_LINETRIGGERMODE == constant("GRABBER_CONTROLLED") ||
                           cache.FG_LINETRIGGERMODE == constant("GRABBER_CONTROLLED_GATED");
    return ownPeriod && cache.FG_LINEPERIODE <= kLongestExposure ? cache.FG_LINEPERIODE : kLongestExposure;
}

}  // namespace

// ---- mode ----

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERMODE_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_LINETRIGGERMODE, value, oneOf(value, entriesOf("FG_LINETRIGGERMODE")), onError,
                 [&] {
                     const LineMode& row = *std::ranges::find(lineModes, value, &LineMode::mode);
                     for (const int id : inputParameters) setAccessFlags(id, row.inputAccess);
                     if (cache_.FG_SHAFTENCODERON == constant("FG_ON"))
                         for (const int id : encoderParameters) setAccessFlags(id, row.inputAccess);
                     design().write(designParameter("Trigger_Trigger_LineTriggerMode"), row.designMode);
                     update_dynamic_range_FG_LINEEXPOSURE_P0();
                 });
}

// ---- external input ----

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERINSRC_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_LINETRIGGERINSRC, value, oneOf(value, entriesOf("FG_LINETRIGGERINSRC")), onError,
                 [&] {
                     design().write(designParameter("Trigger_Trigger_LineTrgInSourceA"), 0U);
                     design().write(designParameter("Trigger_InputSignal_LineTrgInSourceA_Input_Select"),
                                    marovine::inputSelectOf(value));
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERDEBOUNCING_P0(double value, marovine::OnError onError) {
    applySetting(cache_.FG_LINETRIGGERDEBOUNCING, value,
                 inside(value, limits<double>("FG_LINETRIGGERDEBOUNCING")), onError, [&] {
                     design().write(designParameter("Trigger_Trigger_LineTrgDebouncingTime"), value);
                     design().write(designParameter("Trigger_Inputs_Debounce8_Prescale_Period"),
                                    debouncePrescale(value));
                 });
}

// ---- shaft encoder filter ----

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODERON_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_SHAFTENCODERON, value, oneOf(value, entriesOf("FG_SHAFTENCODERON")), onError, [&] {
        const bool on = value == constant("FG_ON");
        design().write(designParameter("Trigger_Trigger_EncoderABMode"),
                       on ? static_cast<std::uint32_t>(cache_.FG_SHAFTENCODERMODE) : 0U);
        // The switch is itself read-only while the line trigger mode has no use for the input.
        const int access = on ? accessFlags(sdkId("FG_SHAFTENCODERON")) : kAccessReadOnly;
        for (const int id : encoderParameters) setAccessFlags(id, access);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODERMODE_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_SHAFTENCODERMODE, value, oneOf(value, entriesOf("FG_SHAFTENCODERMODE")), onError,
                 [&] {
                     // The design's mode is also the filter's switch: it stays 0 until that is on.
                     if (cache_.FG_SHAFTENCODERON == constant("FG_ON"))
                         design().write(designParameter("Trigger_Trigger_EncoderABMode"),
                                        static_cast<std::uint32_t>(value));
                 });
}

void FgGxWrapperImpl::set_sdk_param_FG_SHAFTENCODERINSRC_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_SHAFTENCODERINSRC, value, oneOf(value, entriesOf("FG_SHAFTENCODERINSRC")), onError,
                 [&] {
                     design().write(designParameter("Trigger_Trigger_LineTrgInSourceB"), 0U);
                     design().write(designParameter("Trigger_InputSignal_LineTrgInSourceB_Input_Select"),
                                    marovine::inputSelectOf(value));
                 });
}

// ---- ExSync output ----

void FgGxWrapperImpl::set_sdk_param_FG_LINEPERIODE_P0(double value, marovine::OnError onError) {
    applySetting(cache_.FG_LINEPERIODE, value, inside(value, limits<double>("FG_LINEPERIODE")), onError, [&] {
        design().write(designParameter("Trigger_Trigger_ExsyncPeriod"), value);
        // An exposure or delay beyond the new limit stays as it is until it is set again.
        update_dynamic_range_FG_LINEEXPOSURE_P0();
        update_dynamic_range_FG_LINETRIGGERDELAY_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_LINEEXPOSURE_P0(double value, marovine::OnError onError) {
    Limits<double> range = limits<double>("FG_LINEEXPOSURE");
    range.maximum = exposureCeiling(cache_);
    applySetting(cache_.FG_LINEEXPOSURE, value, inside(value, range), onError, [&] {
        design().write(designParameter("Trigger_Trigger_ExsyncExposure"), value);
        update_dynamic_range_FG_LINEEXPOSURE_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_EXSYNCPOLARITY_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_EXSYNCPOLARITY, value, oneOf(value, entriesOf("FG_EXSYNCPOLARITY")), onError, [&] {
        design().write(designParameter("Trigger_Trigger_ExsyncPolarity"),
                       value == constant("FG_LOW") ? 1U : 0U);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_LINETRIGGERDELAY_P0(double value, marovine::OnError onError) {
    Limits<double> range = limits<double>("FG_LINETRIGGERDELAY");
    range.maximum = cache_.FG_LINEPERIODE;
    applySetting(cache_.FG_LINETRIGGERDELAY, value, inside(value, range), onError,
                 [&] { design().write(designParameter("Trigger_Trigger_Exsync2Delay"), value); });
}

// ---- ranges that follow the mode and the period ----

void FgGxWrapperImpl::update_dynamic_range_FG_LINEEXPOSURE_P0() {
    setMaximum(sdkId("FG_LINEEXPOSURE"), std::max(exposureCeiling(cache_), kLeastMaximum));
}

void FgGxWrapperImpl::update_dynamic_range_FG_LINETRIGGERDELAY_P0() {
    setMaximum(sdkId("FG_LINETRIGGERDELAY"), std::max(cache_.FG_LINEPERIODE, kLeastMaximum));
}
