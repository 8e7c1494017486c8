/// The lookup tables: set entry by entry, loaded from files and saved. What computes them has a table of its
/// own.

#include <filesystem>
#include <numeric>

#include "marovine/BoardCodes.h"
#include "tests/AppletFixture.h"
#include "tests/TemporaryFile.h"

namespace marovine::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
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
};

// ---- entries and blocks ----

TEST_F(LookupTableTest, SetsEntriesAndBlocksOfEachChannel) {
    std::vector<std::uint32_t> values(257, 9);
    for (const auto& channel : kChannels) {
        SCOPED_TRACE(channel.parameter);
        EXPECT_EQ(0, setElement(channel, {.value = 17, .index = 255}));
        EXPECT_EQ(0, setBlock(channel, {FG_TYPE_UINT32, 249, 6, values.data()}));
        EXPECT_EQ(0, setBlock(channel, {FG_TYPE_INT32, 0, 1, values.data()}));
        EXPECT_THAT(applet.takeWrites(),
                    ElementsAre(DesignWrite{channel.designName, "[255] 17"},
                                DesignWrite{channel.designName, "[249] 9, 9, 9, 9, 9, 9"},
                                DesignWrite{channel.designName, "[0] 9"}));
        Table expected = identity;
        expected[0] = 9;
        expected[255] = 17;
        std::fill_n(expected.begin() + 249, 6, 9u);
        EXPECT_EQ(expected, cached(channel));
        EXPECT_EQ(expected, inDesign(channel));
        EXPECT_EQ(error::outOfRange, setElement(channel, {.value = 1, .index = 256}));
        EXPECT_EQ(error::outOfRange, setElement(channel, {.value = 256, .index = 0}));
        EXPECT_THAT(applet.takeWrites(), IsEmpty());
        applet.board().refuseWrites(fullName(channel), kRefusal);
        EXPECT_EQ(kRefusal, setElement(channel, {.value = 18, .index = 255}));
        EXPECT_EQ(kRefusal, setBlock(channel, {FG_TYPE_UINT32, 100, 2, values.data()}));
        EXPECT_EQ(expected, cached(channel));
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
    EXPECT_EQ(error::invalidArgument, readBlock({FG_TYPE_UINT32, 0, 1, nullptr}));
    EXPECT_EQ(0, readBlock({FG_TYPE_UINT32, 0, 0, nullptr}));
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

TEST_F(LookupTableTest, LoadsACustomFileWhenItsTimeComes) {
    const TemporaryFile file(".lut",
                             "nrOfElements=2;\n[red]\n0,1;\n1,2;\n[green]\n0,3;\n1,4;\n[blue]\n0,5;\n1,6;\n");
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", file.name()));
    EXPECT_THAT(applet.takeWrites(), IsEmpty()) << "processing fills the tables";
    EXPECT_EQ(file.name(), applet.getText("FG_LUT_CUSTOM_FILE"));

    EXPECT_EQ(0, setType("LUT_TYPE_CUSTOM"));
    std::uint32_t next = 1;
    for (const auto& channel : kChannels) {
        Table expected = identity;  // a short table changes the first entries only
        expected[0] = next++;
        expected[1] = next++;
        EXPECT_EQ(expected, cached(channel));
        EXPECT_EQ(expected, inDesign(channel));
    }
    file.write("nrOfElements=1;\n[red]\n[green]\n0,9;\n[blue]\n");
    EXPECT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", file.name()));
    EXPECT_EQ(9u, inDesign(kChannels[1])[0]);
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

TEST_F(LookupTableTest, SavesTheRuntimesOwnConfigurationAtADebugPoint) {
    const TemporaryFile file(".mcf");
    for (const char* name : {file.name(), "/nowhere/to/be/found.mcf"}) {
        EXPECT_EQ(0, applet.setText("FG_DEBUGSAVECONFIG", name)) << "the runtime's answer is not judged";
        EXPECT_EQ(name, applet.getText("FG_DEBUGSAVECONFIG"));
    }
    EXPECT_TRUE(std::filesystem::exists(file.name()));
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
