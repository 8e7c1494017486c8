/// The camera simulator: the design's test-pattern generator in place of a camera.
///
/// Its speed is given as a pixel frequency, a line rate or a frame rate, by the speed mode. Requested sizes
/// and gaps stand in the cache; `simulator_` holds what the generator was really given. A setter that fails
/// puts back its own cached value, but not what nested steps have made effective.

#include <algorithm>
#include <array>
#include <cstdint>

#include "parameters/FgGxWrapperImpl.h"
#include "parameters/topics/SimulatorRates.h"

namespace error = marovine::error;
using marovine::accepted;
using marovine::applySetting;
using marovine::constant;
using marovine::designParameter;
using marovine::entriesOf;
using marovine::firstOf;
using marovine::inside;
using marovine::kSizeLimit;
using marovine::limits;
using marovine::oneOf;
using marovine::sdkId;
using marovine::verdictOf;

namespace {

constexpr auto kMinimumLineRate = limits<double>("FG_CAMERASIMULATOR_LINERATE").minimum;
constexpr auto kMinimumFrameRate = limits<double>("FG_CAMERASIMULATOR_FRAMERATE").minimum;

/// Accepts a size from `minimum` up to a limit, which may have to be read back from the design first.
template <class Limit>
marovine::Verdict upTo(std::uint32_t minimum, std::uint32_t value, Limit&& limit) {
    return verdictOf([&] { return inside(value, {minimum, limit(), 1}); });
}

/// Access flags of a parameter in the three speed modes.
struct SpeedModeAccess {
    std::int32_t id;
    std::array<int, 3> flags;
};
constexpr auto accessBySpeedMode = std::to_array<SpeedModeAccess>({
    {sdkId("FG_CAMERASIMULATOR_PIXEL_FREQUENCY"), {7, 1, 1}},
    {sdkId("FG_CAMERASIMULATOR_LINERATE"), {1, 7, 1}},
    {sdkId("FG_CAMERASIMULATOR_FRAMERATE"), {1, 1, 7}},
    {sdkId("FG_CAMERASIMULATOR_LINE_GAP"), {7, 1, 1}},
    {sdkId("FG_CAMERASIMULATOR_FRAME_GAP"), {7, 7, 1}},
});
static_assert(constant("FG_PIXEL_FREQUENCY") == 0 && constant("FG_LINERATE") == 1 &&
              constant("FG_FRAMERATE") == 2);

}  // namespace

