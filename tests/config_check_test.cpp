/// What is said about configuration files before they are loaded, line by line, and whether a load agrees.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "client/ConfigCheck.h"
#include "client/SkippedValues.h"
#include "tests/HostFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class ConfigCheck : public test::HostTest {
 protected:
    ConfigCheck() {
        applet.twin()->save(file.name());
        saved = file.content();
    }

    /// The saved configuration with a line changed; `key` begins the line, which is left out when `line` is
    /// empty.
    static std::string changed(std::string text, const std::string& key, const std::string& line) {
        const auto begin = text.find("\n" + key + "=") + 1;
        const auto end = text.find('\n', begin) + 1;
        return text.replace(begin, end - begin, line.empty() ? "" : line + "\n");
    }
    std::string with(const std::string& key, const std::string& line) const {
        return changed(saved, key, line);
    }

    /// "WEIGHT: TEXT" of each finding.
    std::vector<std::string> check(const std::string& text) const {
        file.write(text);
        std::vector<std::string> result;
        for (const auto& finding : collapsed(checkConfiguration(applet, file.name())))
            result.push_back(std::string(textOf(finding.weight)) + ": " + finding.text);
        return result;
    }
    bool loads() const {
        try {
            applet.twin()->load(file.name());
            return true;
        } catch (const Refused&) {
            return false;
        }
    }

    TemporaryFile file{".mcf"};
    std::string saved;
};

TEST_F(ConfigCheck, FindsNothingInWhatTheAppletSaved) {
    EXPECT_THAT(check(saved), IsEmpty());
    EXPECT_THAT(check(saved + "\n \t\n[Port B]\n"), IsEmpty());
}

TEST_F(ConfigCheck, NamesWhatMakesALoadFail) {
    std::string windows;
    for (const char c : saved) windows += c == '\n' ? std::string("\r\n") : std::string(1, c);
    std::string otherPort = saved;
    otherPort.replace(saved.find("[Port A]"), 8, "[Port B]");
    struct Case {
        std::string text;
        const char* says;
    };
    for (const auto& [text, says] : {
             Case{with("FG_CCSEL3", "FG_CCSEL9=1;"), "the key FG_CCSEL3 is missing"},
             Case{with("FG_WIDTH", "FG_WIDTH=Error;"), "takes for a missing key"},
             Case{with("Typ", "Typ='Other';"), "belongs to the applet \"Other\""},
             Case{with("Hersteller", "Hersteller='Typ';"), "anywhere, and reads \"Typ\""},
             Case{with("Hersteller", ""), "lacks the key Hersteller"},
             Case{with("AktivePort", ""), "lacks the key AktivePort"},
             Case{"AktivePort=0;\n" + with("AktivePort", ""), "AktivePort must stand behind [Kamerasektion]"},
             Case{windows, "carriage return"},
             Case{otherPort, "there is no line [Port A]"},
             Case{"", "there is no line [Kamerasektion]"},
         }) {
        const auto findings = check(text);
        EXPECT_THAT(findings, testing::Contains(AllOf(HasSubstr("load fails: "), HasSubstr(says))));
        EXPECT_FALSE(loads()) << says;
        try {
            loadConfiguration(*applet.twin(), file.name());
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(says));
        }
    }
    EXPECT_THAT(check(with("FG_DIGIO_INPUT", "")), IsEmpty()) << "a read-out is not read back";
    EXPECT_TRUE(loads());
}

TEST_F(ConfigCheck, NotesLinesThatALoadDoesNotTake) {
    struct Case {
        std::string text;
        const char* says;
    };
    for (const auto& [text, says] : {
             Case{"FG_WIDTH=8;\n" + saved, "note: FG_WIDTH stands before [Port A]; a load takes line 22"},
             Case{saved + "FG_WIDTH=8;\n", "note: FG_WIDTH stands a second time; a load takes line 21"},
             Case{saved + "FG_WITDH=8;\n", "note: unknown key \"FG_WITDH\"; a load ignores it"},
             Case{saved + "FG_WIDTH =8;\n", "note: there are blanks around the key FG_WIDTH; "},
             Case{"\xEF\xBB\xBF\n" + saved, "note: a byte order mark"},
             Case{saved + "gar\x1b[31mbage\n", "note: \"gar?[31mbage\" holds no key; a load ignores it"},
             Case{saved + std::string(600, '#') + "\n",
                  "note: longer than 255 characters; a load reads the line in pieces"},
         }) {
        EXPECT_THAT(check(text), testing::Contains(HasSubstr(says)));
        EXPECT_TRUE(loads()) << says;
    }
}

/// A load takes these, but a later line or the applet's own rules have the last word.
TEST_F(ConfigCheck, NamesWhatALoadDoesNotKeep) {
    struct Case {
        const char* key;
        const char* line;
        const char* says;
    };
    for (const auto& [key, line, says] : {
             Case{"FG_TRIGGEROUT_GPO_7_SOURCE", "FG_TRIGGEROUT_GPO_7_SOURCE=1081;",
                  "not kept: FG_TRIGGEROUT_GPO_7_SOURCE = FG_SIGNAL_FRONT_GPI_0 reads VCC after a load: a "
                  "later "
                  "key sets the same thing"},
             Case{"FG_CC4_POLARITY", "FG_CC4_POLARITY=0;", "reads FG_HIGH after a load"},
             Case{"FG_CAMERASIMULATOR_WIDTH", "FG_CAMERASIMULATOR_WIDTH=512;",
                  "not kept: FG_CAMERASIMULATOR_WIDTH = 512 reads 1024 after a load: a load only remembers "
                  "the "
                  "value, it does not set it"},
         })
        EXPECT_THAT(check(with(key, line)), ElementsAre(HasSubstr(says))) << key;
}

