/// What opening the applet does: every default reaches the design, in list order, and a refused one is
/// skipped.

#include <fstream>
#include <map>
#include <sstream>

#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

using testing::IsEmpty;

constexpr int kRefusal = -777;

/// The writes of one default.
struct Step {
    std::string parameter;
    std::vector<DesignWrite> writes;
};

/// The table of start-up writes, its references resolved.
std::vector<Step> readTable() {
    std::ifstream file(START_UP_WRITES);
    EXPECT_TRUE(file.is_open()) << START_UP_WRITES;
    std::vector<Step> steps;
    std::map<std::string, Writes> byName;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.starts_with('#')) continue;
        std::istringstream parts(line);
        std::string part;
        if (!line.starts_with(' ')) {
            std::getline(parts, part, ':');
            steps.push_back({part, {}});
        }
        Writes& writes = steps.back().writes;
        while (std::getline(parts >> std::ws, part, ';')) {
            const auto split = part.find(' ');
            if (part.starts_with("as "))
                for (const auto& write : byName.at(part.substr(split + 1))) writes.push_back(write);
            else
                writes.push_back({part.substr(0, split), part.substr(split + 1)});
        }
        byName[steps.back().parameter] = writes;
    }
    return steps;
}

/// What was written, with the 256 entries of an identity table in short.
std::vector<DesignWrite> takeShortWrites(OpenApplet& applet) {
    std::string identity = "[0] 0";
    for (int i = 1; i < 256; ++i) identity += ", " + std::to_string(i);
    auto writes = applet.takeWrites();
    for (auto& write : writes)
        if (write.value == identity) write.value = "[0] 0..255";
    return writes;
}

void expectEqual(const std::vector<DesignWrite>& expected, const std::vector<DesignWrite>& written) {
    for (std::size_t i = 0; i < std::min(expected.size(), written.size()); ++i)
        ASSERT_EQ(expected[i], written[i]) << "write " << i;
    ASSERT_EQ(expected.size(), written.size());
}

TEST(StartUp, WritesTheDefaultsInOrder) {
    const auto steps = readTable();
    std::vector<std::string> listed, withDefault;
    for (const auto& step : steps) listed.push_back(step.parameter);
    for (const auto& row : sdkParameters)
        if (!std::holds_alternative<std::monostate>(row.defaultValue)) withDefault.push_back(row.name);
    EXPECT_EQ(withDefault, listed) << "the table has a section for each default";

    std::vector<DesignWrite> expected;
    for (const auto& step : steps) expected.insert(expected.end(), step.writes.begin(), step.writes.end());
    OpenApplet applet;
    expectEqual(expected, takeShortWrites(applet));
}

TEST(StartUp, SkipsARefusedDefaultAndAppliesTheRest) {
    const auto steps = readTable();
    OpenApplet applet;
    applet.takeWrites();
    unsigned before = 0;
    for (const auto& refused : steps) {
        if (refused.writes.empty()) continue;
        SCOPED_TRACE(refused.parameter);
        // The first write of the step is refused, which ends the step.
        applet.board().refuseNthWrite(before + 1, kRefusal);
        applet.reopen(0);
        std::vector<DesignWrite> expected;
        for (const auto& step : steps) {
            const auto count = &step == &refused ? 1 : step.writes.size();
            expected.insert(expected.end(), step.writes.begin(),
                            step.writes.begin() + static_cast<std::ptrdiff_t>(count));
        }
        expectEqual(expected, takeShortWrites(applet));
        before += static_cast<unsigned>(refused.writes.size());
    }
}

TEST(StartUp, LeavesEveryParameterAtItsDefault) {
    OpenApplet applet;
    for (const auto& row : sdkParameters)
        std::visit(
            [&]<class T>(const T& value) {
                if constexpr (std::is_same_v<T, const char*>) {
                    EXPECT_EQ(value, applet.getText(row.name));
                } else if constexpr (!std::is_same_v<T, std::monostate>) {
                    EXPECT_EQ(value, applet.get<T>(row.name)) << row.name;
                }
            },
            row.defaultValue);
}

TEST(StartUp, TakesABoardAsItIsWhenAskedTo) {
    EXPECT_THAT(OpenApplet(6).takeWrites(), testing::Not(IsEmpty())) << "only the first flag counts";
    EXPECT_THAT(OpenApplet(7).takeWrites(), IsEmpty());
    OpenApplet applet(1);
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
    FieldParameterInt entry{.value = 99, .index = 255};
    EXPECT_EQ(0, Fg_getParameterWithType(applet.record(), OpenApplet::idOf("FG_LUT_VALUE_RED"), &entry, 0,
                                         FG_TYPE_FIELD_INT));
    EXPECT_EQ(0u, entry.value) << "the tables are computed with the defaults only";
    EXPECT_EQ(999.9999999999999, applet.node("FG_CAMERASIMULATOR_PIXEL_FREQUENCY").value.real.maximum);

    EXPECT_EQ(0, applet.set("FG_LINEPERIODE", 300.0));
    applet.reopen(1);
    EXPECT_EQ(200.0, applet.get<double>("FG_LINEPERIODE")) << "the cache does not know the board's value";
    EXPECT_EQ(virtualboard::Value(300.0),
              applet.board().value("Device1_Process0_Trigger_Trigger_ExsyncPeriod"));
}

TEST(StartUp, GoesOnWithoutAListOfDebugPoints) {
    OpenApplet applet;
    applet.takeWrites();
    applet.board().hide("Device1_Process0_Debug_Entries");
    applet.reopen(0);
    applet.board().clearOpeningFaults();
    // The start values of the simulator are missing with the list, so that its defaults cannot all be
    // applied.
    EXPECT_EQ(4000.0, applet.node("FG_CAMERASIMULATOR_PIXEL_FREQUENCY").value.real.maximum);
    const auto writes = takeShortWrites(applet);
    for (const DesignWrite& write :
         {DesignWrite{"Camera_DvalMode", "1"}, DesignWrite{"WhiteBalance_White_BayerInit", "2"},
          DesignWrite{"LookupTable_B_LUTcontent", "[0] 0..255"},
          DesignWrite{"Trigger_Events_SelectCustomSignalEvent1_Polarity_Invert", "0"}})
        EXPECT_THAT(writes, testing::Contains(write));
    for (const auto& write : writes) EXPECT_FALSE(write.name.starts_with("Debug_")) << write;
}

}  // namespace
}  // namespace marovine::test
