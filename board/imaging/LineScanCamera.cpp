#include "board/imaging/LineScanCamera.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "board/imaging/Scene.h"
#include "board/imaging/Stages.h"

namespace virtualboard::imaging {
namespace {

// The scene's proportions at another width.
std::uint32_t scaledHeight(const Image& scene, std::uint32_t width) {
    const double rows = std::round(double{1} * scene.height * width / scene.width);
    return static_cast<std::uint32_t>(std::clamp(rows, 1.0, 16777216.0));
}

std::uint8_t channel(Pixel pixel, Colour colour) {
    return colour == Colour::Red ? pixel.red : colour == Colour::Green ? pixel.green : pixel.blue;
}

}  // namespace

SensorScene::SensorScene(const Image& scene, const CameraTraits& camera, std::uint32_t fieldWidth)
    : camera_(camera) {
    checkField(scene, fieldWidth);
    const Image black(1, 1);
    const Image& source = scene.pixels.empty() ? black : scene;
    const std::uint32_t wanted = fieldWidth != 0 ? fieldWidth : source.width;
    width_ = (wanted + 1) / 2 * 2;
    rows_ = wanted == source.width ? source.height : scaledHeight(source, wanted);
    // A large scene is not copied only to be looked at.
    const bool asItIs = source.width == wanted && source.height == rows_;
    const Image scaled = asItIs ? Image() : resize(source, wanted, rows_);
    const Image& seen = asItIs ? source : scaled;
    for (std::uint32_t parity = 0; parity < 2; ++parity) {
        auto& mosaic = mosaic_[parity];
        mosaic.reserve(std::size_t{width_} * rows_);
        for (std::uint32_t y = 0; y < rows_; ++y) {
            for (std::uint32_t x = 0; x < width_; ++x) {
                mosaic.push_back(
                    channel(seen.at(std::min(x, wanted - 1), y), bayerColour(camera.phase, x, parity)));
            }
        }
    }
}

void SensorScene::checkField(const Image& scene, std::uint32_t fieldWidth) {
    if (fieldWidth == 0) return;  // as large as the picture that the caller already holds
    if (fieldWidth > kMaxFieldWidth) {
        throw std::invalid_argument("a scene cannot be spread over " + std::to_string(fieldWidth) +
                                    " sensor pixels: give a field width of at most " +
                                    std::to_string(kMaxFieldWidth));
    }
    const std::uint64_t rows = scene.pixels.empty() ? fieldWidth : scaledHeight(scene, fieldWidth);
    if (rows * fieldWidth > kMaxFieldPixels) {
        throw std::invalid_argument("a scene spread over " + std::to_string(fieldWidth) +
                                    " sensor pixels would have " + std::to_string(rows) +
                                    " rows: give a smaller field width or a less tall picture");
    }
}

void SensorScene::sample(std::uint64_t position, bool oddRow, std::uint32_t first,
                         std::span<std::uint8_t> out) const {
    const std::uint8_t* line = mosaic_[oddRow ? 1 : 0].data() + position % rows_ * width_;
    const std::size_t seen =
        camera_.sensorWidth > first ? std::min<std::size_t>(out.size(), camera_.sensorWidth - first) : 0;
    std::size_t column = first % width_;
    for (std::size_t done = 0; done < seen;) {
        const std::size_t count = std::min(seen - done, width_ - column);
        std::copy_n(line + column, count, out.data() + done);
        done += count;
        column = 0;
    }
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(seen), out.end(), std::uint8_t{0});
}

std::uint64_t Motion::stepOf(double pixels) {
    if (!(pixels > 0)) return 0;  // also when not a number
    // Rounded to the fraction, so that a step meant to be whole is whole after any number of lines.
    return static_cast<std::uint64_t>(std::min(std::round(std::ldexp(pixels, kFractionBits)), 0x1p40));
}

void LineScanCamera::readRow(std::uint64_t row, std::uint32_t first, std::span<std::uint8_t> out) const {
    const std::uint64_t exposure = row / motion_.rowsPerExposure;
    const std::uint64_t position =
        (exposure * motion_.step >> Motion::kFractionBits) + row % motion_.rowsPerExposure;
    scene_->sample(position, row % 2 != 0, first, out);
    if (motion_.gain != 1) expose(out, motion_.gain);
}

}  // namespace virtualboard::imaging
