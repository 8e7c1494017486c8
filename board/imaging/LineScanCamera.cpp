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

// A pixel's channel as it lies in memory.
constexpr std::uint8_t Pixel::*kChannels[] = {&Pixel::blue, &Pixel::green, &Pixel::red};

}  // namespace

SensorScene::SensorScene(const CameraTraits& camera, const Light& light) : camera_(camera), light_(light) {
    if (!camera.faults.none()) response_.emplace(camera);
    const double shares[] = {light.blue, light.green, light.red};
    for (std::size_t colour = 0; colour < std::size(tints_); ++colour) {
        for (std::size_t value = 0; value < tints_[colour].size(); ++value) {
            const double tinted = std::clamp(static_cast<double>(value) * shares[colour], 0.0, 255.0);
            tints_[colour][value] = static_cast<std::uint8_t>(std::lround(tinted));
        }
    }
}

SensorScene::SensorScene(std::shared_ptr<const BeltSurface> belt, const CameraTraits& camera,
                         const Light& light, std::uint32_t rows)
    : SensorScene(camera, light) {
    rows_ = rows;
    belt_ = std::move(belt);
}

SensorScene::SensorScene(const Image& scene, const CameraTraits& camera, std::uint32_t fieldWidth,
                         const Light& light)
    : SensorScene(camera, light) {
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
                const auto colour = static_cast<std::size_t>(bayerColour(camera.phase, x, parity));
                mosaic.push_back(tints_[colour][seen.at(std::min(x, wanted - 1), y).*kChannels[colour]]);
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

void SensorScene::see(const Exposure& exposure, std::uint32_t first, std::span<std::uint8_t> out) const {
    if (!response_) {
        sample(exposure.position >> kBeltBits, exposure.row % 2 != 0, first, out);
        if (exposure.gain != 1) expose(out, exposure.gain);
        return;
    }
    thread_local std::vector<std::uint32_t> light;
    light.assign(out.size(), 0);
    gather(exposure, first, light);
    response_->apply(exposure.row, first, exposure.gain, light, out);
}

/// The mean light that a row sees while the belt moves.
void SensorScene::gather(const Exposure& exposure, std::uint32_t first,
                         std::span<std::uint32_t> light) const {
    constexpr std::int64_t kPixel = std::int64_t{1} << kBeltBits;
    constexpr std::int64_t kMostSamples = 64;  // of a longer way they lie apart
    constexpr unsigned kWeightBits = 8;
    const std::int64_t way = camera_.faults.motionBlur ? std::abs(exposure.way) : 0;
    const std::int64_t begin = exposure.position + (exposure.way < 0 ? -way : 0), end = begin + way;
    thread_local std::vector<std::uint8_t> seen;
    seen.resize(light.size());
    std::uint64_t total = 0;
    const auto add = [&](std::int64_t position, std::uint32_t weight) {
        sample(position >> kBeltBits, exposure.row % 2 != 0, first, seen);
        for (std::size_t i = 0; i < light.size(); ++i) light[i] += seen[i] * weight;
        total += weight;
    };
    if (way >> kBeltBits >= kMostSamples) {
        for (std::int64_t i = 0; i < kMostSamples; ++i) add(begin + way / kMostSamples * i, 1);
    } else {
        // Each belt pixel counts by the part of the way on which it is seen.
        for (std::int64_t at = begin; at < end;) {
            const std::int64_t next = std::min(end, (at >> kBeltBits << kBeltBits) + kPixel);
            const auto weight = static_cast<std::uint32_t>((next - at) >> (kBeltBits - kWeightBits));
            if (weight > 0) add(at, weight);
            at = next;
        }
    }
    if (total == 0) add(begin, 1);
    for (std::uint32_t& pixel : light) {
        pixel = static_cast<std::uint32_t>((std::uint64_t{pixel} << SensorResponse::kLightBits) / total);
    }
}

void SensorScene::sample(std::int64_t position, bool oddRow, std::uint32_t first,
                         std::span<std::uint8_t> out) const {
    const std::size_t seen =
        camera_.sensorWidth > first ? std::min<std::size_t>(out.size(), camera_.sensorWidth - first) : 0;
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(seen), out.end(), std::uint8_t{0});
    if (belt_ != nullptr) return drawn(position, oddRow, first, out.first(seen));
    const std::int64_t rest = position % rows_;
    const auto row = static_cast<std::size_t>(rest < 0 ? rest + rows_ : rest);
    const std::uint8_t* line = mosaic_[oddRow ? 1 : 0].data() + row * width_;
    std::size_t column = first % width_;
    for (std::size_t done = 0; done < seen;) {
        const std::size_t count = std::min(seen - done, width_ - column);
        std::copy_n(line + column, count, out.data() + done);
        done += count;
        column = 0;
    }
}

void SensorScene::drawn(std::int64_t position, bool oddRow, std::uint32_t first,
                        std::span<std::uint8_t> out) const {
    thread_local std::vector<Pixel> colours;
    colours.resize(out.size());
    belt_->row(position, first, colours);
    for (std::uint32_t odd = 0; odd < 2; ++odd) {
        const auto colour = static_cast<std::size_t>(bayerColour(camera_.phase, first + odd, oddRow ? 1 : 0));
        const auto channel = kChannels[colour];
        const Tint& tint = tints_[colour];
        for (std::size_t i = odd; i < out.size(); i += 2) out[i] = tint[colours[i].*channel];
    }
}

std::int64_t Motion::stepOf(double pixels) {
    if (std::isnan(pixels)) return 0;
    // Rounded to the fraction, so that a step meant to be whole is whole after any number of lines.
    return std::llround(std::clamp(std::ldexp(pixels, kBeltBits), -0x1p40, 0x1p40));
}

Exposure Motion::of(std::uint64_t row) const {
    const std::uint64_t line = row / rowsPerExposure, pair = row % rowsPerExposure;
    const auto next = std::ranges::upper_bound(runs, line, {}, &SceneRun::first);
    const SceneRun& run = *(next != runs.begin() ? next - 1 : next);
    const std::uint64_t way = (line - run.first) * static_cast<std::uint64_t>(run.step) + (pair << kBeltBits);
    return {.row = row,
            .position = static_cast<std::int64_t>(static_cast<std::uint64_t>(run.position) + way),
            .way = run.way,
            .gain = run.gain};
}

void LineScanCamera::readRow(std::uint64_t row, std::uint32_t first, std::span<std::uint8_t> out) const {
    scene_->see(motion_.of(row), first, out);
}

}  // namespace virtualboard::imaging
