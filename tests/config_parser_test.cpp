#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "family/Fg_Log.h"
#include "files/ConfigFileIndex.h"
#include "files/Fg_ConfigFileParser.h"
#include "tests/TemporaryFile.h"

using namespace std::string_literals;

namespace {

/// A code with the text that came with it.
using Answer = std::pair<int, std::string>;
const Answer missing{-8000, "Error"};

/// Calls a string reader with a buffer of exactly the promised size.
template <typename Read>
Answer answerOf(Read read) {
    const auto buffer = std::make_unique<char[]>(256);
    std::fill_n(buffer.get(), 256, '#');
    const int code = read(buffer.get());
    return {code, buffer.get()};
}

Answer parseKey(Fg_ConfigFileParser& parser, const char* section, const char* key) {
    return answerOf([&](char* text) { return parser.parseKey(section, key, text); });
}

Answer parseKeyFromLine(Fg_ConfigFileParser& parser, const char* needle) {
    return answerOf([&](char* text) { return parser.parseKeyFromLine(needle, text); });
}

/// What the file reads after one writer's call on a new file.
template <typename Write>
std::string written(Write write) {
    const TemporaryFile file(".mcf");
    Fg_ConfigFileParser parser(nullptr, nullptr, false);
    EXPECT_TRUE(parser.setSaveFile(file.name()));
    EXPECT_EQ(write(parser), 0);
    return file.content();  // while the parser still holds it: writers flush
}

std::string writtenDouble(double value) {
    return written([value](auto& parser) { return parser.writeConfigFileDoubleKey("D", value); });
}

TEST(ConfigFileParser, WritersGiveTheExactText) {
    using Parser = Fg_ConfigFileParser;
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFileHeader(); }),
              "[Kamerasektion]\n\nConfigFileVersion=2.0;\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFilePortA(); }), "\n[Port A]\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFilePortB(); }), "\n[Port B]\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFileByPort(3); }), "\n[Port D]\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFile("K", ""); }), "K='';\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFileValue("K", "a b"); }), "K=a b;\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFileIntKey("K", INT_MIN); }), "K=-2147483648;\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFileUInt64Key("K", ULONG_MAX); }),
              "K=18446744073709551615;\n");
    EXPECT_EQ(written([](Parser& p) { return p.writeConfigFileInt64Key("K", LONG_MIN); }),
              "K=-9223372036854775808;\n");
}

TEST(ConfigFileParser, DoublesAreWrittenWithTwelveDigits) {
    const std::pair<double, const char*> cases[] = {{-0.0, "-0"},
                                                    {200.0, "200"},
                                                    {0.112, "0.112"},
                                                    {0.00001, "1e-05"},
                                                    {0.0001, "0.0001"},
                                                    {123456789012.0, "123456789012"},
                                                    {1234567890123.0, "1.23456789012e+12"},
                                                    {1.0 / 3, "0.333333333333"},
                                                    {DBL_MAX, "1.79769313486e+308"},
                                                    {-HUGE_VAL, "-inf"},
                                                    {std::nan(""), "nan"}};
    for (const auto& [value, text] : cases) EXPECT_EQ(writtenDouble(value), "D="s + text + ";\n");
}

/// The process under a locale that writes a comma for the decimal point, made on the spot if it is not there.
class CommaLocale {
 public:
    CommaLocale() {
        if (set()) return;
        std::filesystem::create_directory(folder_.name());
        const std::string target = folder_.name() + "/de_DE.UTF-8"s;
        if (std::system(("localedef -i de_DE -f UTF-8 " + target + " >/dev/null 2>&1").c_str()) != 0) return;
        setenv("LOCPATH", folder_.name(), 1);
        set();
    }
    ~CommaLocale() {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
        std::filesystem::remove_all(folder_.name());
    }
    [[nodiscard]] static bool active() { return *std::localeconv()->decimal_point == ','; }

 private:
    static bool set() { return std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr && active(); }
    TemporaryFile folder_{"-locale"};
};

TEST(ConfigFileParser, ThePointStaysAPointUnderACommaLocale) {
    const CommaLocale locale;
    if (!locale.active()) GTEST_SKIP() << "no locale with a decimal comma can be had here";
    EXPECT_EQ(writtenDouble(-0.112), "D=-0.112;\n");
    double value = 0.0;
    EXPECT_EQ(Fg_ConfigFileParser::getDoubleValue("0.112", &value), 0);
    EXPECT_EQ(value, 0.112);
}

