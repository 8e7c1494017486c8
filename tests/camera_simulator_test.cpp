/// The camera simulator in its three speed modes: what each setting writes, and what the reads give.

#include <array>
#include <cmath>

#include "tests/CameraSimulatorFixture.h"

namespace marovine::test {
namespace {

using testing::ElementsAreArray;

// ---- pattern and source ----

TEST_F(CameraSimulatorTest, PatternSettingsWriteTheirList) {
    struct Case {
        const char* name;
        int value;
        Writes writes;
    };
    const Case cases[] = {
        {"ENABLE", 1, {{"Enable_SelectSource", "1"}}},
        {"ENABLE", 0, {{"Enable_SelectSource", "0"}}},
        {"PATTERN", 1, {{"EnableX_Enable_Value", "1"}, {"Y_Divisor", "1"}}},
        {"PATTERN", 2, {{"EnableX_Enable_Value", "0"}, {"Y_Divisor", "256"}}},
        {"PATTERN", 3, {{"EnableX_Enable_Value", "1"}, {"Y_Divisor", "256"}}},
        {"PATTERN_OFFSET", 255, {{"Offset_Value", "255"}}},
        {"ROLL", 0, {{"Frame_Divisor", "1"}}},
        {"ROLL", 1, {{"Frame_Divisor", "256"}}},
        {"TRIGGER_MODE", 8, {{"TriggerValve_FreeRun_Select", "0"}, {"TriggerValve_TriggerValve_Mode", "1"}}},
        {"TRIGGER_MODE", 9, {{"TriggerValve_FreeRun_Select", "0"}, {"TriggerValve_TriggerValve_Mode", "2"}}},
        {"TRIGGER_MODE", 0, {{"TriggerValve_FreeRun_Select", "1"}, {"TriggerValve_TriggerValve_Mode", "2"}}},
    };
    for (const auto& [name, value, writes] : cases) {
        EXPECT_EQ(0, set(name, value)) << name;
        EXPECT_THAT(takeWrites(), ElementsAreArray(writes)) << name << " = " << value;
        EXPECT_EQ(value, read(name));
    }
    for (const auto& [name, value] :
         {std::pair{"ENABLE", 2}, std::pair{"PATTERN", 0}, std::pair{"PATTERN", 4},
          std::pair{"PATTERN_OFFSET", 256}, std::pair{"ROLL", 2}, std::pair{"TRIGGER_MODE", 1},
          std::pair{"SELECT_MODE", 3}})
        expectRefused(name, value);
}

// ---- speed modes ----

TEST_F(CameraSimulatorTest, SpeedModeAppliesItsSpeedAgain) {
    struct Case {
        SpeedMode mode;
        Writes writes;
        std::array<int, 5> access;  // pixel frequency, line rate, frame rate, line gap, frame gap
    };
    const Writes sizes = joined({widthWrites(128, 128), heightWrites(1024, 1024)});
    const Case cases[] = {
        {LineRate,
         joined({clockMode(1), sizes, sequenceWrites(12207), widthWrites(128, 128)}),
         {1, 7, 1, 1, 7}},
        // The frame rate that the line rate has given.
        {FrameRate, joined({clockMode(1), sizes, sequenceWrites(12207), sizes}), {1, 1, 7, 1, 1}},
        {PixelFrequency, joined({clockMode(0), sizes, pixelWrites(80, 25)}), {7, 1, 1, 7, 7}},
    };
    for (const auto& [mode, writes, flags] : cases) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(0, set("SELECT_MODE", mode));
        EXPECT_THAT(takeWrites(), ElementsAreArray(writes));
        const std::array<int, 5> found{access("PIXEL_FREQUENCY"), access("LINERATE"), access("FRAMERATE"),
                                       access("LINE_GAP"), access("FRAME_GAP")};
        EXPECT_EQ(flags, found);
    }
}

TEST_F(CameraSimulatorTest, RequestedGapsOutliveTheSpeedModesThatDropThem) {
    arrange({{"SELECT_MODE", PixelFrequency}});
    EXPECT_EQ(0, set("LINE_GAP", 3));
    EXPECT_THAT(takeWrites(), ElementsAreArray(widthWrites(129, 128)));
    EXPECT_EQ(0, set("WIDTH", 1001));
    EXPECT_THAT(takeWrites(), ElementsAreArray(widthWrites(127, 126)));
    EXPECT_EQ(1008, read("WIDTH"));
    EXPECT_EQ(8, read("LINE_GAP"));
    EXPECT_EQ(0, set("FRAME_GAP", 100));
    EXPECT_THAT(takeWrites(), ElementsAreArray(heightWrites(1124, 1024)));
    EXPECT_EQ(100, read("FRAME_GAP"));

    const Writes sizes = joined({widthWrites(127, 126), heightWrites(1124, 1024)});
    EXPECT_EQ(0, set("SELECT_MODE", LineRate));
    EXPECT_THAT(
        takeWrites(),
        ElementsAreArray(joined({clockMode(1), sizes, sequenceWrites(12207), widthWrites(126, 126)})));
    EXPECT_EQ(0, read("LINE_GAP"));
    EXPECT_EQ(100, read("FRAME_GAP"));
    EXPECT_EQ(9.110343607177143, read("FRAMERATE"));

    EXPECT_EQ(0, set("SELECT_MODE", FrameRate));
    EXPECT_THAT(takeWrites(), ElementsAreArray(joined({clockMode(1), sizes, sequenceWrites(13399),
                                                       widthWrites(126, 126), heightWrites(1024, 1024)})));
    EXPECT_EQ(0, read("LINE_GAP"));
    EXPECT_EQ(0, read("FRAME_GAP"));

    EXPECT_EQ(0, set("SELECT_MODE", PixelFrequency));
    EXPECT_EQ(8, read("LINE_GAP"));
    EXPECT_EQ(100, read("FRAME_GAP"));
}

TEST_F(CameraSimulatorTest, SpeedGoesOnWhenItsModeIsAppliedAgain) {
    struct Case {
        std::vector<std::pair<const char*, double>> settings;
        SpeedMode mode;
        int sequence;
    };
    const Case cases[] = {
        {{{"SELECT_MODE", FrameRate}, {"FRAMERATE", 500}}, FrameRate, 244},
        {{{"SELECT_MODE", PixelFrequency}}, FrameRate, 3200},
        {{}, LineRate, 12207},
        // A line that has become too long for its rate gets the highest rate that it allows.
        {{{"LINERATE", 900000}, {"SELECT_MODE", PixelFrequency}, {"WIDTH", 2048}}, LineRate, 257},
    };
    for (const auto& [settings, mode, sequence] : cases) {
        for (const auto& [name, value] : settings) ASSERT_EQ(0, set(name, value)) << name;
        takeWrites();
        EXPECT_EQ(0, set("SELECT_MODE", mode));
        EXPECT_THAT(takeWrites(), testing::Contains(sequenceWrites(sequence)[0])) << sequence;
    }
}

// ---- speeds ----

TEST_F(CameraSimulatorTest, PixelFrequencyBecomesTheActivePartOfASequence) {
    arrange({{"SELECT_MODE", PixelFrequency}});
    struct Case {
        double frequency;
        int active;
        int divisor;
        double reached;
    };
    for (const auto& [frequency, active, divisor, reached] :
         {Case{40.0, 80, 25, 40.0}, Case{0.3, 1, 2000, 0.5}, Case{0.25, 1, 2000, 0.5},
          Case{0.75, 2, 1000, 1.0}, Case{333.3, 667, 2, 333.5}, Case{1000.0, 2000, 1, 999.9999999999999}}) {
        EXPECT_EQ(0, set("PIXEL_FREQUENCY", frequency));
        EXPECT_THAT(takeWrites(), ElementsAreArray(pixelWrites(active, divisor))) << frequency;
        EXPECT_EQ(reached, read("PIXEL_FREQUENCY"));
        EXPECT_EQ(active, read("ACTIVE"));
        EXPECT_EQ(2000 - active, read("PASSIVE"));
    }
    // Without an active part, or with one beyond the sequence, there is no pattern to repeat.
    for (const double frequency : {0.0, 0.2499, 1000.25, 4000.0, 4000.1, -1.0, double{NAN}, double{INFINITY}})
        expectRefused("PIXEL_FREQUENCY", frequency);
}

TEST_F(CameraSimulatorTest, LineRateBecomesTheLengthOfASequence) {
    struct Case {
        double rate;
        int sequence;
        double reached;
    };
    const double highest = 968992.2480620154;  // at a width of 1024 pixels
    for (const auto& [rate, sequence, reached] :
         {Case{10240.0, 12207, 10240.026214467109}, Case{0.1, 1250000000, 0.1},
          Case{highest, 129, 968992.2480620155}}) {
        EXPECT_EQ(0, set("LINERATE", rate));
        EXPECT_THAT(takeWrites(),
                    ElementsAreArray(joined({sequenceWrites(sequence), widthWrites(128, 128)})));
        EXPECT_EQ(reached, read("LINERATE"));
    }
    for (const double rate : {0.0, 0.0999, std::nextafter(highest, 1e9), -1.0, double{NAN}, double{INFINITY}})
        expectRefused("LINERATE", rate);
}

TEST_F(CameraSimulatorTest, FrameRateBecomesTheLengthOfEachLine) {
    arrange({{"SELECT_MODE", FrameRate}});
    struct Case {
        double rate;
        int sequence;
        double reached;
    };
    const double highest = 946.2814922480619;  // at 1024 by 1024 pixels
    for (const auto& [rate, sequence, reached] :
         {Case{10.0, 12207, 10.000025600065536}, Case{0.1, 1220703, 0.10000001024000105},
          Case{highest, 129, 946.281492248062}}) {
        EXPECT_EQ(0, set("FRAMERATE", rate));
        EXPECT_THAT(takeWrites(), ElementsAreArray(joined({sequenceWrites(sequence), widthWrites(128, 128),
                                                           heightWrites(1024, 1024)})));
        EXPECT_EQ(reached, read("FRAMERATE"));
    }
    for (const double rate : {0.0, 0.0999, std::nextafter(highest, 1e9), -1.0, double{NAN}, double{INFINITY}})
        expectRefused("FRAMERATE", rate);
}

TEST_F(CameraSimulatorTest, ReadsFollowTheSpeedMode) {
    struct Case {
        SpeedMode mode;
        double pixelFrequency, lineRate, frameRate;
        std::uint32_t active, passive;  // 7: left alone
    };
    for (const auto& [mode, pixelFrequency, lineRate, frameRate, active, passive] :
         {Case{LineRate, 999.9999999999999, 10240.026214467109, 10.000025600065536, 7, 7},
          Case{FrameRate, 999.9999999999999, 976562.4999999999, 10.000025600065536, 7, 7},
          Case{PixelFrequency, 40.0, 39062.5, 38.14697265625, 80, 1920}}) {
        SCOPED_TRACE(mode);
        arrange({{"SELECT_MODE", mode}});
        EXPECT_EQ(pixelFrequency, read("PIXEL_FREQUENCY"));
        EXPECT_EQ(lineRate, read("LINERATE"));
        EXPECT_EQ(frameRate, read("FRAMERATE"));
        for (const auto& [name, expected] : {std::pair{"ACTIVE", active}, std::pair{"PASSIVE", passive}}) {
            std::uint32_t value = 7;
            EXPECT_EQ(0, Fg_getParameterWithType(applet.record(), OpenApplet::idOf(full(name)), &value, 0,
                                                 FG_TYPE_UINT32));
            EXPECT_EQ(expected, value) << name;
        }
    }
    // Both gaps slow a pixel-frequency picture down.
    arrange({{"WIDTH", 1001}, {"LINE_GAP", 3}, {"FRAME_GAP", 100}});
    EXPECT_EQ(39370.07874015748, read("LINERATE"));
    EXPECT_EQ(35.02676044497996, read("FRAMERATE"));
}

}  // namespace
}  // namespace marovine::test
