/// The image window: which part of the sensor's line, and how many lines, make an image.
///
/// A change of the window recomputes the tap geometry and the Bayer phase, and narrows the ranges of the
/// other window parameters.

#include <algorithm>
#include <array>
#include <cstdint>

#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;
using marovine::applySetting;
using marovine::constant;
using marovine::designParameter;
using marovine::entriesOf;
using marovine::firstOf;
using marovine::inside;
using marovine::limits;
using marovine::multipleOf;
using marovine::oneOf;
using marovine::sdkId;
using marovine::verdictOf;

namespace {

constexpr auto kWidth = limits<std::uint32_t>("FG_WIDTH");
constexpr auto kHeight = limits<std::uint32_t>("FG_HEIGHT");
constexpr auto kXOffset = limits<std::uint32_t>("FG_XOFFSET");
constexpr auto kYOffset = limits<std::uint32_t>("FG_YOFFSET");

/// Longest line that the design can buffer, in pixels, and most lines of an image.
constexpr std::uint32_t kMaximumLine = kWidth.maximum;
constexpr std::uint32_t kMaximumLines = kHeight.maximum;

/// All camera formats of the SDK. This applet offers three of them, but a configuration file can leave any
/// number in the cache.
constexpr auto knownCameraFormats =
    std::to_array<std::int32_t>({8,   10,  12,  14,  16,  108, 110, 112, 120, 208, 210, 212,
                                 214, 216, 218, 219, 220, 308, 310, 311, 320, 321, 322, 500});

/// What is left of a limit, 0 when nothing is.
constexpr std::uint32_t leftOf(std::uint32_t limit, std::uint32_t taken) {
    return limit > taken ? limit - taken : 0;
}

}  // namespace

// ---- rules of the window ----

std::uint32_t FgGxWrapperImpl::horizontalLimit() const {
    return cache_.FG_VANTAGEPOINT == constant("FG_VANTAGEPOINT_TOP_RIGHT") ? cache_.FG_SENSORWIDTH
                                                                           : kMaximumLine;
}

std::uint32_t FgGxWrapperImpl::widthLimit() const {
    return leftOf(horizontalLimit(), cache_.FG_XOFFSET);
}

std::uint32_t FgGxWrapperImpl::xOffsetLimit() const {
    return leftOf(horizontalLimit(), cache_.FG_WIDTH);
}

void FgGxWrapperImpl::checkHorizontal_P0() const {
    const std::uint64_t rightEdge = std::uint64_t{cache_.FG_WIDTH} + cache_.FG_XOFFSET;
    if (rightEdge > horizontalLimit()) throw error::outOfRange;
}

void FgGxWrapperImpl::checkVertical_P0() const {
    if (cache_.FG_HEIGHT > kMaximumLines) throw error::outOfRange;
}

void FgGxWrapperImpl::requireKnownCameraFormat() const {
    if (std::find(knownCameraFormats.begin(), knownCameraFormats.end(), cache_.FG_CAMERA_LINK_CAMTYPE) ==
        knownCameraFormats.end())
        throw error::internalFailure;
}

// ---- what every window parameter drives ----

void FgGxWrapperImpl::applyCachedTapGeometry() {
    setTapGeometry_P0(static_cast<std::uint32_t>(cache_.FG_TAPGEOMETRY), cache_.FG_SENSORWIDTH, 0,
                      static_cast<std::uint32_t>(cache_.FG_VANTAGEPOINT), cache_.FG_XOFFSET, cache_.FG_WIDTH,
                      cache_.FG_YOFFSET, cache_.FG_HEIGHT);
}

void FgGxWrapperImpl::applyCachedGeometry() {
    applyCachedTapGeometry();
    updateBayerInit_P0(effectiveBayerInit_, cache_.FG_VANTAGEPOINT);
}

void FgGxWrapperImpl::setTriggerHeightAndOffset_P0(std::uint32_t height, std::uint32_t yOffset,
                                                   std::int32_t mode) {
    // Single sampling delivers one line for two lines of the sensor.
    if (cache_.FG_SAMPLING_RATE == constant("FG_SINGLE")) {
        height >>= 1;
        yOffset >>= 1;
    }
    const std::uint32_t length = [&] {
        switch (mode) {
            case constant("FREE_RUN"):
            case constant("ASYNC_TRIGGER"):
            case constant("ASYNC_GATED"):
                return height;
            case constant("ASYNC_GATED_MULTIFRAME"):
            case constant("CAMERA_FVAL_MULTIFRAME"):
                return kMaximumLines;
            case constant("ASYNC_TRIGGER_MULTIFRAME"):
                return cache_.FG_IMGTRIGGER_ASYNC_HEIGHT;
            default:
                throw error::outOfRange;
        }
    }();
    // The offset is taken away while the length changes.
    design().write(designParameter("Trigger_Trigger_YOffset"), 0U);
    design().write(designParameter("Trigger_Trigger_YLength"), length);
    design().write(designParameter("Trigger_Trigger_YOffset"), yOffset);
    design().write(designParameter("ImageHeight_ImageHeight"), height);
}

