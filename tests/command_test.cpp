/// The command `marovine`, run as a user runs it: exit status, output, data.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "tables/SdkParameterTable.h"
#include "tests/RunCommand.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Json = nlohmann::json;
using marovine::test::joined;
using marovine::test::Outcome;
using marovine::test::run;

TEST(Command, EndsWithAStatusThatScriptsCanTrust) {
    struct Case {
        const char* arguments;
        int status;
        const char* says;  ///< on standard error, or on standard output when the status is 0
    };
    for (const auto& [arguments, status, says] : {
             Case{"--help", 0, "Every run has a virtual board of its own"},
             Case{"--version", 0, "marovine 2.1.0.5"},
             Case{"help lut load", 0, "Usage: marovine lut load"},
             Case{"help lut laod", 2, "did you mean load?"},
             Case{"grab --help", 0, "(default: 1)"},
             Case{"get fg_width", 0, "1024 "},
             Case{"get 'fg_line*e'", 0, "FG_LINETRIGGERMODE=GRABBER_CONTROLLED FG_LINE_DOWNSCALE=1 "},
             Case{"describe 'fg_?offset'", 0, "FG_YOFFSET"},
             Case{"set fg_width=2048", 0, "FG_WIDTH = 2048 pixel (was 1024)"},
             Case{"get 'FG_LUT_VALUE_RED[7]'", 0, "7 "},
             Case{"get 'FG_LUT_VALUE_RED[256]'", 1, "refused (-2070)"},
             Case{"get 'FG_WIDTH[0]'", 2, "has no elements"},
             Case{"set 'FG_LUT_VALUE_RED[0]=300'", 1,
                  "FG_LUT_VALUE_RED = 300 refused (-6000): 300 is above 255"},
             Case{"set 'FG_LUT_VALUE_RED[255]=3,4'", 1, "runs past the last element, which is 255"},
             Case{"get FG_WITDH", 1, "nearest: FG_WIDTH"},
             Case{"set FG_WIDTH=1004", 1, "not a multiple of 8; nearest are 1000 and 1008"},
             Case{"set FG_WIDTH=wide", 1, "wide is no number"},
             Case{"get FG_WIDTH --set FG_WIDTH=1004", 1, "not a multiple of 8"},
             Case{"load /nowhere.mcf", 1, "there is no file /nowhere.mcf"},
             Case{"get FG_WIDTH --config /nowhere.mcf", 1, "there is no file /nowhere.mcf"},
             Case{"diff /nowhere.mcf", 1, "there is no file /nowhere.mcf"},
             Case{"check /nowhere.mcf", 1, ""},
             Case{"get FG_WIDTH --applet /dev/null", 1, "cannot be loaded"},
             Case{"list '*nothing*'", 1, "no parameter's name or title matches"},
             Case{"", 2, "Where to begin"},
             Case{"lut", 2, "A command is required"},
             Case{"gte FG_WIDTH", 2, "did you mean get?"},
             Case{"get", 2, "required"},
             Case{"get --jsno FG_WIDTH", 2, "--jsno"},
             Case{"set FG_WIDTH", 2, "write NAME=VALUE"},
             Case{"set 'FG_LUT_VALUE_RED[x]=1'", 2, "whole number as index"},
             Case{"set FG_WIDTH=", 1, "a value is missing after '='"},
             Case{"set FG_WIDTH=-8", 1, "-8 is below the minimum 8;"},
             Case{"set FG_WIDTH=2048.5", 1, "2048.5 is not a whole number"},
             Case{"set FG_WIDTH=1e3", 1, "1e3 is not written as a whole number"},
             Case{"set FG_WIDTH=99999999999", 1, "above the maximum 16384"},
             Case{"set FG_WIDTH=8 --trace=x.txt", 2, ".csv"},
             Case{"set --trace x.txt FG_WIDTH=8", 2, ".csv"},
             Case{"status", 0, "FG_SIGNAL_ANALYZER_0_PULSE_COUNT 0 "},
             Case{"status --after 1", 0, "FG_SIGNAL_ANALYZER_0_PULSE_COUNT 5000 "},
             Case{"status --after nan", 2, "nan is no finite number"},
             Case{"status --after inf", 2, "inf is no finite number"},
             Case{"grab --speed nan -o x.png", 2, "nan is no finite number"},
             Case{"grab --count=-1 -o x.png", 2, "-1 is below the smallest accepted value 0"},
             Case{"grab -o x.jpg", 2, "does not end in .png"},
             Case{"debug --monitor on", 1, "point 0, Camera Input, cannot monitor"},
             Case{"debug --point 1 --monitor on", 0, "FG_DEBUGOUTENABLE = FG_ON (was FG_OFF)"},
             Case{"debug --point 0 --trace", 0, "Point 0: Camera Input (inject) "},
             Case{"debug --file /nowhere --insert", 1, "there is no file /nowhere"},
             Case{"debug --insert", 2, "name it with --file"},
             Case{"lut load /tmp", 1, "is no file of lookup tables"},
             Case{"lut load /proc/self/cmdline", 1, "holds no lookup table"},
             Case{"info --log 8", 2, "8"},
             Case{"save /tmp/name.txt", 2, ".mcf"},
             Case{"get FG_WIDTH >/dev/full", 1, "could not be written"},
         }) {
        const Outcome result = run(arguments);
        EXPECT_EQ(status, result.status) << arguments << '\n' << result.errors;
        EXPECT_THAT(joined(status == 0 ? result.output : result.errors), HasSubstr(says)) << arguments;
    }
}

