/// Status of camera and buffer, computed from several reads.

#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;
using marovine::constant;
using marovine::designParameter;

namespace {

/// Bits of the extended camera status: 0 pixel clock, 1 line valid, 2 frame valid, 3 CC1, 4 external trigger,
/// 5 overflow, 6 and 7 fill level in quarters.
constexpr std::uint32_t kPixelClock = 1;
constexpr unsigned kOverflowBit = 5;
constexpr unsigned kFillLevelBit = 6;
constexpr std::uint32_t kOverflow = 1U << kOverflowBit;
constexpr std::uint32_t kFillLevel = 3U << kFillLevelBit;

/// Percent in quarters, 0 to 3.
constexpr std::uint32_t quarterOf(std::uint32_t percent) {
    return percent < 25 ? 0 : percent < 50 ? 1 : percent < 75 ? 2 : 3;
}

}  // namespace

std::uint32_t FgGxWrapperImpl::bufferOverflow() const {
    return design().readUInt32(designParameter("Overflow_OverflowOccurred"));
}

std::uint32_t FgGxWrapperImpl::bufferFillLevel() const {
    if (bufferOverflow() == 1) return 100;
    return design().readUInt32(designParameter("Buffer_0_DRAM_A_0_FillLevel"));
}

std::uint32_t FgGxWrapperImpl::extendedCameraStatus() const {
    const std::uint32_t fillLevel = bufferFillLevel();
    const std::uint32_t overflow = bufferOverflow();
    std::uint32_t status = 0;
    constexpr int id = marovine::sdkId("FG_CAMSTATUS_EXTENDED");  // of the inner handle
    if (const int code = getUnwrappedParameterWithType(id, &status, 0, FG_TYPE_UINT32)) throw code;
    if (cache_.FG_CAMERASIMULATOR_ENABLE == constant("FG_CAMERASIMULATOR")) status |= kPixelClock;
    status &= ~(kOverflow | kFillLevel);
    return status | quarterOf(fillLevel) << kFillLevelBit | overflow << kOverflowBit;
}

void FgGxWrapperImpl::get_sdk_param_FG_HAP_FILE_P0(char* destination) {
    copyText(marovine::kHapFile, destination);
}

void FgGxWrapperImpl::get_sdk_param_FG_FILLLEVEL_P0(std::uint32_t* destination) {
    requireDestination(destination);
    *destination = bufferFillLevel();
}

void FgGxWrapperImpl::get_sdk_param_FG_OVERFLOW_P0(std::uint32_t* destination) {
    requireDestination(destination);
    *destination = bufferOverflow();
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMSTATUS_EXTENDED_P0(std::uint32_t* destination) {
    requireDestination(destination);
    *destination = extendedCameraStatus();
}

void FgGxWrapperImpl::get_sdk_param_FG_CAMSTATUS_P0(std::uint32_t* destination) {
    requireDestination(destination);
    *destination = extendedCameraStatus() & kPixelClock;
}

void FgGxWrapperImpl::get_sdk_param_FG_ALTERNATIVE_BOARD_DETECTION_P0(std::int32_t* destination) {
    requireDestination(destination);
    switch (design().readUInt32(designParameter("BoardStatus_AlternativeBoardDetection"))) {
        case 0:
            *destination = constant("FG_ON");
            break;
        case 1:
            *destination = constant("FG_OFF");
            break;
        default:
            throw error::internalFailure;
    }
}
