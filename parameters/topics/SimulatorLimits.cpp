/// What limits the camera simulator in each speed mode, and the rates that it reaches.
///
/// A limit serves both the setter's check and the range that the host sees. Limits and rates are taken from
/// the clock counts that the design holds, so a refused read-back refuses them too.

#include <cstdint>

#include "parameters/FgGxWrapperImpl.h"
#include "parameters/topics/SimulatorRates.h"

namespace error = marovine::error;
using marovine::constant;
using marovine::designParameter;
using marovine::restOfSize;
using marovine::sdkId;
using marovine::sizeWithin;

// ---- read-backs and rates ----

std::uint32_t FgGxWrapperImpl::simulatorSequence() const {
    return design().readUInt32(designParameter("CameraSimulator_PixelFrequency_SequenceLength_ImageWidth"));
}

double FgGxWrapperImpl::simulatorPixelRate() const {
    return marovine::pixelRateOf(
        design().readUInt32(designParameter("CameraSimulator_PixelFrequency_ActivePixel_Number")));
}

double FgGxWrapperImpl::getCamSimLinerate_P0(std::int32_t mode) const {
    const double width = simulator_.effectiveWidth;
    switch (mode) {
        case constant("FG_PIXEL_FREQUENCY"): {
            // The gap that another mode left behind does not slow the lines down.
            const bool gapCounts = cache_.FG_CAMERASIMULATOR_SELECT_MODE == mode;
            return simulatorPixelRate() / (width + (gapCounts ? simulator_.effectiveLineGap : 0));
        }
        case constant("FG_LINERATE"):
            return marovine::lineRateOf(simulatorSequence());
        case constant("FG_FRAMERATE"):
            return 8.0 / (width * marovine::kClockPeriod);
        default:
            throw error::noDefinition;
    }
}

double FgGxWrapperImpl::simulatorFrameRate(std::int32_t mode) const {
    const double lines = static_cast<double>(cache_.FG_CAMERASIMULATOR_HEIGHT) + simulator_.effectiveFrameGap;
    const double pixels = static_cast<double>(simulator_.effectiveWidth) + simulator_.effectiveLineGap;
    switch (mode) {
        case constant("FG_PIXEL_FREQUENCY"):
            return simulatorPixelRate() / (lines * pixels);
        case constant("FG_LINERATE"):
            return getCamSimLinerate_P0(mode) / lines;
        case constant("FG_FRAMERATE"):
            return marovine::frameRateOf(cache_.FG_CAMERASIMULATOR_HEIGHT, simulatorSequence());
        default:
            throw error::noDefinition;
    }
}

// ---- limits ----

std::uint32_t FgGxWrapperImpl::simulatorWidthLimit() const {
    const double pixelRate = simulator_.maximumPixelRate;
    switch (cache_.FG_CAMERASIMULATOR_SELECT_MODE) {
        case constant("FG_PIXEL_FREQUENCY"):
            return restOfSize(simulator_.effectiveLineGap);
        case constant("FG_LINERATE"):
            return sizeWithin(pixelRate / marovine::lineRateOf(simulatorSequence()) - 8.0,
                              marovine::kSizeLimit);
        case constant("FG_FRAMERATE"): {
            const std::uint32_t height = cache_.FG_CAMERASIMULATOR_HEIGHT;
            const double frameRate = marovine::frameRateOf(height, simulatorSequence());
            return sizeWithin(pixelRate / (height * frameRate) - 8.0, marovine::kSizeLimit);
        }
        default:
            return marovine::kSizeLimit;
    }
}

std::uint32_t FgGxWrapperImpl::simulatorLineGapLimit() const {
    const std::uint32_t width = simulator_.effectiveWidth;
    switch (cache_.FG_CAMERASIMULATOR_SELECT_MODE) {
        case constant("FG_PIXEL_FREQUENCY"):
            return restOfSize(width);
        case constant("FG_LINERATE"):
            return sizeWithin(
                simulator_.maximumPixelRate / marovine::lineRateOf(simulatorSequence()) - width - 8.0,
                restOfSize(width));
        default:
            return 0;
    }
}

std::uint32_t FgGxWrapperImpl::simulatorHeightLimit() const {
    if (cache_.FG_CAMERASIMULATOR_SELECT_MODE != constant("FG_FRAMERATE"))
        return restOfSize(simulator_.effectiveFrameGap);
    const double frameRate = marovine::frameRateOf(cache_.FG_CAMERASIMULATOR_HEIGHT, simulatorSequence());
    return sizeWithin(simulator_.maximumPixelRate / ((simulator_.effectiveWidth + 8.0) * frameRate),
                      marovine::kSizeLimit);
}