TEST(ConfigFileParser, KeysAreFoundAsLinesAndTokensSay) {
    const std::string longLine = "FG_LONG=" + std::string(292, 'x');
    const TemporaryFile file(
        ".mcf",
        "FG_HEADER=1;\n[Kamerasektion]\nVersion=2;\n\n[Port A] \nFG_WIDTHX=3;\nFG_BLANK =4;\n"
        " FG_INDENTED=5;\nFG_WIDTH=1024;\nFG_WIDTH=2048;\nFG_PATH='/a b/c.lut';\nFG_EMPTY='';\n"
        "FG_NONE=;\r\nFG_CR=7;\r\nFG_OPEN=8\nFG_TWO=9=10;11;\nFG_A;B=12;\n=13;\nFG_ERR=Error;\n" +
            longLine + ";\nFG_NUL=1" + "\0004;\n[Port B]\nFG_B_ONLY=14;\nFG_END="s);
    Fg_ConfigFileParser parser(nullptr, file.name(), true);
    struct Case {
        const char* section;
        const char* key;
        Answer expected;
    };
    const Case cases[] = {
        {"[Port A]", "FG_WIDTH", {0, "1024"}},
        {"[Port A]", "FG_HEADER", missing},  // stands before the section
        {"[Port A]", "FG_BLANK", missing},   // a blank before the '='
        {"[Port A]", "FG_INDENTED", missing},
        {"[Port A]", "FG_BLANK ", {0, "4"}},
        {"[Port A]", "FG_PATH", {0, "/a b/c.lut"}},
        {"[Port A]", "FG_EMPTY", {0, ""}},
        {"[Port A]", "FG_NONE", {0, ""}},
        {"[Port A]", "FG_CR", {0, "7"}},
        {"[Port A]", "FG_OPEN", {0, "8\n"}},  // without ';' the end of the line belongs to the value
        {"[Port A]", "FG_TWO", {0, "9"}},
        {"[Port A]", "FG_TWO=9", {0, "9"}},
        {"[Port A]", "FG_A;B", {0, "B"}},  // the key is the first token
        {"[Port A]", "", {0, ""}},
        {"[Port A]", "FG_ERR", {0, "Error"}},
        {"[Port A]", "FG_LONG", {0, std::string(247, 'x')}},
        {"[Port A]", "FG_NUL", {0, "1"}},
        {"[Port A]", "FG_B_ONLY", {0, "14"}},  // the next section is no barrier
        {"[Port A]", "FG_END", {0, ""}},
        {"[Port B]", "FG_WIDTH", missing},
        {"[Port C]", "FG_WIDTH", missing},
        {"Port", "FG_WIDTH", {0, "1024"}},
        {"", "FG_HEADER", missing},  // every line contains an empty text, the first one too
        {"[Kamerasektion]\n", "Version", {0, "2"}},
        {"[Port A]\n", "FG_WIDTH", missing},  // a blank stands before the line feed
        {nullptr, "FG_WIDTH", missing},
        {"[Port A]", nullptr, missing},
    };
    for (const auto& [section, key, expected] : cases) {
        SCOPED_TRACE((section ? section : "(null)") + " / "s + (key ? key : "(null)"));
        EXPECT_EQ(parseKey(parser, section, key), expected);
    }
    EXPECT_EQ(answerOf([&](char* text) { return parser.parseKeySection(1, "FG_B_ONLY", text); }),
              (Answer{0, "14"}));
    std::string untouched = "as before";
    EXPECT_EQ(parser.parseKeySection(0, nullptr, untouched.data()), -1);
    EXPECT_EQ(untouched, "as before");
}

TEST(ConfigFileParser, HeaderLookupTakesTheFirstLineThatHoldsTheText) {
    const TemporaryFile file(
        ".mcf", "[Kamerasektion]\n='\nHersteller='Typographie';\nTyp='Marovine';\nNumber=5;\nBare\nLast");
    Fg_ConfigFileParser parser(nullptr, file.name(), true);
    const std::pair<const char*, Answer> cases[] = {{"Hersteller", {0, "Typographie"}},
                                                    {"Typ", {0, "Typographie"}},
                                                    {"Typ=", {0, "Marovine"}},
                                                    {"Number", {0, "5;\n"}},
                                                    {"=", {0, ""}},
                                                    {"Bare", {0, ""}},
                                                    {"Last", {0, ""}},
                                                    {"Absent", missing}};
    for (const auto& [needle, expected] : cases)
        EXPECT_EQ(parseKeyFromLine(parser, needle), expected) << needle;
}

