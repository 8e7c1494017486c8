/// Saving and loading the configuration through the exports.

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>

#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

namespace fs = std::filesystem;

/// A folder for one test case, removed at its end.
class ConfigurationTest : public AppletTest {
 protected:
    ConfigurationTest() { fs::create_directories(folder_); }
    ~ConfigurationTest() override { fs::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    int save(const std::string& name = "a.mcf") { return Fg_saveConfig(applet.record(), path(name).c_str()); }
    int load(const std::string& name = "a.mcf") { return Fg_loadConfig(applet.record(), path(name).c_str()); }

    std::vector<std::string> lines(const std::string& name = "a.mcf") const {
        std::ifstream in(path(name));
        std::vector<std::string> result;
        for (std::string line; std::getline(in, line);) result.push_back(line);
        return result;
    }
    void write(const std::vector<std::string>& text, const std::string& name = "a.mcf") const {
        std::ofstream out(path(name));
        for (const auto& line : text) out << line << '\n';
    }
    /// Replaces the line of a key; an empty replacement removes it.
    void replaceLine(const std::string& key, const std::string& line) {
        auto text = lines();
        const auto found =
            std::find_if(text.begin(), text.end(), [&](const auto& l) { return l.starts_with(key + "="); });
        ASSERT_NE(text.end(), found) << key;
        if (line.empty())
            text.erase(found);
        else
            *found = line;
        write(text);
    }

 private:
    fs::path folder_ =
        fs::temp_directory_path() /
        (std::string("marovine-") + testing::UnitTest::GetInstance()->current_test_info()->name() + "-" +
         std::to_string(getpid()));
};

TEST_F(ConfigurationTest, WritesHeaderAndKeysInListOrder) {
    ASSERT_EQ(0, save());
    const auto text = lines();
    const std::vector<std::string> header{"[Kamerasektion]",
                                          "",
                                          "ConfigFileVersion=2.0;",
                                          "Hersteller='Tavrion GmbH';",
                                          "Typ='Marovine';",
                                          "Version='0.5';",
                                          "LoadAppletId=0;",
                                          "AktivePort=0;",
                                          "",
                                          "[Port A]"};
    ASSERT_GE(text.size(), header.size());
    EXPECT_TRUE(std::equal(header.begin(), header.end(), text.begin()));
    std::vector<std::string> keys;
    for (auto line = text.begin() + 10; line != text.end(); ++line)
        keys.push_back(line->substr(0, line->find('=')));
    std::vector<std::string> expected;
    for (const auto& row : sdkParameters)
        if (row.fileUse != FileUse::NotStored) expected.emplace_back(row.name);
    EXPECT_EQ(123u, expected.size());
    EXPECT_EQ(expected, keys);
    for (const char* line : {"FG_WIDTH=1024;", "FG_DEBUGFILE='';", "FG_LINEPERIODE=200;",
                             "FG_LINETRIGGERDEBOUNCING=0.112;", "FG_TRIGGEROUT_GPO_0_SOURCE=2002;",
                             "FG_CAMERASIMULATOR_LINERATE=10240.0262145;", "FG_DIGIO_OUTPUT=3;"})
        EXPECT_THAT(text, testing::Contains(line));
}

TEST_F(ConfigurationTest, BringsBackEveryAppliedParameter) {
    ASSERT_EQ(0, applet.set("FG_SENSORWIDTH", 4096u));
    ASSERT_EQ(0, applet.set("FG_WIDTH", 2048u));
    ASSERT_EQ(0, applet.set("FG_XOFFSET", 64u));
    ASSERT_EQ(0, applet.set("FG_SCALINGFACTOR_RED", 1.5));
    ASSERT_EQ(0, applet.set("FG_LINEPERIODE", 333.336));
    ASSERT_EQ(0, applet.set("FG_LINEEXPOSURE", 100.0));
    ASSERT_EQ(0, applet.set("FG_LINETRIGGERMODE", constantOf("ASYNC_TRIGGER")));
    ASSERT_EQ(0, applet.set("FG_CC2_SOURCE", constantOf("FG_SIGNAL_GPI_3")));
    ASSERT_EQ(0, applet.set("FG_CC2_POLARITY", constantOf("FG_LOW")));
    ASSERT_EQ(0, applet.set("FG_TRIGGEROUT_GPO_5_SOURCE", constantOf("FG_SIGNAL_CAM0_LVAL")));
    ASSERT_EQ(0, applet.set("FG_PROCESSING_GAMMA", 2.2));
    ASSERT_EQ(0, save());
    const auto names = applet.board().parameterNames();
    std::vector<virtualboard::Value> before;
    for (const auto& name : names) before.push_back(applet.board().value(name));

    OpenApplet fresh;
    ASSERT_EQ(0, Fg_loadConfig(fresh.record(), path("a.mcf").c_str()));
    EXPECT_EQ(0, fresh.lastError());
    for (const auto& row : sdkParameters) {
        if (row.fileUse != FileUse::Applied || row.type == ValueType::Text) continue;
        if (row.type == ValueType::Double) {
            EXPECT_DOUBLE_EQ(applet.get<double>(row.name), fresh.get<double>(row.name)) << row.name;
        } else {
            EXPECT_EQ(applet.get<std::int32_t>(row.name), fresh.get<std::int32_t>(row.name)) << row.name;
        }
    }
    // The design agrees as well, apart from what runs by itself.
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool changesByItself = names[i].find("Analyzer") != std::string::npos ||
                                     names[i].find("BoardStatus") != std::string::npos ||
                                     names[i].find("InputStatus") != std::string::npos;
        if (!changesByItself) {
            EXPECT_EQ(before[i], fresh.board().value(names[i])) << names[i];
        }
    }
}

