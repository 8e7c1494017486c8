/// Line trigger, shaft encoder filter and ExSync output.

#include <array>

#include "tests/SettingChecks.h"

namespace marovine::test {
namespace {

constexpr int kGrabber = 1;
constexpr int kExternal = 2;
constexpr int kGatedExternal = 5;
constexpr int kGatedGrabber = 6;

class LineTrigger : public AppletTest {
 protected:
    int access(std::string_view name) { return applet.node(name).accessFlags; }
    double maximum(std::string_view name) { return applet.node(name).value.real.maximum; }
    /// All of these parameters must show the same access flags.
    void expectAccess(int flags, const std::vector<std::string_view>& names) {
        for (const auto name : names) EXPECT_EQ(flags, access(name)) << name;
    }

    const std::vector<std::string_view> inputs{"FG_LINETRIGGERINSRC",      "FG_LINETRIGGERINPOLARITY",
                                               "FG_LINETRIGGERDEBOUNCING", "FG_LINE_DOWNSCALE",
                                               "FG_LINE_DOWNSCALEINIT",    "FG_SHAFTENCODERON"};
    const std::vector<std::string_view> encoder{
        "FG_SHAFTENCODERMODE", "FG_SHAFTENCODERINSRC", "FG_SHAFTENCODERLEADING",
        "FG_SHAFTENCODER_COMPENSATION_ENABLE", "FG_SHAFTENCODER_COMPENSATION_COUNT"};
};

TEST_F(LineTrigger, WritesWhatFollowsFromEachSettingAndRestoresItWhenAWriteFails) {
    const std::vector<Setting> settings{
        {"FG_EXSYNCON", 0, {{"Trigger_Trigger_ExsyncEnable", "0"}}},
        {"FG_EXSYNCON", 1, {{"Trigger_Trigger_ExsyncEnable", "1"}}},
        {"FG_LINETRIGGERINPOLARITY", 1, {{"Trigger_Trigger_LineTrgInPolarity", "1"}}},
        {"FG_LINETRIGGERINPOLARITY", 0, {{"Trigger_Trigger_LineTrgInPolarity", "0"}}},
        {"FG_LINE_DOWNSCALE", 255U, {{"Trigger_Trigger_LineTrgDownscaler", "255"}}},
        {"FG_LINE_DOWNSCALE", 1U, {{"Trigger_Trigger_LineTrgDownscaler", "1"}}},
        {"FG_LINE_DOWNSCALEINIT", 255U, {{"Trigger_Trigger_LineTrgPhase", "255"}}},
        {"FG_LINE_DOWNSCALEINIT", 1U, {{"Trigger_Trigger_LineTrgPhase", "1"}}},
        {"FG_SHAFTENCODERLEADING", 1, {{"Trigger_Trigger_EncoderABLead", "1"}}},
        {"FG_SHAFTENCODERLEADING", 0, {{"Trigger_Trigger_EncoderABLead", "0"}}},
        {"FG_SHAFTENCODER_COMPENSATION_ENABLE", 0, {{"Trigger_Trigger_EncoderCompensation", "0"}}},
        {"FG_SHAFTENCODER_COMPENSATION_COUNT",
         0xFFFFFU,
         {{"Trigger_Trigger_EncoderCompensationCount", "1048575"}}},
        {"FG_EXSYNCPOLARITY", 0, {{"Trigger_Trigger_ExsyncPolarity", "1"}}},
        {"FG_EXSYNCPOLARITY", 1, {{"Trigger_Trigger_ExsyncPolarity", "0"}}},
        {"FG_LINEPERIODE", 2097.144, {{"Trigger_Trigger_ExsyncPeriod", "2097.144"}}},
        {"FG_LINETRIGGERDELAY", 2097.144, {{"Trigger_Trigger_Exsync2Delay", "2097.144"}}},
        {"FG_LINEPERIODE", 0.512, {{"Trigger_Trigger_ExsyncPeriod", "0.512"}}},
        {"FG_LINEEXPOSURE", 0.512, {{"Trigger_Trigger_ExsyncExposure", "0.512"}}},
        {"FG_LINETRIGGERDELAY", 0.0, {{"Trigger_Trigger_Exsync2Delay", "0"}}},
    };
    for (const auto& setting : settings) expectSetting(applet, setting);
}

TEST_F(LineTrigger, RefusesWhatIsNotAllowedBeforeAnythingChanges) {
    for (const auto* name :
         {"FG_EXSYNCON", "FG_LINETRIGGERINPOLARITY", "FG_SHAFTENCODERON", "FG_EXSYNCPOLARITY",
          "FG_SHAFTENCODERLEADING", "FG_SHAFTENCODER_COMPENSATION_ENABLE"})
        for (const int value : {-1, 2}) expectRefused(applet, name, value);
    for (const int value : {0, 3, 4, 7, -1}) expectRefused(applet, "FG_LINETRIGGERMODE", value);
    for (const int value : {0, 4}) expectRefused(applet, "FG_SHAFTENCODERMODE", value);
    for (const auto* name : {"FG_LINETRIGGERINSRC", "FG_SHAFTENCODERINSRC"})
        for (const int value : {-1, 8, 15, 20}) expectRefused(applet, name, value);
    for (const auto* name : {"FG_LINE_DOWNSCALE", "FG_LINE_DOWNSCALEINIT"})
        for (const std::uint32_t value : {0U, 256U}) expectRefused(applet, name, value);
    expectRefused(applet, "FG_SHAFTENCODER_COMPENSATION_COUNT", 0x100000U);

    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const double value : {0.0, 0.0079, 30.008, kNotANumber, infinite, -infinite})
        expectRefused(applet, "FG_LINETRIGGERDEBOUNCING", value);
    for (const double value : {0.504, 2097.152, kNotANumber, infinite, -infinite})
        expectRefused(applet, "FG_LINEPERIODE", value);
    for (const double value : {0.504, 200.008, kNotANumber, infinite, -infinite})
        expectRefused(applet, "FG_LINEEXPOSURE", value);
    for (const double value : {-0.008, 200.008, kNotANumber, infinite, -infinite})
        expectRefused(applet, "FG_LINETRIGGERDELAY", value);
}

TEST_F(LineTrigger, SelectsTheInputOfEachSource) {
    for (int k = 0; k < 12; ++k) {
        const int source = k < 8 ? k : 16 + (k - 8);
        expectSetting(applet, {"FG_LINETRIGGERINSRC",
                               source,
                               {{"Trigger_Trigger_LineTrgInSourceA", "0"},
                                {"Trigger_InputSignal_LineTrgInSourceA_Input_Select", std::to_string(k)}}});
        expectSetting(applet, {"FG_SHAFTENCODERINSRC",
                               source,
                               {{"Trigger_Trigger_LineTrgInSourceB", "0"},
                                {"Trigger_InputSignal_LineTrgInSourceB_Input_Select", std::to_string(k)}}});
    }
}

TEST_F(LineTrigger, SetsThePrescalerWithTheDebouncingTime) {
    struct Case {
        double time;
        const char* text;
        const char* prescaler;
    };
    for (const auto& [time, text, prescaler] : std::to_array<Case>(
             {{0.008, "0.008", "0"}, {0.112, "0.112", "5"}, {1.0, "1", "42"}, {30.0, "30", "1250"}}))
        expectSetting(applet, {"FG_LINETRIGGERDEBOUNCING",
                               time,
                               {{"Trigger_Trigger_LineTrgDebouncingTime", text},
                                {"Trigger_Inputs_Debounce8_Prescale_Period", prescaler}}});
}

// The mode changes the flags before it is written: they stay when the write fails, the mode does not.
TEST_F(LineTrigger, ModeDecidesWhetherTheInputCanBeSet) {
    struct Case {
        int mode;
        const char* design;
        int flags;
    };
    const auto cases = std::to_array<Case>(
        {{kExternal, "1", 7}, {kGatedGrabber, "2", 1}, {kGatedExternal, "3", 7}, {kGrabber, "0", 1}});
    for (const int on : {0, 1})
        for (const auto& [mode, design, flags] : cases) {
            SCOPED_TRACE(mode);
            applet.set("FG_SHAFTENCODERON", on);
            expectAccess(on == 1 ? access("FG_SHAFTENCODERON") : 1, encoder);
            applet.takeWrites();

            const int before = applet.get<int>("FG_LINETRIGGERMODE");
            applet.board().refuseNthWrite(1, kInjected);
            EXPECT_EQ(kInjected, applet.set("FG_LINETRIGGERMODE", mode));
            EXPECT_EQ(before, applet.get<int>("FG_LINETRIGGERMODE"));
            expectAccess(flags, inputs);
            expectAccess(on == 1 ? flags : 1, encoder);
            applet.takeWrites();

            expectSetting(applet,
                          {"FG_LINETRIGGERMODE", mode, {{"Trigger_Trigger_LineTriggerMode", design}}});
            expectAccess(flags, inputs);
            expectAccess(on == 1 ? flags : 1, encoder);
        }
}

TEST_F(LineTrigger, EncoderSwitchWritesTheModeAndPassesItsOwnAccessOn) {
    struct Case {
        int lineMode;
        int encoderMode;
        int flagsWhenOn;
    };
    for (const auto& [lineMode, encoderMode, flags] :
         std::to_array<Case>({{kGrabber, 2, 1}, {kExternal, 3, 7}, {kGatedGrabber, 1, 1}})) {
        SCOPED_TRACE(lineMode);
        applet.set("FG_LINETRIGGERMODE", lineMode);
        applet.takeWrites();
        expectSetting(applet, {"FG_SHAFTENCODERMODE", encoderMode, {}});

        applet.board().refuseNthWrite(1, kInjected);
        EXPECT_EQ(kInjected, applet.set("FG_SHAFTENCODERON", 1));
        expectAccess(1, encoder);
        applet.takeWrites();

        expectSetting(
            applet,
            {"FG_SHAFTENCODERON", 1, {{"Trigger_Trigger_EncoderABMode", std::to_string(encoderMode)}}});
        expectAccess(flags, encoder);
        for (const int mode : {1, 2, 3})
            expectSetting(
                applet,
                {"FG_SHAFTENCODERMODE", mode, {{"Trigger_Trigger_EncoderABMode", std::to_string(mode)}}});
        expectSetting(applet, {"FG_SHAFTENCODERON", 0, {{"Trigger_Trigger_EncoderABMode", "0"}}});
        expectAccess(1, encoder);
    }
}

TEST_F(LineTrigger, ExposureEndsAtThePeriodOnlyWhereTheGrabberKeepsIt) {
    struct Case {
        int mode;
        double period;
        double ceiling;
    };
    const auto cases = std::to_array<Case>({{kGrabber, 100.0, 100.0},
                                            {kGatedGrabber, 100.0, 100.0},
                                            {kExternal, 100.0, 1048.568},
                                            {kGatedExternal, 100.0, 1048.568},
                                            {kGrabber, 1048.568, 1048.568},
                                            {kGrabber, 2000.0, 1048.568},
                                            {kExternal, 2000.0, 1048.568}});
    for (const auto& [mode, period, ceiling] : cases) {
        SCOPED_TRACE(testing::Message() << "mode " << mode << ", period " << period);
        applet.set("FG_LINEPERIODE", period);
        applet.set("FG_LINETRIGGERMODE", mode);
        applet.takeWrites();
        EXPECT_EQ(ceiling, maximum("FG_LINEEXPOSURE"));
        EXPECT_EQ(period, maximum("FG_LINETRIGGERDELAY"));
        EXPECT_EQ(0, applet.set("FG_LINEEXPOSURE", ceiling));
        applet.takeWrites();
        expectRefused(applet, "FG_LINEEXPOSURE", ceiling + 0.008);
        EXPECT_EQ(ceiling, maximum("FG_LINEEXPOSURE"));
    }
}

TEST_F(LineTrigger, AShorterPeriodNarrowsTheRangesAndKeepsTheValues) {
    applet.set("FG_LINEEXPOSURE", 200.0);
    applet.set("FG_LINETRIGGERDELAY", 200.0);
    applet.takeWrites();
    applet.board().refuseNthWrite(1, kInjected);
    EXPECT_EQ(kInjected, applet.set("FG_LINEPERIODE", 50.0));
    EXPECT_EQ(200.0, maximum("FG_LINEEXPOSURE"));
    EXPECT_EQ(200.0, maximum("FG_LINETRIGGERDELAY"));

    EXPECT_EQ(0, applet.set("FG_LINEPERIODE", 50.0));
    EXPECT_EQ(50.0, maximum("FG_LINEEXPOSURE"));
    EXPECT_EQ(50.0, maximum("FG_LINETRIGGERDELAY"));
    EXPECT_EQ(200.0, applet.get<double>("FG_LINEEXPOSURE"));
    EXPECT_EQ(200.0, applet.get<double>("FG_LINETRIGGERDELAY"));
}

TEST_F(LineTrigger, CompensationCountIsReadFromTheDesign) {
    expectReadOut(applet, "FG_SHAFTENCODER_COMPENSATION_COUNT",
                  "Device1_Process0_Trigger_Trigger_EncoderCompensationCount", 321U);
}

TEST(LineTriggerStart, RegistryFollowsTheDefaultsOnlyWhenTheyAreWritten) {
    OpenApplet applet;
    EXPECT_EQ(1, applet.node("FG_LINETRIGGERINSRC").accessFlags);
    EXPECT_EQ(1, applet.node("FG_SHAFTENCODERMODE").accessFlags);
    EXPECT_EQ(200.0, applet.node("FG_LINEEXPOSURE").value.real.maximum);
    EXPECT_EQ(200.0, applet.node("FG_LINETRIGGERDELAY").value.real.maximum);

    OpenApplet attached(1);
    EXPECT_EQ(7, attached.node("FG_LINETRIGGERINSRC").accessFlags);
    EXPECT_EQ(3, attached.node("FG_LINE_DOWNSCALE").accessFlags);
    EXPECT_EQ(1048.0, attached.node("FG_LINEEXPOSURE").value.real.maximum);
    EXPECT_EQ(1048.568, attached.node("FG_LINETRIGGERDELAY").value.real.maximum);
}

}  // namespace
}  // namespace marovine::test
