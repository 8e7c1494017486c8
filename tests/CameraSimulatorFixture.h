#pragma once

/// What the tests of the camera simulator share.

#include <map>
#include <string>

#include "tests/AppletFixture.h"

namespace marovine::test {

// What one step of a setting writes; names are given without "CameraSimulator_".
inline Writes widthWrites(int words, int imageWords) {
    return {{"Size_ImageWidth", std::to_string(words)}, {"LineGap_Number", std::to_string(imageWords)}};
}
inline Writes heightWrites(int lines, int imageLines) {
    return {{"Size_ImageHeight", std::to_string(lines)}, {"FrameGap_Number", std::to_string(imageLines)}};
}
inline Writes sequenceWrites(int cycles) {
    return {{"PixelFrequency_SequenceLength_ImageWidth", std::to_string(cycles)},
            {"PixelFrequency_ActivePixel_Number", "1"}};
}
inline Writes pixelWrites(int active, int divisor) {
    return {{"PixelFrequency_ActivePixel_Number", std::to_string(active)},
            {"PixelFrequency_RepeatPat_Divisor", std::to_string(divisor)},
            {"PixelFrequency_SequenceLength_ImageWidth", "2000"}};
}
inline Writes clockMode(int mode) {
    return {{"ControlPixelClock_Mode", std::to_string(mode)}};
}

enum SpeedMode : std::int32_t { PixelFrequency, LineRate, FrameRate };

/// Speaks of the simulator's parameters by the part after "FG_CAMERASIMULATOR_".
class CameraSimulatorTest : public AppletTest {
 protected:
    static std::string full(std::string_view name) { return "FG_CAMERASIMULATOR_" + std::string(name); }
    static bool isRate(std::string_view name) {
        return name == "PIXEL_FREQUENCY" || name == "LINERATE" || name == "FRAMERATE";
    }

    int set(std::string_view name, double value) {
        if (isRate(name)) return applet.set(full(name), value);
        return applet.set(full(name), static_cast<std::uint32_t>(value));
    }
    double read(std::string_view name) {
        if (isRate(name)) return applet.get<double>(full(name));
        return applet.get<std::uint32_t>(full(name));
    }
    double maximum(std::string_view name) {
        const auto& range = applet.node(full(name)).value;
        return isRate(name) ? range.real.maximum : range.uint32.maximum;
    }
    int access(std::string_view name) { return applet.node(full(name)).accessFlags; }

    void arrange(std::initializer_list<std::pair<const char*, double>> settings) {
        for (const auto& [name, value] : settings) ASSERT_EQ(0, set(name, value)) << name << " = " << value;
        applet.takeWrites();
    }
    Writes takeWrites() {
        auto writes = applet.takeWrites();
        const std::string prefix = "CameraSimulator_";
        for (auto& write : writes)
            if (write.name.starts_with(prefix)) write.name.erase(0, prefix.size());
        return writes;
    }
    void expectMaxima(const std::map<std::string, double>& expected) {
        for (const auto& [name, value] : expected) EXPECT_EQ(value, maximum(name)) << name;
    }
    void expectRefused(std::string_view name, double value) {
        SCOPED_TRACE(full(name) + " = " + std::to_string(value));
        const double before = read(name);
        EXPECT_EQ(error::outOfRange, set(name, value));
        EXPECT_EQ(before, read(name));
        EXPECT_THAT(takeWrites(), testing::IsEmpty());
    }
};

}  // namespace marovine::test
