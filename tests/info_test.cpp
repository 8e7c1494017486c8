/// What the library answers about itself through its one query.

#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

void* handleOf(int selector) {
    void* place = &place;
    EXPECT_EQ(0, Info(selector, 0, 0, &place, nullptr));
    return place;
}
const std::array<void*, 2> handlesBeforeAnyOpening{handleOf(4144), handleOf(4160)};

TEST(Info, HandlesAreNullBeforeTheFirstOpeningAndTheLastOnesAfterwards) {
    EXPECT_THAT(handlesBeforeAnyOpening, testing::Each(nullptr));
    OpenApplet first(1);
    void* const firstDesign = handleOf(4160);
    OpenApplet second(1);
    EXPECT_EQ(second.device(), handleOf(4144));
    EXPECT_NE(nullptr, handleOf(4160));
    EXPECT_NE(firstDesign, handleOf(4160));
}

TEST(Info, AnswersCapabilitiesWithNumbers) {
    std::istringstream cases(  // selector, a, b, answer
        "848 0 0 0   1040 0 0 0   1045 0 0 1   1792 0 0 1   1872 0 0 1   1888 0 0 1   2048 0 0 131073   2160 "
        "0 0 0 "
        "2176 0 0 30017   2192 0 0 0   2560 0 0 0   2816 0 0 0   3072 0 0 0   3328 0 0 1   4608 0 0 1   4624 "
        "0 9 1 "
        "4624 1 0 -2070   4640 0 0 1   4640 1 0 -2070   4656 0 0 0   4656 1 0 -2070   4656 0 1 -2070   4672 "
        "0 0 0 "
        "4672 0 1 -2070   4688 0 0 1   4688 1 0 -2070   4704 0 0 8   4704 1 0 -2070   9999 0 0 -2130   -1 0 "
        "0 -2130");
    int selector = 0, answer = 0;
    for (unsigned a = 0, b = 0; cases >> selector >> a >> b >> answer;)
        EXPECT_EQ(answer, Info(selector, a, b, nullptr, nullptr)) << selector << ", " << a << ", " << b;
    EXPECT_EQ(-1, selector) << "all read";
}

TEST(Info, GivesTextsByAddress) {
    for (const auto& [selector, text] : std::to_array<std::pair<int, const char*>>({
             {1043, "b41e9d07-2c6a-0f13-8e5d-a9c3f2e71d60"},
             {1044, "3f7a2c10-58e4-4b9d-9c21-7d0e5a6b1c42"},
             {4096, "."},
             {4112, "CaptureKits:Line"},
             {4128,
              "class=standard,family=acquisition,type=single,sensortype=line,color=bayer,interface=cl-full"},
             {4176, "Marovine"},
             {4192, "2.1.0.5"},
             {4208, "2.1.0.5.20180719.105408"},
         })) {
        void* place = nullptr;
        EXPECT_EQ(0, Info(selector, 0, 0, nullptr, &place)) << selector;
        ASSERT_NE(nullptr, place) << selector;
        EXPECT_STREQ(text, static_cast<const char*>(place)) << selector;
    }
}

TEST(Info, GivesIconAndDesignWithTheirSizes) {
    for (const auto& [selector, size, start] :
         {std::tuple(1041, std::size_t{2551}, "\x89PNG"), std::tuple(1042, std::size_t{4781671}, "")}) {
        std::size_t given = ~std::size_t{0};  // all of it is written
        void* data = nullptr;
        EXPECT_EQ(0, Info(selector, 0, 0, &given, &data));
        EXPECT_EQ(size, given);
        ASSERT_NE(nullptr, data);
        EXPECT_EQ(0, std::memcmp(start, data, std::strlen(start)));
        EXPECT_EQ(0, static_cast<const char*>(data)[size]) << "a zero byte that does not count";
    }
}

TEST(Info, WritesOnlyWhereThereIsAPlace) {
    for (const int selector : {1041, 1042, 1043, 2304, 4096, 4144, 4160, 4176})
        EXPECT_EQ(0, Info(selector, 0, 0, nullptr, nullptr)) << selector;
    std::size_t size = 0;
    EXPECT_EQ(0, Info(1042, 0, 0, &size, nullptr));
    EXPECT_EQ(4781671u, size);
    void* data = nullptr;
    EXPECT_EQ(0, Info(1041, 0, 0, nullptr, &data));
    EXPECT_NE(nullptr, data);

    std::array<std::uint32_t, 2> number{7, 7};
    EXPECT_EQ(0, Info(2304, 0, 0, number.data(), nullptr));
    EXPECT_EQ((std::array<std::uint32_t, 2>{0, 7}), number) << "32 bits and no more";
}

TEST(Info, KnowsConstantsByTheirExactName) {
    const auto valueOf = [](std::string name) { return Info(4352, 0, 0, name.data(), nullptr); };
    EXPECT_EQ(69271552, valueOf("FG_GEOMETRY_4X2E"));
    EXPECT_EQ(-1, valueOf("TRGINSOFTWARE"));
    for (const char* name : {"fg_geometry_4x2e", "FG_GEOMETRY_4", "FG_GEOMETRY_4X2E ", "FG_WIDTH", ""})
        EXPECT_EQ(error::invalidArgument, valueOf(name)) << name;
    EXPECT_EQ(error::invalidArgument, Info(4352, 0, 0, nullptr, nullptr));
}

TEST(Info, TheHeaderNamesEveryConstantAndEveryCode) {
    std::ifstream header(CONSTANTS);
    const std::string text(std::istreambuf_iterator<char>(header), {});
    std::map<std::string, int> named, expected;
    std::set<int> codes, meanings;
    const std::regex definition(R"((\w+) =\s+(-?\d+))");
    for (std::sregex_iterator found(text.begin(), text.end(), definition), end; found != end; ++found) {
        const std::string name = (*found)[1];
        const int value = std::stoi((*found)[2]);
        if (!name.starts_with("MAROVINE_"))
            named.emplace(name, value);
        else if (!name.starts_with("MAROVINE_INFO_"))
            codes.insert(value);
    }
    for (const auto& table : enumerationTables)
        for (const auto& entry : table.entries) expected.emplace(entry.constantName, entry.value);
    for (const auto& meaning : error::meanings) meanings.insert(meaning.code);
    EXPECT_EQ(138u, named.size());
    EXPECT_EQ(expected, named);
    EXPECT_EQ(meanings, codes);
}

}  // namespace
}  // namespace marovine::test