TEST_F(ConfigurationTest, NeedsEveryKeyThatItReadsBack) {
    ASSERT_EQ(0, save());
    const auto whole = lines();
    for (const auto& row : sdkParameters) {
        if (row.fileUse == FileUse::NotStored) continue;
        write(whole);
        replaceLine(row.name, "");
        const bool needed = row.fileUse != FileUse::StoredOnly;
        EXPECT_EQ(needed ? error::configurationRejected : 0, load()) << row.name;
        EXPECT_EQ(needed ? error::configurationRejected : 0, applet.lastError()) << row.name;
    }
}

TEST_F(ConfigurationTest, ReadsALargeFileInNoTime) {
    ASSERT_EQ(0, save());
    auto text = lines();
    std::vector<std::string> junk;
    for (int i = 0; i < 100000; ++i) junk.push_back("FG_JUNK" + std::to_string(i) + "=1;");
    text.insert(text.begin() + 10, junk.begin(), junk.end());
    write(text);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, load());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(ConfigurationTest, FillsTheCacheUpToAMissingKey) {
    ASSERT_EQ(0, save());
    replaceLine("FG_CCSEL3", "");
    replaceLine("FG_WIDTH", "FG_WIDTH=512;");
    applet.takeWrites();
    EXPECT_EQ(error::configurationRejected, load());
    EXPECT_EQ(512u, applet.get<std::uint32_t>("FG_WIDTH"));
    EXPECT_TRUE(applet.takeWrites().empty()) << "no setter ran";
}

TEST_F(ConfigurationTest, BringsProcessingValuesThroughTheTableType) {
    ASSERT_EQ(0, save());
    replaceLine("FG_PROCESSING_INVERT", "FG_PROCESSING_INVERT=1;");
    EXPECT_EQ(0, load());
    const auto red = std::get<std::vector<std::uint32_t>>(
        applet.board().value("Device1_Process0_LookupTable_R_LUTcontent"));
    EXPECT_EQ(255u, red[0]);
    EXPECT_EQ(0u, red[255]);

    // A custom table comes from the file that the configuration names.
    ASSERT_EQ(0, applet.setText("FG_LUT_SAVE_FILE", path("inverted.lut").c_str()));
    replaceLine("FG_PROCESSING_INVERT", "FG_PROCESSING_INVERT=0;");
    replaceLine("FG_LUT_TYPE", "FG_LUT_TYPE=0;");
    replaceLine("FG_LUT_CUSTOM_FILE", "FG_LUT_CUSTOM_FILE='" + path("inverted.lut") + "';");
    OpenApplet fresh;
    EXPECT_EQ(0, Fg_loadConfig(fresh.record(), path("a.mcf").c_str()));
    EXPECT_EQ(red, std::get<std::vector<std::uint32_t>>(
                       fresh.board().value("Device1_Process0_LookupTable_R_LUTcontent")));
}