TEST(ConfigFileParser, TypedReadersFailOnlyOnTheTextError) {
    const TemporaryFile file(
        ".mcf",
        "[Kamerasektion]\nAktivePort=3;\n[Port A]\nERR=1Error;\nWORD=none;\nBIG=3000000000;\n"
        "HEX=0x10;\nOCT=010;\nNEG=-3;\nDBL= +1.5e2;\nEMPTY=;\n");
    Fg_ConfigFileParser parser(nullptr, file.name(), true);
    struct Case {
        const char* key;
        int result;
        int asInt;
        unsigned long asUInt64;
        long asInt64;
        double asDouble;
    };
    // 77 stands for "left as it was".
    const Case cases[] = {
        {"ABSENT", -1, 77, 77, 77, 77.0},
        {"ERR", -1, 77, 77, 77, 77.0},
        {nullptr, -1, 77, 77, 77, 77.0},
        {"WORD", 0, 0, 77, 77, 0.0},
        {"EMPTY", 0, 0, 77, 77, 0.0},
        {"BIG", 0, -1294967296, 3000000000, 3000000000, 3e9},
        {"HEX", 0, 0, 0, 16, 16.0},
        {"OCT", 0, 10, 10, 8, 10.0},
        {"NEG", 0, -3, ULONG_MAX - 2, -3, -3.0},
        {"DBL", 0, 1, 1, 1, 150.0},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.key ? expected.key : "(null)");
        int i = 77;
        unsigned long u = 77;
        long l = 77;
        double d = 77.0;
        EXPECT_EQ(parser.parseIntKeySection(0, expected.key, &i), expected.result);
        EXPECT_EQ(parser.parseUInt64KeySection(0, expected.key, &u), expected.result);
        EXPECT_EQ(parser.parseInt64KeySection(0, expected.key, &l), expected.result);
        EXPECT_EQ(parser.parseDoubleKeySection(0, expected.key, &d), expected.result);
        EXPECT_EQ(i, expected.asInt);
        EXPECT_EQ(u, expected.asUInt64);
        EXPECT_EQ(l, expected.asInt64);
        EXPECT_EQ(d, expected.asDouble);
    }
    int port = 0;
    EXPECT_EQ(parser.parseIntKeyFromHeader("AktivePort", &port), 0);
    EXPECT_EQ(port, 3);
}

TEST(ConfigFileParser, WideNumbersAreReadByTheirPrefix) {
    struct Case {
        const char* text;
        unsigned long asUInt64;  // always decimal
        long asInt64;
    };
    // 77 stands for "left as it was".
    for (const auto& [text, asUInt64, asInt64] :
         {Case{" ", 77, 77}, Case{"-", 77, 77}, Case{"+5", 5, 5}, Case{" \t7x", 7, 7}, Case{"0xg", 0, 0},
          Case{"-0x1F", 0, -31}, Case{"08", 8, 0}, Case{"99999999999999999999", ULONG_MAX, LONG_MAX},
          Case{"18446744073709551615", ULONG_MAX, LONG_MAX}}) {
        unsigned long u = 77;
        long l = 77;
        Fg_ConfigFileParser::getUInt64Value(text, &u);
        Fg_ConfigFileParser::getInt64Value(text, &l);
        EXPECT_EQ(u, asUInt64) << text;
        EXPECT_EQ(l, asInt64) << text;
    }
}

/// A text of random length over an alphabet in which lines, keys and separators meet often.
std::string randomText(std::mt19937& random, std::string_view alphabet, std::size_t maxLength) {
    std::string text(random() % (maxLength + 1), '\0');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
}

