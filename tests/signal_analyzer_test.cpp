/// What the signal analyzers do and tell, and the names and masks of events.

#include <array>
#include <bit>
#include <set>

#include "tables/EventTable.h"
#include "tests/SettingChecks.h"

namespace marovine::test {
namespace {

class SignalAnalyzer : public AppletTest {
 protected:
    static std::string fullName(const std::string& readOut) {
        return "Device1_Process1_Trigger_Analyzer_" + readOut;
    }
};

TEST_F(SignalAnalyzer, EachClearIsOnePulse) {
    for (int call = 0; call < 2; ++call)
        expectSetting(applet,
                      {"FG_SIGNAL_ANALYZER_CLEAR",
                       1,
                       {{"Trigger_Analyzer_Clear_Value", "1"}, {"Trigger_Analyzer_Clear_Value", "0"}}});
    for (const int value : {0, 2}) expectRefused(applet, "FG_SIGNAL_ANALYZER_CLEAR", value);
}

TEST_F(SignalAnalyzer, DifferenceIsA33BitNumber) {
    struct Case {
        std::int64_t raw;
        std::int64_t difference;
    };
    for (const auto& [raw, difference] : std::to_array<Case>({{0, 0},
                                                              {1, 1},
                                                              {0x0FFFFFFFF, 4294967295},
                                                              {0x100000000, -4294967296},
                                                              {0x1FFFFFFFE, -2},
                                                              {0x1FFFFFFFF, -1}})) {
        applet.board().force(fullName("Difference_Status"), raw);
        EXPECT_EQ(difference, applet.get<std::int64_t>("FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE"));
    }
}

TEST_F(SignalAnalyzer, ReadOutsComeFromTheDesignAndCannotBeSet) {
    const auto expect = [&]<class T>(const std::string& name, const std::string& readOut, T value) {
        expectReadOut(applet, name, fullName(readOut), value);
        EXPECT_EQ(error::notAllowed, applet.set(name, value));
    };
    for (const std::string n : {"0", "1"}) {
        const double offset = n == "0" ? 0.0 : 100.0;
        const std::string name = "FG_SIGNAL_ANALYZER_" + n;
        expect(name + "_PERIOD_CURRENT", "Analyzer" + n + "_PeriodCurrent", offset + 1.008);
        expect(name + "_PERIOD_MAX", "Analyzer" + n + "_PeriodMax", offset + 2.008);
        expect(name + "_PERIOD_MIN", "Analyzer" + n + "_PeriodMin", offset + 0.008);
        expect(name + "_PULSE_COUNT", "Analyzer" + n + "_PulseCountSignal_Status", 4294967295U);
    }
    expect("FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE", "Difference_Status", std::int64_t{5});
    EXPECT_TRUE(applet.takeWrites().empty());
}

TEST_F(SignalAnalyzer, CountsTheLinePulsesOfTheExSyncSettings) {
    applet.board().setClockManual();
    EXPECT_EQ(0, applet.set("FG_LINEPERIODE", 100.0));
    EXPECT_EQ(0, applet.set("FG_SIGNAL_ANALYZER_1_SOURCE", constantOf("GND")));
    EXPECT_EQ(0, applet.set("FG_SIGNAL_ANALYZER_CLEAR", 1));
    applet.board().advanceClock(0.001);
    EXPECT_EQ(10U, applet.get<std::uint32_t>("FG_SIGNAL_ANALYZER_0_PULSE_COUNT"));
    EXPECT_EQ(100.0, applet.get<double>("FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT"));
    EXPECT_EQ(10, applet.get<std::int64_t>("FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE"));
}

// ---- events ----

TEST_F(SignalAnalyzer, EveryEventHasOneBitAndLeadsBackToItsName) {
    std::vector<std::string> names{"Device1_Process1_BoardMonitor_TemperatureAlarm",
                                   "Device1_Process1_BoardMonitor_CameraLinkLost"};
    for (const auto& event : sdkEvents) names.emplace_back(event.sdkName);
    EXPECT_EQ(33U, names.size());
    std::set<std::uint64_t> masks;
    for (const auto& name : names) {
        const std::uint64_t mask = Fg_getEventMask(applet.record(), name.c_str());
        EXPECT_EQ(0, applet.lastError());
        EXPECT_TRUE(std::has_single_bit(mask)) << name;
        EXPECT_TRUE(masks.insert(mask).second) << name;
        EXPECT_STREQ(name.c_str(), Fg_getEventName(applet.record(), mask));
        EXPECT_EQ(0, applet.lastError());
    }
    // The design's names of these events are the SDK's business only where it has none of its own.
    for (const auto& event : sdkEvents) EXPECT_EQ(0U, Fg_getEventMask(applet.record(), event.designName));
}

TEST_F(SignalAnalyzer, UnknownEventsAreAnsweredWithNothing) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "fg_custom_signal_event_1",
                             "FG_CUSTOM_SIGNAL_EVENT_1 ", "FG_CUSTOM_SIGNAL_EVENT_"}) {
        applet.get<int>("FG_EXSYNCON");  // clears the last error
        EXPECT_EQ(0U, Fg_getEventMask(applet.record(), name));
        EXPECT_EQ(error::invalidArgument, applet.lastError());
    }
    const std::uint64_t two = Fg_getEventMask(applet.record(), "FG_CUSTOM_SIGNAL_EVENT_0") |
                              Fg_getEventMask(applet.record(), "FG_CUSTOM_SIGNAL_EVENT_1");
    for (const std::uint64_t mask : {std::uint64_t{0}, two, std::uint64_t{1} << 63}) {
        applet.get<int>("FG_EXSYNCON");
        EXPECT_EQ(nullptr, Fg_getEventName(applet.record(), mask));
        EXPECT_EQ(error::invalidArgument, applet.lastError());
    }
}

}  // namespace
}  // namespace marovine::test
