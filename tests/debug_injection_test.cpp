/// Debug points: which there are, and what reaches the selected one.

#include <filesystem>

#include "tests/AppletFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kRefusal = -777;
constexpr std::uint32_t kInject = 0;   // debug point 0 of the design only injects
constexpr std::uint32_t kMonitor = 1;  // debug point 1 monitors as well
constexpr std::uint64_t kLargestPixel = 0x1FFFFFFFFFFFFFF;

std::string designName(std::uint32_t point, const char* ending) {
    return std::string(point == kInject ? "Device1_Process0_Debug_CameraInput"
                                        : "Device1_Process0_Debug_ImageOutput") +
           ending;
}

class DebugTest : public AppletTest {
 protected:
    void select(std::uint32_t point) { EXPECT_EQ(0, applet.set("FG_DEBUGSOURCE", point)); }
    /// The code of a read.
    int read(const char* name) {
        std::array<char, 8> anything{};
        return Fg_getParameterWithType(applet.record(), OpenApplet::idOf(name), anything.data(), 0,
                                       FG_TYPE_TEXT);
    }
};

// ---- choice ----

TEST_F(DebugTest, SelectsWhatTheDesignLists) {
    EXPECT_EQ(0u, applet.get<std::uint32_t>("FG_DEBUGSOURCE"));
    EXPECT_EQ("Camera Input", applet.getText("FG_DEBUGSOURCENAME"));
    select(kMonitor);
    EXPECT_EQ("Image Output", applet.getText("FG_DEBUGSOURCENAME"));
    EXPECT_EQ(7, applet.node("FG_DEBUGOUTENABLE").accessFlags);
    EXPECT_EQ(0xFFFFFFu, applet.node("FG_DEBUGOUTPIXEL").value.uint32.maximum) << "the runtime's own range";
    select(kInject);
    EXPECT_EQ(1, applet.node("FG_DEBUGOUTENABLE").accessFlags);
    EXPECT_EQ(0u, applet.node("FG_DEBUGOUTPIXEL").value.uint32.maximum);

    EXPECT_EQ(error::outOfRange, applet.set("FG_DEBUGSOURCE", 2u));
    EXPECT_EQ(error::outOfRange, applet.set("FG_DEBUGSOURCE", 0xFFFFFFFFu));
    applet.board().refuseReads("Device1_Process0_Debug_Entries", kRefusal);
    EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGSOURCE", kMonitor));
    EXPECT_EQ(kInject, applet.get<std::uint32_t>("FG_DEBUGSOURCE"));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
}

// ---- operation mode ----

TEST_F(DebugTest, SwitchesOneBitOfTheOperationModeAndKeepsTheOther) {
    struct Case {
        std::uint32_t point, before;
        const char* name;
        std::int32_t value;
        std::vector<std::uint32_t> written;
    };
    const Case cases[] = {
        {kInject, 0, "FG_DEBUGINENABLE", 1, {1}},   {kInject, 1, "FG_DEBUGINENABLE", 0, {0}},
        {kMonitor, 2, "FG_DEBUGINENABLE", 1, {3}},  {kMonitor, 3, "FG_DEBUGINENABLE", 0, {2}},
        {kMonitor, 0, "FG_DEBUGINENABLE", 1, {1}},  {kInject, 1, "FG_DEBUGOUTENABLE", 1, {}},
        {kMonitor, 3, "FG_DEBUGOUTENABLE", 0, {1}}, {kMonitor, 1, "FG_DEBUGOUTENABLE", 1, {3}},
        {kMonitor, 0, "FG_DEBUGOUTENABLE", 1, {2}},
    };
    for (const auto& [point, before, name, value, written] : cases) {
        SCOPED_TRACE(std::string(name) + " from mode " + std::to_string(before));
        select(point);
        applet.board().force(designName(point, "_OperationMode"), before);
        EXPECT_EQ(0, applet.set(name, value));
        std::vector<DesignWrite> expected;
        for (const auto mode : written)
            expected.push_back(
                {point == kInject ? "Debug_CameraInput_OperationMode" : "Debug_ImageOutput_OperationMode",
                 std::to_string(mode)});
        EXPECT_EQ(expected, applet.takeWrites());
    }
}

