/// The camera simulator in its three speed modes: writes, limits, reads, and what a failure leaves behind.

#include <array>
#include <cmath>
#include <limits>
#include <map>

#include "tests/LoadedValue.h"

namespace marovine::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

using Writes = std::vector<DesignWrite>;

constexpr int kRefusal = -777;

constexpr const char* kSequence = "Device1_Process0_CameraSimulator_PixelFrequency_SequenceLength_ImageWidth";

// What one step of a setting writes; names are given without "CameraSimulator_".
Writes widthWrites(int words, int imageWords) {
    return {{"Size_ImageWidth", std::to_string(words)}, {"LineGap_Number", std::to_string(imageWords)}};
}
Writes heightWrites(int lines, int imageLines) {
    return {{"Size_ImageHeight", std::to_string(lines)}, {"FrameGap_Number", std::to_string(imageLines)}};
}
Writes sequenceWrites(int cycles) {
    return {{"PixelFrequency_SequenceLength_ImageWidth", std::to_string(cycles)},
            {"PixelFrequency_ActivePixel_Number", "1"}};
}
Writes pixelWrites(int active, int divisor) {
    return {{"PixelFrequency_ActivePixel_Number", std::to_string(active)},
            {"PixelFrequency_RepeatPat_Divisor", std::to_string(divisor)},
            {"PixelFrequency_SequenceLength_ImageWidth", "2000"}};
}
Writes clockMode(int mode) {
    return {{"ControlPixelClock_Mode", std::to_string(mode)}};
}
Writes joined(std::initializer_list<Writes> parts) {
    Writes all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
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
    void expectRefused(std::string_view name, double value, int code = error::outOfRange) {
        SCOPED_TRACE(full(name) + " = " + std::to_string(value));
        const double before = read(name);
        EXPECT_EQ(code, set(name, value));
        EXPECT_EQ(before, read(name));
        EXPECT_THAT(takeWrites(), IsEmpty());
    }
};

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

// ---- limits ----

TEST_F(CameraSimulatorTest, SizesShareTheirLimitInPixelFrequencyMode) {
    arrange({{"SELECT_MODE", PixelFrequency}});
    expectMaxima({{"WIDTH", 65536}, {"LINE_GAP", 64512}, {"HEIGHT", 65536}, {"FRAME_GAP", 64512}});
    EXPECT_EQ(0, set("LINE_GAP", 9));
    EXPECT_EQ(0, set("FRAME_GAP", 9));
    expectMaxima({{"WIDTH", 65520}, {"HEIGHT", 65527}});
    EXPECT_EQ(0, set("WIDTH", 1001));
    EXPECT_EQ(0, set("HEIGHT", 1001));
    expectMaxima({{"LINE_GAP", 64528},
                  {"FRAME_GAP", 64535},
                  {"LINERATE", 999999999.9999999 / 1016.0},
                  {"FRAMERATE", 999999999.9999999 / (1016.0 * 1001)}});
    takeWrites();
    for (const auto& [name, value] :
         {std::pair{"WIDTH", 0U}, std::pair{"WIDTH", 65521U}, std::pair{"WIDTH", 0xFFFFFFFFU},
          std::pair{"LINE_GAP", 64529U}, std::pair{"LINE_GAP", 0xFFFFFFFFU}, std::pair{"HEIGHT", 0U},
          std::pair{"HEIGHT", 65528U}, std::pair{"HEIGHT", 0xFFFFFFFFU}, std::pair{"FRAME_GAP", 64536U},
          std::pair{"FRAME_GAP", 0xFFFFFFFFU}})
        expectRefused(name, value);
    EXPECT_EQ(0, set("LINE_GAP", 64528));
    EXPECT_EQ(0, set("FRAME_GAP", 64535));
    EXPECT_THAT(takeWrites(), ElementsAreArray(joined({widthWrites(8192, 126), heightWrites(65536, 1001)})));
    EXPECT_EQ(0, set("LINE_GAP", 0));
    EXPECT_EQ(0, set("FRAME_GAP", 0));
    EXPECT_EQ(0, set("WIDTH", 65536));
    EXPECT_EQ(0, set("HEIGHT", 65536));
    expectMaxima({{"LINE_GAP", 0}, {"FRAME_GAP", 0}, {"FRAMERATE", 999999999.9999999 / (65544.0 * 65536.0)}});
}

