/// Which signal drives which output, control line, analyzer and custom event, and the legacy views on that.

#include <map>

#include "tests/LoadedValue.h"
#include "tests/SettingChecks.h"
#include "tests/TemporaryFile.h"

namespace marovine::test {
namespace {

constexpr int kLow = 0;
constexpr int kHigh = 1;
constexpr int kGnd = 4;
constexpr int kVcc = 5;
constexpr int kExsync = 2000;
constexpr int kFlash = 2002;
constexpr int kLval = 2007;
constexpr int kLineStart = 2100;  ///< first of the four transfer signals
constexpr int kGpi2 = 1021;
constexpr int kOther = -1;

/// Multiplexer index of each signal.
std::map<int, int> signalIndices() {
    std::map<int, int> indices{{kGnd, 0}, {kVcc, 0}, {2000, 1}, {2001, 2}, {2002, 3}, {2007, 4}, {2008, 5}};
    for (int k = 0; k < 12; ++k) indices[1001 + 10 * k] = 21 + k;
    for (int k = 0; k < 4; ++k) indices[kLineStart + k] = 33 + k;
    return indices;
}

int invertBit(int signal, int polarity) {
    if (signal == kGnd || signal == kVcc) return signal == kVcc ? 1 : 0;
    return polarity == kLow ? 1 : 0;
}

/// What a source and a polarity are chosen for.
struct Route {
    std::string parameter;  ///< without "_SOURCE" and "_POLARITY"
    std::string design;     ///< without "_SelectSignal_Select" and "_Polarity_Invert"
    bool watches = false;   ///< whether the transfer signals are offered

