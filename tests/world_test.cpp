/// World files, what is drawn of them, and the ground truth.

#include "board/world/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "board/imaging/LineScanCamera.h"
#include "board/world/WorldSchema.h"
#include "pictures/Png.h"
#include "tests/BoardFixture.h"
#include "tests/TemporaryFile.h"

namespace virtualboard::world {
namespace {

namespace fs = std::filesystem;
using imaging::Image;
using imaging::Pixel;
using testing::HasSubstr;

constexpr Pixel kRed{.blue = 10, .green = 20, .red = 230};
constexpr Pixel kBelt{.blue = 48, .green = 48, .red = 48};

/// A folder with a red picture of 20 columns and 30 rows.
class WorldTest : public test::BoardTest {
 protected:
    WorldTest() {
        fs::create_directory(folder);
        imaging::writePng(folder / "part.png", Image(20, 30, kRed));
    }
    ~WorldTest() override { fs::remove_all(folder); }

    std::shared_ptr<const World> world(const std::string& members) const {
        return readWorld("{\"format\": 1, " + members + "}", folder);
    }
    std::string refusal(const std::string& json) const {
        try {
            readWorld(json, folder);
        } catch (const WorldError& error) {
            return error.what();
        }
        return "accepted";
    }

    const fs::path folder = fs::temp_directory_path() / ("world-test-" + std::to_string(getpid()));
};

std::vector<Pixel> rowOf(const World& world, std::int64_t position, std::uint32_t first, std::size_t count) {
    std::vector<Pixel> row(count);
    world.parts->row(position, first, row);
    return row;
}

// ---- reading ----

TEST_F(WorldTest, tellsAllFaultsWithLinePathAndReason) {
    const std::string text = refusal(R"({
  "format": 1,
  "belt": {"speed": 1e300, "profle": [],
           "objectPixel": "0.1"},
  "parts": [
    {"picture": "part.png",
     "defects": [{"kind": "spots", "probability": 2}]}
  ],
  "inputs": [{"input": 12, "trains": [{"period": 1, "width": 0.5, "count": 1000000000}]}],
  "camera": {"phase": 2, "sensorWidth": 1.5}
})");
    for (const char* line : {
             "line 3: belt.speed: 1e+300 is above 100000 mm/s\n",
             "line 3: belt.profle: unknown; did you mean profile?\n",
             "line 4: belt.objectPixel: is a text where a number belongs\n",
             "line 6: parts[0].spacing: missing\n",
             "line 7: parts[0].defects[0].kind: \"spots\" is none of spot scratch colourShift missingPrint\n",
             "line 7: parts[0].defects[0].probability: 2 is above 1\n",
             "line 9: inputs[0].input: 12 is above 11\n",
             "line 9: inputs[0].trains[0].count: 1000000000 is above 10000000\n",
             "line 10: camera.sensorWidth: 1.5 is no whole number\n",
             "line 10: camera.phase: is a number where a text belongs",
         })
        EXPECT_THAT(text, HasSubstr(line));
    EXPECT_EQ(9, std::ranges::count(text, '\n'));
}

TEST_F(WorldTest, refusesWhatIsNoWorld) {
    const std::string deep(100'000, '[');
    struct Case {
        std::string json;
        const char* says;
    };
    for (const auto& c : {
             Case{"", "line 1: this is no JSON"},
             Case{"{\"format\": 1,\n\n\"belt\": {\"speed\": NaN}}", "line 3: belt.speed: this is no JSON"},
             Case{"{\"belt\": {\"speed\": 1e999}}", "number overflow"},
             Case{"{\"belt\":\n" + deep, "line 2: belt[0][0]"},
             Case{"[1]", "an array where an object belongs"},
             Case{"{\"format\": 1, \"seed\": 1,\n \"seed\": 2}", "line 2: seed: given twice"},
             Case{"{\"format\": 2}", "line 1: format: 2 is above 1"},
             Case{"{\"format\": 1, \"seed\": -1}", "-1 is below 0"},
             Case{std::string(5 << 20, ' '), "larger than 4 MB"},
             Case{"{\"format\": 1, \"about\": \"\xFF\"}", "ill-formed UTF-8"},
         })
        EXPECT_THAT(refusal(c.json), HasSubstr(c.says));
}

TEST_F(WorldTest, holdsValuesAgainstEachOther) {
    const auto part = [](const std::string& more) {
        return "\"parts\": [{\"picture\": \"part.png\", \"spacing\": 10, " + more + "}]";
    };
    std::ofstream(folder / "bad.csv") << "ms,level\n1,1\n0.5,0\n";
    std::ofstream(folder / "half.csv") << "1,high\n2,1\n";
    std::ofstream(folder / "text.png") << "no picture\n";
    struct Case {
        std::string members, says;
    };
    for (const auto& c : {
             Case{"\"parts\": [{\"picture\": \"gone.png\", \"spacing\": 9}]",
                  "parts[0].picture: there is no"},
             Case{"\"parts\": [{\"picture\": \"text.png\", \"spacing\": 9}]", "text.png"},
             Case{"\"belt\": {\"width\": 1.5}, " + part("\"at\": 0"),
                  "2.00 mm wide, more than the belt's 1.50"},
             Case{"\"belt\": {\"width\": 3}, " + part("\"across\": 1.5"), "parts reach to 3.50 mm"},
             Case{part("\"jitterAcross\": 1"), "parts[0].jitterAcross: parts would fall off"},
             Case{part("\"jitterAlong\": 4"), "parts[0].spacing: 10.00 mm is too near for parts of 3.00 mm"},
             Case{part("\"length\": 1e6, \"width\": 1600"), "too near"},
             Case{"\"belt\": {\"objectPixel\": 0.0001, \"width\": 1000000}, \"parts\": [{\"picture\": "
                  "\"part.png\", \"length\": 1000, \"width\": 1000, \"spacing\": 1000}]",
                  "parts[0].picture: the world's pictures have more than"},
             Case{
                 part("\"defects\": [{\"kind\": \"spot\", \"probability\": 1, \"region\": {\"left\": 0.5}}]"),
                 "parts[0].defects[0].region: reaches beyond"},
             Case{"\"inputs\": [{\"input\": 3, \"trace\": \"bad.csv\"}]",
                  "line 3: earlier than the row before"},
             Case{"\"inputs\": [{\"input\": 3, \"trace\": \"half.csv\"}]", "line 1: no time in ms"},
             Case{
                 "\"camera\": {\"sensorWidth\": 8, \"faults\": {\"stuck\": [{\"column\": 8, \"value\": 1}]}}",
                 "camera.faults.stuck[0].column: beyond"},
             Case{part("\"defects\": [{\"kind\": \"spot\", \"probability\": 1, \"shift\": {\"red\": 1}}]"),
                  "only a colour shift"},
             Case{part("\"defects\": [{\"kind\": \"spot\", \"probability\": 1, \"region\": {\"width\": 0}}]"),
                  "region: is empty"},
             Case{"\"seed\": 9007199254740993", "seed: 9007199254740993 is above"},
             Case{"\"inputs\": [{\"input\": 3}], \"barriers\": [{\"input\": 3}]",
                  "barriers[0]: input 3 is taken by inputs[0].input"},
             Case{"\"inputs\": [{\"input\": 3, \"pulses\": [{\"at\": 1, \"width\": 2}, {\"at\": 2}]}]",
                  "inputs[0].pulses[1]: begins before"},
             Case{"\"inputs\": [{\"input\": 3, \"trains\": [{\"period\": 1, \"width\": 1}]}]",
                  "not more than"},
             Case{"\"belt\": {\"profile\": [{\"at\": 5, \"speed\": 1}, {\"at\": 5, \"speed\": 2}]}",
                  "belt.profile[1]: not above"},
             Case{"\"belt\": {\"profilePeriod\": 5}", "no profile"},
             Case{"\"encoder\": {\"inputB\": 5}", "track A is not"},
         })
        EXPECT_THAT(refusal("{\"format\": 1, " + c.members + "}"), HasSubstr(c.says));
}

TEST_F(WorldTest, readsSignals) {
    std::ofstream(folder / "trace.csv") << "\xEF\xBB\xBF\"time\";level\r\n0;1\r\n0.5;1\r\n2.25;0\r\n\r\n";
    std::ofstream(folder / "late.csv") << "\xEF\xBB\xBF"
                                          "5,0\n6,1\n";
    const auto read = world(R"("inputs": [
        {"input": 1, "trace": "trace.csv"},
        {"input": 2, "high": true, "pulses": [{"at": 1, "width": 0.5}]},
        {"input": 4, "trace": "late.csv", "high": true},
        {"input": 3, "trains": [{"first": 5, "period": 1, "width": 0.25, "count": 7}]}],
        "belt": {"profile": [{"at": 0, "speed": 0}, {"at": 1500, "speed": -20}], "profilePeriod": 2000})");
    const auto& trace = read->inputs.at(1);
    ASSERT_EQ(2u, trace.edges.size());
    EXPECT_EQ(2'250'000, trace.edges[1].at);
    EXPECT_FALSE(trace.edges[1].high);
    const auto& late = read->inputs.at(4);  // from its first row on
    EXPECT_TRUE(late.high);
    ASSERT_EQ(2u, late.edges.size());
    EXPECT_EQ(5'000'000, late.edges[0].at);
    const auto& pulse = read->inputs.at(2);
    ASSERT_EQ(2u, pulse.edges.size());
    EXPECT_FALSE(pulse.edges[0].high);
    EXPECT_EQ(1'500'000, pulse.edges[1].at);
    EXPECT_EQ(7u, read->inputs.at(3).trains.at(0).count);
    EXPECT_EQ(1.5, read->belt.profile.at(1).at);
    EXPECT_EQ(2, read->belt.profilePeriod);
}

// ---- the belt ----

TEST_F(WorldTest, laysPartsWhereTheFileSays) {
    // 0.1 mm per pixel: 20 x 30 pixels from row 50 and column 5 on, every 100 rows, three of them.
    const auto read =
        world(R"("parts": [{"picture": "part.png", "at": 5, "across": 0.5, "spacing": 10, "count": 3}])");
    for (const std::int64_t top : {50, 150, 250}) {
        EXPECT_EQ(kBelt, rowOf(*read, top - 1, 10, 1)[0]) << top;
        EXPECT_EQ(kRed, rowOf(*read, top, 10, 1)[0]) << top;
        EXPECT_EQ(kRed, rowOf(*read, top + 29, 10, 1)[0]) << top;
        EXPECT_EQ(kBelt, rowOf(*read, top + 30, 10, 1)[0]) << top;
    }
    EXPECT_EQ(kBelt, rowOf(*read, 350, 10, 1)[0]);
    EXPECT_EQ(kBelt, rowOf(*read, -50, 10, 1)[0]);
    EXPECT_EQ((std::vector{kBelt, kRed}), rowOf(*read, 60, 4, 2));
    EXPECT_EQ((std::vector{kRed, kBelt}), rowOf(*read, 60, 24, 2));
    // An endless stream goes on for as long as positions count.
    const auto endless = world(R"("parts": [{"picture": "part.png", "spacing": 10}])");
    EXPECT_EQ(kRed, rowOf(*endless, 100'000'000'000'000, 0, 1)[0]);
    EXPECT_EQ(kBelt, rowOf(*endless, 100'000'000'000'030, 0, 1)[0]);
}

TEST_F(WorldTest, drawsDefectsWhereTheTruthSaysThem) {
    const auto read = world(R"("seed": 5, "parts": [{"picture": "part.png", "length": 6, "width": 4,
        "spacing": 12, "jitterAlong": 2, "across": 1, "jitterAcross": 1, "defects": [
            {"kind": "spot", "probability": 0.3, "size": [0.3, 1], "colour": "#00FF00"},
            {"kind": "scratch", "probability": 0.3, "size": [1, 3], "width": 0.2, "colour": "#0000FF"}]}])");
    imaging::PictureGeometry picture;
    for (std::int64_t row = 0; row < 20'000; ++row) picture.rows.push_back(row);
    for (std::uint32_t column = 0; column < 100; ++column) picture.columns.push_back(column);
    const PictureTruth truth = read->parts->truth(picture);
    Image seen(100, 20'000);
    for (std::uint32_t row = 0; row < seen.height; ++row)
        read->parts->row(row, 0, std::span(&seen.at(0, row), seen.width));
    const auto coloured = [&](const TruthBox& box, Pixel colour) {
        std::size_t count = 0;
        for (std::uint32_t y = box.top; y < box.top + box.height; ++y)
            count += std::ranges::count(std::span(&seen.at(box.left, y), box.width), colour);
        return count;
    };
    const Pixel green{0, 255, 0}, blue{255, 0, 0};
    std::size_t inBoxes[2] = {}, defects = 0;
    for (const TruthPart& part : truth.parts) {
        EXPECT_EQ(0u, coloured(part.box, kBelt)) << part.number;
        EXPECT_TRUE(part.complete || part.number == 166);
        for (const TruthDefect& defect : part.defects) {
            ++defects;
            const bool spot = defect.kind == "spot";
            const std::size_t found = coloured(defect.box, spot ? green : blue);
            EXPECT_GT(found, 0u) << part.number;
            inBoxes[spot ? 0 : 1] += found;
        }
    }
    // Every coloured pixel lies in a box; the scratches cover some of the spots.
    EXPECT_GE(inBoxes[0], coloured({0, 0, 100, 20'000}, green));
    EXPECT_GE(inBoxes[1], coloured({0, 0, 100, 20'000}, blue));
    EXPECT_NEAR(double(truth.parts.size()), 166, 1);
    EXPECT_NEAR(double(defects), 166 * 0.6, 25);
    const auto again =
        world(R"("seed": 6, "parts": [{"picture": "part.png", "spacing": 12, "jitterAlong": 2}])");
    EXPECT_NE(again->parts->streams()[0].place(3).top, read->parts->streams()[0].place(3).top);
}

TEST_F(WorldTest, breaksLightBarriersByBeltPosition) {
    const auto read = world(R"("parts": [{"picture": "part.png", "at": 5, "spacing": 10, "count": 2}],
        "barriers": [{"input": 4, "beforeCamera": 2},
                     {"input": 5, "beforeCamera": -1, "highWhenBroken": false}])");
    const BeltPattern& before = *read->barriers.at(4);
    // The camera sees parts from 5 to 8 and from 15 to 18 mm.
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(3, before.edgeAbove(-1000));
    EXPECT_EQ(6, before.edgeAbove(3));
    EXPECT_EQ(13, before.edgeAbove(6));
    EXPECT_EQ(16, before.edgeAbove(13.5));
    EXPECT_EQ(infinity, before.edgeAbove(16));
    EXPECT_EQ(16, before.edgeBelow(1e9));
    EXPECT_EQ(13, before.edgeBelow(15.9));
    EXPECT_EQ(6, before.edgeBelow(6));
    EXPECT_EQ(-infinity, before.edgeBelow(2.9));
    EXPECT_TRUE(before.level(3));
    EXPECT_FALSE(before.level(6));
    const BeltPattern& behind = *read->barriers.at(5);
    EXPECT_EQ(6, behind.edgeAbove(0));
    EXPECT_TRUE(behind.level(5.9));
    EXPECT_FALSE(behind.level(6));
    // Parts that touch, and parts without end, are no edges.
    const auto touching = world(R"("parts": [{"picture": "part.png", "at": 1, "spacing": 3}],
        "barriers": [{"input": 4}])");
    EXPECT_EQ(1, touching->barriers.at(4)->edgeAbove(0));
    EXPECT_EQ(infinity, touching->barriers.at(4)->edgeAbove(1));
    EXPECT_EQ(1, touching->barriers.at(4)->edgeBelow(50));
}

// ---- the camera ----

TEST(SensorFaults, followTheirFormulas) {
    const auto see = [](const imaging::SensorFaults& faults, Pixel colour, float gain = 1) {
        imaging::CameraTraits camera{.sensorWidth = 1000};
        camera.faults = faults;
        const imaging::SensorScene scene(Image(2, 2, colour), camera);
        std::vector<std::uint8_t> row(1000);
        scene.see({.row = 7, .gain = gain}, 0, row);
        return row;
    };
    const auto mean = [](const std::vector<std::uint8_t>& row) {
        double sum = 0;
        for (const auto value : row) sum += value;
        return sum / static_cast<double>(row.size());
    };
    const auto deviation = [&](const std::vector<std::uint8_t>& row) {
        double sum = 0;
        for (const auto value : row) sum += (value - mean(row)) * (value - mean(row));
        return std::sqrt(sum / static_cast<double>(row.size()));
    };
    const Pixel grey{100, 100, 100};
    EXPECT_EQ(std::vector<std::uint8_t>(1000, 105), see({.darkLevel = 5}, grey));
    EXPECT_EQ(std::vector<std::uint8_t>(1000, 155), see({.darkLevel = 5}, grey, 1.5f));
    EXPECT_EQ(std::vector<std::uint8_t>(1000, 51), see({.response = {{0, 0}, {1, 0.5}}}, {102, 102, 102}));
    EXPECT_NEAR(deviation(see({.readNoise = 8}, grey)), 8, 0.6);
    EXPECT_NEAR(mean(see({.readNoise = 8}, grey)), 100, 1);
    // 100 of 255 grey values are 2 x 196 electrons of 1000, which spread by 19.8: 5.05 grey values.
    EXPECT_NEAR(deviation(see({.fullWell = 1000}, grey)), 5.05, 0.5);
    EXPECT_NEAR(deviation(see({.fixedPattern = 0.1}, grey)), 10, 0.8);
    const auto lens = see({.vignetting = 0.4}, grey);
    EXPECT_EQ(60, lens.front());
    EXPECT_EQ(100, lens[500]);
    EXPECT_EQ(90, lens[750]);
    const auto stuck = see({.stuck = {{3, 255}, {999, 0}, {1000, 1}}}, grey);
    EXPECT_EQ(255, stuck[3]);
    EXPECT_EQ(100, stuck[4]);
    EXPECT_EQ(0, stuck[999]);
    EXPECT_EQ(see({.readNoise = 8, .seed = 1}, grey), see({.readNoise = 8, .seed = 1}, grey));
    EXPECT_NE(see({.readNoise = 8, .seed = 1}, grey), see({.readNoise = 8, .seed = 2}, grey));
}

TEST(SensorFaults, motionBlursWhatPassesDuringTheExposure) {
    Image steps(2, 4);
    for (std::uint32_t y = 0; y < 4; ++y) {
        const auto value = static_cast<std::uint8_t>(40 * y);
        steps.at(0, y) = steps.at(1, y) = {value, value, value};
    }
    imaging::CameraTraits camera;
    camera.faults.motionBlur = true;
    const imaging::SensorScene scene(steps, camera);
    const auto pixel = [](double value) {
        return static_cast<std::int64_t>(std::ldexp(value, imaging::kBeltBits));
    };
    const auto see = [&](double position, double way) {
        std::uint8_t row[2];
        scene.see({.position = pixel(position), .way = pixel(way)}, 0, row);
        return int{row[0]};
    };
    EXPECT_EQ(40, see(1, 0));
    EXPECT_EQ(60, see(1, 2));        // half 40, half 80
    EXPECT_EQ(60, see(3, -2));       // the same belt, backwards
    EXPECT_EQ(50, see(1, 1.33333));  // three quarters of 40, one of 80
    EXPECT_EQ(100, see(2.5, 1));     // half 80, half 120
    EXPECT_EQ(60, see(0, 400));      // all of it, again and again
}

TEST_F(WorldTest, refusesCamerasAndLightsThatCannotBe) {
    const double nan = std::nan("");
    for (const imaging::SensorFaults& faults : {imaging::SensorFaults{.darkLevel = nan},
                                                {.readNoise = -1},
                                                {.fixedPattern = 2},
                                                {.vignetting = 1e300},
                                                {.response = {{0.5, 0}, {0.5, 1}}}})
        EXPECT_THROW(control.setCamera({.faults = faults}), std::invalid_argument);
    EXPECT_THROW(control.setCamera({.neutralExposure = 0}), std::invalid_argument);
    EXPECT_THROW(control.setLight({.level = nan}), std::invalid_argument);
    EXPECT_THROW(control.setLight({.flashShare = 1.5}), std::invalid_argument);
    for (const imaging::CameraTraits& camera : {imaging::CameraTraits{.sensorWidth = 0},
                                                {.sensorWidth = 4'000'000'000, .faults = {.readNoise = 1}},
                                                {.phase = 4},
                                                {.readout = imaging::TapReadout{.taps = 0}},
                                                {.readout = imaging::TapReadout{.taps = 11}},
                                                {.readout = imaging::TapReadout{.pixelsPerClock = 0}},
                                                {.sensorWidth = 8, .faults = {.stuck = {{.column = 8}}}}})
        EXPECT_THROW(control.setCamera(camera), std::invalid_argument);
}

// ---- the published files ----

TEST(WorldSchema, isTheOneThatIsPublished) {
    std::ifstream file(WORLD_SCHEMA);
    const std::string published{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(worldSchema() == published) << "marovine world schema >docs/world.schema.json";
}

}  // namespace
}  // namespace virtualboard::world