std::uint32_t FgGxWrapperImpl::simulatorFrameGapLimit() const {
    return cache_.FG_CAMERASIMULATOR_SELECT_MODE == constant("FG_PIXEL_FREQUENCY")
               ? restOfSize(cache_.FG_CAMERASIMULATOR_HEIGHT)
               : 0;
}

double FgGxWrapperImpl::simulatorLineRateLimit() const {
    return simulator_.maximumPixelRate / (simulator_.effectiveWidth + 8.0);
}

double FgGxWrapperImpl::simulatorFrameRateLimit() const {
    return simulator_.maximumPixelRate /
           ((simulator_.effectiveWidth + 8.0) * cache_.FG_CAMERASIMULATOR_HEIGHT);
}

// ---- ranges: a limit that cannot be had leaves its range as it is ----

void FgGxWrapperImpl::update_dynamic_range_FG_CAMERASIMULATOR_WIDTH_P0() {
    marovine::leavingErrors(false,
                            [&] { setMaximum(sdkId("FG_CAMERASIMULATOR_WIDTH"), simulatorWidthLimit()); });
}
void FgGxWrapperImpl::update_dynamic_range_FG_CAMERASIMULATOR_LINE_GAP_P0() {
    marovine::leavingErrors(
        false, [&] { setMaximum(sdkId("FG_CAMERASIMULATOR_LINE_GAP"), simulatorLineGapLimit()); });
}
void FgGxWrapperImpl::update_dynamic_range_FG_CAMERASIMULATOR_HEIGHT_P0() {
    marovine::leavingErrors(false,
                            [&] { setMaximum(sdkId("FG_CAMERASIMULATOR_HEIGHT"), simulatorHeightLimit()); });
}
void FgGxWrapperImpl::update_dynamic_range_FG_CAMERASIMULATOR_FRAME_GAP_P0() {
    setMaximum(sdkId("FG_CAMERASIMULATOR_FRAME_GAP"), simulatorFrameGapLimit());
}
void FgGxWrapperImpl::update_dynamic_range_FG_CAMERASIMULATOR_LINERATE_P0() {
    setMaximum(sdkId("FG_CAMERASIMULATOR_LINERATE"), marovine::asMaximum(simulatorLineRateLimit()));
}
void FgGxWrapperImpl::update_dynamic_range_FG_CAMERASIMULATOR_FRAMERATE_P0() {
    setMaximum(sdkId("FG_CAMERASIMULATOR_FRAMERATE"), marovine::asMaximum(simulatorFrameRateLimit()));
}

// ---- getters ----

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_WIDTH_P0(std::uint32_t* destination) {
    requireDestination(destination);
    *destination = simulator_.effectiveWidth;
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_LINE_GAP_P0(std::uint32_t* destination) {
    requireDestination(destination);
    *destination = inPixelFrequencyMode() ? simulator_.effectiveLineGap : 0;
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_FRAME_GAP_P0(std::uint32_t* destination) {
    requireDestination(destination);
    *destination =
        cache_.FG_CAMERASIMULATOR_SELECT_MODE == constant("FG_FRAMERATE") ? 0 : simulator_.effectiveFrameGap;
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_PIXEL_FREQUENCY_P0(double* destination) {
    requireDestination(destination);
    *destination = inPixelFrequencyMode() ? simulatorPixelRate() / 1e6 : marovine::kMaximumPixelFrequency;
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_LINERATE_P0(double* destination) {
    requireDestination(destination);
    *destination = getCamSimLinerate_P0(cache_.FG_CAMERASIMULATOR_SELECT_MODE);
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_FRAMERATE_P0(double* destination) {
    requireDestination(destination);
    *destination = simulatorFrameRate(cache_.FG_CAMERASIMULATOR_SELECT_MODE);
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_ACTIVE_P0(std::uint32_t* destination) {
    requireDestination(destination);
    if (!inPixelFrequencyMode()) return;
    design().read(designParameter("CameraSimulator_PixelFrequency_ActivePixel_Number"), destination);
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMERASIMULATOR_PASSIVE_P0(std::uint32_t* destination) {
    requireDestination(destination);
    if (!inPixelFrequencyMode()) return;
    *destination = marovine::kPixelSequence -
                   design().readUInt32(designParameter("CameraSimulator_PixelFrequency_ActivePixel_Number"));
}