TEST(ConfigFileParser, AnnouncedKeysHaveTheSameAnswers) {
    std::mt19937 random(1);
    const TemporaryFile file(".mcf");
    int found = 0;
    for (int round = 0; round < 150; ++round) {
        std::string content = randomText(random, std::string_view("AB[]==;;'\n\n\n\r\0 ", 16), 400);
        if (round % 3 == 0) content.insert(content.size() / 2, 230 + random() % 60, 'A');  // a line too long
        file.write(content);
        Fg_ConfigFileParser plain(nullptr, file.name(), true), announced(nullptr, file.name(), true);
        const std::string section = randomText(random, "AB[]=;'\n ", 2);
        std::array<std::string, 20> keys;
        for (auto& key : keys) key = randomText(random, "AB[]=;'\n ", 3);
        announced.expectKeys(section.c_str(), {keys.begin(), keys.end()});
        for (const auto& key : keys) {
            const Answer expected = parseKey(plain, section.c_str(), key.c_str());
            found += expected.first == 0 ? 1 : 0;
            ASSERT_EQ(parseKey(announced, section.c_str(), key.c_str()), expected)
                << testing::PrintToString(content) << section << "/" << key;
        }
    }
    EXPECT_GT(found, 200) << "the texts should meet often enough to mean something";
}

TEST(ConfigFileParser, AFileOpenForBothShowsWhatWasWritten) {
    const TemporaryFile file(".mcf", "[Port A]\nFG_WIDTH=8;\n");
    Fg_ConfigFileParser parser(nullptr, file.name(), false);
    parser.expectKeys("[Port A]", {"FG_HEIGHT"});
    EXPECT_EQ(parseKey(parser, "[Port A]", "FG_HEIGHT"), missing);
    EXPECT_EQ(parser.writeConfigFileIntKey("FG_HEIGHT", 16), 0);
    EXPECT_EQ(parseKey(parser, "[Port A]", "FG_HEIGHT"), (Answer{0, "16"}));
}

/// The older log with its file open.
class OpenLog : public Fg_Log {
 public:
    explicit OpenLog(const char* name) : Fg_Log(nullptr) { stream_ = std::fopen(name, "w"); }
};

TEST(ConfigFileParser, OnlyAConfigurationFileIsOpened) {
    const TemporaryFile text(".txt", "[Port A]\nK=1;\n");
    const TemporaryFile backup(".mcf.bak", "[Port A]\nK=1;\n");
    const TemporaryFile upper(".MCF", "[Port A]\nK=1;\n");
    const TemporaryFile absent(".mcf");
    const TemporaryFile logFile(".log");
    OpenLog log(logFile.name());
    const std::pair<const char*, bool> cases[] = {{text.name(), false},
                                                  {backup.name(), true},
                                                  {upper.name(), false},
                                                  {absent.name(), false},
                                                  {nullptr, false}};
    for (const auto& [name, opens] : cases) {
        Fg_ConfigFileParser parser(&log, name, true);
        EXPECT_EQ(parseKey(parser, "[Port A]", "K").first, opens ? 0 : -8000);
        EXPECT_EQ(parseKeyFromLine(parser, "K").first, opens ? 0 : -8000);
        EXPECT_EQ(parser.writeConfigFileHeader(), -1) << "not open for writing";
    }

    Fg_ConfigFileParser parser(&log, nullptr, false);
    EXPECT_FALSE(parser.setSaveFile(text.name()));
    EXPECT_FALSE(parser.setSaveFile("/no/such/folder/x.mcf"));
    EXPECT_FALSE(parser.checkFileExist(absent.name()));
    EXPECT_TRUE(parser.setSaveFile(absent.name()));
    EXPECT_TRUE(parser.checkFileExist(absent.name()));
    EXPECT_EQ(parser.writeConfigFile("K", nullptr), -1);
    EXPECT_EQ(text.content(), "[Port A]\nK=1;\n");
    EXPECT_EQ(logFile.content(),
              "orbicardIV::Error >> Config File is Invalid;\n"
              "orbicardIV::Error >> Config File: fopen failed;\n");
}

TEST(ConfigFileParser, AFullDiskShowsInTheWritersResult) {
    const TemporaryFile link(".mcf");
    std::filesystem::create_symlink("/dev/full", link.name());
    Fg_ConfigFileParser parser(nullptr, nullptr, false);
    ASSERT_TRUE(parser.setSaveFile(link.name()));
    EXPECT_EQ(parser.writeConfigFileIntKey("FG_WIDTH", 8), -1);
}

}  // namespace
