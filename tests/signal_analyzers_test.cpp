/// The analyzers count the design's line pulses on the board's clock.

#include "tests/BoardFixture.h"

namespace virtualboard::test {
namespace {

constexpr const char* kEnable = "Device1_Process0_Trigger_Trigger_ExsyncEnable";
constexpr const char* kMode = "Device1_Process0_Trigger_Trigger_LineTriggerMode";
constexpr const char* kPeriod = "Device1_Process0_Trigger_Trigger_ExsyncPeriod";
constexpr const char* kDelay = "Device1_Process0_Trigger_Trigger_Exsync2Delay";
constexpr const char* kClear = "Device1_Process1_Trigger_Analyzer_Clear_Value";
constexpr const char* kDifference = "Device1_Process1_Trigger_Analyzer_Difference_Status";

constexpr std::uint32_t kExsync = 1, kExsync2 = 2, kFlash = 3, kLineStart = 33;

class SignalAnalyzersTest : public BoardTest {
 protected:
    SignalAnalyzersTest() {
        control.setClockManual();
        set(kEnable, 1);
        set("Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC1_SelectSignal_Select", kExsync);
        select(0, kExsync);
    }

    static std::string analyzer(int n, const char* rest) {
        return "Device1_Process1_Trigger_Analyzer_Analyzer" + std::to_string(n) + "_" + rest;
    }
    void select(int n, std::uint32_t signal) {
        EXPECT_EQ(0, set(analyzer(n, "Select_SelectSignal_Select"), signal));
    }
    std::uint32_t count(int n) {
        return get<std::uint32_t>(analyzer(n, "PulseCountSignal_Status"), FG_TYPE_UINT32);
    }
    double period(int n, const char* which = "PeriodCurrent") {
        return get<double>(analyzer(n, which), FG_TYPE_DOUBLE);
    }
    std::int64_t difference() { return get<std::int64_t>(kDifference, FG_TYPE_INT64); }
    void setPeriod(double microseconds) { EXPECT_EQ(0, set(kPeriod, microseconds, FG_TYPE_DOUBLE)); }
};

TEST_F(SignalAnalyzersTest, CountAtTheLinePeriod) {
    control.advanceClock(0.000199992);
    EXPECT_EQ(0u, count(0));
    control.advanceClock(0.000000008);
    EXPECT_EQ(1u, count(0));
    EXPECT_EQ(0.0, period(0)) << "one pulse has no period";
    control.advanceClock(1.0);
    EXPECT_EQ(5001u, count(0));
    EXPECT_EQ(200.0, period(0));
}

TEST_F(SignalAnalyzersTest, OnlyGrabberControlledModesPulse) {
    struct Case {
        std::uint32_t mode, enable, pulses;
    };
    for (const Case& c : {Case{0, 1, 5000}, Case{1, 1, 0}, Case{2, 1, 5000}, Case{3, 1, 0}, Case{0, 0, 0}}) {
        ASSERT_EQ(0, set(kMode, c.mode));
        ASSERT_EQ(0, set(kEnable, c.enable));
        ASSERT_EQ(0, set(kClear, 1));
        control.advanceClock(1.0);
        EXPECT_NEAR(c.pulses, count(0), 1) << "mode " << c.mode << ", enable " << c.enable;
        ASSERT_EQ(0, set(kEnable, 0));
    }
}

TEST_F(SignalAnalyzersTest, ANewPeriodBeginsANewPhase) {
    control.advanceClock(0.0011);  // five pulses and a half
    setPeriod(1000.0);
    control.advanceClock(0.000999);
    EXPECT_EQ(5u, count(0)) << "the new period is not over yet";
    control.advanceClock(0.003001);
    EXPECT_EQ(9u, count(0));
    EXPECT_EQ(1000.0, period(0));
    EXPECT_EQ(1000.0, period(0, "PeriodMax"));
    EXPECT_EQ(200.0, period(0, "PeriodMin"));
}

TEST_F(SignalAnalyzersTest, WritingTheSamePeriodDisturbsNothing) {
    for (int i = 0; i < 4; ++i) {
        control.advanceClock(0.00015);
        setPeriod(200.0);
    }
    EXPECT_EQ(3u, count(0));
}

TEST_F(SignalAnalyzersTest, PulsesBeforeAChangeAreCountedWithTheOldSettings) {
    control.advanceClock(1.0);
    ASSERT_EQ(0, set(kEnable, 0));
    control.advanceClock(1.0);
    EXPECT_EQ(5000u, count(0));
}

TEST_F(SignalAnalyzersTest, ClearEmptiesCountsPeriodsAndDifference) {
    select(1, kFlash);
    control.advanceClock(1.0);
    EXPECT_EQ(5000, difference());
    ASSERT_EQ(0, set(kClear, 1));
    EXPECT_EQ(0u, count(0));
    EXPECT_EQ(0.0, period(0, "PeriodMax"));
    EXPECT_EQ(0, difference());
    ASSERT_EQ(0, set(kClear, 0));
    control.advanceClock(1.0);
    EXPECT_EQ(5000u, count(0)) << "writing 0 clears nothing";
}

TEST_F(SignalAnalyzersTest, TheDifferenceIsA33BitTwosComplement) {
    select(0, kFlash);
    select(1, kExsync);
    control.advanceClock(0.0002);
    EXPECT_EQ(0x1FFFFFFFF, difference()) << "-1";
    control.force(analyzer(0, "PulseCountSignal_Status"), 0xFFFFFFFFu);
    control.force(analyzer(1, "PulseCountSignal_Status"), 0u);
    EXPECT_EQ(0x0FFFFFFFF, difference());
    control.force(analyzer(0, "PulseCountSignal_Status"), 0u);
    control.force(analyzer(1, "PulseCountSignal_Status"), 0xFFFFFFFFu);
    EXPECT_EQ(0x100000001, difference());
}

TEST_F(SignalAnalyzersTest, TheSecondOutputPulsesItsDelayLater) {
    ASSERT_EQ(0, set(kDelay, 50.0, FG_TYPE_DOUBLE));
    select(1, kExsync2);
    control.advanceClock(0.00022);
    EXPECT_EQ(1u, count(0));
    EXPECT_EQ(0u, count(1));
    control.advanceClock(0.00003);
    EXPECT_EQ(1u, count(1));
}

TEST_F(SignalAnalyzersTest, ACameraAnswersEveryPulseWithALine) {
    select(1, kLineStart);
    control.advanceClock(1.0);
    EXPECT_EQ(5000u, count(1));
    EXPECT_EQ(0, difference());
    const std::string cameraTrigger =
        "Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC1_SelectSignal_Select";
    std::int64_t unanswered = 0;
    const auto expectNoLines = [&](const char* why) {
        control.advanceClock(1.0);
        EXPECT_EQ(5000u, count(1)) << why;
        EXPECT_EQ(unanswered += 5000, difference()) << why;
    };
    control.force("Device1_Process0_Camera_PixelClockX", 0u);
    expectNoLines("the cable is pulled");
    control.force("Device1_Process0_Camera_PixelClockX", 85u);
    ASSERT_EQ(0, set(cameraTrigger, kFlash));
    expectNoLines("another signal on the camera's trigger line");
    ASSERT_EQ(0, set(cameraTrigger, kExsync));
    ASSERT_EQ(0, set("Device1_Process0_Camera_CameraLinkCoreReset", 1));
    expectNoLines("the link is in reset");
}

TEST_F(SignalAnalyzersTest, TheGeneratorMakesLinesAtItsOwnRate) {
    const std::string simulator = "Device1_Process0_CameraSimulator_";
    select(1, kLineStart);
    ASSERT_EQ(0, set(simulator + "PixelFrequency_SequenceLength_ImageWidth", 12500));  // 100 us
    ASSERT_EQ(0, set(simulator + "ControlPixelClock_Mode", 1));
    ASSERT_EQ(0, set(simulator + "Enable_SelectSource", 1));
    ASSERT_EQ(0, set(kClear, 1));
    control.advanceClock(1.0);
    EXPECT_EQ(10000u, count(1));
    EXPECT_EQ(100.0, period(1));
    ASSERT_EQ(0,
              set(simulator + "ControlPixelClock_Mode", 0));  // 128 words, 80 of 2000 clocks active: 25.6 us
    control.advanceClock(0.001);
    EXPECT_DOUBLE_EQ(25.6, period(1));
}

TEST_F(SignalAnalyzersTest, AForcedReadOutStaysUntilTheAnalyzersAreCleared) {
    control.force(kDifference, std::int64_t{-3});
    control.force(analyzer(0, "PeriodMax"), 12.5);
    control.advanceClock(1.0);
    EXPECT_EQ(-3, difference());
    EXPECT_EQ(12.5, period(0, "PeriodMax"));
    EXPECT_EQ(5000u, count(0));
    ASSERT_EQ(0, set(kClear, 1));
    control.advanceClock(1.0);
    EXPECT_EQ(200.0, period(0, "PeriodMax"));
    EXPECT_EQ(5000, difference());
}

TEST_F(SignalAnalyzersTest, AttachingKeepsCountingAndAFreshOpeningStartsAnew) {
    control.advanceClock(1.0);
    close();
    control.advanceClock(1.0);
    open(1);
    EXPECT_EQ(10000u, count(0));
    close();
    open(0);
    EXPECT_EQ(0u, count(0));
}

TEST_F(SignalAnalyzersTest, TheClockMovesForwardOnly) {
    EXPECT_THROW(control.advanceClock(-1), std::invalid_argument);
    EXPECT_THROW(control.advanceClock(std::numeric_limits<double>::quiet_NaN()), std::invalid_argument);
    control.advanceClock(1e8);
    EXPECT_EQ(500000000000u % 4294967296u, count(0)) << "the counter is 32 bits wide";
    for (int i = 0; i < 12; ++i) control.advanceClock(9e8);
    const std::uint32_t atTheEnd = count(0);
    control.advanceClock(9e8);
    EXPECT_EQ(atTheEnd, count(0)) << "the clock goes no further";
}

TEST_F(SignalAnalyzersTest, TheRealClockRunsOnFromWhereItWasStopped) {
    control.advanceClock(1.0);
    control.setClockManual(false);
    const std::uint32_t before = count(0);
    EXPECT_GE(before, 5000u);
    EXPECT_LT(before, 10000u) << "a second has not passed";
}

}  // namespace
}  // namespace virtualboard::test
