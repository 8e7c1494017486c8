#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "board/imaging/Randomness.h"
#include "marovine/World.h"

namespace virtualboard::imaging {

/// Throw `std::invalid_argument`, saying why, for what no camera or light can be.
void checkCamera(const CameraTraits& camera);
void checkLight(const Light& light);

/// What becomes of the light on a sensor that is not perfect, pixel by pixel:
///
/// 1. the light, scene x gain, times the pixel's own sensitivity (fixed pattern) and what the lens leaves of
///    it towards the ends (vignetting);
/// 2. noise: read noise and the shot noise of that light, as one bell-shaped number per pixel;
/// 3. the response to the light, with the noise and the dark level on it, rounded to a grey value and
/// clipped;
/// 4. stuck pixels.
/// All in whole numbers, so that every machine takes the same pictures. Immutable, thread-safe.
class SensorResponse {
 public:
    explicit SensorResponse(const CameraTraits& camera);

    /// Light in grey values with `kLightBits` fraction bits.
    static constexpr unsigned kLightBits = 8;

    /// Turns the light on a row, from sensor column `first` on and before the gain, into grey values.
    void apply(std::uint64_t row, std::uint32_t first, float gain, std::span<const std::uint32_t> light,
               std::span<std::uint8_t> out) const;

 private:
    static constexpr unsigned kGainBits = 16;
    static constexpr std::uint32_t kLevels = 4096;  // of light, up to the highest grey value
    static constexpr std::uint32_t kLightPerLevel = (256u << kLightBits) / kLevels;

    std::uint32_t sensorWidth_;  ///< as far as any line reads
    Randomness noise_;
    bool noisy_;
    std::vector<std::uint32_t> gains_[2];          // per column, of even and odd sensor rows; kGainBits
    std::array<std::uint32_t, kLevels> sigma_{};   // of the noise, over light; kLightBits
    std::array<std::uint32_t, kLevels> output_{};  // without noise, over light; kLightBits
    std::vector<StuckPixel> stuck_;
};

}  // namespace virtualboard::imaging