/// The commands that the help lists.
std::vector<std::string> commandNames() {
    const std::string help = run("--help").output;
    std::istringstream lines(help.substr(std::min(help.find("Commands:"), help.size())));
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("  ") && !line.starts_with("   "))
            names.push_back(line.substr(2, line.find(' ', 2) - 2));
    EXPECT_THAT(names, testing::Contains("describe"));
    return names;
}

TEST(Command, FitsATerminalAndColoursOnlyWhenAsked) {
    std::vector<std::string> all{
        "list",       "list --ranges",   "tree",  "info",  "status",
        "wiring",     "defaults",        "demo",  "debug", "set FG_HEIGHT=512 --trace",
        "lut --help", "lut load --help", "--help"};
    for (const auto& command : commandNames()) all.push_back(command + " --help");
    // Each description tries other values on boards of its own: some of every kind are enough here.
    const auto parameters = Json::parse(run("list --json").output);
    for (std::size_t i = 0; i < parameters.size(); i += 7)
        all.push_back("describe " + parameters[i]["name"].get<std::string>());
    const std::size_t refused = all.size();  // from here on
    for (const char* arguments : {"set FG_WIDTH=1004", "set FG_WIDTH=-8", "set FG_LUT_TYPE=5",
                                  "set FG_TAPGEOMETRY=5", "get --count 5 FG_WIDTH"})
        all.emplace_back(arguments);
    const fs::path folder = fs::temp_directory_path() / ("marovine-demo-" + std::to_string(getpid()));
    fs::create_directory(folder);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::string& arguments = all[i];
        const Outcome result = run(arguments, "cd " + folder.string() + " && ");
        EXPECT_EQ(i < refused, result.status == 0) << arguments << result.errors;
        EXPECT_THAT(result.output, Not(HasSubstr("\033["))) << arguments;
        EXPECT_THAT(result.output, Not(HasSubstr("\n\n\n"))) << arguments;
        std::istringstream lines(result.output + result.errors);
        for (std::string line; std::getline(lines, line);) {
            std::size_t columns = 0;
            for (const char byte : line) columns += (static_cast<unsigned char>(byte) & 0xC0) != 0x80 ? 1 : 0;
            if (line.find("libMarovine") != std::string::npos) continue;  // a path stays whole
            EXPECT_LE(columns, 80U) << arguments << ": " << line;
        }
    }
    fs::remove_all(folder);
    EXPECT_THAT(run("tree --color always").output, HasSubstr("\033[1m"));
    EXPECT_THAT(run("list", "COLUMNS=40 ").output, HasSubstr("FG_TIMEOUT\n      rw  1000000 seconds\n"));
}

