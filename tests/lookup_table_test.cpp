/// The lookup tables: computed from the processing parameters, loaded from files, set entry by entry.

#include <limits>
#include <numeric>

#include "marovine/BoardCodes.h"
#include "tests/AppletFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

using Table = std::vector<std::uint32_t>;

constexpr int kRefusal = -777;

struct Channel {
    const char* parameter;
    const char* designName;
};
constexpr std::array<Channel, 3> kChannels{{
    {"FG_LUT_VALUE_RED", "LookupTable_R_LUTcontent"},
    {"FG_LUT_VALUE_GREEN", "LookupTable_G_LUTcontent"},
    {"FG_LUT_VALUE_BLUE", "LookupTable_B_LUTcontent"},
}};

std::string fullName(const Channel& channel) {
    return std::string("Device1_Process0_") + channel.designName;
}

const Table identity = [] {
    Table table(256);
    std::iota(table.begin(), table.end(), 0u);
    return table;
}();

class LookupTableTest : public AppletTest {
 protected:
    Table cached(const Channel& channel) {
        Table table(256);
        FieldParameterAccess block{FG_TYPE_UINT32, 0, 256, table.data()};
        EXPECT_EQ(0, Fg_getParameterWithType(applet.record(), OpenApplet::idOf(channel.parameter), &block, 0,
                                             FG_TYPE_FIELD_ACCESS));
        return table;
    }
    Table inDesign(const Channel& channel) {
        return std::get<Table>(applet.board().value(fullName(channel)));
    }
    int setBlock(const Channel& channel, FieldParameterAccess block) {
        return Fg_setParameterWithType(applet.record(), OpenApplet::idOf(channel.parameter), &block, 0,
                                       FG_TYPE_FIELD_ACCESS);
    }
    int setElement(const Channel& channel, FieldParameterInt element) {
        return Fg_setParameterWithType(applet.record(), OpenApplet::idOf(channel.parameter), &element, 0,
                                       FG_TYPE_FIELD_INT);
    }
    int setType(const char* name) { return applet.set("FG_LUT_TYPE", constantOf(name)); }

    void expectAllTables(const Table& expected) {
        for (const auto& channel : kChannels) {
            EXPECT_EQ(expected, cached(channel)) << channel.parameter;
            EXPECT_EQ(expected, inDesign(channel)) << channel.designName;
        }
    }
};

// ---- computed tables ----

TEST_F(LookupTableTest, StartsAsIdentity) {
    expectAllTables(identity);
}

TEST_F(LookupTableTest, FollowsTheProcessingParameters) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    struct Entry {
        std::size_t input;
        std::uint32_t output;
    };
    struct Case {
        const char* what;
        double offset, gain, gamma;
        const char* invert;
        std::vector<Entry> entries;
    };
    const Case cases[] = {
        {"gamma", 0, 1, 2.2, "FG_OFF", {{0, 0}, {1, 21}, {128, 186}, {255, 255}}},
        {"inverted gamma", 0, 1, 2.2, "FG_ON", {{0, 255}, {1, 234}, {128, 69}, {255, 0}}},
        {"gain above one saturates", 0, 2, 1, "FG_OFF", {{0, 0}, {64, 128}, {128, 255}, {255, 255}}},
        {"offset", 0.25, 1, 1, "FG_OFF", {{0, 64}, {100, 164}, {200, 255}}},
        {"gain 0", 0, 0, 1, "FG_OFF", {{0, 0}, {128, 0}, {255, 0}}},
        {"gain 0, inverted", 0, 0, 1, "FG_ON", {{0, 255}, {128, 255}, {255, 255}}},
        {"nothing above black", -1, 1, 1, "FG_OFF", {{0, 0}, {254, 0}, {255, 0}}},
        {"nothing above black, inverted", -1, 1, 1, "FG_ON", {{0, 255}, {254, 255}, {255, 255}}},
        {"gamma 0 is a step at full scale", 0, 1, 0, "FG_OFF", {{0, 0}, {254, 0}, {255, 255}}},
        {"gamma 0 above full scale", 0, 2, 0, "FG_OFF", {{127, 0}, {128, 255}, {255, 255}}},
        {"gamma -1 turns the curve round", 0, 2, -1, "FG_OFF", {{0, 255}, {1, 255}, {255, 128}}},
        {"infinite values", 0, 256, 0.001, "FG_ON", {{0, 255}, {1, 0}, {255, 0}}},
        {"an infinity below zero", 0, -0.0, -1, "FG_OFF", {{0, 255}, {255, 255}}},
        {"offset that is no number", nan, 1, 1, "FG_OFF", {{0, 0}, {255, 0}}},
        {"gain that is no number, inverted", 0, nan, 1, "FG_ON", {{0, 0}, {255, 0}}},
        // One is one to any power.
        {"gamma that is no number, inverted", 0, 1, nan, "FG_ON", {{0, 0}, {254, 0}, {255, 0}}},
    };
    for (const auto& [what, offset, gain, gamma, invert, entries] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(0, applet.set("FG_PROCESSING_OFFSET", offset));
        EXPECT_EQ(0, applet.set("FG_PROCESSING_GAIN", gain));
        EXPECT_EQ(0, applet.set("FG_PROCESSING_GAMMA", gamma));
        EXPECT_EQ(0, applet.set("FG_PROCESSING_INVERT", constantOf(invert)));
        const Table table = cached(kChannels[0]);
        for (const auto& [input, output] : entries) EXPECT_EQ(output, table[input]) << "input " << input;
        expectAllTables(table);
    }
}

