/// `marovine world` and `--world`, run as a person runs them, and the drawing behind `world show`.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "command/TimingDiagram.h"
#include "tests/RunCommand.h"

namespace marovine::host {
namespace {

using test::joined;
using test::run;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kTimingSettings =
    "--to 130 --set FG_LINETRIGGERMODE=ASYNC_TRIGGER --set FG_LINETRIGGERINSRC=TRGINSRC_GPI_0 "
    "--set FG_SHAFTENCODERINSRC=TRGINSRC_GPI_1 --set FG_SHAFTENCODERON=FG_ON "
    "--set FG_SHAFTENCODERMODE=FILTER_X2 --set FG_IMGTRIGGERMODE=ASYNC_TRIGGER "
    "--set FG_IMGTRIGGERINSRC=TRGINSRC_GPI_4 --set FG_IMGTRIGGERGATEDELAY=4 "
    "--set FG_WIDTH=16 --set FG_HEIGHT=16 ";

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(TimingDiagram, drawsLevelsSpansAndCurvesToScale) {
    TimingDiagram diagram{.from = 0, .to = 20};
    diagram.tracks.push_back({"level", LevelTrack{false, {2, 5, 10.1, 10.9, 15.2, 15.4, 15.6, 19}}});
    diagram.tracks.push_back({"span", SpanTrack{{{4, 12, "7"}, {15, 15.1, ""}}}});
    diagram.tracks.push_back({"curve", CurveTrack{"mm", {0, 24}}});
    std::ostringstream out;
    diagram.print(Console(out, 27));  // a column for each ms
    EXPECT_EQ(
        "        ┌──┐    ╷    ▒───┐\n"
        "level ──┘  └────┴────▒   └\n"
        "span      ├───7───┤  │    \n"
        "curve           ██████████\n"
        "24 mm           ██████████\n"
        "0               ██████████\n"
        "      ╵0 ms\n",
        out.str());
    const std::string svg = diagram.svg();
    EXPECT_THAT(svg, HasSubstr("<path d=\"M150 "));
    EXPECT_THAT(svg, HasSubstr(">7</text>"));
}

TEST(WorldCommand, tellsEveryFaultOfAFile) {
    const TemporaryFile world(".json", "{\"format\": 1,\n \"belt\": {\"sped\": 5},\n \"seed\": \"x\"}\n");
    const auto refused = run(std::string("world check ") + world.name());
    EXPECT_EQ(1, refused.status);
    EXPECT_THAT(joined(refused.output), HasSubstr("2 belt.sped unknown; did you mean speed?"));
    EXPECT_THAT(joined(refused.output), HasSubstr("3 seed is a text where a number belongs"));
    EXPECT_THAT(run(std::string("world check --json ") + world.name()).output, HasSubstr("\"line\": 2"));
    const auto used = run(std::string("--world ") + world.name() + " get FG_WIDTH");
    EXPECT_EQ(1, used.status);
    EXPECT_THAT(used.errors, HasSubstr("line 2: belt.sped"));
    EXPECT_EQ(1, run("world check nowhere.json").status);
    const auto good = run("world check '" EXAMPLES "/inspection/bottles.json'");
    EXPECT_EQ(0, good.status) << good.all();
}

TEST(WorldCommand, writesTheTruthBesideThePictures) {
    const TemporaryFile truth(".json"), picture(".png");
    const std::string options = std::string("grab --truth ") + truth.name() + " -o " + picture.name();
    const std::string world = "--world '" EXAMPLES "/inspection/bottles.json' ";
    const auto taken = run(world + options + " --set FG_WIDTH=320 --set FG_HEIGHT=3000 -n 2");
    ASSERT_EQ(0, taken.status) << taken.all();
    // The belt stands, then begins to move: 3125 mm/s² bring the first bottle's 60 mm in 196 ms, 980 lines.
    const std::string written = contentOf(truth.name());
    EXPECT_THAT(written,
                HasSubstr("[{\"picture\":1,\"width\":320,\"height\":3000,\"parts\":[{\"name\":\"master\","
                          "\"stream\":0,\"number\":0,\"box\":{\"left\":120,\"top\":980,"))
        << written;
    EXPECT_EQ(2, run(options).status);
    EXPECT_EQ(2, run(world + options + " -n 0").status);
    for (const char* number : {"-1", "-2"}) {
        std::string name = picture.name();
        std::filesystem::remove(name.insert(name.size() - 4, number));
    }
}

TEST(WorldCommand, drawsTheDiagramOfTheReadme) {
    const TemporaryFile drawing(".svg");
    const auto drawn =
        run("world show '" DOCS "/timing.json' --svg " + std::string(drawing.name()) + " " + kTimingSettings);
    ASSERT_EQ(0, drawn.status) << drawn.all();
    EXPECT_TRUE(drawing.content() == contentOf(DOCS "/timing.svg"))
        << "marovine world show docs/timing.json --svg docs/timing.svg " << kTimingSettings;
    // Without the board nothing needs its applet.
    const auto outside = run("world show --outside --to 50 '" DOCS "/timing.json'");
    EXPECT_THAT(outside.output, HasSubstr("encoder A"));
    EXPECT_THAT(outside.output, Not(HasSubstr("ExSync")));
    EXPECT_THAT(run("world show --to 1e9 '" EXAMPLES "/inspection/bottles.json'").errors,
                HasSubstr("edges of one signal lie in this time"));
    EXPECT_EQ(2, run("world show --from 5 --to 5 '" DOCS "/timing.json'").status);
}

}  // namespace
}  // namespace marovine::host
