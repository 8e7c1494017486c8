/// Typed access to parameters and its refusals, and the access past them that the environment switches on.

#include <array>
#include <cstring>
#include <map>
#include <set>

#include "marovine/BoardCodes.h"
#include "marovine/OutsideRuntimes.h"
#include "tables/Catalogue.h"
#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

constexpr int kRefusal = -777;

// ---- typed access ----

TEST_F(AppletTest, RefusesWhatIsNotAParameterAccess) {
    std::uint32_t value = 1;
    EXPECT_EQ(error::invalidArgument,
              Fg_setParameterWithType(applet.record(), 100, nullptr, 0, FG_TYPE_UINT32));
    applet.board().refuseNthRead(1, kRefusal);
    for (const char* name : {"FG_WIDTH", "FG_APPLET_ID", "FG_CAMSTATUS", "FG_FILLLEVEL", "FG_OVERFLOW"})
        EXPECT_EQ(error::invalidArgument, getById(applet, OpenApplet::idOf(name), nullptr)) << name;
    applet.board().clearFaults();
    EXPECT_EQ(error::invalidArgument, setById(applet, 100, 1024, 1));
    EXPECT_EQ(error::invalidArgument, getById(applet, 100, &value, 1));
    for (const int id : {12345, 0, -1, 1000001, 2000000}) {
        EXPECT_EQ(error::invalidArgument, setById(applet, id, 1)) << id;
        EXPECT_EQ(error::invalidArgument, getById(applet, id, &value)) << id;
        EXPECT_EQ(error::invalidArgument, applet.lastError());
    }
    EXPECT_EQ(error::notAllowed, setById(applet, 24114, 1));
    for (const auto& row : sdkParameters) {
        if (row.access == Access::ReadWrite) continue;
        EXPECT_EQ(error::notAllowed, setById(applet, row.id, 0)) << row.name;
        EXPECT_EQ(error::notAllowed, applet.lastError());
    }
    EXPECT_TRUE(applet.takeWrites().empty());
    EXPECT_EQ(0, getById(applet, 100, &value));
    EXPECT_EQ(0, applet.lastError());
}

TEST_F(AppletTest, IgnoresTheTypeCodeOfPlainParameters) {
    const std::uint32_t width = 2048;
    EXPECT_EQ(0, Fg_setParameterWithType(applet.record(), 100, &width, 0, FG_TYPE_DOUBLE));
    std::uint64_t answer = ~std::uint64_t{0};
    EXPECT_EQ(0, getById(applet, 100, &answer, 0, FG_TYPE_UINT64));
    EXPECT_EQ(2048u, answer) << "a 64-bit location keeps no stale upper half";
}

TEST_F(AppletTest, CountsItsProcessesOnAnyDmaChannel) {
    for (const int dma : {0, 1, -5}) {
        std::int32_t processes = 0;
        EXPECT_EQ(0, getById(applet, OpenApplet::idOf("FG_NR_OF_PROCESSES"), &processes, dma));
        EXPECT_EQ(1, processes);
    }
}

TEST_F(AppletTest, HandsOutTextsUntilTheyAreGivenBack) {
    const int id = OpenApplet::idOf("FG_HAP_FILE");
    char* text = nullptr;
    ASSERT_EQ(0, getById(applet, id, &text, 0, FG_TYPE_TEXT_POINTER));
    EXPECT_STREQ("Marovine.hap", text);
    EXPECT_EQ(error::wrongTypeCode,
              Fg_freeParameterStringWithType(applet.record(), id, text, 0, FG_TYPE_TEXT));
    EXPECT_EQ(error::invalidArgument,
              Fg_freeParameterStringWithType(applet.record(), id, text, 1, FG_TYPE_TEXT_POINTER));
    EXPECT_EQ(0, Fg_freeParameterStringWithType(applet.record(), id, text, 0, FG_TYPE_TEXT_POINTER));
    EXPECT_EQ(error::invalidArgument,
              Fg_freeParameterStringWithType(applet.record(), id, text, 0, FG_TYPE_TEXT_POINTER));
    std::array<char, 64> buffer{};
    EXPECT_EQ(0, getById(applet, id, buffer.data(), 0, FG_TYPE_TEXT));
    EXPECT_STREQ("Marovine.hap", buffer.data());
    // Left for the instance to free.
    EXPECT_EQ(0, getById(applet, id, &text, 0, FG_TYPE_TEXT_POINTER));
}

