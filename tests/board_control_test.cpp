/// Openings of a virtual board, and what its control interface sees and does.

#include <gmock/gmock.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "board/design/DesignData.h"
#include "marovine/BoardCodes.h"
#include "marovine/VirtualBoard.h"
#include "tests/BoardFixture.h"

namespace virtualboard::test {
namespace {

constexpr const char* kWidth = "Device1_Process0_Buffer_0_DRAM_A_0_XLength";
constexpr const char* kRed = "Device1_Process0_WhiteBalance_White_RedCoefficient";
constexpr const char* kLut = "Device1_Process0_LookupTable_R_LUTcontent";
constexpr const char* kDifference = "Device1_Process1_Trigger_Analyzer_Difference_Status";

using BoardControlTest = BoardTest;

// ---- openings ----

TEST_F(BoardControlTest, AttachingKeepsValuesAndOpeningAnewStartsThem) {
    set(kWidth, 512);
    close();
    open(1);
    EXPECT_EQ(512u, get<std::uint32_t>(kWidth, FG_TYPE_UINT32));
    close();
    open(0);
    EXPECT_EQ(1024u, get<std::uint32_t>(kWidth, FG_TYPE_UINT32));
    EXPECT_EQ(1024u, std::get<std::uint32_t>(control.value(kWidth)));
}

TEST_F(BoardControlTest, ReportsWhyAnOpeningFailed) {
    EXPECT_EQ(nullptr, Fg_InitHandleSlaveAware("Marovine.hap", nullptr, design, 0));
    EXPECT_EQ(kUnknownBoard, Fg_getLastErrorNumber(nullptr));
    EXPECT_EQ(nullptr, Fg_InitHandleSlaveAware("Marovine.hap", device, nullptr, 0));
    EXPECT_EQ(kUnknownDesign, Fg_getLastErrorNumber(nullptr));
    control.refuseHandle(true, -42);
    EXPECT_EQ(nullptr, Fg_InitHandleSlaveAware("Marovine.hap", device, design, 0));
    EXPECT_EQ(-42, Fg_getLastErrorNumber(nullptr));
    control.refuseDesign(true);
    EXPECT_EQ(nullptr, HapLoadDesignFromBuffer(rawHapData, rawHapSize, 1));
    control.clearOpeningFaults();
    EXPECT_EQ(kOk, Fg_FreeGrabber(handle));
    EXPECT_EQ(kInvalidHandle, Fg_FreeGrabber(std::exchange(handle, nullptr)));
}

TEST_F(BoardControlTest, AHandleOfAnotherDesignIsTold) {
    Fg_Struct* old = std::exchange(handle, nullptr);
    fpga_design* oldDesign = std::exchange(design, nullptr);
    const char* event = "Device1_Process0_Overflow_Overflow";
    for (const char* name : {kWidth, event, "Scratch_0"}) control.hide(name);
    const int registers = HapGetNrOfRegister(oldDesign);
    open(0);
    EXPECT_EQ(kUnknownParameter, id(kWidth));
    EXPECT_STRNE(event, HapGetEvent(design, 0)->name);
    EXPECT_EQ(registers - 1, HapGetNrOfRegister(design));
    EXPECT_THROW(control.value(kWidth), std::out_of_range);

    std::uint32_t value = 0;
    EXPECT_EQ(kReconfigured, Fg_getParameterWithType(old, kFirstParameterId, &value, 0, FG_TYPE_UINT32));
    EXPECT_EQ(kOk, Fg_FreeGrabber(old));
    HapUnloadHapFile(oldDesign);
}

TEST(Machine, KeepsBoardsApartAndKnowsWhichAreThere) {
    GXdevice* removed = VirtualBoardInsert();
    VirtualBoardRemove(removed);
    VirtualBoardRemove(removed);
    EXPECT_THROW(Control{removed}, std::invalid_argument);
    EXPECT_THROW(Control{nullptr}, std::invalid_argument);
    GXdevice* board = insertBoard();
    Control control(board);
    EXPECT_THROW(control.value(kWidth), std::out_of_range) << "no design yet";
    EXPECT_TRUE(control.parameterNames().empty());
    removeBoard(board);
    EXPECT_THROW(control.value(kWidth), std::invalid_argument);
}

// ---- journal and faults ----

TEST_F(BoardControlTest, RecordsEveryWriteWithItsResult) {
    control.recordWrites(true);
    set(kWidth, 512);
    set(kWidth, 7);
    set(kRed, 2.5, FG_TYPE_DOUBLE);
    set(kLut, FieldParameterInt{.value = 9, .index = 4}, FG_TYPE_FIELD_INT);
    Fg_setParameterWithType(handle, 999999, nullptr, 0, FG_TYPE_UINT32);
    const std::vector<Write> writes = control.takeWrites();
    ASSERT_EQ(5u, writes.size());
    EXPECT_EQ(kWidth, writes[0].name);
    EXPECT_EQ(Value(512u), writes[0].value);
    EXPECT_EQ(kOutOfRange, writes[1].result);
    EXPECT_EQ(Value(2.5), writes[2].value);
    EXPECT_EQ(4u, writes[3].firstIndex);
    EXPECT_EQ(Value(std::vector<std::uint32_t>{9}), writes[3].value);
    EXPECT_EQ(kUnknownParameter, writes[4].result);
    EXPECT_TRUE(control.takeWrites().empty());
    control.recordWrites(false);
    set(kWidth, 512);
    EXPECT_TRUE(control.takeWrites().empty());
}

TEST_F(BoardControlTest, AWatcherMayUseTheBoardAndItsFailureStaysInside) {
    std::uint32_t seen = 0;
    control.watchWrites([&](const Write& write) {
        seen = std::get<std::uint32_t>(control.value(write.name));
        control.watchWrites({});
    });
    set(kWidth, 512);
    EXPECT_EQ(512u, seen) << "called after the write was carried out";
    set(kWidth, 1024);
    EXPECT_EQ(512u, seen) << "it took itself away";
    control.watchWrites([](const Write&) { throw std::runtime_error("no"); });
    EXPECT_EQ(kInternalFailure, set(kWidth, 2048));
    control.watchWrites([](const Write&) { throw 7; });
    EXPECT_EQ(kInternalFailure, set(kWidth, 1024));
}

TEST_F(BoardControlTest, RefusesTheWritesAndReadsItIsToldTo) {
    std::uint32_t value = 0;
    control.refuseWrites(kWidth, -11);
    control.refuseReads(kRed, -12);
    EXPECT_EQ(-11, set(kWidth, 512));
    EXPECT_EQ(1024u, get<std::uint32_t>(kWidth, FG_TYPE_UINT32));
    EXPECT_EQ(-12, Fg_getParameterWithType(handle, id(kRed), &value, 0, FG_TYPE_DOUBLE));
    EXPECT_THROW(control.refuseWrites("nothing", -1), std::out_of_range);
    control.refuseWrites(kWidth, 0);
    EXPECT_EQ(kOk, set(kWidth, 512));

    control.clearFaults();
    control.refuseNthWrite(2, -13);
    control.refuseNthRead(1, -14);
    EXPECT_EQ(kOk, set(kWidth, 1024));
    EXPECT_EQ(-13, set(kWidth, 512));
    EXPECT_EQ(kOk, set(kWidth, 256));
    EXPECT_EQ(-14, Fg_getParameterWithType(handle, id(kWidth), &value, 0, FG_TYPE_UINT32));
    EXPECT_EQ(kOk, Fg_getParameterWithType(handle, id(kWidth), &value, 0, FG_TYPE_UINT32));
    EXPECT_EQ(256u, value);

    control.refuseWrites(kWidth, -15);
    close();
    open(0);
    EXPECT_EQ(-15, set(kWidth, 512)) << "faults outlast an opening";
    control.clearFaults();
    EXPECT_EQ(kOk, set(kWidth, 512));
}

TEST_F(BoardControlTest, ForcesReadOutsOfTheRightSort) {
    control.force("Device1_Process0_BoardStatus_FpgaTemperature", 91.5);
    EXPECT_EQ(91.5, get<double>("Device1_Process0_BoardStatus_FpgaTemperature", FG_TYPE_DOUBLE));
    control.force("Device1_Process0_BoardStatus_AlternativeBoardDetection", 2u);  // past the range
    EXPECT_EQ(2u,
              get<std::uint32_t>("Device1_Process0_BoardStatus_AlternativeBoardDetection", FG_TYPE_UINT32));
    control.force("Device1_Process0_Debug_Type0", std::string("Strange"));
    EXPECT_EQ(Value(std::string("Strange")), control.value("Device1_Process0_Debug_Type0"));
    control.force(kDifference, 0x1FFFFFFFFu + std::int64_t{0});
    EXPECT_EQ(0x1FFFFFFFF, get<std::int64_t>(kDifference, FG_TYPE_INT64));
    EXPECT_THROW(control.force(kWidth, std::string("wide")), std::invalid_argument);
    EXPECT_THROW(control.force(kWidth, 1.5), std::invalid_argument);
    EXPECT_THROW(control.force(kLut, std::vector<std::uint32_t>{1, 2}), std::invalid_argument);
}

TEST_F(BoardControlTest, TheClockMovesForwardToItsEndOrByItself) {
    const auto count = [&] {
        return get<std::uint32_t>("Device1_Process1_Trigger_Analyzer_Analyzer0_PulseCountSignal_Status",
                                  FG_TYPE_UINT32);
    };
    control.setClockManual();
    EXPECT_EQ(kOk, set("Device1_Process1_Trigger_Analyzer_Analyzer0_Select_SelectSignal_Select", 1));
    EXPECT_EQ(kOk, set("Device1_Process0_Trigger_Trigger_ExsyncEnable", 1));
    for (const double seconds : {-1.0, std::nan(""), 1e9 + 1})
        EXPECT_THROW(control.advanceClock(seconds), std::invalid_argument);
    control.advanceClock(1.0);
    control.setClockManual(false);
    EXPECT_LE(5000u, count());
    EXPECT_GT(10000u, count()) << "a second has not passed";
    control.setClockManual();
    for (int i = 0; i < 5; ++i) control.advanceClock(9e8);
    const std::uint32_t atTheEnd = count();
    control.advanceClock(9e8);
    EXPECT_EQ(atTheEnd, count());
}

TEST_F(BoardControlTest, ServesSeveralThreads) {
    control.recordWrites(true);
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 3; ++t) {
        threads.emplace_back([&, t] {
            for (std::uint32_t i = 0; i < 500; ++i) {
                EXPECT_EQ(kOk, set(kWidth, 8 + t));
                control.refuseReads(kRed, i % 2 == 0 ? -1 : 0);
                control.value(kWidth);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(1500u, control.takeWrites().size());
}

}  // namespace
}  // namespace virtualboard::test