TEST_F(LookupTableTest, WritesRedGreenBlueOnEachChange) {
    const auto whole = [](const Channel& channel) { return Field(&DesignWrite::name, channel.designName); };
    for (const char* name : {"FG_PROCESSING_OFFSET", "FG_PROCESSING_GAIN", "FG_PROCESSING_GAMMA"}) {
        EXPECT_EQ(0, applet.set(name, 0.5));
        EXPECT_THAT(applet.takeWrites(),
                    ElementsAre(whole(kChannels[0]), whole(kChannels[1]), whole(kChannels[2])));
    }
    EXPECT_EQ(0, applet.set("FG_PROCESSING_INVERT", constantOf("FG_ON")));
    EXPECT_EQ(3u, applet.takeWrites().size());
}

TEST_F(LookupTableTest, RefusesValuesOutsideTheRangesAndChangesNothing) {
    struct Case {
        const char* name;
        std::vector<double> refused;
    };
    for (const auto& [name, refused] :
         {Case{"FG_PROCESSING_OFFSET", {-1.001, 1.001}}, Case{"FG_PROCESSING_GAIN", {-0.001, 256.5}},
          Case{"FG_PROCESSING_GAMMA", {-1000.5, 1000.5}}})
        for (const double value : refused)
            EXPECT_EQ(error::outOfRange, applet.set(name, value)) << name << " " << value;
    EXPECT_EQ(error::outOfRange, applet.set("FG_PROCESSING_INVERT", 2));
    EXPECT_EQ(error::outOfRange, applet.set("FG_LUT_TYPE", 1));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
    expectAllTables(identity);
}

TEST_F(LookupTableTest, PutsTheCacheBackWhenATableIsRefused) {
    for (std::size_t refused = 0; refused < kChannels.size(); ++refused) {
        SCOPED_TRACE(kChannels[refused].designName);
        applet.board().refuseWrites(fullName(kChannels[refused]), kRefusal);
        EXPECT_EQ(kRefusal, applet.set("FG_PROCESSING_GAMMA", 2.2));
        EXPECT_EQ(1.0, applet.get<double>("FG_PROCESSING_GAMMA"));
        EXPECT_EQ(kRefusal, applet.set("FG_PROCESSING_INVERT", constantOf("FG_ON")));
        EXPECT_EQ(constantOf("FG_OFF"), applet.get<std::int32_t>("FG_PROCESSING_INVERT"));
        for (std::size_t i = 0; i < kChannels.size(); ++i) {
            EXPECT_EQ(identity, cached(kChannels[i]));
            // What was written before the refusal stays written.
            EXPECT_EQ(i < refused, inDesign(kChannels[i]) != identity);
        }
        applet.board().clearFaults();
        EXPECT_EQ(0, applet.set("FG_PROCESSING_GAMMA", 1.0));
    }
}