TEST(Command, SendsATerminalOnlyWhatItStands) {
    const auto shown = [](const std::string& arguments, const std::string& terminal) {
        return run(arguments + "' /dev/null </dev/null",
                   "NO_COLOR= COLORTERM= TERM=" + terminal + " script -qec '")
            .output;
    };
    EXPECT_THAT(shown("tree", "dumb"), Not(HasSubstr("\033")));
    EXPECT_THAT(shown("tree", "xterm"), HasSubstr("\033[1mCamera Link\033[0m"));
    EXPECT_THAT(shown("grab --view", "xterm-256color"), HasSubstr("\033[38;5;"));
    const std::string file = "\033]0;title\007 \x9B \xC2\x9B \r \xC2\xB5";
    EXPECT_THAT(shown("get FG_DEBUGFILE --set \"FG_DEBUGFILE=" + file + "\"", "xterm"),
                HasSubstr("\\x1B]0;title\\x07 \\x9B \\xC2\\x9B \\x0D \xC2\xB5"));
}

TEST(Command, ReportsASetWithAllThatMoved) {
    const Outcome result = run("set FG_WIDTH=2048 --trace");
    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.output, StartsWith("FG_WIDTH = 2048 pixel  (was 1024)\n"
                                          "\n"
                                          "Also moved\n"
                                          "FG_XOFFSET  maximum  15360 -> 14336 pixel\n"
                                          "\n"
                                          "Design writes\n"));
    EXPECT_THAT(result.output, HasSubstr("12  0  Buffer_0_DRAM_A_0_XLength"));
}

TEST(Command, KeepsWhatWasSetBeforeARefusal) {
    const Outcome result = run("set FG_HEIGHT=512 FG_XOFFSET=12288 FG_WIDTH=4104 FG_YOFFSET=2");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.output, AllOf(HasSubstr("FG_HEIGHT = 512"), Not(HasSubstr("FG_YOFFSET = 2"))));
    EXPECT_EQ(
        "marovine: FG_WIDTH = 4104 refused (-6000): above 4096, because FG_XOFFSET is\n"
        "    12288\n"
        "  nearest accepted: 4096\n"
        "  or first set FG_XOFFSET to 12280 or less\n"
        "  accepted now: 8 to 4096, step 8\n",
        result.errors);
    // A refused change of mode leaves what it did before the gap from another mode stopped it.
    EXPECT_THAT(
        run("set FG_CAMERASIMULATOR_SELECT_MODE=FG_PIXEL_FREQUENCY FG_CAMERASIMULATOR_FRAME_GAP=60000 "
            "FG_CAMERASIMULATOR_SELECT_MODE=FG_FRAMERATE FG_CAMERASIMULATOR_HEIGHT=10000 "
            "FG_CAMERASIMULATOR_SELECT_MODE=FG_PIXEL_FREQUENCY")
            .output,
        HasSubstr("\nMoved by the refused setting, and left so\nFG_CAMERASIMULATOR_"));
    // A typing error at the end is found before anything is set.
    EXPECT_THAT(run("set FG_HEIGHT=512 FG_WIDTH=x").output, IsEmpty());
}