TEST_F(DebugTest, ReadsTheOperationModeFromTheDesign) {
    for (const std::uint32_t point : {kInject, kMonitor})
        for (std::uint32_t mode = 0; mode < 4; ++mode) {
            select(point);
            applet.board().force(designName(point, "_OperationMode"), mode);
            EXPECT_EQ(static_cast<int>(mode & 1), applet.get<std::int32_t>("FG_DEBUGINENABLE"));
            EXPECT_EQ(point == kMonitor && mode >= 2 ? 1 : 0, applet.get<std::int32_t>("FG_DEBUGOUTENABLE"));
        }
}

// ---- injection and monitoring ----

TEST_F(DebugTest, InjectsAtTheSelectedPoint) {
    select(kMonitor);
    EXPECT_EQ(0, applet.setText("FG_DEBUGFILE", "picture.tif"));
    EXPECT_EQ(0, applet.set("FG_DEBUGINSERT", constantOf("FG_APPLY")));
    EXPECT_EQ(0, applet.set("FG_DEBUGWRITEPIXEL", kLargestPixel));
    EXPECT_EQ(0, applet.set("FG_DEBUGWRITEFLAG", constantOf("FG_ENDOFFRAME")));
    const auto writes = applet.board().takeWrites();
    EXPECT_THAT(inTestForm(writes),
                ElementsAre(DesignWrite{"Debug_ImageOutput_DebugFile", "'picture.tif'"},
                            DesignWrite{"Debug_ImageOutput_Insert", "1"},
                            DesignWrite{"Debug_ImageOutput_Inject_WritePixel", std::to_string(kLargestPixel)},
                            DesignWrite{"Debug_ImageOutput_Inject_WriteFlag", "1"}));
    EXPECT_EQ(FG_TYPE_UINT64, writes[2].type);

    EXPECT_EQ("picture.tif", applet.getText("FG_DEBUGFILE"));
    EXPECT_EQ(kLargestPixel, applet.get<std::uint64_t>("FG_DEBUGWRITEPIXEL"));
    applet.board().force(designName(kMonitor, "_Inject_ReadyForInjection"), 0u);
    EXPECT_EQ(constantOf("FG_NO"), applet.get<std::int32_t>("FG_DEBUGREADY"));
    // What is cached does not follow to another point, what the design holds does not either.
    select(kInject);
    EXPECT_EQ("", applet.getText("FG_DEBUGFILE"));
    EXPECT_EQ(constantOf("FG_YES"), applet.get<std::int32_t>("FG_DEBUGREADY"));
}

TEST_F(DebugTest, MonitorsWhereTheDesignCan) {
    applet.board().force(designName(kMonitor, "_XPosition"), 11u);
    applet.board().force(designName(kMonitor, "_YPosition"), 12u);
    applet.board().force(designName(kMonitor, "_PixelValue"), 0xABCDEFu);
    for (const auto& [name, value] : {std::pair{"FG_DEBUGOUTXPOS", 11u}, std::pair{"FG_DEBUGOUTYPOS", 12u},
                                      std::pair{"FG_DEBUGOUTPIXEL", 0xABCDEFu}}) {
        select(kMonitor);
        EXPECT_EQ(value, applet.get<std::uint32_t>(name));
        select(kInject);
        EXPECT_EQ(0u, applet.get<std::uint32_t>(name));
    }
}