// ---- the two types ----

TEST_F(LookupTableTest, HoldsProcessingBackWhileTheTypeIsCustom) {
    const auto access = [&](const char* name) { return applet.node(name).accessFlags; };
    EXPECT_EQ(1, access("FG_LUT_CUSTOM_FILE"));
    EXPECT_EQ(0, setType("LUT_TYPE_CUSTOM"));
    EXPECT_EQ(7, access("FG_LUT_CUSTOM_FILE"));
    for (const char* name : {"FG_PROCESSING_OFFSET", "FG_PROCESSING_GAIN", "FG_PROCESSING_GAMMA"}) {
        EXPECT_EQ(1, access(name));
        EXPECT_EQ(0, applet.set(name, 0.5));
    }
    EXPECT_EQ(1, access("FG_PROCESSING_INVERT"));
    EXPECT_EQ(0, applet.set("FG_PROCESSING_INVERT", constantOf("FG_ON")));
    EXPECT_THAT(applet.takeWrites(), IsEmpty()) << "no file is named and nothing is processed";
    expectAllTables(identity);

    EXPECT_EQ(0, setType("LUT_TYPE_PROCESSING"));
    EXPECT_EQ(3u, applet.takeWrites().size());
    // (0 + 0.5) * 0.5 to the power of two, inverted
    EXPECT_EQ(255u - 16u, inDesign(kChannels[2])[0]);
    EXPECT_EQ(1, access("FG_LUT_CUSTOM_FILE"));
    EXPECT_EQ(7, access("FG_PROCESSING_INVERT"));
}

// ---- entries and blocks ----

TEST_F(LookupTableTest, SetsSingleEntriesOfEachChannel) {
    for (const auto& channel : kChannels) {
        EXPECT_EQ(0, setElement(channel, {.value = 17, .index = 255}));
        EXPECT_THAT(applet.takeWrites(), ElementsAre(DesignWrite{channel.designName, "[255] 17"}));
        EXPECT_EQ(17u, cached(channel)[255]);
        EXPECT_EQ(error::outOfRange, setElement(channel, {.value = 1, .index = 256}));
        EXPECT_EQ(error::outOfRange, setElement(channel, {.value = 256, .index = 0}));
        EXPECT_THAT(applet.takeWrites(), IsEmpty());
        applet.board().refuseWrites(fullName(channel), kRefusal);
        EXPECT_EQ(kRefusal, setElement(channel, {.value = 18, .index = 255}));
        EXPECT_EQ(17u, cached(channel)[255]);
        applet.takeWrites();
    }
}

TEST_F(LookupTableTest, SetsBlocksOfEachChannel) {
    std::vector<std::uint32_t> values(257, 9);
    for (const auto& channel : kChannels) {
        EXPECT_EQ(0, setBlock(channel, {FG_TYPE_UINT32, 250, 6, values.data()}));
        EXPECT_THAT(applet.takeWrites(),
                    ElementsAre(DesignWrite{channel.designName, "[250] 9, 9, 9, 9, 9, 9"}));
        EXPECT_EQ(0, setBlock(channel, {FG_TYPE_INT32, 0, 1, values.data()}));
        Table expected = identity;
        expected[0] = 9;
        std::fill(expected.begin() + 250, expected.end(), 9u);
        EXPECT_EQ(expected, cached(channel));
        EXPECT_EQ(expected, inDesign(channel));
        applet.takeWrites();
    }
}

