/// Why a value is refused: the sentence, and that what it names is really accepted.

#include "client/Explain.h"

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "client/Snapshot.h"
#include "tests/HostFixture.h"

namespace marovine::host {
namespace {

using test::HostTest;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Explaining : public HostTest {
 protected:
    /// The code of a set; 0 when it is accepted.
    int codeOf(std::string_view name, std::string_view value) {
        try {
            set(name, value);
            return 0;
        } catch (const Refused& refusal) {
            return refusal.code;
        }
    }
    Explanation explanationOf(std::string_view name, std::string_view value) {
        const int code = codeOf(name, value);
        EXPECT_NE(0, code) << name << " = " << value << " is accepted";
        return explain(applet, {std::string(name), applet.parameter(name).parse(value)}, code);
    }
};

/// What is set before, the refused setting, its code and the rule with its causes.
constexpr const char* kCases = R"(
FG_WIDTH=1004 | -7080 | not a multiple of 8; nearest are 1000 and 1008
FG_XOFFSET=12288 FG_WIDTH=4100 | -6000 | above 4096, because FG_XOFFSET is 12288
FG_WIDTH=20000 | -6000 | above 16384
FG_WIDTH=0 | -6000 | below 8
FG_XOFFSET=12288 FG_WIDTH=20000 | -6000 | above 4096, because FG_XOFFSET is 12288
FG_SENSORWIDTH=2048 FG_VANTAGEPOINT=FG_VANTAGEPOINT_TOP_RIGHT FG_WIDTH=2056 | -6000 | above 2048, because FG_SENSORWIDTH is 2048 and FG_VANTAGEPOINT is FG_VANTAGEPOINT_TOP_RIGHT
FG_LINEEXPOSURE=300 | -6000 | above 200, because FG_LINETRIGGERMODE is GRABBER_CONTROLLED and FG_LINEPERIODE is 200
FG_LINEPERIODE=2000 FG_LINEEXPOSURE=1050 | -6000 | above 1048.568
FG_LINETRIGGERDELAY=200.008 | -6000 | above 200, because FG_LINEPERIODE is 200
FG_IMG_SELECT_PERIOD=4 FG_IMG_SELECT=5 | -6000 | above 3, because FG_IMG_SELECT_PERIOD is 4
FG_IMG_SELECT_PERIOD=8 FG_IMG_SELECT=5 FG_IMG_SELECT_PERIOD=4 | -6000 | below 6, because FG_IMG_SELECT is 5
FG_CAMERASIMULATOR_FRAME_GAP=8 | -6000 | above 0, because FG_CAMERASIMULATOR_SELECT_MODE is FG_LINERATE
FG_CAMERASIMULATOR_SELECT_MODE=FG_PIXEL_FREQUENCY FG_CAMERASIMULATOR_LINE_GAP=60000 FG_CAMERASIMULATOR_SELECT_MODE=FG_LINERATE FG_CAMERASIMULATOR_LINERATE=1000 FG_CAMERASIMULATOR_WIDTH=10000 FG_CAMERASIMULATOR_SELECT_MODE=FG_FRAMERATE | -6000 | not accepted now, because FG_CAMERASIMULATOR_LINE_GAP still holds 60000 from another mode and FG_CAMERASIMULATOR_WIDTH is 10000
FG_CAMERASIMULATOR_SELECT_MODE=FG_PIXEL_FREQUENCY FG_CAMERASIMULATOR_LINE_GAP=60000 FG_CAMERASIMULATOR_SELECT_MODE=FG_LINERATE FG_CAMERASIMULATOR_LINERATE=100 FG_CAMERASIMULATOR_WIDTH=10000 FG_CAMERASIMULATOR_SELECT_MODE=FG_FRAMERATE | -6000 | not accepted now, because FG_CAMERASIMULATOR_LINE_GAP still holds 60000 from another mode and FG_CAMERASIMULATOR_FRAMERATE is 0.09765625
FG_CAMERASIMULATOR_PIXEL_FREQUENCY=0 | -6000 | below 0.25
FG_DEBUGSOURCE=10 | -6000 | above 1
FG_SCALINGFACTOR_RED=4 | -6000 | above 3.9990234375
FG_TAPGEOMETRY=7 | -6000 | not one of the entries
FG_LINEEXPOSURE=nan | -6000 | not a number
FG_LINEEXPOSURE=inf | -6000 | above 200, because FG_LINETRIGGERMODE is GRABBER_CONTROLLED and FG_LINEPERIODE is 200
)";

/// The ends or entries that an explanation calls accepted.
std::vector<std::string> acceptedValues(std::string text) {
    if (text.empty()) return {};
    if (text.starts_with("only ")) return {text.substr(5)};
    if (const auto step = text.find(", step"); step != text.npos) text.erase(step);
    const std::string between = text.find(" to ") != text.npos ? " to " : ", ";
    std::vector<std::string> values;
    for (std::size_t end = 0; end != text.npos; text.erase(0, end + between.size()))
        values.push_back(text.substr(0, end = text.find(between)));
    return values;
}

TEST_F(Explaining, NamesTheRuleAndTheCause) {
    std::istringstream cases(kCases + 1);
    for (std::string line; std::getline(cases, line);) {
        SCOPED_TRACE(line);
        const auto end = line.find(" | "), codeEnd = line.find(" | ", end + 3);
        const int expected = std::stoi(line.substr(end + 3));
        Applet fresh(library(), std::make_unique<VirtualBoard>(),
                     {.writeDefaults = true, .rememberSteps = true});
        std::istringstream settings(line.substr(0, end));
        Setting refused;
        std::string value;
        int code = 0;
        for (std::string name; std::getline(settings >> std::ws, name, '=') && settings >> value;) {
            EXPECT_EQ(0, code);
            refused = {name, fresh.parameter(name).parse(value)};
            try {
                fresh.set(name, refused.value);
            } catch (const Refused& refusal) {
                code = refusal.code;
            }
        }
        EXPECT_EQ(expected, code);
        const Snapshot before(fresh);
        const Explanation why = explain(fresh, refused, code);
        EXPECT_EQ(refused.parameter + " = " + value + " refused (" + std::to_string(code) +
                      "): " + line.substr(codeEnd + 3),
                  why.sentence());
        EXPECT_THAT(changesBetween(before, Snapshot(fresh)), IsEmpty()) << "explaining touched the applet";

        // Whatever is named must hold on the applet itself.
        const auto expectAccepted = [&](std::vector<std::pair<std::string, std::string>> steps) {
            const auto trial = fresh.twin();
            for (const auto& [name, text] : steps)
                EXPECT_NO_THROW(trial->set(name, trial->parameter(name).parse(text)))
                    << name << " = " << text;
        };
        auto named = acceptedValues(why.accepted);
        named.insert(named.end(), why.nearest.begin(), why.nearest.end());
        for (const auto& accepted : named) expectAccepted({{refused.parameter, accepted}});
        for (std::size_t i = 0; i < why.causes.size(); ++i) {
            const Cause& cause = why.causes[i];
            if (i + 1 < why.causes.size() && why.causes[i + 1].together) continue;  // tried with the next one
            for (const auto& remedy : cause.remedies) {
                std::vector<std::pair<std::string, std::string>> steps{{cause.parameter, remedy},
                                                                       {refused.parameter, value}};
                if (cause.together)
                    steps.insert(steps.begin(),
                                 {why.causes[i - 1].parameter, why.causes[i - 1].remedies.front()});
                expectAccepted(steps);
            }
        }
    }
}

TEST_F(Explaining, AdvisesWhatToSetFirst) {
    set("FG_XOFFSET", "12288");
    EXPECT_THAT(explanationOf("FG_WIDTH", "4104").advice(),
                ElementsAre("nearest accepted: 4096", "or first set FG_XOFFSET to 12280 or less",
                            "accepted now: 8 to 4096, step 8"));
    EXPECT_THAT(
        explanationOf("FG_LINEEXPOSURE", "300").advice(),
        ElementsAre("nearest accepted: 200",
                    "or first set FG_LINETRIGGERMODE to ASYNC_TRIGGER or ASYNC_GATED",
                    "or set FG_LINEPERIODE to 300 or more", "accepted now: 0.512 to 200, step 0.008"));
    EXPECT_THAT(explanationOf("FG_WIDTH", "20000").advice(),
                Contains("no value of FG_XOFFSET alone makes room for it"));
    EXPECT_THAT(explanationOf("FG_IMG_SELECT", "255").advice(),
                ElementsAre("nearest accepted: 0", "or first set FG_IMG_SELECT_PERIOD to 256",
                            "accepted now: only 0"));
}

TEST_F(Explaining, KeepsTheMeaningOfOtherCodes) {
    EXPECT_EQ("FG_CAMSTATUS = 1 refused (-12): it can only be read",
              explanationOf("FG_CAMSTATUS", "1").sentence());
    EXPECT_EQ("FG_LUT_VALUE_RED = 300 refused (-6000): 300 is above 255",
              explanationOf("FG_LUT_VALUE_RED", "300").sentence());
    set("FG_LUT_CUSTOM_FILE", "/nowhere.lut");
    EXPECT_EQ("FG_LUT_TYPE = LUT_TYPE_CUSTOM refused (-2076): the file does not exist",
              explanationOf("FG_LUT_TYPE", "LUT_TYPE_CUSTOM").sentence());
}

TEST_F(Explaining, SaysWhenTheBoardIsToBlame) {
    boardOf(applet).refuseWrites("Device1_Process0_Buffer_0_DRAM_A_0_XLength", -6000);
    EXPECT_THAT(explanationOf("FG_WIDTH", "2048").sentence(),
                HasSubstr("another instance in the same state accepts it"));
}

TEST_F(Explaining, TakesNoLimitFromWhatIsNoNumber) {
    set("FG_PROCESSING_GAMMA", "nan");
    const std::string told = explanationOf("FG_PROCESSING_GAMMA", "9e9").sentence();
    EXPECT_THAT(told, HasSubstr("above"));
    EXPECT_THAT(told, Not(HasSubstr("nan")));
}

TEST_F(Explaining, FindsWhatNarrowsARange) {
    EXPECT_THAT(narrowings(applet, "FG_WIDTH"), IsEmpty());
    EXPECT_THAT(narrowings(applet, "FG_CAMSTATUS"), IsEmpty());
    set("FG_XOFFSET", "12288");
    const auto width = narrowings(applet, "FG_WIDTH");
    ASSERT_EQ(1U, width.size());
    EXPECT_TRUE(width[0].upper);
    EXPECT_EQ("4096", width[0].limit);
    EXPECT_EQ("FG_XOFFSET is 12288", causesText(width[0].causes));

    set("FG_IMG_SELECT_PERIOD", "8");
    set("FG_IMG_SELECT", "5");
    const auto period = narrowings(applet, "FG_IMG_SELECT_PERIOD");
    ASSERT_EQ(1U, period.size());
    EXPECT_FALSE(period[0].upper);
    EXPECT_EQ("6", period[0].limit);
}

TEST_F(Explaining, FindsWhatMakesAParameterReadOnly) {
    EXPECT_EQ("FG_LINETRIGGERMODE is GRABBER_CONTROLLED",
              causesText(causesOfReadOnly(applet, "FG_LINETRIGGERINSRC")));
    EXPECT_THAT(causesOfReadOnly(applet, "FG_CAMSTATUS"), IsEmpty());
    EXPECT_THAT(causesOfReadOnly(applet, "FG_WIDTH"), IsEmpty());
}

TEST_F(Explaining, FindsWhatAParameterDrives) {
    EXPECT_THAT(drivenDesignParameters(applet, "FG_LINETRIGGERDEBOUNCING"),
                ElementsAre("Device1_Process0_Trigger_Trigger_LineTrgDebouncingTime",
                            "Device1_Process1_Trigger_Inputs_Debounce8_Prescale_Period"));
    EXPECT_THAT(drivenDesignParameters(applet, "FG_SENDSOFTWARETRIGGER"),
                ElementsAre("Device1_Process0_Trigger_Trigger_SoftwareTrgPulse"));
    EXPECT_THAT(drivenDesignParameters(applet, "FG_CAMSTATUS"), IsEmpty());
}

}  // namespace
}  // namespace marovine::host
