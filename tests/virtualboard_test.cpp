/// The virtual board as its libraries show it.

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <sstream>

#include "board/design/DesignData.h"
#include "marovine/BoardCodes.h"
#include "marovine/FrameMemory.h"
#include "tables/DesignParameters.h"
#include "tables/EventTable.h"
#include "tests/BoardFixture.h"

namespace virtualboard::test {
namespace {

constexpr const char* kWidth = "Device1_Process0_Buffer_0_DRAM_A_0_XLength";
constexpr const char* kRed = "Device1_Process0_WhiteBalance_White_RedCoefficient";
constexpr const char* kLut = "Device1_Process0_LookupTable_R_LUTcontent";
constexpr const char* kDna = "Device1_Process0_BoardStatus_FpgaDNA";
constexpr const char* kFile = "Device1_Process0_Debug_CameraInput_DebugFile";
constexpr const char* kPixel = "Device1_Process0_Debug_CameraInput_Inject_WritePixel";

using VirtualBoardTest = BoardTest;

// ---- the design offers what the applet needs ----

TEST_F(VirtualBoardTest, OffersEveryParameterAndEventOfTheApplet) {
    for (const char* name : marovine::designParameterNames) EXPECT_GE(id(name), kFirstParameterId) << name;
    std::vector<std::string> events;
    for (int n = 0; HapGetEvent(design, n) != nullptr; ++n) {
        EXPECT_EQ(static_cast<std::uint32_t>(n), HapGetEvent(design, n)->number);
        events.emplace_back(HapGetEvent(design, n)->name);
    }
    for (const auto& event : marovine::sdkEvents) EXPECT_THAT(events, testing::Contains(event.designName));
    EXPECT_EQ(nullptr, HapGetEvent(design, -1));
}

TEST_F(VirtualBoardTest, AnswersTheRuntimesOwnIds) {
    for (const int own : {600, 601, 2050, 24092, 3050, 3060, 3070, 3080, 3090, 5210}) {
        std::uint32_t value = 0;
        EXPECT_EQ(kOk, Fg_getParameterWithType(handle, own, &value, 0, FG_TYPE_UINT32)) << own;
    }
    EXPECT_EQ(600, id("FG_TIMEOUT"));
    const std::uint32_t timeout = 1;
    EXPECT_EQ(kOutOfRange, Fg_setParameterWithType(handle, 600, &timeout, 0, FG_TYPE_UINT32));
}

// ---- typed access ----

TEST_F(VirtualBoardTest, RefusesNumbersOutsideTheRangeAndKeepsTheOldOne) {
    for (const std::uint32_t value : {8u, 16384u, 7u, 16385u}) {
        const auto before = get<std::uint32_t>(kWidth, FG_TYPE_UINT32);
        const int code = value % 2 == 0 ? kOk : kOutOfRange;
        EXPECT_EQ(code, set(kWidth, value)) << value;
        EXPECT_EQ(code, Fg_getLastErrorNumber(handle));
        EXPECT_EQ(code == kOk ? value : before, get<std::uint32_t>(kWidth, FG_TYPE_UINT32));
    }
    EXPECT_EQ(kOutOfRange, set(kWidth, -1, FG_TYPE_INT32));
    EXPECT_EQ(kOutOfRange, set(kWidth, std::int64_t{1} << 32, FG_TYPE_INT64)) << "not the low 32 bits";
    EXPECT_EQ(kOk, set(kWidth, std::uint64_t{512}, FG_TYPE_UINT64));
    EXPECT_EQ(512u, get<std::uint64_t>(kWidth, FG_TYPE_INT64));

    for (const double value : {0.0, 3.9990234375}) EXPECT_EQ(kOk, set(kRed, value, FG_TYPE_DOUBLE)) << value;
    for (const double value : {4.0, -1e-9, std::nan(""), -std::nan(""), HUGE_VAL})
        EXPECT_EQ(kOutOfRange, set(kRed, value, FG_TYPE_DOUBLE)) << value;
    EXPECT_EQ(3.9990234375, get<double>(kRed, FG_TYPE_DOUBLE));
}

TEST_F(VirtualBoardTest, RefusesTypesThatDoNotFit) {
    std::uint64_t wide = 0;
    EXPECT_EQ(kTypeMismatch, set(kRed, 1u));
    EXPECT_EQ(kTypeMismatch, set(kWidth, 1024.0, FG_TYPE_DOUBLE));
    EXPECT_EQ(kTypeMismatch, set(kLut, 1u));
    EXPECT_EQ(kTypeMismatch, Fg_getParameterWithType(handle, id(kDna), &wide, 0, FG_TYPE_UINT32))
        << "57 bits into 32";
    EXPECT_EQ(kTypeMismatch, Fg_getParameterWithType(handle, id(kWidth), &wide, 0, FG_TYPE_TEXT_POINTER));
    EXPECT_EQ(kTypeMismatch,
              Fg_getParameterWithType(handle, id(kWidth), &wide, 0, static_cast<FgParamTypes>(7)));
    EXPECT_EQ(kOk, Fg_getParameterWithType(handle, id(kDna), &wide, 0, FG_TYPE_UINT64));
    EXPECT_EQ(0x0A51C7D2E63F4B9u, wide);
    EXPECT_EQ(kOk, set(kPixel, std::uint64_t{0x1FFFFFFFFFFFFFF}, FG_TYPE_UINT64));
    EXPECT_EQ(kOutOfRange, set(kPixel, std::uint64_t{0x200000000000000}, FG_TYPE_UINT64));
}

TEST_F(VirtualBoardTest, RefusesWhatIsNotThereOrNotWritable) {
    std::uint32_t value = 1;
    EXPECT_EQ(kUnknownParameter, id("Device1_Process0_Nothing"));
    EXPECT_EQ(kNullPointer, Fg_getParameterIdByName(handle, nullptr));
    for (const int unknown :
         {0, -1, 1, kFirstParameterId - 1, kFirstParameterId + 100000, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(kUnknownParameter, Fg_setParameterWithType(handle, unknown, &value, 0, FG_TYPE_UINT32))
            << unknown;
        EXPECT_EQ(kUnknownParameter, Fg_getParameterWithType(handle, unknown, &value, 0, FG_TYPE_UINT32))
            << unknown;
    }
    EXPECT_EQ(kReadOnly, set("Device1_Process0_Overflow_OverflowOccurred", 1));
    EXPECT_EQ(kUnknownDma, Fg_setParameterWithType(handle, id(kWidth), &value, 1, FG_TYPE_UINT32));
    EXPECT_EQ(kNullPointer, Fg_setParameterWithType(handle, id(kWidth), nullptr, 0, FG_TYPE_UINT32));
    EXPECT_EQ(kNullPointer, Fg_getParameterWithType(handle, id(kWidth), nullptr, 0, FG_TYPE_UINT32));
    EXPECT_EQ(kInvalidHandle, Fg_setParameterWithType(nullptr, id(kWidth), &value, 0, FG_TYPE_UINT32));
    Fg_Struct empty{};
    EXPECT_EQ(kInvalidHandle, Fg_getParameterWithType(&empty, id(kWidth), &value, 0, FG_TYPE_UINT32));
}

TEST_F(VirtualBoardTest, WritesFieldsWholeOrNotAtAll) {
    std::vector<std::uint32_t> values(256);
    std::iota(values.rbegin(), values.rend(), 0u);
    const auto block = [&](std::int32_t type, std::uint32_t start, std::uint32_t count) {
        return FieldParameterAccess{.type = type, .start = start, .count = count, .values = values.data()};
    };
    EXPECT_EQ(kOk, set(kLut, block(FG_TYPE_UINT32, 0, 256), FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(values, std::get<std::vector<std::uint32_t>>(control.value(kLut)));

    values[3] = 256;  // a later element spoils the block
    EXPECT_EQ(kOutOfRange, set(kLut, block(FG_TYPE_UINT32, 0, 4), FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(255u, std::get<std::vector<std::uint32_t>>(control.value(kLut))[0]);

    EXPECT_EQ(kOk, set(kLut, block(FG_TYPE_INT32, 250, 0), FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(kIndexOutOfRange, set(kLut, block(FG_TYPE_UINT32, 250, 7), FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(kIndexOutOfRange, set(kLut, block(FG_TYPE_UINT32, 256, 0), FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(kIndexOutOfRange, set(kLut, block(FG_TYPE_UINT32, 1, UINT32_MAX), FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(kTypeMismatch, set(kLut, block(FG_TYPE_FIELD_INT, 0, 1), FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(kNullPointer,
              set(kLut, FieldParameterAccess{FG_TYPE_UINT32, 0, 1, nullptr}, FG_TYPE_FIELD_ACCESS));

    EXPECT_EQ(kOk, set(kLut, FieldParameterInt{.value = 7, .index = 255}, FG_TYPE_FIELD_INT));
    EXPECT_EQ(kIndexOutOfRange, set(kLut, FieldParameterInt{.value = 7, .index = 256}, FG_TYPE_FIELD_INT));
    FieldParameterInt element{.value = 0, .index = 255};
    EXPECT_EQ(kOk, Fg_getParameterWithType(handle, id(kLut), &element, 0, FG_TYPE_FIELD_INT));
    EXPECT_EQ(7u, element.value);
    auto read = block(FG_TYPE_UINT32, 254, 2);
    EXPECT_EQ(kOk, Fg_getParameterWithType(handle, id(kLut), &read, 0, FG_TYPE_FIELD_ACCESS));
    EXPECT_EQ(7u, values[1]);
}

TEST_F(VirtualBoardTest, HandsOutTextsAndTakesThemBackOnce) {
    EXPECT_EQ(kOk, Fg_setParameterWithType(handle, id(kFile), "test.tif", 0, FG_TYPE_TEXT));
    char* text = nullptr;
    EXPECT_EQ(kOk, Fg_getParameterWithType(handle, id(kFile), &text, 0, FG_TYPE_TEXT_POINTER));
    EXPECT_STREQ("test.tif", text);
    EXPECT_EQ(kOk, Fg_freeParameterStringWithType(handle, 0, text, 0, FG_TYPE_TEXT_POINTER));
    EXPECT_EQ(kNotHandedOut, Fg_freeParameterStringWithType(handle, 0, text, 0, FG_TYPE_TEXT_POINTER));
    const std::string longText(4096, 'x');
    EXPECT_EQ(kTextTooLong, Fg_setParameterWithType(handle, id(kFile), longText.c_str(), 0, FG_TYPE_TEXT));
    EXPECT_EQ(kOk, Fg_getParameterWithType(handle, id(kFile), &text, 0, FG_TYPE_TEXT_POINTER))
        << "freed with the handle";
}

// ---- description tree ----

TEST_F(VirtualBoardTest, DescribesEveryParameterInItsTree) {
    std::size_t leaves = 0;
    const std::function<void(const RegisterInfo&)> walk = [&](const RegisterInfo& group) {
        for (std::int32_t i = 0; i < group.value.group.childCount; ++i) {
            const RegisterInfo& child = *group.value.group.children[i];
            EXPECT_EQ(static_cast<std::uint32_t>(i), child.index);
            if (child.kind == FG_KIND_GROUP) {
                EXPECT_STREQ(group.displayName, child.parentName);
                walk(child);
            } else {
                ++leaves;
                EXPECT_EQ(child.address, id(child.name)) << child.name;
            }
        }
    };
    const RegisterInfo* root = Fg_getParameterInfo(handle, 0);
    ASSERT_NE(nullptr, root);
    EXPECT_STREQ("Device1", root->displayName);
    walk(*root);
    EXPECT_EQ(control.parameterNames().size() - 10, leaves) << "all but the runtime's own ten";
    EXPECT_EQ(nullptr, Fg_getParameterInfo(handle, 1));

    const RegisterInfo* buffer = root->value.group.children[0]->value.group.children[0];
    const RegisterInfo* width = buffer->value.group.children[0]->value.group.children[2];
    EXPECT_STREQ(kWidth, width->name);
    EXPECT_EQ(3, width->accessFlags);
    EXPECT_EQ(16384u, width->value.uint32.maximum);
    EXPECT_EQ(8u, width->value.uint32.increment);
    EXPECT_STREQ("pixel", width->unit);
}

// ---- registers ----

TEST_F(VirtualBoardTest, KeepsRegistersInTheirWidth) {
    EXPECT_GE(HapGetNrOfRegister(design), 24);
    int wide = 0, readOnly = 0;
    for (int number = 1; number <= HapGetNrOfRegister(design); ++number) {
        const std::string name = HapGetRegisterName(design, number);
        EXPECT_EQ(number, HapGetRegisterByName(design, name.c_str()));
        const int bits = HapGetRegisterBitRange(design, number);
        const std::uint64_t largest = ~std::uint64_t{0} >> (64 - bits);
        wide += bits > 32;
        std::uint64_t before = 0, after = 0;
        EXPECT_EQ(kOk, TavrRegisterRead(device, number, &before));
        if (HapGetRegisterDirection(design, number) == 0) {
            ++readOnly;
            EXPECT_EQ(kRegisterReadOnly, TavrRegisterWrite(device, number, 0)) << name;
            continue;
        }
        EXPECT_EQ(kOk, TavrRegisterWrite(device, number, largest)) << name;
        EXPECT_EQ(kOk, TavrRegisterRead(device, number, &after));
        EXPECT_EQ(largest, after) << name;
        if (bits < 64) {
            EXPECT_EQ(kRegisterOutOfRange, TavrRegisterWrite(device, number, largest + 1)) << name;
        }
    }
    EXPECT_GE(wide, 3);
    EXPECT_GE(readOnly, 5);
    std::uint64_t value = 0;
    for (const int unknown : {0, -1, HapGetNrOfRegister(design) + 1}) {
        EXPECT_EQ(kUnknownRegister, TavrRegisterRead(device, unknown, &value));
        EXPECT_EQ(kUnknownRegister, TavrRegisterWrite(device, unknown, 0));
        EXPECT_EQ(nullptr, HapGetRegisterName(design, unknown));
        EXPECT_EQ(0, HapGetRegisterBitRange(design, unknown));
    }
    EXPECT_EQ(kUnknownBoard, TavrRegisterRead(nullptr, 1, &value));
}

// ---- the rest of the host runtime ----

TEST_F(VirtualBoardTest, SavesItsConfigurationAsText) {
    const std::string path = testing::TempDir() + "/board.cfg";
    Fg_setParameterWithType(handle, id(kFile), "a \"quoted\" name", 0, FG_TYPE_TEXT);
    ASSERT_EQ(kOk, Fg_saveConfig(handle, path.c_str()));
    std::ifstream file(path);
    const std::string text = (std::stringstream() << file.rdbuf()).str();
    EXPECT_THAT(text, testing::HasSubstr(std::string(kWidth) + " = 1024\n"));
    EXPECT_THAT(text, testing::HasSubstr(std::string(kFile) + " = \"a \\\"quoted\\\" name\"\n"));
    EXPECT_THAT(text, testing::HasSubstr("ReferenceTapMirror_Field = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}\n"));
    EXPECT_EQ(kFileError, Fg_saveConfig(handle, "/nowhere/board.cfg"));
    EXPECT_EQ(kNullPointer, Fg_saveConfig(handle, nullptr));
    std::filesystem::remove(path);
}

TEST_F(VirtualBoardTest, TakesNoPicturesByADesignThatLacksWhatTheyNeed) {
    const FrameMemory memory(1, 1024 * 1024 * 3);
    close();
    control.hide("Device1_Process0_ImageHeight_ImageHeight");
    open(0);
    EXPECT_EQ(kNoPictureSource, Fg_AcquireEx(handle, 0, 1, 0, memory.get()));
}

}  // namespace
}  // namespace virtualboard::test