TEST_F(CameraSimulatorTest, LineRateLimitsTheWidth) {
    expectMaxima({{"WIDTH", 65536}, {"LINE_GAP", 64512}, {"HEIGHT", 65536}, {"FRAME_GAP", 0}});
    arrange({{"LINERATE", 968992.2480620154}});
    expectMaxima({{"WIDTH", 1023}, {"LINE_GAP", 0}});
    expectRefused("WIDTH", 1024);
    expectRefused("FRAME_GAP", 1);
    arrange({{"WIDTH", 1016}});
    expectMaxima({{"LINE_GAP", 7},
                  {"HEIGHT", 65536},
                  {"LINERATE", 976562.4999999999},
                  {"FRAMERATE", 953.6743164062499}});
    expectRefused("LINE_GAP", 8);
    // A gap is accepted but reads as none, and the next width drops it.
    EXPECT_EQ(0, set("LINE_GAP", 7));
    EXPECT_THAT(takeWrites(), ElementsAreArray(widthWrites(128, 127)));
    EXPECT_EQ(0, read("LINE_GAP"));
    EXPECT_EQ(0, set("WIDTH", 8));
    EXPECT_THAT(takeWrites(), ElementsAreArray(widthWrites(1, 1)));
}

TEST_F(CameraSimulatorTest, FrameRateLimitsWidthAndHeight) {
    arrange({{"SELECT_MODE", FrameRate}, {"FRAMERATE", 500.0}});
    expectMaxima({{"WIDTH", 1944}, {"HEIGHT", 1936}, {"LINE_GAP", 0}, {"FRAME_GAP", 0}});
    for (const auto& [name, value] : {std::pair{"WIDTH", 1945}, std::pair{"HEIGHT", 1937},
                                      std::pair{"LINE_GAP", 1}, std::pair{"FRAME_GAP", 1}})
        expectRefused(name, value);
    // The frame rate stays: each of more lines gets a shorter sequence.
    EXPECT_EQ(0, set("HEIGHT", 1936));
    EXPECT_THAT(takeWrites(), ElementsAreArray(joined({heightWrites(1936, 1936), sequenceWrites(129),
                                                       widthWrites(128, 128), heightWrites(1936, 1936)})));
    expectMaxima({{"WIDTH", 1024}, {"HEIGHT", 1936}, {"FRAMERATE", 500.51252482542117}});
    EXPECT_EQ(500.51252482542117, read("FRAMERATE"));
}

// ---- failures ----

TEST_F(CameraSimulatorTest, HeightIsPutBackWhenItsFrameRateFails) {
    arrange({{"SELECT_MODE", FrameRate}});
    for (unsigned failing = 1; failing <= 8; ++failing) {
        applet.board().refuseNthWrite(failing, kRefusal);
        EXPECT_EQ(kRefusal, set("HEIGHT", 512));
        EXPECT_THAT(takeWrites(), SizeIs(failing));
        EXPECT_EQ(1024, read("HEIGHT"));
    }
}

TEST_F(CameraSimulatorTest, FailedWriteKeepsTheRequestButNotTheEffect) {
    struct Case {
        SpeedMode mode;
        const char* name;
        double value;
        unsigned failing;
        DesignWrite kept;  // when the speed mode is applied again
    };
    const Case cases[] = {
        {PixelFrequency, "LINE_GAP", 16, 2, {"Size_ImageWidth", "128"}},
        {PixelFrequency, "FRAME_GAP", 16, 2, {"Size_ImageHeight", "1024"}},
        {PixelFrequency, "PIXEL_FREQUENCY", 20, 3, {"PixelFrequency_ActivePixel_Number", "80"}},
        {LineRate, "LINERATE", 100, 4, {"PixelFrequency_SequenceLength_ImageWidth", "12207"}},
    };
    for (const auto& [mode, name, value, failing, kept] : cases) {
        SCOPED_TRACE(name);
        arrange({{"SELECT_MODE", mode}});
        applet.board().refuseNthWrite(failing, kRefusal);
        EXPECT_EQ(kRefusal, set(name, value));
        EXPECT_EQ(value, std::round(read(name)));
        takeWrites();
        EXPECT_EQ(0, set("SELECT_MODE", mode));
        EXPECT_THAT(takeWrites(), testing::Contains(kept));
    }
    // The frame rate is applied again with every height.
    arrange({{"SELECT_MODE", FrameRate}, {"FRAMERATE", 20}});
    applet.board().refuseNthWrite(6, kRefusal);
    EXPECT_EQ(kRefusal, set("FRAMERATE", 40));
    takeWrites();
    EXPECT_EQ(0, set("HEIGHT", 1000));
    EXPECT_THAT(takeWrites(), testing::Contains(sequenceWrites(6250)[0]));
}