// ---- source and pattern ----

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_PATTERN_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_CAMERASIMULATOR_PATTERN"));
    applySetting(cache_.FG_CAMERASIMULATOR_PATTERN, value, verdict, onError, [&] {
        // The grey value rises with the column, with the line, or with both.
        const bool alongColumns = value != constant("FG_VERTICAL");
        const bool alongLines = value != constant("FG_HORIZONTAL");
        design().write(designParameter("CameraSimulator_EnableX_Enable_Value"), alongColumns ? 1U : 0U);
        design().write(designParameter("CameraSimulator_Y_Divisor"), alongLines ? 256U : 1U);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_ROLL_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_CAMERASIMULATOR_ROLL"));
    applySetting(cache_.FG_CAMERASIMULATOR_ROLL, value, verdict, onError, [&] {
        design().write(designParameter("CameraSimulator_Frame_Divisor"),
                       value == constant("FG_ON") ? 256U : 1U);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_TRIGGER_MODE_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_CAMERASIMULATOR_TRIGGER_MODE"));
    applySetting(cache_.FG_CAMERASIMULATOR_TRIGGER_MODE, value, verdict, onError, [&] {
        const bool freeRun = value == constant("SIMULATION_FREE_RUN");
        const bool perLine = value == constant("RISING_EDGE_TRIGGERS_LINE");
        design().write(designParameter("CameraSimulator_TriggerValve_FreeRun_Select"), freeRun ? 1U : 0U);
        design().write(designParameter("CameraSimulator_TriggerValve_TriggerValve_Mode"), perLine ? 1U : 2U);
    });
}

// ---- sizes and gaps ----

void FgGxWrapperImpl::setWidth_P0(std::uint32_t width, std::uint32_t gap) {
    const auto pixels = marovine::roundedUpToWord(width);
    const auto gapPixels = marovine::roundedUpToWord(gap);
    if (pixels + gapPixels > kSizeLimit) throw error::outOfRange;
    simulator_.effectiveWidth = static_cast<std::uint32_t>(pixels);
    simulator_.effectiveLineGap = static_cast<std::uint32_t>(gapPixels);
    design().write(designParameter("CameraSimulator_Size_ImageWidth"),
                   (simulator_.effectiveWidth + simulator_.effectiveLineGap) / marovine::kWord);
    design().write(designParameter("CameraSimulator_LineGap_Number"),
                   simulator_.effectiveWidth / marovine::kWord);
}

void FgGxWrapperImpl::setHeight_P0(std::uint32_t height, std::uint32_t gap) {
    if (std::uint64_t{height} + gap > kSizeLimit) throw error::outOfRange;
    simulator_.effectiveHeight = height;
    simulator_.effectiveFrameGap = gap;
    design().write(designParameter("CameraSimulator_Size_ImageHeight"), height + gap);
    design().write(designParameter("CameraSimulator_FrameGap_Number"), height);
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_WIDTH_P0(unsigned int value,
                                                                marovine::OnError onError) {
    const auto verdict = upTo(1, value, [&] { return simulatorWidthLimit(); });
    applySetting(cache_.FG_CAMERASIMULATOR_WIDTH, value, verdict, onError, [&] {
        setWidth_P0(value, inPixelFrequencyMode() ? simulator_.effectiveLineGap : 0);
        update_dynamic_range_FG_CAMERASIMULATOR_LINE_GAP_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_HEIGHT_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_LINERATE_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_FRAMERATE_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_LINE_GAP_P0(unsigned int value,
                                                                   marovine::OnError onError) {
    const auto verdict = upTo(0, value, [&] { return simulatorLineGapLimit(); });
    applySetting(cache_.FG_CAMERASIMULATOR_LINE_GAP, value, verdict, onError, [&] {
        setWidth_P0(simulator_.effectiveWidth, value);
        update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_HEIGHT_P0(unsigned int value,
                                                                 marovine::OnError onError) {
    const auto verdict = upTo(1, value, [&] { return simulatorHeightLimit(); });
    applySetting(cache_.FG_CAMERASIMULATOR_HEIGHT, value, verdict, onError, [&] {
        const bool keepsFrameRate = cache_.FG_CAMERASIMULATOR_SELECT_MODE == constant("FG_FRAMERATE");
        setHeight_P0(value, keepsFrameRate ? 0 : simulator_.effectiveFrameGap);
        if (keepsFrameRate)
            set_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0(cache_.FG_CAMERASIMULATOR_FRAMERATE, true);
        update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_FRAME_GAP_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_FRAMERATE_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_FRAME_GAP_P0(unsigned int value,
                                                                    marovine::OnError onError) {
    const auto verdict = upTo(0, value, [&] { return simulatorFrameGapLimit(); });
    applySetting(cache_.FG_CAMERASIMULATOR_FRAME_GAP, value, verdict, onError, [&] {
        setHeight_P0(cache_.FG_CAMERASIMULATOR_HEIGHT, value);
        update_dynamic_range_FG_CAMERASIMULATOR_HEIGHT_P0();
    });
}

// ---- speed ----

void FgGxWrapperImpl::writeSimulatorSequence(std::uint32_t sequence) {
    design().write(designParameter("CameraSimulator_PixelFrequency_SequenceLength_ImageWidth"), sequence);
    design().write(designParameter("CameraSimulator_PixelFrequency_ActivePixel_Number"), 1U);
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_PIXEL_FREQUENCY_P0(double value,
                                                                          marovine::OnError onError) {
    // The active part is at least one cycle and at most the whole sequence.
    const double count = marovine::activePartFor(value);
    const auto verdict = accepted(count >= 1.0 && count < marovine::kPixelSequence + 1.0);
    applySetting(cache_.FG_CAMERASIMULATOR_PIXEL_FREQUENCY, value, verdict, onError, [&] {
        const auto active = static_cast<std::uint32_t>(count);
        design().write(designParameter("CameraSimulator_PixelFrequency_ActivePixel_Number"), active);
        design().write(designParameter("CameraSimulator_PixelFrequency_RepeatPat_Divisor"),
                       marovine::kPixelSequence / active);
        design().write(designParameter("CameraSimulator_PixelFrequency_SequenceLength_ImageWidth"),
                       marovine::kPixelSequence);
        simulator_.computedFrameRate = simulatorFrameRate(cache_.FG_CAMERASIMULATOR_SELECT_MODE);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_LINERATE_P0(double value, marovine::OnError onError) {
    const double sequence = marovine::sequenceFor(value);
    const auto verdict = firstOf(inside(value, {kMinimumLineRate, simulatorLineRateLimit(), 0.0}),
                                 accepted(marovine::isClockCount(sequence)));
    applySetting(cache_.FG_CAMERASIMULATOR_LINERATE, value, verdict, onError, [&] {
        writeSimulatorSequence(static_cast<std::uint32_t>(sequence));
        setWidth_P0(simulator_.effectiveWidth, 0);
        simulator_.computedFrameRate = simulatorFrameRate(cache_.FG_CAMERASIMULATOR_SELECT_MODE);
        update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_LINE_GAP_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0(double value, marovine::OnError onError) {
    const double sequence = marovine::sequenceFor(value, cache_.FG_CAMERASIMULATOR_HEIGHT);
    const auto verdict = firstOf(inside(value, {kMinimumFrameRate, simulatorFrameRateLimit(), 0.0}),
                                 accepted(marovine::isClockCount(sequence)));
    applySetting(cache_.FG_CAMERASIMULATOR_FRAMERATE, value, verdict, onError, [&] {
        writeSimulatorSequence(static_cast<std::uint32_t>(sequence));
        setWidth_P0(simulator_.effectiveWidth, 0);
        setHeight_P0(cache_.FG_CAMERASIMULATOR_HEIGHT, 0);
        simulator_.computedFrameRate = simulatorFrameRate(constant("FG_FRAMERATE"));
        update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_HEIGHT_P0();
    });
}

void FgGxWrapperImpl::reapplySimulatorSpeed() {
    switch (cache_.FG_CAMERASIMULATOR_SELECT_MODE) {
        case constant("FG_LINERATE"):
            set_sdk_param_FG_CAMERASIMULATOR_LINERATE_P0(
                std::min(cache_.FG_CAMERASIMULATOR_LINERATE, simulatorLineRateLimit()), true);
            break;
        case constant("FG_FRAMERATE"):
            // The speed goes on as it was, whatever gave it.
            set_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0(simulator_.computedFrameRate, true);
            break;
        default:
            set_sdk_param_FG_CAMERASIMULATOR_PIXEL_FREQUENCY_P0(cache_.FG_CAMERASIMULATOR_PIXEL_FREQUENCY,
                                                                true);
    }
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERASIMULATOR_SELECT_MODE_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_CAMERASIMULATOR_SELECT_MODE"));
    applySetting(cache_.FG_CAMERASIMULATOR_SELECT_MODE, value, verdict, onError, [&] {
        for (const auto& row : accessBySpeedMode)
            setAccessFlags(row.id, row.flags[static_cast<std::size_t>(value)]);
        design().write(designParameter("CameraSimulator_ControlPixelClock_Mode"),
                       inPixelFrequencyMode() ? 0U : 1U);
        setWidth_P0(simulator_.effectiveWidth, cache_.FG_CAMERASIMULATOR_LINE_GAP);
        setHeight_P0(cache_.FG_CAMERASIMULATOR_HEIGHT, cache_.FG_CAMERASIMULATOR_FRAME_GAP);
        reapplySimulatorSpeed();
        update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_LINE_GAP_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_HEIGHT_P0();
        update_dynamic_range_FG_CAMERASIMULATOR_FRAME_GAP_P0();
    });
}