TEST_F(LookupTableTest, ReadsOnlyWithinATable) {
    std::vector<std::uint32_t> values(257, 7);
    const int id = OpenApplet::idOf("FG_LUT_VALUE_RED");
    const auto readBlock = [&](FieldParameterAccess block) {
        return Fg_getParameterWithType(applet.record(), id, &block, 0, FG_TYPE_FIELD_ACCESS);
    };
    EXPECT_EQ(0, readBlock({FG_TYPE_UINT32, 250, 6, values.data()}));
    EXPECT_THAT(values, Contains(7u).Times(251)) << "six entries are written, and no more";
    EXPECT_EQ(255u, values[5]);
    values.assign(257, 7);
    const std::pair<unsigned, unsigned> beyond[] = {{250, 7}, {256, 0}, {0, 257}, {1, 0xFFFFFFFF}};
    for (const auto& [start, count] : beyond)
        EXPECT_EQ(error::invalidArgument, readBlock({FG_TYPE_UINT32, start, count, values.data()})) << start;
    EXPECT_EQ(error::invalidArgument, readBlock({FG_TYPE_DOUBLE, 0, 2, values.data()})) << "no such elements";
    EXPECT_THAT(values, Each(7u));
    for (const auto& [index, code] : {std::pair(255u, 0), std::pair(256u, error::invalidArgument)}) {
        FieldParameterInt element{.value = 7, .index = index};
        EXPECT_EQ(code, Fg_getParameterWithType(applet.record(), id, &element, 0, FG_TYPE_FIELD_INT));
        EXPECT_EQ(code == 0 ? 255u : 7u, element.value);
    }
}

TEST_F(LookupTableTest, RefusesBadBlocksAndKeepsTheCache) {
    std::vector<std::uint32_t> values(257, 9);
    std::vector<std::uint32_t> bad{256, 9};
    std::vector<std::uint32_t> badLater{9, 256};
    struct Case {
        const char* what;
        FieldParameterAccess block;
        int code;
    };
    const Case cases[] = {
        {"past the end", {FG_TYPE_UINT32, 250, 7, values.data()}, error::outOfRange},
        {"start past the end", {FG_TYPE_UINT32, 256, 0, values.data()}, error::outOfRange},
        {"too many", {FG_TYPE_UINT32, 0, 257, values.data()}, error::outOfRange},
        {"count that wraps", {FG_TYPE_UINT32, 1, 0xFFFFFFFF, values.data()}, error::outOfRange},
        {"64-bit values", {FG_TYPE_UINT64, 0, 2, values.data()}, error::invalidArgument},
        {"doubles", {FG_TYPE_DOUBLE, 0, 2, values.data()}, error::invalidArgument},
        {"no values", {FG_TYPE_UINT32, 0, 2, nullptr}, error::outOfRange},
        {"first value too large", {FG_TYPE_UINT32, 0, 2, bad.data()}, error::outOfRange},
        // Later values, and values of the element type, are the design's to judge.
        {"later value too large", {FG_TYPE_UINT32, 0, 2, badLater.data()}, virtualboard::kOutOfRange},
        {"element type", {FG_TYPE_FIELD_INT, 0, 2, values.data()}, virtualboard::kTypeMismatch},
    };
    for (const auto& [what, block, code] : cases) EXPECT_EQ(code, setBlock(kChannels[1], block)) << what;
    EXPECT_EQ(identity, cached(kChannels[1]));
    EXPECT_EQ(0, setBlock(kChannels[1], {FG_TYPE_UINT32, 255, 0, nullptr})) << "nothing is nothing wrong";
}

// ---- files ----

std::string section(const char* name, int entries, int add) {
    std::string text = "\n\n[" + std::string(name) + "]\n\nid=0;\nnrOfElements=" + std::to_string(entries) +
                       ";\nformat=0;\nnumber=0;\n";
    for (int i = 0; i < entries; ++i) text += std::to_string(i) + "," + std::to_string(i + add) + ";\n";
    return text;
}
std::string lutFile(int entries) {
    return "# Lut data file v1.1" + section("red", entries, 1) + section("green", entries, 2) +
           section("blue", entries, 3);
}
Table shifted(int entries, std::uint32_t add) {
    Table table = identity;
    for (int i = 0; i < entries; ++i) table[static_cast<std::size_t>(i)] += add;
    return table;
}

TEST_F(LookupTableTest, LoadsACustomFileWhenItsTimeComes) {
    const TemporaryFile file(".lut", lutFile(16));
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", file.name()));
    EXPECT_THAT(applet.takeWrites(), IsEmpty()) << "processing fills the tables";
    EXPECT_EQ(file.name(), applet.getText("FG_LUT_CUSTOM_FILE"));

    EXPECT_EQ(0, setType("LUT_TYPE_CUSTOM"));
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(shifted(16, i + 1), cached(kChannels[i])) << "a short table changes the first entries only";
        EXPECT_EQ(shifted(16, i + 1), inDesign(kChannels[i]));
    }
    const TemporaryFile other(".lut", lutFile(200));
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", other.name()));
    EXPECT_EQ(shifted(200, 2), inDesign(kChannels[1]));
    applet.takeWrites();
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", ""));
    EXPECT_THAT(applet.takeWrites(), IsEmpty());
}