TEST_F(ConfigurationTest, LeavesOutWhatCannotBeRead) {
    applet.board().refuseReads("Device1_Process1_Trigger_Inputs_InputStatus_Status", -5);
    ASSERT_EQ(0, save());
    applet.board().clearFaults();
    const auto text = lines();
    EXPECT_FALSE(
        std::any_of(text.begin(), text.end(), [](const auto& l) { return l.starts_with("FG_DIGIO_INPUT"); }));
    EXPECT_EQ(10u + 122u, text.size());
    EXPECT_EQ(0, load()) << "a read-out is not needed";
}

TEST_F(ConfigurationTest, WritesUnsignedReadOutsAsSignedNumbers) {
    applet.board().force("Device1_Process1_Trigger_Analyzer_Difference_Status", std::int64_t{0x1FFFFFFFD});
    applet.board().force("Device1_Process1_Trigger_Analyzer_Analyzer0_PulseCountSignal_Status",
                         std::int64_t{3000000000});
    ASSERT_EQ(0, save());
    const auto text = lines();
    EXPECT_THAT(text, testing::Contains("FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE=-3;"));
    EXPECT_THAT(text, testing::Contains("FG_SIGNAL_ANALYZER_0_PULSE_COUNT=-1294967296;"));
}

TEST_F(ConfigurationTest, RefusesForeignAndMissingFiles) {
    EXPECT_EQ(error::fileNotFound, load("missing.mcf"));
    EXPECT_EQ(error::configurationRejected, applet.lastError());
    EXPECT_EQ(error::fileNotFound, Fg_loadConfig(applet.record(), nullptr));
    ASSERT_EQ(0, save());
    fs::copy(path("a.mcf"), path("a.txt"));
    EXPECT_EQ(error::fileNotFound, load("a.txt"));
    EXPECT_EQ(error::fileNotAccessible, save("a.txt"));
    EXPECT_EQ(error::fileNotAccessible, save("no/such/folder/a.mcf"));
    EXPECT_EQ(error::fileNotAccessible, Fg_saveConfig(applet.record(), nullptr));
    EXPECT_EQ(error::fileNotAccessible, applet.lastError());

    applet.takeWrites();
    for (const auto& [key, line] : {std::pair("Typ", "Typ='Marovine2';"), std::pair("Typ", "Typ='marovine';"),
                                    std::pair("Hersteller", ""), std::pair("AktivePort", "")}) {
        ASSERT_EQ(0, save());
        replaceLine("FG_WIDTH", "FG_WIDTH=512;");
        replaceLine(key, line);
        EXPECT_EQ(error::configurationRejected, load()) << key << " " << line;
        EXPECT_EQ(1024u, applet.get<std::uint32_t>("FG_WIDTH"));
    }
    EXPECT_TRUE(applet.takeWrites().empty());
}

TEST_F(ConfigurationTest, RunsInsideACallOfItsThreadAndWaitsForOneOfAnother) {
    ASSERT_EQ(0, save());
    const auto before = lines();
    int saved = 1, loaded = 1;
    std::thread saving, loading;
    std::atomic<bool> loadedElsewhere = false;
    applet.board().watchWrites([&](const auto&) {
        applet.board().watchWrites({});
        saved = save("inside.mcf");
        loaded = load("inside.mcf");
        saving = std::thread([&] { EXPECT_EQ(0, save()); });
        loading = std::thread([&] {
            EXPECT_EQ(0, load("inside.mcf"));
            loadedElsewhere = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(before, lines()) << "written to before the call had ended";
        EXPECT_FALSE(loadedElsewhere) << "loaded before the call had ended";
    });
    EXPECT_EQ(0, applet.set("FG_WIDTH", 512u));
    saving.join();
    loading.join();
    EXPECT_EQ(0, saved);
    EXPECT_EQ(0, loaded);
    EXPECT_THAT(lines("inside.mcf"), testing::Contains("FG_WIDTH=512;"));
    EXPECT_THAT(lines(), testing::Contains("FG_WIDTH=512;"));
}

}  // namespace
}  // namespace marovine::test