TEST_F(CameraSimulatorTest, FailedReadBackRefusesChecksButNotRanges) {
    applet.board().refuseReads(kSequence, kRefusal);
    EXPECT_EQ(kRefusal, set("WIDTH", 512));
    EXPECT_EQ(kRefusal, set("LINE_GAP", 8));
    EXPECT_THAT(takeWrites(), IsEmpty());
    EXPECT_EQ(1024, read("WIDTH"));
    EXPECT_EQ(0, set("HEIGHT", 512));
    double rate = 0;
    EXPECT_EQ(kRefusal, Fg_getParameterWithType(applet.record(), OpenApplet::idOf(full("LINERATE")), &rate, 0,
                                                FG_TYPE_DOUBLE));
    // The frame rate that a line rate gives cannot be told: the request is put back.
    EXPECT_EQ(kRefusal, set("LINERATE", 100.0));
    applet.board().clearFaults();
    takeWrites();
    EXPECT_EQ(0, set("SELECT_MODE", LineRate));
    EXPECT_THAT(takeWrites(), testing::Contains(sequenceWrites(12207)[0]));

    // The first read serves the check, the second the range of the width.
    arrange({{"LINERATE", 968992.2480620154}, {"WIDTH", 512}});
    const double before = maximum("WIDTH");
    applet.board().force(kSequence, std::uint32_t{2000});
    applet.board().refuseNthRead(2, kRefusal);
    EXPECT_EQ(0, set("LINE_GAP", 8));
    EXPECT_EQ(before, maximum("WIDTH"));
}

TEST_F(CameraSimulatorTest, UnknownSpeedModeHasNoRates) {
    loadValue(applet, full("SELECT_MODE"), "5");
    for (const char* name : {"LINERATE", "FRAMERATE"}) {
        double rate = 0;
        EXPECT_EQ(error::noDefinition, Fg_getParameterWithType(applet.record(), OpenApplet::idOf(full(name)),
                                                               &rate, 0, FG_TYPE_DOUBLE));
    }
    EXPECT_EQ(error::noDefinition, set("LINERATE", 100.0));
    EXPECT_EQ(error::noDefinition, set("PIXEL_FREQUENCY", 20.0));
    takeWrites();
    EXPECT_EQ(0, set("SELECT_MODE", LineRate));
    EXPECT_THAT(takeWrites(), testing::Contains(sequenceWrites(12207)[0]));
}

TEST_F(CameraSimulatorTest, SizesOfAConfigurationFileDoNotWrapAround) {
    loadValue(applet, full("LINE_GAP"), "-8");
    EXPECT_EQ(error::outOfRange, set("SELECT_MODE", PixelFrequency));
    EXPECT_EQ(LineRate, read("SELECT_MODE"));
    loadValue(applet, full("LINE_GAP"), "0");
    loadValue(applet, full("HEIGHT"), "-16");
    EXPECT_EQ(error::outOfRange, set("SELECT_MODE", PixelFrequency));
    EXPECT_EQ(error::outOfRange, set("FRAMERATE", 10.0));
    loadValue(applet, full("HEIGHT"), "0");
    EXPECT_EQ(error::outOfRange, set("FRAMERATE", 10.0));
}

TEST(CameraSimulatorStart, WithoutStartValuesNothingFits) {
    GXdevice* device = virtualboard::insertBoard();
    virtualboard::Control(device).hide("Device1_Process0_Debug_Entries");
    {
        OpenApplet applet;
        EXPECT_EQ(error::outOfRange, applet.set("FG_CAMERASIMULATOR_LINERATE", 100.0));
        EXPECT_EQ(error::outOfRange, applet.set("FG_CAMERASIMULATOR_FRAMERATE", 10.0));
        EXPECT_EQ(error::outOfRange, applet.set("FG_CAMERASIMULATOR_WIDTH", 1024U));
        EXPECT_EQ(4000.0, applet.node("FG_CAMERASIMULATOR_PIXEL_FREQUENCY").value.real.maximum);
    }
    virtualboard::Control(device).clearOpeningFaults();
    virtualboard::removeBoard(device);
}

}  // namespace
}  // namespace marovine::test