/// What a load takes is what the applet's own reader makes of the line, and the file's words are shown.
TEST_F(ConfigCheck, ReadsNumbersAndTextsAsTheAppletDoes) {
    struct Case {
        const char* key;
        std::string value;
        Value read;
        const char* says;  ///< null: nothing
    };
    const std::string longText(300, 'y');
    for (const auto& [key, value, read, says] : {
             Case{"FG_HEIGHT", " +150", std::uint32_t{150}, nullptr},
             Case{"FG_LINEEXPOSURE", "0x14", 20.0, nullptr},
             Case{"FG_LINEEXPOSURE", " +15", 15.0, nullptr},
             Case{"FG_XOFFSET", "0x14", std::uint32_t{0},
                  "misread: FG_XOFFSET: the file says \"0x14\", read as 0"},
             Case{"FG_XOFFSET", "8 pixels", std::uint32_t{8}, "the file says \"8 pixels\", read as 8"},
             Case{"FG_XOFFSET", "", std::uint32_t{0}, "the file says \"\", read as 0"},
             Case{"FG_LINEEXPOSURE", "20us", 20.0, "the file says \"20us\", read as 20"},
             Case{"FG_LINEEXPOSURE", "xyz", 0.0, "the file says \"xyz\", read as 0"},
             Case{"FG_HEIGHT", "99999999999", std::uint32_t{1215752191},
                  "the file says \"99999999999\", read as"},
             Case{"FG_DEBUGFILE", "'a=b.tif'", std::string("a"), "the file says \"a=b.tif\", read as \"a\""},
             Case{"FG_DEBUGFILE", "'" + longText + "'", longText.substr(0, 241), "cut after 241"},
         }) {
        const auto findings = check(with(key, std::string(key) + "=" + value + ";"));
        if (says == nullptr)
            EXPECT_THAT(findings, IsEmpty()) << value;
        else
            EXPECT_THAT(findings, testing::Contains(HasSubstr(says))) << value;
        const auto loaded = applet.twin();
        loaded->load(file.name());
        EXPECT_EQ(read, loaded->get(key)) << value;
        const ConfigFile config = ConfigFile::read(file.name());
        EXPECT_EQ(read, configValue(applet.parameter(key), *config.find(key))) << value;
    }
}

TEST_F(ConfigCheck, ListsWhatFollowsUnderItsCause) {
    const std::string period = with("FG_LINEPERIODE", "FG_LINEPERIODE=xyz;");
    file.write(changed(period, "FG_XOFFSET", "FG_XOFFSET=99999999999;"));
    const ConfigFile config = ConfigFile::read(file.name());
    const auto skipped = skippedValues(applet, config);
    ASSERT_THAT(skipped, SizeIs(2));
    EXPECT_EQ("FG_XOFFSET", skipped[0].line->key);
    EXPECT_THAT(skipped[0].followUps, testing::Contains(config.find("FG_WIDTH")));
    EXPECT_EQ("FG_LINEPERIODE", skipped[1].line->key);
    EXPECT_THAT(skipped[1].followUps, ElementsAre(config.find("FG_LINEEXPOSURE")));
    EXPECT_EQ("FG_LINEPERIODE = 0 refused (-6000): below 0.512; the file says \"xyz\", read as 0",
              skipped[1].sentence());

    // Two values, each good without the other.
    EXPECT_THAT(check(changed(with("FG_WIDTH", "FG_WIDTH=16384;"), "FG_XOFFSET", "FG_XOFFSET=8;")),
                testing::Contains(HasSubstr("skipped: ")));
    for (const auto& finding : checkConfiguration(applet, file.name()))
        for (const auto& advice : finding.advice)
            EXPECT_THAT(advice, Not(HasSubstr("accepted now: 8 to 16384")));
}

TEST_F(ConfigCheck, MissingKeysHideNothing) {
    std::string text;
    std::size_t begin = 0;
    while (begin < saved.size()) {
        const std::size_t end = saved.find('\n', begin) + 1;
        const std::string line = saved.substr(begin, end - begin);
        if (!line.starts_with("FG_CC")) text += line;
        begin = end;
    }
    EXPECT_THAT(
        check(changed(text, "FG_LINEEXPOSURE", "FG_LINEEXPOSURE=500;")),
        ElementsAre(HasSubstr("12 keys are missing: FG_CC1_SOURCE, FG_CC1_POLARITY, FG_CC2_SOURCE, ..."),
                    HasSubstr("skipped: FG_LINEEXPOSURE = 500 refused (-6000): above 200, because")));
    EXPECT_THAT(checkConfiguration(applet, file.name()), SizeIs(13)) << "programs get all";
}

TEST(ConfigValues, AreTheSameWithinTheFilesDigits) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(sameInFile(nan, nan));
    EXPECT_FALSE(sameInFile(nan, 1.0));
    EXPECT_FALSE(sameInFile(1.0, nan));
    EXPECT_TRUE(sameInFile(1.0 / 3, 0.333333333333));
    EXPECT_FALSE(sameInFile(1.0, 1.0001));
}

TEST(ConfigFileReading, RefusesWhatIsNoFile) {
    const TemporaryFile huge(".mcf", std::string(300000, '\n'));
    for (const std::string name : {"/nowhere.mcf", "/", huge.name()})
        EXPECT_THROW(ConfigFile::read(name), Failure) << name;
}

}  // namespace
}  // namespace marovine::host