TEST(Command, AnswersPrograms) {
    const auto parsed = [](const std::string& arguments) {
        const Outcome result = run(arguments);
        EXPECT_NO_THROW(return Json::parse(result.output)) << arguments << '\n'
                                                           << result.output << result.errors;
        return Json();
    };
    EXPECT_EQ(Json({{"FG_WIDTH", 1024}, {"FG_LUT_TYPE", "LUT_TYPE_PROCESSING"}}),
              parsed("get FG_WIDTH FG_LUT_TYPE --json"));
    EXPECT_EQ(marovine::sdkParameterCount, parsed("list --json").size());
    EXPECT_EQ(33U, parsed("events --json").size());
    EXPECT_EQ(96U, parsed("defaults --json").size());
    EXPECT_EQ(18U, parsed("wiring --json").size());
    EXPECT_EQ(2U, parsed("debug --json").size());
    EXPECT_EQ(256U, parsed("lut show --json")["green"].size());
    EXPECT_EQ("Camera Link", parsed("tree --json")[0]["group"]);
    EXPECT_EQ("Marovine", parsed("info --json")["name"]);
    const Json status = parsed("status --json");
    EXPECT_EQ(45.3, status["FG_SYSTEMMONITOR_FPGA_TEMPERATURE"]["value"]);
    EXPECT_FALSE(status["FG_SIGNAL_ANALYZER_0_PULSE_COUNT"].contains("unit")) << "a count is no time";
    const TemporaryFile tables(".lut");
    EXPECT_EQ(tables.name(), parsed(std::string("lut save --json ") + tables.name())["file"]);
    EXPECT_EQ(256U, parsed(std::string("lut load --json ") + tables.name())["tables"]["red"].size());
    const TemporaryFile saved(".mcf");
    EXPECT_THAT(parsed(std::string("save --json --set 'FG_LUT_VALUE_RED[7]=200' ") +
                       saved.name())["notBroughtBack"][0]
                    .get<std::string>(),
                AllOf(StartsWith("FG_LUT_VALUE_RED has elements"), HasSubstr("lut save")));
    EXPECT_EQ("FG_LUT_VALUE_RED",
              parsed(std::string("diff --json --set 'FG_LUT_VALUE_RED[7]=200' ") + saved.name())[0]["name"]);
    EXPECT_EQ("maximum", parsed("describe FG_LINEEXPOSURE --json")["limits"][0]["end"]);

    const Json set = parsed("set FG_WIDTH=2048 FG_WIDTH=1004 --trace --json");
    EXPECT_EQ(2048, set["set"][0]["value"]);
    EXPECT_EQ(12U, set["writes"].size());
    EXPECT_EQ(Json({"1000", "1008"}), set["refused"]["nearest"]);

    // A failure is an answer, too.
    for (const auto& [arguments, code] : {
             std::pair<const char*, Json>{"get FG_WITDH --json", Json()},
             {"get 'FG_LUT_VALUE_RED[256]' --json", -2070},
             {"set FG_WITDH=1 --json", Json()},
             {"set FG_WIDTH --json", Json()},
             {"describe FG_WITDH --json", Json()},
             {"load /nowhere.mcf --json", Json()},
             {"debug --point 9 --json", Json()},
             {"get FG_WIDTH --json --set FG_WIDTH=1004", -7080},
             {"status --json --after nan", Json()},
         }) {
        const Json error = parsed(arguments)["error"];
        EXPECT_FALSE(error["message"].get<std::string>().empty()) << arguments;
        EXPECT_EQ(code, error["code"]) << arguments;
    }
}

TEST(Command, PrintsEventsAsTheyCome) {
    const auto outcome =
        run("--set FG_HEIGHT=256 events --wait 'FG_*FRAME*' FG_START_OF_LINE_CAM_PORT_0 -n 1000 --seconds 60 "
            "--json");
    ASSERT_EQ(0, outcome.status) << outcome.errors;
    std::istringstream lines(outcome.output);
    std::map<std::string, std::int64_t> counts;
    std::int64_t before = 0;
    for (std::string line; std::getline(lines, line);) {
        const Json event = Json::parse(line);
        ASSERT_EQ(0, event["lost"]) << line;
        EXPECT_LE(before, event["time"]) << line;
        before = event["time"];
        EXPECT_EQ(++counts[event["name"]], event["count"]) << line;
        EXPECT_EQ(event["count"], event["payload"].get<std::int64_t>() + 1) << line;
    }
    // 256 lines in a frame: 4 starts, 3 ends.
    EXPECT_EQ((std::map<std::string, std::int64_t>{{"FG_START_OF_LINE_CAM_PORT_0", 993},
                                                   {"FG_START_OF_FRAME_CAM_PORT_0", 4},
                                                   {"FG_END_OF_FRAME_CAM_PORT_0", 3}}),
              counts);
    // What still waits at the end is told as well: 50000 lines a second are more than one look brings.
    const auto fast =
        run("--set FG_WIDTH=64 --set FG_LINEPERIODE=20 --set FG_LINEEXPOSURE=5 events --wait "
            "FG_START_OF_LINE_CAM_PORT_0 --seconds 0.3 --json");
    const auto last = fast.output.rfind("{");
    ASSERT_NE(std::string::npos, last);
    EXPECT_LE(299'000'000, Json::parse(fast.output.substr(last))["time"]);
    const auto none = run("events --wait FG_OVERFLOW_CAM0 -n 1 --seconds 0.2");
    EXPECT_EQ(1, none.status);
    EXPECT_THAT(joined(none.errors), HasSubstr("only 0 of 1 events came"));
    EXPECT_THAT(joined(run("events FG_OVERFLOW").errors), HasSubstr("perhaps FG_OVERFLOW_CAM0"));
    EXPECT_EQ(2, run("events -n 3").status);
}

