#pragma once

/// What tests of the image path begin with: small windows, scenes and pictures of them.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <vector>

#include "board/imaging/FrameRenderer.h"
#include "board/imaging/Scene.h"

namespace virtualboard::imaging {

inline void PrintTo(const Pixel& pixel, std::ostream* out) {
    *out << "(b " << +pixel.blue << ", g " << +pixel.green << ", r " << +pixel.red << ")";
}

using Change = std::function<void(DesignSettings&)>;
using Bytes = std::vector<std::uint8_t>;

/// Settings of a small window.
inline DesignSettings windowOf(std::uint32_t width, std::uint32_t height) {
    DesignSettings settings;
    settings.tapWidth = settings.xLength = width;
    settings.yLength = settings.triggerYLength = settings.imageHeight = height;
    return settings;
}

/// The sorter's settings for one tap, or for eight, looked at from the right.
inline void lookFromTheRight(DesignSettings& settings, std::uint32_t sensorWidth, std::uint32_t taps = 1) {
    settings.tapWidth = sensorWidth / taps;
    settings.tapCount = taps == 1 ? 1 : 10;
    settings.dummyTaps = taps != 1;
    settings.translateVantagePoint = 1;
    for (std::uint32_t tap = 0; tap < taps; ++tap) {
        settings.tapOrder[tap] = taps - 1 - tap;
        settings.tapMirror[tap] = 1;
    }
    settings.deBayerPhase ^= 1 ^ (sensorWidth & 1);
    settings.deBayerMode = phaseOfMode(settings.deBayerPhase);  // the coding is its own inverse
}

inline Image take(const DesignSettings& settings, const Image& scene = testChart(),
                  const CameraTraits& camera = {}, const Belt& belt = {}, std::uint64_t firstLine = 0) {
    FrameRenderer renderer(std::make_shared<SensorScene>(scene, camera));
    renderer.configure(settings);
    Image picture(renderer.width(), settings.yLength, {1, 2, 3});
    const double step = belt.speed * settings.exsyncPeriod * 1e-6 / belt.objectPixel;
    const double exposure = exposureTime(settings, settings.exsyncPeriod) / camera.neutralExposure;
    const Motion motion{{SceneRun{.step = Motion::stepOf(step), .gain = exposureGain(exposure)}},
                        rowsPerTrigger(settings)};
    EXPECT_EQ(
        renderer.render({0, firstLine, settings.imageHeight, settings.yLength}, motion, picture.bytes()),
        picture.height);
    return picture;
}

/// A scene whose pixel (x, y) is grey (10 x + y).
inline Image numberedScene(std::uint32_t width, std::uint32_t height) {
    Image scene(width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto value = static_cast<std::uint8_t>(10 * x + y);
            scene.at(x, y) = {value, value, value};
        }
    }
    return scene;
}

inline Bytes rawRow(const LineSource& source, std::uint64_t row, std::uint32_t first, std::size_t count) {
    Bytes line(count, 99);
    source.readRow(row, first, line);
    return line;
}

}  // namespace virtualboard::imaging
