#pragma once

#include <memory>
#include <vector>

#include "board/imaging/LineSource.h"
#include "marovine/Image.h"
#include "marovine/World.h"

namespace virtualboard::imaging {

/// A scene as the camera's Bayer sensor sees it, at rest: made once per scene and camera, then only read.
///
/// The optics spread the scene over `fieldWidth` sensor pixels and keep its proportions; left and right of
/// it, and behind it on the belt, the same scene follows again.
class SensorScene {
 public:
    /// `fieldWidth` 0 shows one scene pixel per sensor pixel; the last column of an odd width shows twice, so
    /// that the Bayer pattern continues over the seam. An empty scene counts as one black pixel.
    /// Throws what `checkField` throws.
    SensorScene(const Image& scene, const CameraTraits& camera, std::uint32_t fieldWidth = 0);

    /// Throws `std::invalid_argument` for a scene spread over more than `kMaxFieldWidth` pixels, or over
    /// more than `kMaxFieldPixels` once its proportions are kept.
    static void checkField(const Image& scene, std::uint32_t fieldWidth);
    static constexpr std::uint32_t kMaxFieldWidth = 65536;  ///< four times the widest sensor
    static constexpr std::uint64_t kMaxFieldPixels = std::uint64_t{1} << 28;

    const CameraTraits& camera() const { return camera_; }
    std::uint32_t width() const { return width_; }  ///< sensor pixels after which the scene repeats
    std::uint32_t rows() const { return rows_; }    ///< belt steps of one pixel after which it repeats

    /// Raw pixels at a belt position counted in pixels, as an even or odd row of the sensor sees them.
    void sample(std::uint64_t position, bool oddRow, std::uint32_t first, std::span<std::uint8_t> out) const;

 private:
    CameraTraits camera_;
    std::uint32_t width_ = 0, rows_ = 0;
    std::vector<std::uint8_t> mosaic_[2];  // of even and odd sensor rows
};

/// How the belt and the line trigger move the scene under the camera.
struct Motion {
    /// Belt way from one exposure to the next, in pixels with `kFractionBits` fraction bits.
    std::uint64_t step = 1u << kFractionBits;
    std::uint32_t rowsPerExposure = 1;  ///< 2: each exposure brings a row pair of the sensor
    float gain = 1;                     ///< brightness by exposure time, see `expose`

    static constexpr unsigned kFractionBits = 20;
    /// `pixels` as a step: 0 for what is not above 0, at most 2^20 pixels.
    static std::uint64_t stepOf(double pixels);
};

/// The camera over the moving belt. Row r belongs to exposure n = r / rowsPerExposure, taken at belt position
/// floor(n x step) + r mod rowsPerExposure; even rows see the sensor's first Bayer row, odd rows the second.
/// A pixel is min(255, colour x gain), rounded to the nearest.
class LineScanCamera : public LineSource {
 public:
    LineScanCamera(std::shared_ptr<const SensorScene> scene, const Motion& motion)
        : scene_(std::move(scene)), motion_(motion) {}

    void readRow(std::uint64_t row, std::uint32_t first, std::span<std::uint8_t> out) const override;

 private:
    std::shared_ptr<const SensorScene> scene_;
    Motion motion_;
};

}  // namespace virtualboard::imaging
