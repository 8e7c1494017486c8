#pragma once

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "board/imaging/BeltSurface.h"
#include "board/imaging/LineSource.h"
#include "board/imaging/SensorResponse.h"
#include "marovine/Image.h"
#include "marovine/World.h"

namespace virtualboard::imaging {

/// Fraction bits of belt positions and ways, which count in pixels.
inline constexpr unsigned kBeltBits = 20;

/// What one row of the sensor sees.
struct Exposure {
    std::uint64_t row = 0;  ///< of the stream: even ones see the sensor's first Bayer row; it seeds the noise
    std::int64_t position = 0;  ///< of the belt when the exposure begins, with `kBeltBits` fraction bits
    std::int64_t way = 0;       ///< that the belt moves during the exposure, with `kBeltBits` fraction bits
    float gain = 1;             ///< brightness by exposure time and light, see `expose`
};

/// A scene as the camera's Bayer sensor sees it, at rest, under its light: made once per scene, camera and
/// light, then only read.
///
/// The optics spread a picture over `fieldWidth` sensor pixels and keep its proportions; left and right of
/// it, before and behind it on the belt, the same picture follows again. A belt that is drawn shows one of
/// its pixels per sensor pixel.
class SensorScene {
 public:
    /// `fieldWidth` 0 shows one scene pixel per sensor pixel; the last column of an odd width shows twice, so
    /// that the Bayer pattern continues over the seam. An empty scene counts as one black pixel.
    /// Throws what `checkField` throws.
    SensorScene(const Image& scene, const CameraTraits& camera, std::uint32_t fieldWidth = 0,
                const Light& light = {});
    /// A belt that is drawn; `rows` belt steps count as one scene.
    SensorScene(std::shared_ptr<const BeltSurface> belt, const CameraTraits& camera, const Light& light,
                std::uint32_t rows);

    /// Throws `std::invalid_argument` for a scene spread over more than `kMaxFieldWidth` pixels, or over
    /// more than `kMaxFieldPixels` once its proportions are kept.
    static void checkField(const Image& scene, std::uint32_t fieldWidth);
    static constexpr std::uint32_t kMaxFieldWidth = 65536;  ///< four times the widest sensor
    static constexpr std::uint64_t kMaxFieldPixels = std::uint64_t{1} << 28;

    const CameraTraits& camera() const { return camera_; }
    const Light& light() const { return light_; }
    std::uint32_t rows() const { return rows_; }  ///< belt steps of one pixel that count as one scene
    /// What the sensor makes of the light; null for a sensor without faults.
    const SensorResponse* response() const { return response_ ? &*response_ : nullptr; }

    /// The grey values that the camera gives for an exposure, from sensor pixel `first` on.
    void see(const Exposure& exposure, std::uint32_t first, std::span<std::uint8_t> out) const;
    /// Raw pixels at a belt position counted in pixels, as an even or odd row of the sensor sees them.
    void sample(std::int64_t position, bool oddRow, std::uint32_t first, std::span<std::uint8_t> out) const;

 private:
    using Tint = std::array<std::uint8_t, 256>;

    SensorScene(const CameraTraits& camera, const Light& light);
    void gather(const Exposure& exposure, std::uint32_t first, std::span<std::uint32_t> light) const;
    void drawn(std::int64_t position, bool oddRow, std::uint32_t first, std::span<std::uint8_t> out) const;

    CameraTraits camera_;
    Light light_;
    std::optional<SensorResponse> response_;
    Tint tints_[3];  // blue, green and red in the light's colour
    std::uint32_t width_ = 0, rows_ = 0;
    std::vector<std::uint8_t> mosaic_[2];  // of even and odd sensor rows
    std::shared_ptr<const BeltSurface> belt_;
};

/// Lines taken at even distances along the belt.
struct SceneRun {
    std::uint64_t first = 0;    ///< number of the first one; the run lasts until the next one begins
    std::int64_t position = 0;  ///< of the belt at the first one, pixels with `kBeltBits` fraction bits
    std::int64_t step = 0;      ///< from one to the next; negative where the belt goes backwards
    std::int64_t way = 0;       ///< of the belt during an exposure
    float gain = 1;             ///< brightness by exposure time and light, see `expose`
};

/// Where the belt is for each row: how belt and line trigger move the scene under the camera. Row r belongs
/// to line n = r / rowsPerExposure; the second row of a line's pair lies one pixel further.
struct Motion {
    std::vector<SceneRun> runs{SceneRun{.step = std::int64_t{1} << kBeltBits}};  ///< ascending, never empty
    std::uint32_t rowsPerExposure = 1;  ///< 2: each exposure brings a row pair of the sensor

    Exposure of(std::uint64_t row) const;
    /// `pixels` as a step, at most 2^20 pixels either way; 0 for what is not a number.
    static std::int64_t stepOf(double pixels);
};

/// The camera over the moving belt; even rows see the sensor's first Bayer row, odd rows the second. With a
/// sensor without faults a pixel is min(255, colour x gain), rounded to the nearest.
class LineScanCamera : public LineSource {
 public:
    LineScanCamera(std::shared_ptr<const SensorScene> scene, Motion motion)
        : scene_(std::move(scene)), motion_(std::move(motion)) {}

    void readRow(std::uint64_t row, std::uint32_t first, std::span<std::uint8_t> out) const override;
    /// What follows is taken as this says.
    void setMotion(const Motion& motion) { motion_ = motion; }

 private:
    std::shared_ptr<const SensorScene> scene_;
    Motion motion_;
};

}  // namespace virtualboard::imaging