TEST(Command, TellsWhatIsKnownOfEachPicture) {
    const Json taken = Json::parse(
        run("--set FG_HEIGHT=64 --set FG_WIDTH=64 --set FG_IMG_SELECT_PERIOD=2 grab -n 3 -o /dev/null --json")
            .output)["taken"];
    ASSERT_EQ(3U, taken.size());
    const std::int64_t frame = 64 * 200'000;  // ns
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(i + 1, taken[i]["number"]);
        EXPECT_EQ("none", taken[i]["trigger"]);
        EXPECT_EQ(0, taken[i]["lostBefore"]);
        if (i == 0) continue;
        const auto step = [&](const char* key) {
            return taken[i][key].get<std::int64_t>() - taken[i - 1][key].get<std::int64_t>();
        };
        EXPECT_EQ(2, step("frame"));
        EXPECT_EQ(2 * 64, step("firstLine"));
        EXPECT_EQ(2 * 64, step("encoderPosition"));
        EXPECT_EQ(2 * frame, step("firstLineTime"));
        EXPECT_EQ(2 * frame, step("lastLineTime"));
    }
}

TEST(Command, TakesTheTraceFileOrTheNextSetting) {
    const TemporaryFile trace(".json");
    EXPECT_THAT(run("set --trace FG_WIDTH=2048").output, HasSubstr("Design writes"));
    EXPECT_THAT(run(std::string("set --trace ") + trace.name() + " FG_WIDTH=2048").output,
                HasSubstr("12 design writes kept in "));
    EXPECT_EQ(12U, Json::parse(trace.content()).size());
}

TEST(Command, ChainsAConfigurationAndSettings) {
    const TemporaryFile file(".mcf");
    EXPECT_EQ(0,
              run(std::string("save ") + file.name() + " --set FG_LINEPERIODE=100 --set FG_LINEEXPOSURE=50")
                  .status);
    const Outcome result = run(std::string("defaults --changed --set FG_WIDTH=512 --config ") + file.name());
    EXPECT_EQ(
        "   parameter        default  now\n"
        "*  FG_WIDTH         1024     512\n"
        "*  FG_LINEPERIODE   200      100\n"
        "*  FG_LINEEXPOSURE  19       50\n"
        "3 differ, marked with *\n",
        result.output);
    EXPECT_THAT(run(std::string("load ") + file.name()).output,
                AllOf(HasSubstr("FG_LINEEXPOSURE"), Not(HasSubstr("ANALYZER"))));

    // What a load leaves out is told, whichever way the file comes in.
    std::string text = file.content();
    text.replace(text.find("\nFG_WIDTH=1024;"), 15, "\nFG_WIDTH=1004;");
    text.replace(text.find("\nFG_DEBUGFILE='"), 15, "\nFG_DEBUGFILE='here.tif");
    file.write(text);
    const Outcome skipping = run(std::string("get FG_WIDTH --config ") + file.name());
    EXPECT_EQ(1, skipping.status);
    EXPECT_THAT(joined(skipping.errors), AllOf(HasSubstr("FG_WIDTH = 1004 refused (-7080)"),
                                               HasSubstr("names \"here.tif\", which is not found from /")));
    const std::string diff = std::string("diff ") + file.name();
    EXPECT_EQ(1, run(diff).status);
    EXPECT_EQ(0, run(diff + " " + file.name()).status);
    // A line that only one of them has is a difference as well.
    const auto line = text.find("\nFG_HEIGHT=");
    text.erase(line, text.find('\n', line + 1) - line);
    const TemporaryFile shorter(".mcf", text);
    EXPECT_EQ(1, run(diff + " " + shorter.name()).status);
}

TEST(Command, NeverReplacesAGoodFileByABadOne) {
    const TemporaryFile file(".mcf", "precious");
    const Outcome full = run(std::string("save ") + file.name(), "ulimit -f 1; ");
    EXPECT_EQ(1, full.status);
    EXPECT_THAT(full.errors, AllOf(HasSubstr("nothing saved to "), HasSubstr("as before")));
    EXPECT_EQ("precious", file.content());
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path()))
        EXPECT_THAT(entry.path().string(), Not(StartsWith(std::string(file.name()) + ".new")));
    EXPECT_EQ(0, run(std::string("save ") + file.name()).status);
    EXPECT_THAT(file.content(), StartsWith("[Kamerasektion]"));

    const Outcome untried =
        run(std::string("save ") + file.name(), "exec 3>&- 4>&- 5>&- 6>&-; prlimit --nofile=4 ");
    EXPECT_EQ(1, untried.status);
    EXPECT_THAT(untried.output, Not(HasSubstr("compared"))) << "no descriptor is left to load the file with";
}