TEST_F(AppletTest, DescribesParametersByName) {
    constexpr int description = 24114;
    std::array<char, 512> text{"FG_WIDTH"};
    EXPECT_EQ(0, getById(applet, description, text.data(), 0, FG_TYPE_TEXT));
    EXPECT_STREQ("Image width of the acquisition ROI.", text.data());
    for (const char* name : {"FG_TRANSFER_LEN", "fg_width", ""}) {
        std::strcpy(text.data(), name);
        EXPECT_EQ(0, getById(applet, description, text.data(), 0, FG_TYPE_TEXT));
        EXPECT_STREQ("-", text.data());
    }
    // A name may stand at any address; the text's own takes its place.
    alignas(char*) std::array<char, 32> place{};
    char* const name = place.data() + 1;
    std::strcpy(name, "FG_WIDTH");
    EXPECT_EQ(0, getById(applet, description, name, 0, FG_TYPE_TEXT_POINTER));
    char* handedOut = nullptr;
    std::memcpy(&handedOut, name, sizeof handedOut);
    EXPECT_STREQ("Image width of the acquisition ROI.", handedOut);
    EXPECT_EQ(
        0, Fg_freeParameterStringWithType(applet.record(), description, handedOut, 0, FG_TYPE_TEXT_POINTER));
}

TEST_F(AppletTest, PassesForwardedParametersToTheInnerHandle) {
    for (const char* name : {"FG_NR_OF_DMAS", "FG_NR_OF_CAMS", "FG_APC_STOP_TIMEOUT", "FG_TRANSFER_LEN"}) {
        const auto expected = applet.board().value(name);
        const auto asked = applet.get<std::uint32_t>(name);
        EXPECT_EQ(asked, std::visit(
                             [](const auto& v) -> std::uint32_t {
                                 if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(v)>>)
                                     return static_cast<std::uint32_t>(v);
                                 else
                                     return ~0u;
                             },
                             expected))
            << name;
    }
    // The caller's type goes with them, but not with what the applet itself asks the runtime for.
    double real = 0;
    EXPECT_GT(0, getById(applet, OpenApplet::idOf("FG_NR_OF_DMAS"), &real, 0, FG_TYPE_DOUBLE));
    EXPECT_EQ(0, getById(applet, OpenApplet::idOf("FG_DMASTATUS"), &real, 0, FG_TYPE_DOUBLE));
    applet.board().refuseReads("FG_NR_OF_DMAS", -321);
    std::uint32_t value = 0;
    EXPECT_EQ(-321, getById(applet, OpenApplet::idOf("FG_NR_OF_DMAS"), &value));
    EXPECT_EQ(-321, applet.lastError());
}

// ---- direct access ----

TEST(DirectAccess, ListsRegistersOnlyWhenSwitchedOn) {
    for (const char* off : {"2", "enabled", " yes", ""}) {
        const Environment variable("TAVR_ENABLE_DRA", off);
        OpenApplet applet(1);
        EXPECT_EQ(kListed, Fg_getNrOfParameter(applet.record())) << off;
    }
    const Environment variable("TAVR_ENABLE_DRA", "YES");
    OpenApplet applet(1);
    const int count = Fg_getNrOfParameter(applet.record());
    ASSERT_GE(count, kListed + 24);
    const auto* group = Fg_getParameterInfo(applet.record(), 0);
    EXPECT_STREQ("Direct Register Access", group->displayName);
    EXPECT_EQ(count - kListed, group->value.group.childCount);
    bool wide = false;
    bool readOnly = false;
    for (int index = kListed; index < count; ++index) {
        const int id = Fg_getParameterId(applet.record(), index);
        ASSERT_GT(id, 1000000);
        const auto& node = *group->value.group.children[index - kListed];
        EXPECT_EQ(id, node.address);
        EXPECT_STREQ(Fg_getParameterName(applet.record(), index), node.name);
        const std::string title = node.displayName;  // "NAME (bits)"
        const int bits = std::stoi(title.substr(title.rfind('(') + 1));
        const bool isWide = bits > 32;
        EXPECT_EQ(unsigned{isWide ? FG_KIND_UINT64 : FG_KIND_UINT32}, node.kind) << title;
        const std::uint64_t maximum = isWide ? node.value.uint64.maximum : node.value.uint32.maximum;
        EXPECT_EQ(~std::uint64_t{0} >> (64 - bits), maximum) << title;
        // The upper half counts for wide registers only, in both directions.
        constexpr std::uint64_t upperHalf = 0x5555555500000000;
        std::uint64_t content = isWide ? maximum : upperHalf | maximum;
        const int result = Fg_setParameterWithType(applet.record(), id, &content, 0, FG_TYPE_UINT32);
        EXPECT_EQ(node.accessFlags == 7 ? 0 : virtualboard::kRegisterReadOnly, result) << title;
        content = upperHalf;
        ASSERT_EQ(0, getById(applet, id, &content));
        if (result == 0) {
            EXPECT_EQ(isWide ? maximum : upperHalf | maximum, content) << title;
        }
        wide |= isWide;
        readOnly |= result != 0;
    }
    EXPECT_TRUE(wide && readOnly) << "the design shows both kinds";
}

