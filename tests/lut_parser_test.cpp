#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include "files/Fg_LutFileParser.h"
#include "tests/TemporaryFile.h"

using namespace std::string_literals;

namespace {

using Table = marovine::OwnedTable<LookupTable_s>;
using Knee = marovine::OwnedTable<KneeLookupTable_s>;

std::vector<int> valuesOf(const LookupTable_s& table) {
    return {table.values, table.values + (table.values ? table.nrOfElements : 0)};
}

std::vector<double> valuesOf(const KneeLookupTable_s& knee) {
    return {knee.values, knee.values + (knee.values ? knee.nrOfElements : 0)};
}

LookupTable_s recordOf(std::vector<int>& values, int id) {
    return {values.data(), id, static_cast<std::uint32_t>(values.size()), 0, false};
}

KneeLookupTable_s recordOf(std::vector<double>& values) {
    return {.values = values.data(), .nrOfElements = static_cast<std::uint32_t>(values.size())};
}

/// The values of one section of a file with this content, or of none when the read fails.
std::vector<int> readSection(const std::string& content, const char* section, int expectedResult = 0) {
    const TemporaryFile file(".lut", content);
    Table table;
    EXPECT_EQ(Fg_LutFileParser().getLutFromFile(file.name(), table, section), expectedResult);
    return valuesOf(table);
}

TEST(LutFileParser, FilesHaveTheExactLayout) {
    std::vector<int> ramp{0, 1}, signs{-1, INT_MAX};
    std::vector<double> steps{0.5, -1e-12};
    LookupTable_s red = recordOf(ramp, 0), green = recordOf(signs, 1), blue = recordOf(ramp, 2);
    green.format = 7;
    green.number = true;
    const KneeLookupTable_s knee = recordOf(steps);
    const KneeLookupTable_s none;
    const TemporaryFile file(".lut");
    Fg_LutFileParser parser;

    EXPECT_EQ(parser.saveLutToFile(file.name(), red, green, blue), 0);
    EXPECT_EQ(file.content(),
              "# Lut data file v1.1\n\n"
              "[red]\n\nid=0;\nnrOfElements=2;\nformat=0;\nnumber=0;\n0,0;\n1,1;\n\n\n"
              "[green]\n\nid=1;\nnrOfElements=2;\nformat=7;\nnumber=1;\n0,-1;\n1,2147483647;\n\n\n"
              "[blue]\n\nid=2;\nnrOfElements=2;\nformat=0;\nnumber=0;\n0,0;\n1,1;\n");
    EXPECT_EQ(parser.saveLutToFile(file.name(), red), 0);
    EXPECT_EQ(
        file.content(),
        "# Lut data file v1.1\n\n\n\n[gray]\n\nid=0;\nnrOfElements=2;\nformat=0;\nnumber=0;\n0,0;\n1,1;\n");
    EXPECT_EQ(parser.saveLutToFile(file.name(), knee, none, knee), 0);
    EXPECT_EQ(
        file.content(),
        "# KneeLut data file v1.1\n\n[red]\n\n0,0.500000000000;\n1,-0.000000000001;\n\n\n[green]\n\n\n\n"
        "[blue]\n\n0,0.500000000000;\n1,-0.000000000001;\n");
    EXPECT_EQ(parser.saveLutToFile(file.name(), knee, "[any]"), 0);
    EXPECT_EQ(file.content(), "# KneeLut data file v1.0\n\n[any]\n\n0,0.500000000000;\n1,-0.000000000001;\n");
    EXPECT_EQ(parser.saveMatrixToFile(file.name(), "# Matrix\n", signs.data(), 2), 0);
    EXPECT_EQ(file.content(), "# Matrix\nnrOfElements=2;\n0,-1;\n1,2147483647;\n");
    EXPECT_EQ(parser.getMatrixFromFile(file.name(), signs.data(), 2), -1);
}

TEST(LutFileParser, LinesEndAtTheirLimit) {
    const TemporaryFile file(".lut");
    Fg_LutFileParser parser;
    EXPECT_EQ(parser.writeIntInt(1, 2, ","), -1) << "no file yet";
    ASSERT_TRUE(parser.setSaveFile(file.name()));
    const std::string longest(255 - 4, 'x');
    EXPECT_EQ(parser.writeLutFileValue("k", longest.c_str(), "="), 0);
    EXPECT_EQ(parser.writeLutFileValue("kk", longest.c_str(), "="), -1);
    EXPECT_EQ(parser.writeIntDouble(0, 1e300, ","), -1) << "over 300 digits";
    EXPECT_EQ(parser.writeDoubleKey("double", 0.00001, ":"), 0);
    EXPECT_EQ(file.content(), "k=" + longest + ";\ndouble:1e-05;\n");
}

TEST(LutFileParser, SavedTablesReadBackWithTheSameParser) {
    std::vector<int> red(256), green(256), blue(256);
    std::iota(red.begin(), red.end(), 0);
    std::iota(green.begin(), green.end(), -128);
    std::iota(blue.rbegin(), blue.rend(), 1000);
    const TemporaryFile file(".lut");
    Fg_LutFileParser parser;
    ASSERT_EQ(parser.saveLutToFile(file.name(), recordOf(red, 5), recordOf(green, 1), recordOf(blue, 2)), 0);
    Table r, g, b;
    for (int round = 0; round < 2; ++round) {  // the second read releases the values of the first
        ASSERT_EQ(parser.getLutFromFile(file.name(), r, g, b), 0);
        EXPECT_EQ(valuesOf(r), red);
        EXPECT_EQ(valuesOf(g), green);
        EXPECT_EQ(valuesOf(b), blue);
    }
    EXPECT_EQ(b.id, 5) << "every channel takes the keys of the first section";

    std::vector<double> steps{0.25, -1e6, 1e-12, std::numeric_limits<double>::infinity()};
    ASSERT_EQ(parser.saveLutToFile(file.name(), recordOf(steps), recordOf(steps), recordOf(steps)), 0);
    Knee kr, kg, kb;
    kr.nrOfElements = kg.nrOfElements = 4;
    kb.nrOfElements = 6;
    ASSERT_EQ(parser.getLutFromFile(file.name(), kr, kg, kb), 0);
    EXPECT_EQ(valuesOf(kg), steps);
    steps.resize(6, 0.0);
    EXPECT_EQ(valuesOf(kb), steps) << "what the file does not hold is 0";
}

TEST(LutFileParser, EntriesAreFoundAsTheirLinesSay) {
    const std::string head = "nrOfElements=4;\n[a]\n";
    const std::pair<std::string, std::vector<int>> cases[] = {
        {head, {0, 0, 0, 0}},
        {head + "0,1;\n1,2;\n2,3;\n3,4;\n4,5;\n", {1, 2, 3, 4}},
        {"0,9;\n" + head + "0,1;\n", {1, 0, 0, 0}},                    // before the section
        {head + "0,17 ;\n1, 18 x\n2,-3;note\n3,\n", {17, 18, -3, 0}},  // text around the number
        {head + "0,1;\n[b]\n1,2;\n0,7;\n2,3;\n", {1, 2, 3, 0}},        // the next section is no barrier
        {head + "1,2;\n0,1;\n1,3;\n", {1, 3, 0, 0}},                   // only in order
        {head + "10,5;\n1,6;\n", {5, 6, 0, 0}},                        // "0," occurs in "10,"
        {head + "0,1\n1,2\n\n2,3", {1, 2, 3, 0}},                      // neither ';' nor a last line feed
        {"nrOfElements=4;\n[a] 0,8;\n1,2;\n", {8, 2, 0, 0}},           // on the section's own line
        {head + "0,4294967296;\n1,-99999999999999999999;\n2,x;\n", {INT_MAX, INT_MIN, 0, 0}},
        {head + ",0,"s + "\0,7;\n0,1;\n1,2;\n"s, {1, 2, 0, 0}},  // no second piece before the NUL
        {head + "0," + std::string(600, '1') + ";\n1,2;\n", {INT_MAX, 2, 0, 0}},
        {"[a]\n0,1;\nnrOfElements=4\n1,2;", {1, 2, 0, 0}},  // keys may stand anywhere
        {"[b]\n0,1;\nnrOfElements=4\n", {0, 0, 0, 0}},      // no such section
    };
    for (const auto& [content, expected] : cases) EXPECT_EQ(readSection(content, "[a]"), expected) << content;
}

TEST(LutFileParser, KeysAreFoundAsTheirLinesSay) {
    const TemporaryFile file(".lut",
                             "id\nThe id is here\nmy'id='12';\nnrOfElements=2\nformat= -5 x\nnumber=Error");
    Fg_LutFileParser parser;
    ASSERT_TRUE(parser.setOpenFile(file.name(), true));
    struct Case {
        const char* key;
        const char* delimiters;
        int result;
        const char* text;
        int number;
    };
    const Case cases[] = {
        {"id", "='", 0, "id", 0},  // the first line with a second piece: "my'id"
        {"id", "=", 0, "'12';\n", 0},
        {"id", " ", 0, "id", 0},
        {"nrOfElements", "='", 0, "2\n", 2},
        {"format", "='", 0, " -5 x\n", -5},
        {"format", ";", -1, "Error", 0},
        {"number", "='", 0, "Error", 0},  // found, though it says otherwise
        {"absent", "='", -1, "Error", 0},
    };
    for (const auto& [key, delimiters, result, text, number] : cases) {
        SCOPED_TRACE(key + " by "s + delimiters);
        const auto buffer = std::make_unique<char[]>(256);
        int asInt = 77;
        double asDouble = 77.0;
        EXPECT_EQ(parser.parseKeyFromLine(key, buffer.get(), delimiters), result);
        EXPECT_STREQ(buffer.get(), text);
        EXPECT_EQ(parser.parseIntKey(key, &asInt, delimiters), result);
        EXPECT_EQ(asInt, number);
        EXPECT_EQ(parser.parseDoubleKey(key, &asDouble, delimiters), result);
        EXPECT_EQ(asDouble, number);
    }
}

TEST(LutFileParser, AnAbsurdCountIsRefusedAndLeavesNoValues) {
    for (const char* count :
         {"0", "65536", "1e9", "word", "65537", "-1", "4294967297", "99999999999999999999"}) {
        const TemporaryFile file(".lut", "nrOfElements="s + count + ";\n[a]\n0,1;\n");
        const long number = std::strtol(count, nullptr, 10);
        const bool accepted = number >= 0 && number <= 65536;
        Table table;
        table.values = new int[3];
        EXPECT_EQ(Fg_LutFileParser().getLutFromFile(file.name(), table, "[a]"), accepted ? 0 : -1) << count;
        EXPECT_EQ(table.nrOfElements, accepted ? number : 0) << count;
        EXPECT_EQ(table.values != nullptr, accepted) << count;
    }
}

TEST(LutFileParser, TheFlagIsTheLowByteOfItsNumber) {
    for (const auto& [text, flag] : std::initializer_list<std::pair<const char*, bool>>{
             {"0", false}, {"1", true}, {"256", false}, {"-2", true}}) {
        const TemporaryFile file(".lut", "number='"s + text + "';\nid=9;\nformat=-8;\n");
        Table table;
        EXPECT_EQ(Fg_LutFileParser().getLutFromFile(file.name(), table, "[a]"), 0);
        EXPECT_EQ(table.number, flag) << text;
        EXPECT_EQ(table.id, 9);
        EXPECT_EQ(table.format, -8);
    }
}

TEST(LutFileParser, FilesThatCannotBeOpenedOrWrittenGiveMinusOne) {
    std::vector<int> values{1, 2, 3};
    const LookupTable_s table = recordOf(values, 0);
    const TemporaryFile kept(".lut", "kept");
    Fg_LutFileParser parser;
    for (const char* name : {"/no/such/folder/x.lut", static_cast<const char*>(nullptr), "/dev/full"}) {
        EXPECT_EQ(parser.saveLutToFile(name, table, table, table), -1);
        EXPECT_EQ(parser.saveMatrixToFile(name, "", values.data(), 3), -1);
    }
    const LookupTable_s valueless{.nrOfElements = 3};
    EXPECT_EQ(parser.saveLutToFile(kept.name(), table, table, valueless), -1);
    EXPECT_EQ(kept.content(), "kept") << "refused before the file is emptied";

    Table red, green, blue;
    red.values = new int[3];
    green.values = new int[3];
    EXPECT_EQ(parser.getLutFromFile("/no/such/file.lut", red, green, blue), -1);
    EXPECT_EQ(red.values, nullptr);
    EXPECT_NE(green.values, nullptr) << "the first failure ends the read";
    EXPECT_EQ(parser.getLutFromFile("/tmp", red, green, blue), -1) << "a folder opens but cannot be read";
    EXPECT_FALSE(parser.checkFileExist("/no/such/file.lut"));
    EXPECT_FALSE(parser.setOpenFile(nullptr, true));
    EXPECT_TRUE(parser.checkFileType("any name"));
    EXPECT_TRUE(parser.setOpenFile(kept.name(), false)) << "for reading and writing";
    EXPECT_EQ(parser.writeLutFileHeader("sa"), 0);
    EXPECT_EQ(kept.content(), "sapt");
}

}  // namespace
