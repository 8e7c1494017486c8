#pragma once

/// Pictures through the exports, as a host takes them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "marovine/FrameMemory.h"
#include "tests/AppletFixture.h"

namespace marovine::test {

using namespace virtualboard;
using imaging::Image;
using imaging::Pixel;

inline constexpr int kSeconds = 60;  // for what comes sooner or later on a busy machine

/// A scene whose pixels follow from their place.
inline Image sceneOf(std::uint32_t width, std::uint32_t height,
                     const std::function<Pixel(std::uint32_t, std::uint32_t)>& at) {
    Image scene(width, height);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) scene.at(x, y) = at(x, y);
    return scene;
}
constexpr Pixel grey(std::uint32_t value) {
    const auto byte = static_cast<std::uint8_t>(value);
    return {byte, byte, byte};
}
/// Grey values rise by 3 per column: interpolation leaves such a ramp as it is, but for the outermost
/// columns.
inline Image columnRamp(std::uint32_t width) {
    return sceneOf(width, 8, [](auto x, auto) { return grey(3 * x); });
}
/// Every row is as grey as its number says.
inline Image rowRamp(std::uint32_t rows) {
    return sceneOf(64, rows, [](auto, auto y) { return grey(y); });
}

inline Image copyOf(const FrameMemoryPicture& picture) {
    Image copy(picture.width, picture.height);
    std::copy_n(picture.pixels, copy.bytes().size(), copy.bytes().begin());
    return copy;
}

class AcquisitionTest : public AppletTest {
 protected:
    AcquisitionTest() { applet.board().setClockMode(ClockMode::AsFastAsPossible); }

    template <class T>
    void set(const char* name, T value) {
        ASSERT_EQ(0, applet.set(name, value)) << name;
    }
    void set(const char* name, const char* constant) { set(name, constantOf(constant)); }
    void setWindow(std::uint32_t width, std::uint32_t height) {
        set("FG_WIDTH", width);
        set("FG_HEIGHT", height);
    }

    int acquire(const FrameMemory& memory, std::int64_t pictures = -1) {
        return Fg_AcquireEx(applet.record(), 0, pictures, 0, memory.get());
    }
    int stop(const FrameMemory& memory) { return Fg_stopAcquireEx(applet.record(), 0, memory.get(), 0); }
    std::int64_t waitFor(const FrameMemory& memory, std::int64_t picture, int timeout = kSeconds) {
        return Fg_getLastPicNumberBlockingEx(applet.record(), picture, 0, timeout, memory.get());
    }
    std::int64_t status(const FrameMemory& memory, int parameter, std::int64_t data = 0) {
        return Fg_getStatusEx(applet.record(), parameter, data, 0, memory.get());
    }

    /// The first picture of an acquisition.
    Image take() {
        const FrameMemory memory(1, std::size_t{64} * 64 * 3);
        EXPECT_EQ(0, acquire(memory, 1));
        EXPECT_EQ(1, waitFor(memory, 1));
        const Image picture = copyOf(memory.picture(1));
        EXPECT_EQ(0, stop(memory));
        return picture;
    }
    std::int32_t read(const char* name) { return applet.get<std::int32_t>(name); }
};

/// Every `lines` lines a picture of 64 pixels' width, on a clock that stands still.
class ManualClockTest : public AcquisitionTest {
 protected:
    ManualClockTest() {
        applet.board().setClockManual();
        applet.board().setScene(rowRamp(256));
        setWindow(64, 100);
    }
    void pass(int lines) { applet.board().advanceClock(lines * 200e-6); }
};

}  // namespace marovine::test
