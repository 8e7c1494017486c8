/// The limits of the camera simulator, and what a failure leaves behind.

#include <cmath>

#include "tests/CameraSimulatorFixture.h"
#include "tests/LoadedValue.h"

namespace marovine::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kRefusal = -777;
constexpr const char* kSequence = "Device1_Process0_CameraSimulator_PixelFrequency_SequenceLength_ImageWidth";

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