TEST(DirectAccess, ReachesDesignParametersById) {
    OpenApplet plain(1);
    // The id route is open whether or not the names are listed.
    const Environment variable("TAVR_ENABLE_DGXA", "True");
    OpenApplet applet(1);
    const int count = Fg_getNrOfParameter(applet.record());
    ASSERT_GT(count, kListed + 100);
    EXPECT_STREQ("Direct GX Access", Fg_getParameterInfo(applet.record(), 0)->displayName);
    EXPECT_EQ(kListed, Fg_getNrOfParameter(plain.record()));
    std::string last;
    for (int index = kListed; index < count; ++index) {
        const std::string name = Fg_getParameterName(applet.record(), index);
        EXPECT_TRUE(name.starts_with("DGXA_"));
        EXPECT_LT(last, name);
        EXPECT_EQ(error::invalidArgument, Fg_getParameterId(applet.record(), index));
        EXPECT_EQ(error::invalidArgument, Fg_getParameterIdByName(applet.record(), name.c_str()));
        last = name;
    }
    // The groups on the way to a parameter make up its name on this board.
    std::map<std::string, const RegisterInfo*> nodes;
    const std::function<void(const RegisterInfo&, const std::string&)> collect =
        [&](const RegisterInfo& group, const std::string& path) {
            for (int i = 0; i < group.value.group.childCount; ++i) {
                const RegisterInfo& child = *group.value.group.children[i];
                const std::string full = path + child.displayName;
                if (child.kind != FG_KIND_GROUP) {
                    EXPECT_EQ("DGXA_" + full, child.name);
                    EXPECT_TRUE(nodes.emplace(child.name, &child).second);
                } else {
                    EXPECT_EQ(group.depth + 1, child.depth) << full;
                    EXPECT_STREQ(group.displayName, child.parentName) << full;
                    collect(child, full + "_");
                }
            }
        };
    collect(*Fg_getParameterInfo(applet.record(), 0), "");
    EXPECT_EQ(static_cast<std::size_t>(count - kListed), nodes.size());

    const auto* node = nodes["DGXA_Device1_Process0_ImageSelector_FG_IMG_SELECT_PERIOD_Divisor"];
    ASSERT_NE(nullptr, node);
    ASSERT_EQ(unsigned{FG_KIND_UINT32}, node->kind);
    EXPECT_EQ(1u, node->value.uint32.minimum);
    EXPECT_EQ(256u, node->value.uint32.maximum);
    EXPECT_STREQ("image", node->unit);
    EXPECT_EQ(0, setById(plain, node->address, 7));
    EXPECT_EQ(7u, std::get<std::uint32_t>(
                      plain.board().value("Device1_Process0_ImageSelector_FG_IMG_SELECT_PERIOD_Divisor")));
    std::uint32_t value = 0;
    EXPECT_EQ(0, getById(plain, node->address, &value));
    EXPECT_EQ(7u, value);
    EXPECT_GT(0, getById(plain, 2099999, &value));
}

}  // namespace
}  // namespace marovine::test