TEST_F(LookupTableTest, KeepsTypeAndTablesWhenAFileCannotBeLoaded) {
    const TemporaryFile missing(".lut");
    const TemporaryFile broken(".lut", "nrOfElements=-1;\n[red]\n");
    const TemporaryFile tooBright(".lut", "nrOfElements=1;\n[red]\n0,7;\n[green]\n0,256;\n[blue]\n0,7;\n");
    const std::pair<const TemporaryFile&, int> cases[] = {{missing, error::fileNotFound},
                                                          {broken, error::fileNotAccessible},
                                                          {tooBright, virtualboard::kOutOfRange}};
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", "/tmp"));
    EXPECT_EQ(error::fileNotAccessible, setType("LUT_TYPE_CUSTOM")) << "a folder opens but cannot be read";
    for (const auto& [file, code] : cases) {
        EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", file.name()));
        EXPECT_EQ(code, setType("LUT_TYPE_CUSTOM"));
        EXPECT_EQ(constantOf("LUT_TYPE_PROCESSING"), applet.get<std::int32_t>("FG_LUT_TYPE"));
        EXPECT_EQ(1, applet.node("FG_LUT_CUSTOM_FILE").accessFlags);
        for (const auto& channel : kChannels) EXPECT_EQ(identity, cached(channel));
    }
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", ""));
    EXPECT_EQ(0, setType("LUT_TYPE_CUSTOM"));
    for (const auto& [file, code] : cases) {
        EXPECT_EQ(code, applet.setText("FG_LUT_CUSTOM_FILE", file.name()));
        EXPECT_EQ("", applet.getText("FG_LUT_CUSTOM_FILE"));
        for (const auto& channel : kChannels) EXPECT_EQ(identity, cached(channel));
    }
}

TEST_F(LookupTableTest, SavesTablesThatLoadAgain) {
    const TemporaryFile file(".lut");
    EXPECT_EQ(0, applet.set("FG_PROCESSING_GAMMA", 2.2));
    EXPECT_EQ(0, setElement(kChannels[2], {.value = 200, .index = 3}));
    EXPECT_EQ(0, applet.setText("FG_LUT_SAVE_FILE", file.name()));
    EXPECT_EQ(file.name(), applet.getText("FG_LUT_SAVE_FILE"));
    std::vector<Table> saved;
    for (const auto& channel : kChannels) saved.push_back(cached(channel));

    EXPECT_EQ(error::fileNotAccessible, applet.setText("FG_LUT_SAVE_FILE", "/nowhere/to/be/found.lut"));
    EXPECT_EQ(file.name(), applet.getText("FG_LUT_SAVE_FILE"));
    EXPECT_EQ(0, applet.setText("FG_LUT_SAVE_FILE", "")) << "no name, nothing to save";

    EXPECT_EQ(0, applet.set("FG_PROCESSING_GAMMA", 1.0));
    EXPECT_EQ(0, setType("LUT_TYPE_CUSTOM"));
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", file.name()));
    for (std::size_t i = 0; i < kChannels.size(); ++i) {
        EXPECT_EQ(saved[i], cached(kChannels[i]));
        EXPECT_EQ(saved[i], inDesign(kChannels[i]));
    }
}

TEST_F(LookupTableTest, GivesFileNamesIntoTheCallersBufferAndCutsEndlessOnes) {
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", "some.lut"));
    std::array<char, 16> buffer{};
    EXPECT_EQ(0, Fg_getParameterWithType(applet.record(), OpenApplet::idOf("FG_LUT_CUSTOM_FILE"),
                                         buffer.data(), 0, FG_TYPE_TEXT));
    EXPECT_STREQ("some.lut", buffer.data());
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", std::string(700000, 'x').c_str()));
    EXPECT_EQ(655360u, applet.getText("FG_LUT_CUSTOM_FILE").size());
}

}  // namespace
}  // namespace marovine::test