TEST(Command, SavesOnlyWhatReadsBack) {
    const TemporaryFile file(".mcf");
    const std::string save = std::string("save ") + file.name();
    const Outcome cut = run(save + " --set FG_DEBUGFILE=" + std::string(300, 'y'));
    EXPECT_EQ(1, cut.status);
    EXPECT_THAT(cut.errors, AllOf(HasSubstr("FG_DEBUGFILE is"), HasSubstr("would read back as")));
    EXPECT_FALSE(fs::exists(file.name()));
    EXPECT_EQ(0, run(save + " --set FG_PROCESSING_GAMMA=nan").status) << "one nan is the same as another";

    fs::remove(file.name());
    ASSERT_EQ(0, mkfifo(file.name(), 0600));
    for (const char* command : {"save ", "lut save "}) {
        const Outcome pipe = run(command + std::string(file.name()));
        EXPECT_EQ(1, pipe.status) << command;
        EXPECT_THAT(pipe.errors, HasSubstr("no regular file")) << command;
        EXPECT_TRUE(fs::is_fifo(file.name())) << command;
    }
}

TEST(Command, SavesAndLoadsLookupTables) {
    const TemporaryFile file(".lut");
    const TemporaryFile picture(".png");
    EXPECT_EQ(0, run(std::string("lut save ") + file.name() + " --set FG_PROCESSING_GAMMA=2.2").status);
    const Outcome loaded = run(std::string("lut load ") + file.name());
    EXPECT_EQ(0, loaded.status) << loaded.errors;
    EXPECT_THAT(loaded.output, HasSubstr("FG_LUT_TYPE = LUT_TYPE_CUSTOM"));
    EXPECT_EQ(0, run(std::string("lut show -o ") + picture.name()).status);
    EXPECT_THAT(picture.content(), StartsWith("\x89PNG"));
    EXPECT_EQ(1, run("lut load /nowhere.lut").status);
    for (const char* content : {"", "hello\n", "nrOfElements=256;\n[red]\n", "\x80\x00\xFF"}) {
        const TemporaryFile bad(".lut", content);
        const Outcome refused = run(std::string("lut load ") + bad.name());
        EXPECT_EQ(1, refused.status) << content;
        EXPECT_THAT(joined(refused.errors), HasSubstr("holds no lookup table")) << content;
        EXPECT_THAT(refused.output, IsEmpty()) << content;
    }
}

TEST(Command, DrawsTheWiringAsTheDesignHasIt) {
    EXPECT_THAT(run("wiring --set FG_TRIGGEROUT_GPO_4_SOURCE=FG_SIGNAL_GPI_2 --set "
                    "FG_TRIGGEROUT_GPO_4_POLARITY=FG_LOW")
                    .output,
                HasSubstr("GPO 4                  <-o-  GPI 2                     select 23, invert"));
    EXPECT_THAT(run("wiring --dot").output,
                AllOf(StartsWith("digraph wiring {"), HasSubstr("\"Cam0 Exsync\" -> \"CC 1\";")));
}

TEST(Command, LogsWhatTheAppletSays) {
    EXPECT_THAT(run("set FG_CAMSTATUS=1 --log 4").errors,
                HasSubstr("trying to set read-only SDK parameter 'FG_CAMSTATUS' on process 0!"));
    EXPECT_THAT(run("set FG_CAMSTATUS=1").errors, Not(HasSubstr("trying to set")));
}

TEST(Command, WritesIconDesignAndXml) {
    const TemporaryFile icon(".png");
    const TemporaryFile design(".hap");
    const TemporaryFile xml(".xml");
    EXPECT_EQ(0, run(std::string("info --icon ") + icon.name() + " --design " + design.name()).status);
    EXPECT_EQ(2551U, icon.content().size());
    EXPECT_EQ(4781671U, design.content().size());
    EXPECT_EQ(0, run(std::string("xml -o ") + xml.name()).status);
    EXPECT_EQ(run("xml").output, xml.content());
    EXPECT_THAT(xml.content(), StartsWith("<?xml"));
}

}  // namespace