TEST_F(DebugTest, SavesTheRuntimesOwnConfiguration) {
    const TemporaryFile file(".mcf");
    EXPECT_EQ(0, applet.setText("FG_DEBUGSAVECONFIG", file.name()));
    EXPECT_TRUE(std::filesystem::exists(file.name()));
    EXPECT_EQ(file.name(), applet.getText("FG_DEBUGSAVECONFIG"));
    EXPECT_EQ(0, applet.setText("FG_DEBUGSAVECONFIG", "/nowhere/to/be/found.mcf"));
    EXPECT_EQ("/nowhere/to/be/found.mcf", applet.getText("FG_DEBUGSAVECONFIG"));
}

// ---- failures ----

TEST_F(DebugTest, RefusesValuesOutsideTheirSets) {
    for (const char* name : {"FG_DEBUGINENABLE", "FG_DEBUGOUTENABLE", "FG_DEBUGWRITEFLAG"})
        for (const std::int32_t value : {-1, 2})
            EXPECT_EQ(error::outOfRange, applet.set(name, value)) << name;
    EXPECT_EQ(error::outOfRange, applet.set("FG_DEBUGINSERT", 0));
    EXPECT_EQ(error::outOfRange, applet.set("FG_DEBUGWRITEPIXEL", kLargestPixel + 1));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
}

TEST_F(DebugTest, ReportsEveryFailedAccessAlikeAndKeepsTheCache) {
    auto& board = applet.board();
    select(kMonitor);
    EXPECT_EQ(0, applet.set("FG_DEBUGWRITEPIXEL", std::uint64_t{5}));
    board.refuseWrites(designName(kMonitor, "_Inject_WritePixel"), kRefusal);
    EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGWRITEPIXEL", std::uint64_t{6}));
    EXPECT_EQ(5u, applet.get<std::uint64_t>("FG_DEBUGWRITEPIXEL"));
    board.refuseWrites(designName(kMonitor, "_Inject_WriteFlag"), kRefusal);
    EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGWRITEFLAG", constantOf("FG_ENDOFFRAME")));
    EXPECT_EQ(constantOf("FG_ENDOFLINE"), applet.get<std::int32_t>("FG_DEBUGWRITEFLAG"));
    board.refuseWrites(designName(kMonitor, "_Insert"), kRefusal);
    EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGINSERT", constantOf("FG_APPLY")));
    // Longer than the design stores.
    EXPECT_EQ(error::internalFailure, applet.setText("FG_DEBUGFILE", std::string(5000, 'x').c_str()));

    for (const char* ending : {"_OperationMode", "_DebugFile", "_Inject_ReadyForInjection", "_XPosition",
                               "_YPosition", "_PixelValue"})
        board.refuseReads(designName(kMonitor, ending), kRefusal);
    for (const char* name : {"FG_DEBUGINENABLE", "FG_DEBUGOUTENABLE", "FG_DEBUGFILE", "FG_DEBUGREADY",
                             "FG_DEBUGOUTXPOS", "FG_DEBUGOUTYPOS", "FG_DEBUGOUTPIXEL"})
        EXPECT_EQ(error::internalFailure, read(name)) << name;
    applet.takeWrites();
    // Each needs the operation mode first, the insertion as a check only.
    for (const char* name : {"FG_DEBUGINENABLE", "FG_DEBUGOUTENABLE", "FG_DEBUGINSERT"})
        EXPECT_EQ(error::internalFailure, applet.set(name, 1)) << name;
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
}

// ---- other lists of debug points ----

