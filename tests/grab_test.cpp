/// `marovine grab` and `marovine contact-sheet`, run as a person runs them.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "board/imaging/Scene.h"
#include "command/Progress.h"
#include "pictures/Lettering.h"
#include "pictures/PictureFormats.h"
#include "pictures/PictureStream.h"
#include "pictures/Png.h"
#include "tests/RunCommand.h"

namespace marovine::host {
namespace {

namespace fs = std::filesystem;
using test::joined;
using testing::ElementsAre;
using testing::HasSubstr;
using virtualboard::imaging::Image;
using virtualboard::imaging::Pixel;

/// A folder of the test's own to run the command in.
class GrabTest : public testing::Test {
 protected:
    GrabTest() { fs::create_directory(folder); }
    ~GrabTest() override { fs::remove_all(folder); }

    test::Outcome run(const std::string& arguments, const std::string& before = "") {
        return test::run(arguments, "cd '" + folder.string() + "' && " + before + " ");
    }
    /// Runs shell text in which $M is the command. The exit status.
    int shell(const std::string& text) {
        const int status =
            std::system(("cd '" + folder.string() + "' && M='" MAROVINE_COMMAND "'; " + text).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }

    std::string contentOf(const std::string& name) const {
        std::ifstream in(folder / name);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    const fs::path folder = fs::temp_directory_path() / ("grab-test-" + std::to_string(getpid()));
};

constexpr const char* kSmall = "--set FG_WIDTH=64 --set FG_HEIGHT=8 ";
/// Of a video of such pictures: eight lines of 200 us each. Nobody knows when triggers come.
constexpr std::string_view kHeader = "YUV4MPEG2 W64 H8 F625:1 Ip A1:1 C444 XCOLORRANGE=FULL\n";
constexpr std::string_view kTriggeredHeader = "YUV4MPEG2 W64 H8 F25:1 Ip A1:1 C444 XCOLORRANGE=FULL\n";

TEST_F(GrabTest, WritesWhatTheSettingsSay) {
    const Pixel orange{.blue = 10, .green = 60, .red = 200};
    virtualboard::imaging::writePng(folder / "scene.png", Image(64, 8, orange));
    EXPECT_EQ(0, run(std::string(kSmall) + "grab --scene scene.png -o one.png").status);
    EXPECT_EQ(
        0, run(std::string(kSmall) + "grab -n 10 --scene scene.png -o many.png --set FG_BAYERINIT=1").status);
    const auto names = files();
    ASSERT_EQ(12u, names.size());
    EXPECT_EQ("many-01.png", names[0]);
    EXPECT_EQ("many-10.png", names[9]);
    const Image one = virtualboard::imaging::readPng(folder / "one.png");
    const Image many = virtualboard::imaging::readPng(folder / "many-10.png");
    EXPECT_EQ(64u, one.width);
    EXPECT_EQ(8u, one.height);
    EXPECT_EQ(orange, one.at(30, 4));
    EXPECT_EQ((Pixel{200, 60, 10}), many.at(30, 4));
}

TEST_F(GrabTest, ShowsThePictureInColoursOrInShades) {
    EXPECT_THAT(run("grab --view").output, HasSubstr("████▓▓▓▓"));
    const std::string coloured = run("grab --view --color always").output;
    EXPECT_THAT(coloured, HasSubstr("\x1b[38;2;224;224;224m"));
    EXPECT_THAT(coloured, HasSubstr("1024 x 1024 pixels"));
    EXPECT_THAT(files(), ElementsAre());
}

TEST_F(GrabTest, WritesTheSamePicturesInEveryFormat) {
    const std::string three = std::string(kSmall) + "grab -n 3 ";
    ASSERT_EQ("3 pictures of 64 x 8 pixels in p-1.png to p-3.png\n", run(three + "-o p.png").output);
    ASSERT_EQ("3 pictures of 64 x 8 pixels in p-1.ppm to p-3.ppm\n", run(three + "-o p.ppm").output);
    ASSERT_EQ("3 pictures of 64 x 8 pixels in p.y4m\n", run(three + "-o p.y4m").output);
    const test::Outcome raw = run(three + "-o - --format raw");
    EXPECT_EQ("3 pictures of 64 x 8 pixels in -\n", raw.errors);
    constexpr std::size_t bytes = 64 * 8 * 3;
    ASSERT_EQ(3 * bytes, raw.output.size());
    const std::string video = contentOf("p.y4m");
    ASSERT_EQ(kHeader, video.substr(0, kHeader.size()));
    ASSERT_EQ(kHeader.size() + 3 * (6 + bytes), video.size());
    for (std::size_t n = 0; n < 3; ++n) {
        const Image png = virtualboard::imaging::readPng(folder / ("p-" + std::to_string(n + 1) + ".png"));
        const std::string_view shown(reinterpret_cast<const char*>(png.bytes().data()), bytes);
        EXPECT_EQ(shown, raw.output.substr(n * bytes, bytes));
        std::string ppm =
            contentOf("p-" + std::to_string(n + 1) + ".ppm").substr(std::strlen("P6\n64 8\n255\n"));
        ASSERT_EQ(bytes, ppm.size());
        for (std::size_t i = 0; i < bytes; i += 3) std::swap(ppm[i], ppm[i + 2]);
        EXPECT_EQ(shown, ppm);
        std::vector<std::uint8_t> planes(bytes);
        virtualboard::imaging::toYCbCr(png, planes);
        EXPECT_EQ("FRAME\n" + std::string(planes.begin(), planes.end()),
                  video.substr(kHeader.size() + n * (6 + bytes), 6 + bytes));
    }
}

TEST(PictureFormats, ConvertsAsTheStandardSays) {
    Image colours(256, 3);
    for (std::uint32_t i = 0; i < 256; ++i) {
        const auto level = static_cast<std::uint8_t>(i);
        colours.at(i, 0) = {level, level, level};
        colours.at(i, 1) = {static_cast<std::uint8_t>(i * 37), static_cast<std::uint8_t>(i * 91), level};
        colours.at(i, 2) = {i < 128 ? level : std::uint8_t{255}, 0, i < 128 ? std::uint8_t{255} : level};
    }
    constexpr std::size_t pixels = 3 * 256;
    std::vector<std::uint8_t> planes(3 * pixels);
    virtualboard::imaging::toYCbCr(colours, planes);
    for (std::size_t i = 0; i < pixels; ++i) {
        const auto [b, g, r] = colours.pixels[i];
        EXPECT_NEAR(0.299 * r + 0.587 * g + 0.114 * b, planes[i], 0.51);
        EXPECT_NEAR(std::min(255.0, 128 + 0.5 * b - 0.168736 * r - 0.331264 * g), planes[pixels + i], 0.51);
        EXPECT_NEAR(std::min(255.0, 128 + 0.5 * r - 0.418688 * g - 0.081312 * b), planes[2 * pixels + i],
                    0.51);
        if (i < 256) {
            EXPECT_THAT((std::array{planes[i], planes[pixels + i]}), ElementsAre(i, 128));
        }
    }
}

TEST_F(GrabTest, AVideoHoldsPicturesOfOneSize) {
    const auto cut =
        run("--set FG_WIDTH=64 --set FG_HEIGHT=8 --set FG_IMGTRIGGERMODE=ASYNC_TRIGGER_MULTIFRAME "
            "--set FG_IMGTRIGGERINSRC=TRGINSOFTWARE --set FG_IMGTRIGGER_ASYNC_HEIGHT=12 "
            "grab --trigger -n 2 -o cut.y4m");
    EXPECT_EQ(1, cut.status);
    EXPECT_THAT(joined(cut.errors), HasSubstr("pictures of 64 x 8 pixels cannot take one of 64 x 4"));
    EXPECT_THAT(contentOf("cut.y4m"), testing::SizeIs(kTriggeredHeader.size() + 6 + 64 * 8 * 3))
        << "what was whole stays";
}

TEST_F(GrabTest, AnEndlessStreamEndsWithItsReaderOrAnInterrupt) {
    const std::string endless = std::string(" ") + kSmall + "grab -n 0 ";
    shell("{ $M" + endless + "-o - --format raw 2>report; echo $? >status; } | head -c 100000 >out");
    EXPECT_EQ("0\n", contentOf("status"));
    EXPECT_EQ(100'000u, fs::file_size(folder / "out"));
    const test::Outcome file = run(endless + "-o p.y4m", "timeout --preserve-status -k 30 1");
    EXPECT_EQ(128 + SIGTERM, file.status) << file.all();
    const auto size = fs::file_size(folder / "p.y4m");
    EXPECT_EQ(0u, (size - kHeader.size()) % (6 + 64 * 8 * 3)) << "only whole pictures";
    EXPECT_LT(10'000u, size);
    // A reader that stands still is waited for no longer than a second after the interrupt.
    ASSERT_EQ(0, mkfifo((folder / "pipe").c_str(), 0600));
    EXPECT_EQ(128 + SIGTERM, shell("sleep 60 <pipe & timeout --preserve-status -k 30 1 $M" + endless +
                                   "-o pipe >report 2>&1; s=$?; kill $!; exit $s"));
}

/// What all processors together have spent, in ticks.
struct MachineTime {
    double all = 0, idle = 0;
};
MachineTime machineTime() {
    std::ifstream file("/proc/stat");
    std::string word;
    file >> word;
    MachineTime time;
    constexpr int kIdle = 3;
    double ticks = 0;
    for (int kind = 0; kind < 8 && file >> ticks; ++kind) {
        time.all += ticks;
        if (kind == kIdle) time.idle = ticks;
    }
    return time;
}

TEST_F(GrabTest, LosesNothingInRealTime) {
    const auto grabbed = [&] {
        shell(
            "$M --set FG_WIDTH=640 --set FG_HEIGHT=480 --set FG_LINEEXPOSURE=10 --set FG_LINEPERIODE=20.832 "
            "grab -n 300 --real-time -o - --format y4m 2>report | wc -c >bytes");
        return contentOf("report");
    };
    // A machine that runs other tests beside this one may come too late, but not each time; and where it
    // never has a processor to spare it tells nothing of this command.
    std::string report;
    const MachineTime before = machineTime();
    for (int tries = 0; tries < 4 && (tries == 0 || report.find("lost") != std::string::npos); ++tries)
        report = grabbed();
    const MachineTime after = machineTime();
    constexpr double kSpare = 0.25;
    if (report.find("lost") != std::string::npos &&
        after.idle - before.idle < kSpare * (after.all - before.all))
        GTEST_SKIP() << "other programs kept the machine busy";
    EXPECT_EQ("300 pictures of 640 x 480 pixels in -\n", report);
    EXPECT_LT(300u * 640 * 480 * 3, std::stoull(contentOf("bytes")));
}

TEST(PictureStream, LeavesATerminalAlone) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_LE(0, terminal);
    ASSERT_EQ(0, grantpt(terminal) | unlockpt(terminal));
    try {
        virtualboard::imaging::PictureStream(ptsname(terminal), [] { return false; });
        FAIL() << "it was opened";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("is a terminal"));
    }
    close(terminal);
}

TEST_F(GrabTest, TriggersBySoftware) {
    const std::string triggered =
        std::string(kSmall) +
        "--set FG_IMGTRIGGERMODE=ASYNC_TRIGGER --set FG_IMGTRIGGERINSRC=TRGINSOFTWARE grab ";
    EXPECT_EQ(0, run(triggered + "--trigger -n 3 --view").status);
    // A trigger takes 12 lines, which are cut into pictures of 8.
    const std::string cut = triggered +
                            "--set FG_IMGTRIGGERMODE=ASYNC_TRIGGER_MULTIFRAME "
                            "--set FG_IMGTRIGGER_ASYNC_HEIGHT=12 --trigger -n 2 -o cut.png ";
    EXPECT_EQ("cut-1.png: 64 x 8 pixels\ncut-2.png: 64 x 4 pixels\n", run(cut).output);
    EXPECT_THAT(run(cut + "--json").output, HasSubstr("\"height\": null"));
    const auto waiting = run(triggered + "--timeout 1 --view");
    EXPECT_EQ(1, waiting.status);
    EXPECT_THAT(joined(waiting.all()),
                HasSubstr("FG_IMGTRIGGERMODE = ASYNC_TRIGGER waits for FG_IMGTRIGGERINSRC = TRGINSOFTWARE"));
}

TEST_F(GrabTest, SaysWhatIsWrong) {
    struct Case {
        const char* arguments;
        int status;
        const char* says;
    };
    for (const auto& c :
         {Case{"grab", 2, "-o FILE.png or show them with --view"},
          Case{"grab -o nowhere/a.png", 1, "no folder nowhere"}, Case{"grab -n 0 --view", 2, "-o FILE"},
          Case{"grab -o a.jpg", 2, ".png, .ppm, .raw or .y4m"},
          Case{"grab -o a.png --format gif", 2, "--format"},
          Case{"grab --scene missing.png -o a.png", 1, "missing.png"},
          Case{"grab --view --timeout 1 --set FG_EXSYNCON=FG_OFF", 1, "FG_EXSYNCON = FG_OFF"},
          Case{"grab --view --set FG_WIDTH=16384 --set FG_HEIGHT=16777214", 1, "no memory for"},
          Case{"grab -o a.png --set FG_WIDTH=8 --set FG_HEIGHT=1000002", 1, "no PNG file holds a picture of"},
          Case{"grab --view --timeout 1 --attach", 1, "with --attach"},
          Case{"grab --view --timeout 1 --real-time --set FG_HEIGHT=16384", 1, "one takes 4 s"},
          Case{"grab --view --timeout 1 --trigger --set FG_IMGTRIGGERMODE=ASYNC_TRIGGER", 1,
               "heard by TRGINSOFTWARE only"},
          Case{"grab --view --timeout 1 --trigger --set FG_IMGTRIGGERMODE=ASYNC_GATED "
               "--set FG_IMGTRIGGERINSRC=TRGINSOFTWARE",
               1, "not for a pulse"},
          Case{"grab --view --timeout 1 --trigger --set FG_IMGTRIGGERMODE=ASYNC_TRIGGER "
               "--set FG_IMGTRIGGERINSRC=TRGINSOFTWARE --set FG_IMG_SELECT_PERIOD=3 -n 2",
               1, "FG_IMG_SELECT_PERIOD = 3"},
          Case{"demo -o nowhere", 1, "no folder nowhere"}, Case{"contact-sheet", 2, "--output"}}) {
        const auto outcome = run(c.arguments);
        EXPECT_EQ(c.status, outcome.status) << c.arguments;
        EXPECT_THAT(joined(outcome.all()), HasSubstr(c.says)) << c.arguments;
    }
    EXPECT_THAT(files(), ElementsAre());
}

TEST_F(GrabTest, AnInterruptLeavesOnlyWholePictures) {
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGINT, SIG_DFL);  // whoever runs the tests may ignore it
        if (chdir(folder.c_str()) == 0)
            execl(MAROVINE_COMMAND, MAROVINE_COMMAND, "grab", "-n", "100000", "-o", "p.png", nullptr);
        _exit(127);
    }
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!fs::exists(folder / "p-000002.png") && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(child, SIGINT);
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(128 + SIGINT, WEXITSTATUS(status));
    EXPECT_LE(2u, files().size());
    for (const auto& name : files())
        EXPECT_EQ(1024u, virtualboard::imaging::readPng(folder / name).height) << name;
}

TEST_F(GrabTest, AnInterruptEndsWaitingForAPipe) {
    ASSERT_EQ(0, mkfifo((folder / "pipe.png").c_str(), 0600));
    for (const char* arguments : {"grab --view --scene pipe.png", "grab -o pipe.png"}) {
        const test::Outcome outcome = run(arguments, "timeout --preserve-status -k 5 2");
        EXPECT_EQ(128 + SIGTERM, outcome.status) << arguments << outcome.all();
    }
}

TEST_F(GrabTest, TheDemonstrationReplacesNothingElse) {
    for (const char* says : {"written to belt.png", "was written before to belt.png"})
        EXPECT_THAT(run("demo").output, HasSubstr(says));
    EXPECT_THAT(files(), ElementsAre("belt.png", "contact-sheet.png"));
    const std::string written = contentOf("belt.png");
    std::ofstream(folder / "belt.png") << "of another";
    EXPECT_EQ(1, run("demo").status);
    EXPECT_EQ("of another", contentOf("belt.png"));
    EXPECT_EQ(0, run("demo --force -o .").status);
    EXPECT_EQ(written, contentOf("belt.png"));
}

TEST_F(GrabTest, TheContactSheetIsSmallAndItsViewsDiffer) {
    ASSERT_EQ(0, run("contact-sheet -o sheet.png").status);
    EXPECT_GT(200'000u, fs::file_size(folder / "sheet.png"));
    const Image sheet = virtualboard::imaging::readPng(folder / "sheet.png");
    // Four columns, two rows of views.
    std::vector<Image> views;
    for (std::uint32_t row = 0; row < 2; ++row) {
        for (std::uint32_t column = 0; column < 4; ++column) {
            Image view(100, 100);
            for (std::uint32_t y = 0; y < 100; ++y)
                for (std::uint32_t x = 0; x < 100; ++x)
                    view.at(x, y) =
                        sheet.at(column * sheet.width / 4 + 80 + x, row * sheet.height / 2 + 120 + y);
            for (const Image& other : views) EXPECT_NE(other.pixels, view.pixels);
            views.push_back(view);
        }
    }
}

TEST(Progress, FillsTheBarByEighths) {
    EXPECT_EQ("    ", progressBar(0, 100, 4));
    EXPECT_EQ("██  ", progressBar(50, 100, 4));
    EXPECT_EQ("█▌  ", progressBar(3, 8, 4));
    EXPECT_EQ("████", progressBar(100, 100, 4));
    EXPECT_EQ("████", progressBar(101, 100, 4));
    EXPECT_EQ("    ", progressBar(0, 0, 4));
}

TEST(Lettering, IsCutAtThePicturesEdge) {
    const Pixel ink{1, 2, 3};
    Image picture(8, 8);
    writeText(picture, 0, 0, 1, ink, "t?t");
    writeText(picture, 7, 7, 4, ink, "_=");
    EXPECT_EQ(ink, picture.at(4, 0));
    EXPECT_EQ(Pixel{}, picture.at(5, 0));
    EXPECT_EQ(ink, picture.at(2, 6));
    EXPECT_EQ(Pixel{}, picture.at(1, 6));
    EXPECT_EQ(Pixel{}, picture.at(7, 7)) << "the underline lies below";
}

}  // namespace
}  // namespace marovine::host
