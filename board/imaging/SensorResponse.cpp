#include "board/imaging/SensorResponse.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "board/imaging/Stages.h"

namespace virtualboard::imaging {
namespace {

constexpr double kWhite = 255;

// Streams of random numbers below the camera's seed.
constexpr std::uint64_t kPatternStream = 0, kNoiseStream = 1;

/// The response at a share of white; both from 0 to 1.
double responseAt(std::span<const ResponsePoint> points, double light) {
    if (points.empty()) return light;
    const auto after =
        std::ranges::find_if(points, [light](const auto& point) { return point.light > light; });
    if (after == points.begin()) return after->output;
    const auto& before = *std::prev(after);
    if (after == points.end()) return before.output;
    return before.output +
           (after->output - before.output) * (light - before.light) / (after->light - before.light);
}

std::uint32_t fixed(double grey) {
    return static_cast<std::uint32_t>(std::lround(grey * (1 << SensorResponse::kLightBits)));
}

/// Also refuses what is no number.
void require(const char* name, double value, double least, double most) {
    if (value >= least && value <= most) return;
    std::ostringstream text;
    text << "the " << name << " lies from " << least << " to " << most << ", not at " << value;
    throw std::invalid_argument(text.str());
}

}  // namespace

void checkCamera(const CameraTraits& camera) {
    const SensorFaults& faults = camera.faults;
    require("sensor width", camera.sensorWidth, 1, kMaxLine);
    require("Bayer phase", camera.phase, 0, 3);
    if (camera.readout) {
        require("number of taps", camera.readout->taps, 1,
                static_cast<double>(camera.readout->fromFarEnd.size()));
        require("number of pixels in a clock", camera.readout->pixelsPerClock, 1, 10);
    }
    for (const StuckPixel& pixel : faults.stuck)
        require("column of a stuck pixel", pixel.column, 0, camera.sensorWidth - 1.0);
    require("neutral exposure", camera.neutralExposure, 1e-3, 1e9);
    require("dark level", faults.darkLevel, 0, kWhite);
    require("read noise", faults.readNoise, 0, kWhite);
    require("full well", faults.fullWell, 0, 1e9);
    require("fixed pattern", faults.fixedPattern, 0, 1);
    require("vignetting", faults.vignetting, 0, 1);
    double last = -1;
    for (const ResponsePoint& point : faults.response) {
        require("light of a response", point.light, 0, 1);
        require("output of a response", point.output, 0, 1);
        if (point.light <= last) throw std::invalid_argument("a camera's response has ascending lights");
        last = point.light;
    }
}

void checkLight(const Light& light) {
    require("level of the light", light.level, 0, 100);
    for (const double share : {light.red, light.green, light.blue, light.flashShare})
        require("share of the light", share, 0, 1);
}

SensorResponse::SensorResponse(const CameraTraits& camera)
    : sensorWidth_(std::min<std::uint32_t>(camera.sensorWidth, kMaxLine)),
      noise_(Randomness(camera.faults.seed).stream(kNoiseStream)),
      noisy_(camera.faults.readNoise > 0 || camera.faults.fullWell > 0),
      stuck_(camera.faults.stuck) {
    const SensorFaults& faults = camera.faults;
    const Randomness pattern = Randomness(faults.seed).stream(kPatternStream);
    const double middle = camera.sensorWidth / 2.0;
    for (std::uint64_t parity = 0; parity < 2; ++parity) {
        gains_[parity].reserve(sensorWidth_);
        for (std::uint64_t column = 0; column < sensorWidth_; ++column) {
            const double sensitivity = 1 + faults.fixedPattern *
                                               Randomness::bell(pattern.at(2 * column + parity)) /
                                               Randomness::kBell;
            const double away = (static_cast<double>(column) + 0.5 - middle) / middle;
            const double gain = std::clamp(sensitivity * (1 - faults.vignetting * away * away), 0.0, 16.0);
            gains_[parity].push_back(static_cast<std::uint32_t>(std::lround(gain * (1 << kGainBits))));
        }
    }
    for (std::uint32_t level = 0; level < kLevels; ++level) {
        // The middle of a level's light stands for all of it.
        const double light = std::min((level + 0.5) * 256 / kLevels / kWhite, 1.0);
        // As many electrons as the light brings spread by their root.
        const double shot = faults.fullWell > 0 ? kWhite * kWhite * light / faults.fullWell : 0;
        sigma_[level] = fixed(std::sqrt(faults.readNoise * faults.readNoise + shot));
        output_[level] = fixed(kWhite * responseAt(faults.response, light) + faults.darkLevel);
    }
}

void SensorResponse::apply(std::uint64_t row, std::uint32_t first, float gain,
                           std::span<const std::uint32_t> light, std::span<std::uint8_t> out) const {
    constexpr std::int64_t kHalf = 1 << (kLightBits - 1);
    constexpr std::uint64_t kMost = kLevels * kLightPerLevel - 1;
    const std::size_t seen =
        std::min<std::size_t>(out.size(), sensorWidth_ > first ? sensorWidth_ - first : 0);
    const std::span gains = gains_[row % 2];
    const auto exposure = static_cast<std::uint64_t>(std::lround(gain * (1 << kGainBits)));
    const Randomness noise = noise_.stream(row);
    for (std::size_t i = 0; i < seen; ++i) {
        // At most 16 + 17 + 20 bits: the gain is cut where every light is white.
        const std::uint64_t pixelGain = gains[first + i] * exposure >> kGainBits;
        const std::size_t level = std::min(light[i] * pixelGain >> kGainBits, kMost) / kLightPerLevel;
        std::int64_t value = output_[level];
        if (noisy_) {
            value += std::int64_t{Randomness::bell(noise.at(first + i))} * sigma_[level] / Randomness::kBell;
        }
        out[i] = static_cast<std::uint8_t>(std::clamp<std::int64_t>((value + kHalf) >> kLightBits, 0, 255));
    }
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(seen), out.end(), std::uint8_t{0});
    for (const StuckPixel& pixel : stuck_) {
        if (pixel.column >= first && pixel.column - first < seen) out[pixel.column - first] = pixel.value;
    }
}

}  // namespace virtualboard::imaging