/// Reopens with a changed list; the board keeps what is forced.
class DebugListTest : public DebugTest {
 protected:
    void reopenWith(std::initializer_list<std::pair<const char*, std::string>> texts) {
        for (const auto& [name, text] : texts)
            applet.board().force(std::string("Device1_Process0_Debug_") + name, text);
        applet.reopen(1);
    }
    void expectNoDebugPoint() {
        for (const char* name :
             {"FG_DEBUGINENABLE", "FG_DEBUGOUTENABLE", "FG_DEBUGINSERT", "FG_DEBUGWRITEFLAG"})
            EXPECT_EQ(error::internalFailure, applet.set(name, 1)) << name;
        EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGWRITEPIXEL", std::uint64_t{1}));
        EXPECT_EQ(error::internalFailure, applet.setText("FG_DEBUGFILE", "x"));
        for (const char* name :
             {"FG_DEBUGSOURCENAME", "FG_DEBUGINENABLE", "FG_DEBUGOUTENABLE", "FG_DEBUGFILE", "FG_DEBUGREADY",
              "FG_DEBUGOUTXPOS", "FG_DEBUGOUTYPOS", "FG_DEBUGOUTPIXEL"})
            EXPECT_EQ(error::internalFailure, read(name)) << name;
    }
    /// Whether the start-up routine came to its end.
    bool simulatorIsSet() {
        return applet.node("FG_CAMERASIMULATOR_PIXEL_FREQUENCY").value.real.maximum == 999.9999999999999;
    }
};

TEST_F(DebugListTest, OfNoneLeavesNothingToSelect) {
    for (const char* count : {"0", "", "-1"}) {
        reopenWith({{"Entries", count}});
        EXPECT_TRUE(simulatorIsSet());
        for (const std::uint32_t point : {0u, 1u, 0xFFFFFFFFu})
            EXPECT_EQ(error::outOfRange, applet.set("FG_DEBUGSOURCE", point));
        expectNoDebugPoint();
    }
}

TEST_F(DebugListTest, ThatCannotBeReadEndsTheStartUpRoutine) {
    applet.board().refuseReads("Device1_Process0_Debug_Entries", kRefusal);
    applet.reopen(1);
    EXPECT_FALSE(simulatorIsSet());
    EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGSOURCE", 0u));
    expectNoDebugPoint();
}

TEST_F(DebugListTest, WithAnUnknownKindKeepsTheEntriesBeforeIt) {
    for (const char* kind : {"injectMonitor", "InjectMonitor2", ""}) {
        reopenWith({{"Type1", kind}});
        EXPECT_FALSE(simulatorIsSet());
        EXPECT_EQ("Camera Input", applet.getText("FG_DEBUGSOURCENAME"));
        EXPECT_EQ(0, applet.set("FG_DEBUGINENABLE", constantOf("FG_ON")));
        EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGSOURCE", 1u)) << "listed, but not read";
        EXPECT_EQ(0u, applet.get<std::uint32_t>("FG_DEBUGSOURCE"));
    }
}

TEST_F(DebugListTest, MayExchangeKindsAndPaths) {
    reopenWith({{"Type0", "InjectMonitor"}, {"Path0", "Debug_ImageOutput"}});
    EXPECT_TRUE(simulatorIsSet());
    EXPECT_EQ(0, applet.set("FG_DEBUGOUTENABLE", constantOf("FG_ON")));
    EXPECT_THAT(applet.takeWrites(), ElementsAre(DesignWrite{"Debug_ImageOutput_OperationMode", "2"}));
}

TEST_F(DebugListTest, WithOverlongTextsIsCut) {
    const std::string endless(5000, 'n');
    reopenWith({{"Entries", "2" + endless}, {"Name0", endless}, {"Path1", endless}});
    EXPECT_TRUE(simulatorIsSet());
    EXPECT_EQ(std::string(127, 'n'), applet.getText("FG_DEBUGSOURCENAME"));
    EXPECT_EQ(0, applet.set("FG_DEBUGINENABLE", constantOf("FG_ON")));
    select(kMonitor);
    EXPECT_EQ(error::internalFailure, applet.set("FG_DEBUGINENABLE", constantOf("FG_ON"))) << "no such path";
}

TEST_F(DebugListTest, WithMoreEntriesThanTheDesignDescribesStopsThere) {
    reopenWith({{"Entries", "3"}});
    EXPECT_FALSE(simulatorIsSet());
    select(kMonitor);
    EXPECT_EQ("Image Output", applet.getText("FG_DEBUGSOURCENAME"));
}

}  // namespace
}  // namespace marovine::test
