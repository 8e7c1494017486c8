#include "board/imaging/TapSorter.h"

#include <algorithm>
#include <vector>

namespace virtualboard::imaging {
namespace {

constexpr std::uint64_t kBlack = ~std::uint64_t{0};

class Sorter {
 public:
    Sorter(const DesignSettings& settings, const CameraTraits& camera)
        : settings_(settings), camera_(camera), tapWidth_(settings.tapWidth) {
        const std::uint32_t slots = std::min(settings.tapCount, 10u);
        taps_ = settings.dummyTaps != 0 ? slots - slots / 5 : slots;
        lanes_ = settings.fullMode == 1 ? 10 : 8;
        pixelsPerClock_ = slots <= 1 ? lanes_ : 10 / slots;
        if (settings.translateVantagePoint != 0 && taps_ > 1) leftOut_ = remainder();
    }

    // The sensor pixel that comes out at a position of the sorted line, or kBlack.
    std::uint64_t sensorPixel(std::uint64_t position) const {
        if (tapWidth_ == 0 || position >= tapWidth_ * taps_) return kBlack;
        const auto* slot =
            std::find(settings_.tapOrder.begin(), settings_.tapOrder.begin() + taps_, position / tapWidth_);
        const auto tap = static_cast<std::uint32_t>(slot - settings_.tapOrder.begin());
        if (tap == taps_) return kBlack;
        const bool mirrored = settings_.tapMirror[tap] != 0;
        const std::uint64_t pixel = place(position % tapWidth_, tapWidth_, mirrored);
        if (camera_.readout) return readOut(*camera_.readout, tap, pixel);
        return leftOut_ + tap * tapWidth_ +
               place(pixel, tapWidth_, mirrored != (settings_.translateVantagePoint != 0));
    }

 private:
    static std::uint64_t place(std::uint64_t index, std::uint64_t width, bool reversed) {
        return reversed ? width - 1 - index : index;
    }

    // The sensor pixels left of the taps' parts, which end at the sensor's right edge.
    std::uint64_t remainder() const {
        if (camera_.sensorWidth / taps_ == tapWidth_) return camera_.sensorWidth % taps_;
        // Another sensor than the design was set up for, whose width nobody wrote. Whether it is odd shows in
        // the columns that lie between the sensor's phase and the window's.
        const std::uint64_t right = settings_.whiteBalancePhase ^ interpolationPhase(settings_) ^ 1;
        return (right ^ settings_.xOffset ^ settings_.xLength ^ (tapWidth_ * taps_)) & 1;
    }

    // Follows a pixel of the sorter's tap over the link's lanes back to the camera's tap.
    std::uint64_t readOut(const TapReadout& readout, std::uint32_t tap, std::uint64_t pixel) const {
        if (readout.taps == 0 || readout.taps > readout.fromFarEnd.size() || readout.pixelsPerClock == 0) {
            return kBlack;
        }
        const std::uint64_t clock = pixel / pixelsPerClock_;
        const std::uint64_t lane = tap * pixelsPerClock_ + pixel % pixelsPerClock_;
        if (lane >= lanes_) return kBlack;  // the format does not carry it
        const std::uint64_t cameraTap = lane / readout.pixelsPerClock;
        const std::uint64_t cameraPixel = clock * readout.pixelsPerClock + lane % readout.pixelsPerClock;
        const std::uint64_t width = camera_.sensorWidth / readout.taps;
        if (cameraTap >= readout.taps || cameraPixel >= width) return kBlack;
        const std::uint64_t leftOut =
            settings_.translateVantagePoint != 0 ? camera_.sensorWidth % readout.taps : 0;
        return leftOut + cameraTap * width + place(cameraPixel, width, readout.fromFarEnd[cameraTap]);
    }

    const DesignSettings& settings_;
    const CameraTraits& camera_;
    std::uint64_t tapWidth_, pixelsPerClock_, leftOut_ = 0;
    std::uint32_t taps_, lanes_;
};

}  // namespace

std::vector<std::uint32_t> LinePlan::sensorPixels() const {
    std::vector<std::uint32_t> result(width);
    for (std::uint32_t i = 0; i < width; ++i) {
        const std::uint32_t from = inOrder ? i : rearrangement.from()[i];
        result[i] = !inOrder && from == Rearrangement::kBlack ? PictureGeometry::kNoColumn : first + from;
    }
    return result;
}

LinePlan planLine(const DesignSettings& settings, const CameraTraits& camera) {
    LinePlan plan;
    plan.width = static_cast<std::uint32_t>(std::min<std::size_t>(settings.xLength, kMaxLine));
    if (plan.width == 0) return plan;

    const Sorter sorter(settings, camera);
    std::vector<std::uint64_t> pixels(plan.width);
    std::uint64_t lowest = kBlack, highest = 0;
    for (std::uint32_t i = 0; i < plan.width; ++i) {
        const std::uint64_t pixel = sorter.sensorPixel(std::uint64_t{settings.xOffset} + i);
        pixels[i] = pixel < kMaxLine ? pixel : kBlack;
        if (pixels[i] == kBlack) continue;
        lowest = std::min(lowest, pixel);
        highest = std::max(highest, pixel);
    }
    if (lowest != kBlack) {
        plan.first = static_cast<std::uint32_t>(lowest);
        plan.count = static_cast<std::uint32_t>(highest - lowest + 1);
    }
    const auto isNoRun = [](std::uint64_t a, std::uint64_t b) { return b != a + 1; };
    plan.inOrder = plan.count == plan.width && std::ranges::adjacent_find(pixels, isNoRun) == pixels.end();
    if (plan.inOrder) return plan;
    std::vector<std::uint16_t> from(plan.width);
    std::ranges::transform(pixels, from.begin(), [&](std::uint64_t pixel) {
        return pixel == kBlack ? Rearrangement::kBlack : static_cast<std::uint16_t>(pixel - plan.first);
    });
    plan.rearrangement = Rearrangement(std::move(from), plan.count);
    return plan;
}

}  // namespace virtualboard::imaging