void FgGxWrapperImpl::applyCachedTriggerWindow() {
    setTriggerHeightAndOffset_P0(cache_.FG_HEIGHT, cache_.FG_YOFFSET, cache_.FG_IMGTRIGGERMODE);
}

// ---- ranges ----

void FgGxWrapperImpl::update_dynamic_range_FG_SENSORWIDTH_P0() {
    setMaximum(sdkId("FG_SENSORWIDTH"), kMaximumLine);
}
void FgGxWrapperImpl::update_dynamic_range_FG_WIDTH_P0() {
    setMaximum(sdkId("FG_WIDTH"), widthLimit());
}
void FgGxWrapperImpl::update_dynamic_range_FG_HEIGHT_P0() {
    setMaximum(sdkId("FG_HEIGHT"), kMaximumLines);
}
void FgGxWrapperImpl::update_dynamic_range_FG_XOFFSET_P0() {
    setMaximum(sdkId("FG_XOFFSET"), xOffsetLimit());
}
void FgGxWrapperImpl::update_dynamic_range_FG_YOFFSET_P0() {
    setMaximum(sdkId("FG_YOFFSET"), kMaximumLines);
}

// ---- setters ----

void FgGxWrapperImpl::set_sdk_param_FG_TAPGEOMETRY_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_TAPGEOMETRY, value, oneOf(value, entriesOf("FG_TAPGEOMETRY")), onError,
                 [&] { applyCachedTapGeometry(); });
}

void FgGxWrapperImpl::set_sdk_param_FG_SENSORWIDTH_P0(unsigned int value, marovine::OnError onError) {
    const auto verdict = verdictOf([&] {
        requireKnownCameraFormat();
        return inside(value, limits<std::uint32_t>("FG_SENSORWIDTH"));
    });
    applySetting(cache_.FG_SENSORWIDTH, value, verdict, onError, [&] {
        checkHorizontal_P0();
        applyCachedGeometry();
        update_dynamic_range_FG_WIDTH_P0();
        update_dynamic_range_FG_HEIGHT_P0();
        update_dynamic_range_FG_XOFFSET_P0();
        update_dynamic_range_FG_YOFFSET_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_VANTAGEPOINT_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_VANTAGEPOINT, value, oneOf(value, entriesOf("FG_VANTAGEPOINT")), onError, [&] {
        checkHorizontal_P0();
        checkVertical_P0();
        applyCachedGeometry();
        requireKnownCameraFormat();
        update_dynamic_range_FG_SENSORWIDTH_P0();
        update_dynamic_range_FG_WIDTH_P0();
        update_dynamic_range_FG_HEIGHT_P0();
        update_dynamic_range_FG_XOFFSET_P0();
        update_dynamic_range_FG_YOFFSET_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_WIDTH_P0(unsigned int value, marovine::OnError onError) {
    const auto verdict = firstOf(inside(value, {kWidth.minimum, widthLimit(), kWidth.increment}),
                                 multipleOf(value, kWidth.increment));
    applySetting(cache_.FG_WIDTH, value, verdict, onError, [&] {
        checkHorizontal_P0();
        applyCachedGeometry();
        design().write(designParameter("Buffer_0_DRAM_A_0_XLength"), value);
        requireKnownCameraFormat();
        update_dynamic_range_FG_SENSORWIDTH_P0();
        update_dynamic_range_FG_HEIGHT_P0();
        update_dynamic_range_FG_XOFFSET_P0();
        update_dynamic_range_FG_YOFFSET_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_XOFFSET_P0(unsigned int value, marovine::OnError onError) {
    const auto verdict = firstOf(inside(value, {kXOffset.minimum, xOffsetLimit(), kXOffset.increment}),
                                 multipleOf(value, kXOffset.increment));
    applySetting(cache_.FG_XOFFSET, value, verdict, onError, [&] {
        checkHorizontal_P0();
        applyCachedGeometry();
        design().write(designParameter("Buffer_0_DRAM_A_0_XOffset"), value);
        requireKnownCameraFormat();
        update_dynamic_range_FG_SENSORWIDTH_P0();
        update_dynamic_range_FG_WIDTH_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_HEIGHT_P0(unsigned int value, marovine::OnError onError) {
    const auto verdict = firstOf(inside(value, kHeight), multipleOf(value, kHeight.increment));
    applySetting(cache_.FG_HEIGHT, value, verdict, onError, [&] {
        applyCachedGeometry();
        design().write(designParameter("Buffer_0_DRAM_A_0_YLength"), value);
        applyCachedTriggerWindow();
        update_dynamic_range_FG_YOFFSET_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_YOFFSET_P0(unsigned int value, marovine::OnError onError) {
    // Any line may be the first one: the registered maximum is what a new instance starts with.
    const auto verdict = firstOf(inside(value, {kYOffset.minimum, kMaximumLines, kYOffset.increment}),
                                 multipleOf(value, kYOffset.increment));
    applySetting(cache_.FG_YOFFSET, value, verdict, onError, [&] {
        checkVertical_P0();
        applyCachedGeometry();
        applyCachedTriggerWindow();
        update_dynamic_range_FG_HEIGHT_P0();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_FORMAT_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_FORMAT, value, oneOf(value, entriesOf("FG_FORMAT")), onError, [] {});
}
