/// White balance, Bayer phase, line sampling and image selector.

#include <array>
#include <cmath>

#include "tests/LoadedValue.h"

namespace marovine::test {
namespace {

constexpr int kRefusal = -777;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ColourPathTest : public AppletTest {
 protected:
    /// The writes of the Bayer phase.
    static auto phaseWrites(int mode, int phase, int pattern) {
        return ElementsAre(DesignWrite{"DeBayerEnhancedRAW_Mode_Mode_Value", std::to_string(mode)},
                           DesignWrite{"DeBayerRAW_Bayer_BayerInit", std::to_string(phase)},
                           DesignWrite{"WhiteBalance_White_BayerInit", std::to_string(pattern)});
    }
};

TEST_F(ColourPathTest, GainsReachTheirChannel) {
    struct Channel {
        const char* name;
        const char* coefficient;
    };
    for (const auto& [name, coefficient] :
         {Channel{"FG_SCALINGFACTOR_RED", "WhiteBalance_White_RedCoefficient"},
          Channel{"FG_SCALINGFACTOR_GREEN", "WhiteBalance_White_GreenCoefficient"},
          Channel{"FG_SCALINGFACTOR_BLUE", "WhiteBalance_White_BlueCoefficient"}}) {
        for (const double gain : {0.0, 1.25, 3.9990234375}) {
            EXPECT_EQ(0, applet.set(name, gain));
            EXPECT_EQ(gain, applet.get<double>(name));
        }
        EXPECT_THAT(applet.takeWrites(),
                    ElementsAre(DesignWrite{coefficient, "0"}, DesignWrite{coefficient, "1.25"},
                                DesignWrite{coefficient, "3.9990234375"}));
        for (const double gain : {-0.0009765625, 4.0, double{INFINITY}})
            EXPECT_EQ(error::outOfRange, applet.set(name, gain));
        EXPECT_THAT(applet.takeWrites(), IsEmpty());
        // What is no number lies outside no range: the design's answer decides.
        EXPECT_GT(0, applet.set(name, double{NAN}));
        EXPECT_THAT(applet.takeWrites(), SizeIs(1));
        EXPECT_EQ(3.9990234375, applet.get<double>(name));
    }
}

TEST_F(ColourPathTest, PhaseFollowsTheFirstPixelFromTheLeft) {
    struct Offset {
        const char* x;
        const char* y;
        std::array<int, 4> phases;  // by pattern
    };
    // No setter accepts an odd offset, but a configuration file can leave one.
    for (const auto& [x, y, phases] : {Offset{"0", "0", {0, 1, 2, 3}}, Offset{"1", "0", {1, 0, 3, 2}},
                                       Offset{"0", "1", {2, 3, 0, 1}}, Offset{"1", "1", {3, 2, 1, 0}}}) {
        SCOPED_TRACE(std::string("offset ") + x + ", " + y);
        loadValue(applet, "FG_XOFFSET", x);
        loadValue(applet, "FG_YOFFSET", y);
        for (int pattern = 0; pattern < 4; ++pattern) {
            constexpr std::array<int, 4> modes{2, 1, 0, 3};
            EXPECT_EQ(0, applet.set("FG_BAYERINIT", pattern));
            const int phase = phases[static_cast<std::size_t>(pattern)];
            EXPECT_THAT(applet.takeWrites(),
                        phaseWrites(modes[static_cast<std::size_t>(phase)], phase, pattern));
        }
    }
}

TEST_F(ColourPathTest, PhaseFollowsTheFirstPixelFromTheRight) {
    struct Case {
        std::uint32_t sensorWidth;
        std::uint32_t xOffset;
        int pattern;
        int mode;
        int phase;
    };
    ASSERT_EQ(0, applet.set("FG_SENSORWIDTH", 2048U));
    ASSERT_EQ(0, applet.set("FG_VANTAGEPOINT", 1));
    for (const auto& [sensorWidth, xOffset, pattern, mode, phase] :
         {Case{2048, 8, 2, 3, 3}, Case{2048, 8, 0, 1, 1}, Case{2047, 0, 2, 0, 2}, Case{2047, 0, 1, 1, 1}}) {
        ASSERT_EQ(0, applet.set("FG_SENSORWIDTH", sensorWidth));
        ASSERT_EQ(0, applet.set("FG_XOFFSET", xOffset));
        applet.takeWrites();
        EXPECT_EQ(0, applet.set("FG_BAYERINIT", pattern));
        EXPECT_THAT(applet.takeWrites(), phaseWrites(mode, phase, pattern)) << sensorWidth << ' ' << xOffset;
    }
}

TEST_F(ColourPathTest, WindowKeepsThePatternThatTheDesignWasLastGiven) {
    for (const std::int32_t unknown : {-1, 4})
        EXPECT_EQ(error::outOfRange, applet.set("FG_BAYERINIT", unknown));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
    // A failed write puts the cached value back, but the stages have begun to change over.
    applet.board().refuseNthWrite(2, kRefusal);
    EXPECT_EQ(kRefusal, applet.set("FG_BAYERINIT", 1));
    EXPECT_EQ(2, applet.get<std::int32_t>("FG_BAYERINIT"));
    applet.takeWrites();
    EXPECT_EQ(0, applet.set("FG_SENSORWIDTH", 2048U));
    EXPECT_THAT(applet.takeWrites(), testing::Contains(DesignWrite{"WhiteBalance_White_BayerInit", "1"}));
}

TEST_F(ColourPathTest, SamplingRateGoesThroughHeightAndOffset) {
    ASSERT_EQ(0, applet.set("FG_HEIGHT", 1000U));
    ASSERT_EQ(0, applet.set("FG_YOFFSET", 10U));
    applet.takeWrites();
    const auto namesAndValues = [&](int height, int offset) {
        std::vector<DesignWrite> all;
        const std::string h = std::to_string(height);
        const std::vector<DesignWrite> trigger{{"Trigger_Trigger_YOffset", "0"},
                                               {"Trigger_Trigger_YLength", h},
                                               {"Trigger_Trigger_YOffset", std::to_string(offset)},
                                               {"ImageHeight_ImageHeight", h}};
        all.push_back({"Buffer_0_DRAM_A_0_YLength", "1000"});
        for (int i = 0; i < 2; ++i) all.insert(all.end(), trigger.begin(), trigger.end());
        return all;
    };
    for (const auto& [rate, height, offset] : {std::tuple{1, 500, 5}, std::tuple{2, 1000, 10}}) {
        EXPECT_EQ(0, applet.set("FG_SAMPLING_RATE", rate));
        auto writes = applet.takeWrites();
        EXPECT_THAT(writes, SizeIs(2 * 11 + 9));
        std::erase_if(writes, [](const DesignWrite& write) {
            return write.name.find("TapGeometrySorter") != std::string::npos ||
                   write.name.find("Bayer") != std::string::npos;
        });
        EXPECT_THAT(writes, testing::ElementsAreArray(namesAndValues(height, offset)));
    }
    for (const std::int32_t unknown : {0, 3})
        EXPECT_EQ(error::outOfRange, applet.set("FG_SAMPLING_RATE", unknown));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
}

TEST_F(ColourPathTest, SamplingRateFailsWithTheCodeOfTheHeight) {
    loadValue(applet, "FG_HEIGHT", "1001");
    EXPECT_EQ(error::wrongStep, applet.set("FG_SAMPLING_RATE", 1));
    EXPECT_EQ(2, applet.get<std::int32_t>("FG_SAMPLING_RATE"));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
}

TEST_F(ColourPathTest, SelectedImageLiesWithinThePeriod) {
    struct Case {
        const char* name;
        std::uint32_t value;
        int code;
    };
    const auto design = [](const char* name) {
        return std::string_view(name) == "FG_IMG_SELECT" ? "ImageSelector_FG_IMG_SELECT_PHASE_Number"
                                                         : "ImageSelector_FG_IMG_SELECT_PERIOD_Divisor";
    };
    // Each case starts from what the ones above have left.
    const Case cases[] = {
        {"FG_IMG_SELECT", 1, error::outOfRange},
        {"FG_IMG_SELECT_PERIOD", 0, error::outOfRange},
        {"FG_IMG_SELECT_PERIOD", 257, error::outOfRange},
        {"FG_IMG_SELECT_PERIOD", 256, 0},
        {"FG_IMG_SELECT", 256, error::outOfRange},
        {"FG_IMG_SELECT", 255, 0},
        {"FG_IMG_SELECT_PERIOD", 255, error::outOfRange},
        {"FG_IMG_SELECT", 5, 0},
        {"FG_IMG_SELECT_PERIOD", 4, error::outOfRange},
        {"FG_IMG_SELECT_PERIOD", 5, error::outOfRange},
        {"FG_IMG_SELECT_PERIOD", 6, 0},
        {"FG_IMG_SELECT", 6, error::outOfRange},
    };
    for (const auto& [name, value, code] : cases) {
        SCOPED_TRACE(std::string(name) + " = " + std::to_string(value));
        const auto before = applet.get<std::uint32_t>(name);
        EXPECT_EQ(code, applet.set(name, value));
        EXPECT_EQ(code == 0 ? value : before, applet.get<std::uint32_t>(name));
        if (code == 0)
            EXPECT_THAT(applet.takeWrites(), ElementsAre(DesignWrite{design(name), std::to_string(value)}));
        else
            EXPECT_THAT(applet.takeWrites(), IsEmpty());
    }
}

}  // namespace
}  // namespace marovine::test