    std::string source() const { return parameter + "_SOURCE"; }
    std::string polarity() const { return parameter + "_POLARITY"; }
    bool offers(int signal) const { return watches || signal < kLineStart; }
    Writes writes(int signal, int polarityValue) const {
        return {{design + "_SelectSignal_Select", std::to_string(signalIndices().at(signal))},
                {design + "_Polarity_Invert", std::to_string(invertBit(signal, polarityValue))}};
    }
};

Route controlLine(int n) {
    const std::string number = std::to_string(n);
    return {"FG_CC" + number, "Trigger_OutputMapping_CamTrigger0_CC" + number};
}
Route gpo(int n) {
    const std::string number = std::to_string(n);
    return {"FG_TRIGGEROUT_GPO_" + number, "Trigger_OutputMapping_SelectGPO_Select" + number};
}
std::vector<Route> allRoutes() {
    std::vector<Route> routes;
    for (int n = 1; n <= 4; ++n) routes.push_back(controlLine(n));
    for (int n = 0; n < 8; ++n) routes.push_back(gpo(n));
    for (const std::string n : {"0", "1"}) {
        routes.push_back({"FG_TRIGGEROUT_FRONT_GPO_" + n, "Trigger_OutputMapping_SelectFrontGPO_Select" + n});
        routes.push_back({"FG_SIGNAL_ANALYZER_" + n, "Trigger_Analyzer_Analyzer" + n + "_Select", true});
        routes.push_back({"FG_CUSTOM_SIGNAL_EVENT_" + n, "Trigger_Events_SelectCustomSignalEvent" + n, true});
    }
    return routes;
}

class OutputMapping : public AppletTest {
 protected:
    template <class T>
    void given(const std::string& name, T value) {
        ASSERT_EQ(0, applet.set(name, value)) << name;
        applet.takeWrites();
    }
};

TEST_F(OutputMapping, EveryRouteTakesItsSignalsInBothPolarities) {
    for (const auto& route : allRoutes()) {
        for (const auto& [signal, index] : signalIndices()) {
            if (!route.offers(signal)) {
                expectRefused(applet, route.source(), signal);
                continue;
            }
            for (const int before : {kLow, kHigh}) {
                given(route.polarity(), before);
                expectSetting(applet, {route.source(), signal, route.writes(signal, before)});
                expectSetting(applet, {route.polarity(), 1 - before, route.writes(signal, 1 - before)});
            }
        }
        for (const int signal : {0, 1, 3, 6, 1000, 1002, 1121, 2003, 2104})
            expectRefused(applet, route.source(), signal);
        for (const int polarity : {-1, 2}) expectRefused(applet, route.polarity(), polarity);
    }
}

// The other setter of a route must go on from what was in force before the failure.
TEST_F(OutputMapping, AFailureLeavesTheOldValuesInForce) {
    for (const auto& route : allRoutes()) {
        given(route.source(), kFlash);
        given(route.polarity(), kHigh);
        for (const unsigned n : {1U, 2U}) {
            applet.board().refuseNthWrite(n, kInjected);
            EXPECT_EQ(kInjected, applet.set(route.source(), kGpi2));
            applet.takeWrites();
            expectSetting(applet, {route.polarity(), kHigh, route.writes(kFlash, kHigh)});

            applet.board().refuseNthWrite(n, kInjected);
            EXPECT_EQ(kInjected, applet.set(route.polarity(), kLow));
            applet.takeWrites();
            expectSetting(applet, {route.source(), kFlash, route.writes(kFlash, kHigh)});
        }
    }
}

TEST_F(OutputMapping, LegacyParametersRefuseWhatIsNotAllowed) {
    for (const int value : {-2, 4}) expectRefused(applet, "FG_DIGIO_OUTPUT", value);
    for (int line = 0; line < 4; ++line)
        for (const int value : {-2, 3, 9, 999, 1002, 1112, 2000})
            expectRefused(applet, "FG_CCSEL" + std::to_string(line), value);
}

// ---- legacy: two outputs as static levels ----

TEST_F(OutputMapping, LegacyDigitalOutputSetsGpo3ThenGpo7) {
    given("FG_TRIGGEROUT_GPO_3_POLARITY", kLow);
    for (const int value : {0, 1, 2, 3}) {
        const int level3 = (value & 1) != 0 ? kVcc : kGnd;
        const int level7 = (value & 2) != 0 ? kVcc : kGnd;
        const auto writes = joined({gpo(3).writes(level3, kHigh), gpo(7).writes(level7, kHigh)});
        given("FG_TRIGGEROUT_GPO_7_SOURCE", kGpi2);
        for (unsigned n = 1; n <= 4; ++n) {
            given("FG_TRIGGEROUT_GPO_3_SOURCE", kFlash);
            applet.board().refuseNthWrite(n, kInjected);
            EXPECT_EQ(kInjected, applet.set("FG_DIGIO_OUTPUT", value));
            EXPECT_EQ(firstOf(writes, n), applet.takeWrites());
            // What GPO 3 was given before GPO 7 failed stays.
            EXPECT_EQ(n <= 2 ? kFlash : level3, applet.get<int>("FG_TRIGGEROUT_GPO_3_SOURCE"));
            EXPECT_EQ(kGpi2, applet.get<int>("FG_TRIGGEROUT_GPO_7_SOURCE"));
        }
        EXPECT_EQ(-1, applet.get<int>("FG_DIGIO_OUTPUT"));
        expectSetting(applet, {"FG_DIGIO_OUTPUT", value, writes});
        EXPECT_EQ(level3, applet.get<int>("FG_TRIGGEROUT_GPO_3_SOURCE"));
        EXPECT_EQ(level7, applet.get<int>("FG_TRIGGEROUT_GPO_7_SOURCE"));
        EXPECT_EQ(kLow, applet.get<int>("FG_TRIGGEROUT_GPO_3_POLARITY"));

        EXPECT_EQ(0, applet.set("FG_DIGIO_OUTPUT", -1));
        EXPECT_TRUE(applet.takeWrites().empty());
        EXPECT_EQ(value, applet.get<int>("FG_DIGIO_OUTPUT"));
    }
}

TEST_F(OutputMapping, DigitalInputsAreReadFromTheDesignAndCannotBeSet) {
    expectReadOut(applet, "FG_DIGIO_INPUT", "Device1_Process1_Trigger_Inputs_InputStatus_Status", 0xA05U);
    EXPECT_EQ(error::notAllowed, applet.set("FG_DIGIO_INPUT", 0U));
}

// ---- legacy: a control line's source and polarity in one selection ----

/// What each legacy selection stands for.
std::map<int, std::pair<int, int>> legacySelections() {
    std::map<int, std::pair<int, int>> selections{{kGnd, {kGnd, kHigh}}, {kVcc, {kVcc, kHigh}}};
    for (int k = 0; k < 3; ++k) {
        selections[k] = {kExsync + k, kHigh};
        selections[6 + k] = {kExsync + k, kLow};
    }
    for (int k = 0; k < 12; ++k) {
        selections[1001 + 10 * k] = {1001 + 10 * k, kHigh};
        selections[1000 + 10 * k] = {1001 + 10 * k, kLow};
    }
    return selections;
}

// The two steps are settings of their own: when the second fails, the first stays.
TEST_F(OutputMapping, LegacySelectionSetsSourceThenPolarity) {
    for (int n = 1; n <= 4; ++n) {
        const Route line = controlLine(n);
        const std::string name = "FG_CCSEL" + std::to_string(n - 1);
        for (const auto& [selection, meaning] : legacySelections()) {
            SCOPED_TRACE(name + " = " + std::to_string(selection));
            const auto [source, polarity] = meaning;
            const int polarityBefore = 1 - polarity;
            const auto writes = joined({line.writes(source, polarityBefore), line.writes(source, polarity)});
            for (unsigned refused = 1; refused <= 5; ++refused) {  // the fifth does not come
                given(line.source(), kLval);
                given(line.polarity(), polarityBefore);
                applet.board().refuseNthWrite(refused, kInjected);
                EXPECT_EQ(refused <= 4 ? kInjected : 0, applet.set(name, selection));
                applet.board().clearFaults();
                EXPECT_EQ(firstOf(writes, std::min(refused, 4U)), applet.takeWrites());
                EXPECT_EQ(refused <= 2 ? kLval : source, applet.get<int>(line.source()));
                EXPECT_EQ(refused <= 4 ? polarityBefore : polarity, applet.get<int>(line.polarity()));
            }
            EXPECT_EQ(selection, applet.get<int>(name));
        }
    }
}

TEST_F(OutputMapping, LegacySelectionIsDerivedFromSourceAndPolarity) {
    for (const auto& [signal, index] : signalIndices())
        for (const int polarity : {kLow, kHigh}) {
            if (!controlLine(2).offers(signal)) continue;
            given("FG_CC2_SOURCE", signal);
            given("FG_CC2_POLARITY", polarity);
            int expected = kOther;
            for (const auto& [selection, meaning] : legacySelections())
                if (meaning == std::pair(signal, polarity)) expected = selection;
            if (signal == kGnd || signal == kVcc) expected = signal;
            EXPECT_EQ(expected, applet.get<int>("FG_CCSEL1")) << signal << ", polarity " << polarity;

            EXPECT_EQ(0, applet.set("FG_CCSEL1", kOther));
            EXPECT_TRUE(applet.takeWrites().empty());
            EXPECT_EQ(signal, applet.get<int>("FG_CC2_SOURCE"));
        }
}

// A control line has one value, which a load fills before the design is written; the other outputs keep what
// the design was last given.
TEST_F(OutputMapping, ALoadThatTheDesignRefusesCountsForControlLinesOnly) {
    const TemporaryFile file(".mcf");
    {
        OpenApplet other;
        EXPECT_EQ(0, other.set("FG_CC2_SOURCE", kGpi2));
        EXPECT_EQ(0, other.set("FG_TRIGGEROUT_GPO_0_SOURCE", kGpi2));
        ASSERT_EQ(0, Fg_saveConfig(other.record(), file.name()));
    }
    const auto refused = {controlLine(2), gpo(0)};
    for (const auto& route : refused)
        applet.board().refuseWrites("Device1_Process1_" + route.design + "_SelectSignal_Select", kInjected);
    EXPECT_EQ(0, Fg_loadConfig(applet.record(), file.name()));
    EXPECT_EQ(kGpi2, applet.get<int>("FG_CC2_SOURCE"));
    EXPECT_EQ(kFlash, applet.get<int>("FG_TRIGGEROUT_GPO_0_SOURCE"));

    applet.board().clearFaults();
    applet.takeWrites();
    expectSetting(applet, {"FG_CC2_POLARITY", kLow, controlLine(2).writes(kGpi2, kLow)});
    expectSetting(applet, {"FG_TRIGGEROUT_GPO_0_POLARITY", kLow, gpo(0).writes(kFlash, kLow)});
}

// A file can leave a signal in the cache of a control line that no setter accepts.
TEST_F(OutputMapping, AnUnknownSignalHasNoMapping) {
    given("FG_CC1_SOURCE", kLval);
    loadValue(applet, "FG_CC1_SOURCE", "9999");
    EXPECT_EQ(kOther, applet.get<int>("FG_CCSEL0"));
    EXPECT_EQ(error::internalFailure, applet.set("FG_CC1_POLARITY", kLow));
    EXPECT_TRUE(applet.takeWrites().empty());
    EXPECT_EQ(kHigh, applet.get<int>("FG_CC1_POLARITY"));
    expectSetting(applet, {"FG_CC1_SOURCE", kFlash, controlLine(1).writes(kFlash, kHigh)});
}

}  // namespace
}  // namespace marovine::test
