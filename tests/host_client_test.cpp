/// The client of the applet's exports: values, descriptions, refusals, twins, traces.

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <sstream>

#include <nlohmann/json.hpp>

#include "base/Names.h"
#include "client/Snapshot.h"
#include "command/Console.h"
#include "command/Curve.h"
#include "command/Trace.h"
#include "tables/EnumerationTables.h"
#include "tables/SdkParameterTable.h"
#include "tests/HostFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::host {
namespace {

using test::HostTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Client = HostTest;

std::string messageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST_F(Client, ReadsAndWritesEachTypeOfValue) {
    struct Case {
        const char* name;
        const char* text;
        Value value;
    };
    for (const auto& [name, text, value] : {
             Case{"FG_WIDTH", "0x800", std::uint32_t{2048}},
             Case{"FG_TAPGEOMETRY", "FG_GEOMETRY_4X2E", constant("FG_GEOMETRY_4X2E")},
             Case{"FG_TAPGEOMETRY", "fg_geometry_8x", constant("FG_GEOMETRY_8X")},
             Case{"FG_TAPGEOMETRY", "1X10", constant("FG_GEOMETRY_1X10")},
             Case{"FG_TAPGEOMETRY", "85983232", constant("FG_GEOMETRY_5X2")},
             Case{"FG_DIGIO_OUTPUT", "-1", std::int32_t{-1}},
             Case{"FG_LINEEXPOSURE", "12.5", 12.5},
             Case{"FG_DEBUGWRITEPIXEL", "0x1FFFFFFFFFFFFFF", std::uint64_t{0x1FFFFFFFFFFFFFF}},
             Case{"FG_LUT_CUSTOM_FILE", "a b.lut", std::string("a b.lut")},
         }) {
        const Value parsed = applet.parameter(name).parse(text);
        EXPECT_EQ(value, parsed) << name << " = " << text;
        applet.set(name, parsed);
        if (std::string_view(name) == "FG_DIGIO_OUTPUT")
            continue;  // -1 asks for no change and reads as what is
        EXPECT_EQ(value, applet.get(name)) << name << " = " << text;
    }
    EXPECT_EQ(Value(std::int64_t{0}), applet.get("FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE"));
    EXPECT_EQ(Value(std::string("Marovine.hap")), applet.get("FG_HAP_FILE"));
    EXPECT_EQ(Value(std::uint32_t{1}), applet.get("FG_NR_OF_DMAS"));  // the host runtime's own
}

TEST_F(Client, RefusesTextsThatAreNoValue) {
    struct Case {
        const char* name;
        const char* text;
        const char* message;
    };
    for (const Case& c : {
             Case{"FG_WIDTH", "wide",
                  "FG_WIDTH: wide is no number; give a whole number in the range 8 to 16384"},
             Case{"FG_WIDTH", "8.5", "FG_WIDTH: 8.5 is not a whole number; give a whole number"},
             Case{"FG_WIDTH", "-8", "FG_WIDTH: -8 is below the minimum 8"},
             Case{"FG_WIDTH", "4294967296", "FG_WIDTH: 4294967296 is above the maximum 16384"},
             Case{"FG_WIDTH", "", "a value is missing after '='"},
             Case{"FG_LINEEXPOSURE", "1,5", "FG_LINEEXPOSURE: 1,5 is no number; give a decimal number"},
             Case{"FG_TAPGEOMETRY", "FG_GEOMETRY_4X3", "nearest: FG_GEOMETRY_4X2"},
             Case{"FG_LUT_VALUE_RED", "1,x", "x is no element"},
         })
        EXPECT_THAT(messageOf([&] { applet.parameter(c.name).parse(c.text); }), HasSubstr(c.message));
}

TEST_F(Client, ConvertsNumbersThatKeepTheirValueAndNoOthers) {
    applet.set("FG_WIDTH", std::int32_t{1000});
    EXPECT_EQ(Value(std::uint32_t{1000}), applet.get("FG_WIDTH"));
    applet.set("FG_LINEPERIODE", std::int32_t{300});
    EXPECT_EQ(Value(300.0), applet.get("FG_LINEPERIODE"));
    EXPECT_THROW(applet.set("FG_WIDTH", 1000.5), UnreadableValue);
    EXPECT_THROW(applet.set("FG_WIDTH", std::int32_t{-8}), UnreadableValue);
    EXPECT_THROW(applet.set("FG_WIDTH", std::string("1000")), UnreadableValue);
}

TEST_F(Client, ReachesElementsOfATable) {
    applet.setElements("FG_LUT_VALUE_GREEN", 250, {1, 2, 3, 4, 5, 6});
    EXPECT_THAT(applet.getElements("FG_LUT_VALUE_GREEN", 249, 3), ElementsAre(249, 1, 2));
    EXPECT_EQ(256U, std::get<Field>(applet.get("FG_LUT_VALUE_GREEN")).size());
    EXPECT_THROW(applet.setElements("FG_LUT_VALUE_GREEN", 251, {1, 2, 3, 4, 5, 6}), Refused);
    EXPECT_THROW(applet.getElements("FG_LUT_VALUE_GREEN", 256, 1), Refused);
}

TEST_F(Client, DescribesAParameterAsItIsNow) {
    const Parameter period = applet.parameter("FG_LINEPERIODE");
    EXPECT_EQ("200 µs", period.textWithUnit(applet.get("FG_LINEPERIODE")));
    EXPECT_EQ("Line Trigger / ExSync > ExSync Output", period.group);
    EXPECT_EQ("Image width of the acquisition ROI.", applet.description("FG_WIDTH"));
    EXPECT_EQ("", applet.description("FG_NR_OF_DMAS"));

    EXPECT_EQ("8 to 16384, step 8", applet.parameter("FG_WIDTH").rangeText());
    set("FG_XOFFSET", "12288");
    EXPECT_EQ("8 to 4096, step 8", applet.parameter("FG_WIDTH").rangeText());

    EXPECT_FALSE(applet.parameter("FG_LINETRIGGERINSRC").writable);
    set("FG_LINETRIGGERMODE", "ASYNC_TRIGGER");
    EXPECT_TRUE(applet.parameter("FG_LINETRIGGERINSRC").writable);
}

TEST_F(Client, KnowsAllParametersAndEvents) {
    const auto tree = applet.tree();
    EXPECT_EQ("FG_CAMERA_LINK_CAMTYPE", tree.front().name) << "display order begins with Camera Link";
    EXPECT_EQ("FG_CCSEL3", tree.back().name);
    for (const auto& event : applet.events())
        EXPECT_EQ(event.mask, library()->eventMask(applet.record(), event.name.c_str()));
}

TEST_F(Client, TellsCodesWithTheirMeaning) {
    try {
        applet.set("FG_WIDTH", std::uint32_t{1004});
        FAIL() << "1004 is no multiple of 8";
    } catch (const Refused& refusal) {
        EXPECT_EQ(-7080, refusal.code);
        EXPECT_EQ("FG_WIDTH", refusal.parameter);
        EXPECT_EQ("1004", refusal.value);
        EXPECT_STREQ("FG_WIDTH = 1004 refused (-7080): the value is not a multiple of the required step",
                     refusal.what());
    }
    EXPECT_THAT(messageOf([&] { applet.set("FG_WITDH", 8); }), HasSubstr("nearest: FG_WIDTH"));
    EXPECT_THAT(messageOf([&] { applet.load("/nowhere.mcf"); }), HasSubstr("refused (-2076)"));
    boardOf(applet).refuseReads("Device1_Process0_BoardStatus_FpgaTemperature", -31002);
    EXPECT_THAT(messageOf([&] { applet.get("FG_SYSTEMMONITOR_FPGA_TEMPERATURE"); }),
                HasSubstr("(-31002): the board: "));
}

TEST_F(Client, OpensOnAnyDevice) {
    struct Plain final : Device {
        VirtualBoard board;
        GXdevice* handle() const override { return board.handle(); }
        std::unique_ptr<Device> another() const override { return std::make_unique<Plain>(); }
    };
    const Applet other(library(), std::make_unique<Plain>());
    EXPECT_EQ(other.names(), other.twin()->names());
    EXPECT_THAT(messageOf([&] { boardOf(other); }), HasSubstr("control of a virtual board"));
}

TEST_F(Client, FailsToOpenWithTheCodeOfTheBoard) {
    boardOf(applet).refuseDesign(true);
    EXPECT_THAT(messageOf([&] { Applet(library(), std::make_unique<VirtualBoard>()); }),
                HasSubstr("opening the applet refused (-100)"));
    boardOf(applet).clearOpeningFaults();
    EXPECT_NO_THROW(Applet(library(), std::make_unique<VirtualBoard>()));
    EXPECT_THAT(messageOf([] { Library::load("/nowhere/libMarovine.so"); }), HasSubstr("--applet"));
}

TEST_F(Client, MakesATwinInTheSameState) {
    set("FG_XOFFSET", "64");
    set("FG_WIDTH", "512");
    set("FG_PROCESSING_GAMMA", "2.2");
    applet.setElements("FG_LUT_VALUE_BLUE", 7, {9});
    EXPECT_THROW(set("FG_WIDTH", "20000"), Refused);
    const auto twin = applet.twin();
    EXPECT_THAT(changesBetween(Snapshot(applet), Snapshot(*twin)), IsEmpty());
    for (const auto& name : boardOf(applet).parameterNames())
        EXPECT_EQ(boardOf(applet).value(name), boardOf(*twin).value(name)) << name;
    twin->set("FG_WIDTH", 8);
    EXPECT_EQ(Value(std::uint32_t{512}), applet.get("FG_WIDTH"));
}

TEST_F(Client, ForgetsSetsThatALaterOneReplacedWhileTimeRuns) {
    set("FG_WIDTH", "512");
    for (int i = 0; i < 20'000; ++i) applet.set("FG_LUT_CUSTOM_FILE", std::to_string(i));
    boardOf(applet).advanceClock(0.01);  // the analyzers count lines that no twin has seen
    applet.shortenSteps();
    EXPECT_THAT(applet.filesInSteps(), ElementsAre("19999"));
    EXPECT_EQ(Value(std::uint32_t{512}), applet.twin()->get("FG_WIDTH"));
}

TEST_F(Client, ATwinWritesNoFileAgain) {
    const TemporaryFile file(".lut");
    set("FG_LUT_SAVE_FILE", file.name());
    ASSERT_FALSE(file.content().empty());
    file.write("mine");
    static_cast<void>(applet.twin());
    EXPECT_EQ("mine", file.content());
}

TEST_F(Client, SeesEverythingThatMoves) {
    const Snapshot before(applet);
    set("FG_LINETRIGGERMODE", "ASYNC_TRIGGER");
    applet.setElements("FG_LUT_VALUE_RED", 3, {9, 8});
    std::ostringstream text;
    for (const auto& change : changesBetween(before, Snapshot(applet)))
        if (change.parameter != "FG_DIGIO_INPUT")  // where the encoder's tracks are seen from now on
            text << change.parameter << ' ' << nameOf(change.aspect) << ' ' << change.before << " -> "
                 << change.after << '\n';
    EXPECT_EQ(
        "FG_LUT_VALUE_RED value [3] 3 4 -> [3] 9 8\n"
        "FG_LINETRIGGERMODE value GRABBER_CONTROLLED -> ASYNC_TRIGGER\n"
        "FG_LINETRIGGERINSRC access read only -> read and write\n"
        "FG_LINETRIGGERINPOLARITY access read only -> read and write\n"
        "FG_LINETRIGGERDEBOUNCING access read only -> read and write\n"
        "FG_LINE_DOWNSCALE access read only -> read and write\n"
        "FG_LINE_DOWNSCALEINIT access read only -> read and write\n"
        "FG_SHAFTENCODERON access read only -> read and write\n"
        "FG_LINEEXPOSURE maximum 200 -> 1048.568\n",
        text.str());
}

TEST_F(Client, TracesWritesWithTheValueBefore) {
    Trace trace(applet);
    set("FG_HEIGHT", "512");
    trace.collect("FG_HEIGHT = 512");
    set("FG_YOFFSET", "6");
    applet.setElements("FG_LUT_VALUE_RED", 3, {9, 8});
    trace.collect("a, \"b\"");
    std::vector<std::string> offsets;
    for (const auto& [cause, write, before] : trace.writes())
        if (write.name.ends_with("Trigger_YOffset") || write.name.ends_with("R_LUTcontent"))
            offsets.push_back(cause + ": " + textOf(*before) + " -> " + textOf(write.value));
    EXPECT_THAT(offsets, ElementsAre("FG_HEIGHT = 512: 0 -> 0", "FG_HEIGHT = 512: 0 -> 0", "a, \"b\": 0 -> 0",
                                     "a, \"b\": 0 -> 6", "a, \"b\": 3 4 -> 9 8"));

    const TemporaryFile csv(".csv");
    trace.save(csv.name());
    EXPECT_THAT(
        csv.content(),
        HasSubstr("\n32,\"a, \"\"b\"\"\",Device1_Process0_LookupTable_R_LUTcontent,100036,3,9 8,3 4,0\n"));
    const TemporaryFile json(".json");
    trace.save(json.name());
    const auto document = nlohmann::json::parse(json.content());
    ASSERT_EQ(trace.writes().size(), document.size());
    EXPECT_EQ(nlohmann::json({9, 8}), document.back()["value"]);
    EXPECT_EQ(3, document.back()["firstIndex"]);
    EXPECT_THROW(trace.save("/nowhere/trace.json"), std::runtime_error);

    // A refused write is no value before the next one.
    boardOf(applet).refuseNthWrite(1, -5);
    EXPECT_THROW(set("FG_USEDVAL", "FG_NO"), Refused);
    set("FG_USEDVAL", "FG_YES");
    trace.collect("refused");
    EXPECT_EQ(-5, std::prev(trace.writes().end(), 2)->write.result);
    EXPECT_EQ("1", textOf(*trace.writes().back().before));
    std::ostringstream text;
    trace.print(Console(text, 80));
    EXPECT_THAT(text.str(), HasSubstr("0 refused (-5)"));
}

TEST(Names, FindsWhatWasMeant) {
    const std::vector<std::string> names{"FG_WIDTH", "FG_HEIGHT", "FG_SENSORWIDTH", "FG_XOFFSET",
                                         "FG_YOFFSET"};
    struct Case {
        const char* typed;
        std::vector<std::string> nearest;
    };
    for (const auto& [typed, nearest] : {
             Case{"GF_WITDH", {"FG_WIDTH"}},  // a swap is one error, not two
             Case{"fg_width", {"FG_WIDTH"}},
             Case{"WIDTH", {"FG_WIDTH", "FG_SENSORWIDTH"}},
             Case{"FG_OFFSET", {"FG_XOFFSET", "FG_YOFFSET"}},
             Case{"FG_GAMMA_CORRECTION", {}},
             Case{"", {}},
         })
        EXPECT_EQ(nearest, nearestNames(typed, names)) << typed;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(
        nearestNames(std::string(100'000, 'A'), std::vector<std::string>(1000, names.front())).empty());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << "a name of any length";
    EXPECT_EQ(3U, editDistance("kitten", "sitting"));
    EXPECT_TRUE(matchesPattern("FG_CAMERASIMULATOR_WIDTH", "simulator"));
    EXPECT_TRUE(matchesPattern("FG_CAMERASIMULATOR_WIDTH", "fg_*_width"));
    EXPECT_FALSE(matchesPattern("FG_CAMERASIMULATOR_WIDTH", "width*"));
}

TEST(Console, FitsTheWidthWithoutCuttingWords) {
    EXPECT_THAT(wrapped("one two three", 7), ElementsAre("one two", "three"));
    EXPECT_THAT(wrapped("a,bb,ccc", 5), ElementsAre("a,bb,", "ccc"));
    EXPECT_THAT(wrapped("unbreakable word", 4), ElementsAre("unbreakable", "word"));
    EXPECT_EQ(4U, columnsOf("20µs"));
    std::ostringstream out;
    Table table({"name", "text"});
    table.add({"A", "one two three four five six"});
    table.print(Console(out, 24));
    EXPECT_EQ("name  text\nA     one two three four\n      five six\n", out.str());
}

TEST(Curve, RisesFromCornerToCorner) {
    Field identity(256);
    for (std::uint32_t i = 0; i < 256; ++i) identity[i] = i;
    EXPECT_THAT(curveLines(identity, 255, 4, 2), ElementsAre("⠀⠀⡠⠊", "⡠⠊⠀⠀"));
    EXPECT_THAT(curveLines(Field(256, 999), 255, 2, 1), ElementsAre("⠉⠉")) << "values beyond the top";
    EXPECT_THAT(curveLines({}, 255, 2, 1), IsEmpty());
}

}  // namespace
}  // namespace marovine::host
