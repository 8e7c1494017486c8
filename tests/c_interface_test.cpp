/// What the C interface says and does beyond what Control, which covers it, shows in the tests of the board.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "marovine/FrameMemory.h"
#include "tests/BoardFixture.h"
#include "tests/OwnProcess.h"

namespace virtualboard {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kPeriod = "Device1_Process0_Trigger_Trigger_ExsyncPeriod";
constexpr double kForever = std::numeric_limits<double>::infinity();

/// A record with its size set and nothing else.
template <typename Record>
Record sized() {
    Record record{};
    record.size = sizeof(record);
    return record;
}

class CInterface : public test::BoardTest {
 protected:
    CInterface() { control.setClockManual(); }
};

TEST_F(CInterface, SaysWhatIsWrongAndChangesNothing) {
    auto belt = sized<VirtualBoardBelt>();
    auto cut = belt;
    cut.size = 8;
    auto profile = belt;
    profile.points = 3;
    auto camera = sized<VirtualBoardCamera>();
    auto signal = sized<VirtualBoardSignal>();
    signal.trainCount = 1;
    auto encoder = sized<VirtualBoardEncoder>();
    encoder.inputA = -2;
    const VirtualBoardStuckPixel stuck{.column = 1, .value = 256};
    camera.stuckPixels = 1;
    camera.stuck = &stuck;
    auto oneWire = sized<VirtualBoardEncoder>();
    oneWire.inputA = oneWire.inputB = 3;
    auto light = sized<VirtualBoardLight>();
    light.reserved = 1;
    const VirtualBoardEdge edge{.at = 0, .high = 1, .reserved = 1};
    auto edges = sized<VirtualBoardSignal>();
    edges.edgeCount = 1;
    edges.edges = &edge;
    auto value = sized<VirtualBoardValue>();
    auto wide = value;
    wide.type = FG_TYPE_UINT32;
    wide.integer = -1;
    VirtualBoardSubscription* subscription = nullptr;
    const VirtualBoardWrite* writes = nullptr;
    const std::uint8_t pixel[3] = {};
    struct Case {
        std::function<int()> call;
        int code;
        const char* says;
    };
    const Case cases[] = {
        {[&] { return VirtualBoardAdvanceClock(nullptr, 1); }, kUnknownBoard, "not a board"},
        {[&] { return VirtualBoardAdvanceClock(device, -1); }, kWrongArgument, "forward only"},
        {[&] { return VirtualBoardAdvanceClock(device, std::nan("")); }, kWrongArgument, "forward only"},
        {[&] { return VirtualBoardSetClockMode(device, 3); }, kWrongArgument, "no mode 3"},
        {[&] { return VirtualBoardTime(device, nullptr); }, kNullPointer, "null"},
        {[&] { return VirtualBoardSetInput(device, 12, 1); }, kWrongArgument, "inputs 0 to 11"},
        {[&] { return VirtualBoardPlayInput(device, 0, &signal); }, kNullPointer, "null"},
        {[&] { return VirtualBoardSetEncoder(device, &encoder); }, kWrongArgument, ""},
        {[&] { return VirtualBoardSetEncoder(device, &oneWire); }, kWrongArgument, "two inputs"},
        {[&] { return VirtualBoardSetLight(device, &light); }, kWrongRecord, ""},
        {[&] { return VirtualBoardPlayInput(device, 0, &edges); }, kWrongRecord, ""},
        {[&] { return VirtualBoardSetScene(device, pixel, 0, 2, 0); }, kWrongArgument, "empty"},
        {[&] { return VirtualBoardSetScene(device, nullptr, 1, 1, 0); }, kNullPointer, "null"},
        {[&] { return VirtualBoardSetScene(device, pixel, 1U << 31, 1U << 31, 0); }, kWrongArgument,
         "at most"},
        {[&] { return VirtualBoardSetScene(device, pixel, 1, 1, 65537); }, kWrongArgument, "65537"},
        {[&] { return VirtualBoardSetBelt(device, &cut); }, kWrongRecord, "size"},
        {[&] { return VirtualBoardSetBelt(device, &profile); }, kNullPointer, "null"},
        {[&] { return VirtualBoardSetCamera(device, &camera); }, kWrongArgument, "255"},
        {[&] { return VirtualBoardReadValue(device, "Nothing", &value); }, kUnknownParameter, "'Nothing'"},
        {[&] { return VirtualBoardReadValue(device, nullptr, &value); }, kNullPointer, "null"},
        {[&] { return VirtualBoardForceValue(device, kPeriod, &value); }, kWrongArgument, "no type 0"},
        {[&] { return VirtualBoardForceValue(device, kPeriod, &wide); }, kWrongArgument, "wider"},
        {[&] { return VirtualBoardTakeWrites(device, nullptr); }, kNullPointer, "null"},
        {[&] { return VirtualBoardTakeWrites(nullptr, &writes); }, kUnknownBoard, "not a board"},
        {[&] { return VirtualBoardHide(nullptr); }, kNullPointer, "null"},
        {[&] { return VirtualBoardSubscribe(device, 1, 0, &subscription); }, kWrongArgument, "room"},
        {[&] { return VirtualBoardSubscribe(device, 0, 1, &subscription); }, kWrongArgument, "mask"},
        {[&] { return VirtualBoardOnEvents(device, 1, 1, nullptr, nullptr, nullptr, &subscription); },
         kNullPointer, "null"},
        {[&] { return VirtualBoardRaiseEvent(device, 64, 0); }, kUnknownEvent, "no event"},
        {[&] { return VirtualBoardUnsubscribe(reinterpret_cast<VirtualBoardSubscription*>(this)); },
         kUnknownSubscription, "subscribed"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.code, c.call()) << c.says;
        EXPECT_THAT(VirtualBoardLastError(), HasSubstr(c.says));
    }
    std::thread([] { EXPECT_STREQ("", VirtualBoardLastError()); }).join();
    std::int64_t before = 0;
    std::int64_t after = 0;
    EXPECT_EQ(0, VirtualBoardTime(device, &before));
    EXPECT_STREQ("", VirtualBoardLastError());
    EXPECT_EQ(0, VirtualBoardAdvanceClock(device, 1.5));
    EXPECT_EQ(0, VirtualBoardTime(device, &after));
    EXPECT_EQ(1'500'000'000, after - before);
    EXPECT_EQ(nullptr, subscription);
}

TEST(CInterfaceAtExit, ServesStaticObjectsOfAHostToItsEnd) {
    inOwnProcess([] {
        static const struct Late {
            GXdevice* board = VirtualBoardInsert();
            ~Late() {
                VirtualBoardRemove(board);
                if (*VirtualBoardLastError() != '\0') _exit(EXIT_FAILURE);
            }
        } late;
        VirtualBoardValue value = sized<VirtualBoardValue>();
        EXPECT_NE(0,
                  VirtualBoardReadValue(late.board, "A name so long that it has memory of its own", &value));
    });
}

TEST_F(CInterface, RecordsMayGrow) {
    struct Later {
        VirtualBoardBelt belt;
        std::uint64_t further;
    } later;
    later.belt.size = sizeof(later);
    later.further = 7;
    ASSERT_EQ(0, VirtualBoardDefaultBelt(&later.belt));
    EXPECT_EQ(sizeof(VirtualBoardBelt), later.belt.size) << "as much as this version knows";
    EXPECT_EQ(0u, later.further);
    EXPECT_EQ(500.0, later.belt.speed);
    later.belt.size = sizeof(later);
    EXPECT_EQ(0, VirtualBoardSetBelt(device, &later.belt));
    later.further = 7;
    EXPECT_EQ(kWrongRecord, VirtualBoardSetBelt(device, &later.belt)) << "asks for what nobody here knows";
    later.belt.size = 1U << 30;
    EXPECT_EQ(kWrongRecord, VirtualBoardDefaultBelt(&later.belt));
}

TEST_F(CInterface, HandsOutWritesAndValues) {
    std::string field;
    for (const std::string& name : control.parameterNames())
        if (std::holds_alternative<std::vector<std::uint32_t>>(control.value(name))) field = name;
    ASSERT_NE("", field);
    ASSERT_EQ(0, VirtualBoardRecordWrites(device, 1));
    ASSERT_EQ(0, set(kPeriod, 5.0, FG_TYPE_DOUBLE));
    std::uint32_t elements[] = {1, 2, 3};
    FieldParameterAccess block{.type = FG_TYPE_UINT32, .start = 4, .count = 3, .values = elements};
    ASSERT_EQ(0, set(field, block, FG_TYPE_FIELD_ACCESS));
    set("FG_NOTHING", 1);
    const VirtualBoardWrite* first = nullptr;
    ASSERT_EQ(0, VirtualBoardTakeWrites(device, &first));
    ASSERT_NE(nullptr, first);
    EXPECT_STREQ(kPeriod, first->name);
    EXPECT_EQ(static_cast<std::uint32_t>(FG_TYPE_DOUBLE), first->value->type);
    EXPECT_EQ(5.0, first->value->real);
    const VirtualBoardWrite* second = first->next;
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(field, second->name);
    EXPECT_EQ(4u, second->firstIndex);
    EXPECT_THAT(std::vector(second->value->elements, second->value->elements + second->value->count),
                ElementsAre(1, 2, 3));
    const VirtualBoardWrite* third = second->next;
    ASSERT_NE(nullptr, third);
    EXPECT_STREQ("", third->name);
    EXPECT_EQ(kUnknownParameter, third->result);
    EXPECT_EQ(nullptr, third->next);
    VirtualBoardFree(first);
    ASSERT_EQ(0, VirtualBoardTakeWrites(device, &first));
    EXPECT_EQ(nullptr, first);

    auto value = sized<VirtualBoardValue>();
    ASSERT_EQ(0, VirtualBoardReadValue(device, field.c_str(), &value));
    ASSERT_LT(6u, value.count);
    EXPECT_EQ(3u, value.elements[6]);
    VirtualBoardFree(value.elements);
}

TEST_F(CInterface, ReleasesTheContextOfACallbackOnce) {
    int released = 0;
    const auto release = [](void* count) { ++*static_cast<int*>(count); };
    const auto watcher = [](const VirtualBoardWrite*, void*) {};
    EXPECT_EQ(kUnknownBoard, VirtualBoardWatchWrites(nullptr, watcher, &released, release));
    EXPECT_EQ(1, released);
    EXPECT_EQ(0, VirtualBoardWatchWrites(device, watcher, &released, release));
    EXPECT_EQ(1, released);
    EXPECT_EQ(0, VirtualBoardWatchWrites(device, nullptr, nullptr, nullptr));
    EXPECT_EQ(2, released);
    VirtualBoardSubscription* subscription = nullptr;
    const auto callback = [](const VirtualBoardEvent*, void*) {};
    ASSERT_EQ(0, VirtualBoardOnEvents(device, 1, 1, callback, &released, release, &subscription));
    auto event = sized<VirtualBoardEvent>();
    EXPECT_EQ(kUnknownSubscription, VirtualBoardWaitEvent(subscription, 0, &event));
    EXPECT_EQ(0, VirtualBoardUnsubscribe(subscription));
    EXPECT_EQ(3, released);
    EXPECT_EQ(kUnknownSubscription, VirtualBoardUnsubscribe(subscription));
}

// ---- events ----

constexpr const char* kAlarm = "Device1_Process1_BoardMonitor_TemperatureAlarm";

class Events : public CInterface {
 protected:
    const unsigned alarm = control.eventNumber(kAlarm);
    const std::uint64_t mask = std::uint64_t{1} << alarm;
};

TEST_F(Events, AreCountedFromTheSubscriptionAndKeptInOrder) {
    control.raiseEvent(alarm);
    EventSubscription waiter = control.waitEvents(mask, 2);
    EXPECT_EQ(std::nullopt, waiter.next(0)) << "what came before is over";
    const std::int64_t start = control.time();
    for (int i = 1; i <= 5; ++i) {
        control.advanceClock(1);
        control.raiseEvent(alarm, 10 * i);
        control.raiseEvent(alarm + 1);  // nobody waits for it
    }
    for (const int n : {1, 2}) {
        const auto event = waiter.next(0);
        ASSERT_TRUE(event.has_value());
        EXPECT_EQ(n * 1'000'000'000LL, event->time - start);
        EXPECT_EQ(alarm, event->number);
        EXPECT_EQ(n, event->count);
        EXPECT_EQ(10 * n, event->payload);
        EXPECT_EQ(0, event->lost);
    }
    EXPECT_EQ(std::nullopt, waiter.next(0)) << "there was room for two";
    control.raiseEvent(alarm);
    const auto sixth = waiter.next(0);
    ASSERT_TRUE(sixth.has_value());
    EXPECT_EQ(6, sixth->count);
    EXPECT_EQ(3, sixth->lost);
    EXPECT_THROW(control.eventNumber("Nothing"), std::out_of_range);
}

TEST_F(Events, FollowAnInput) {
    const std::string pins = "Device1_Process1_Trigger_Inputs_InputEvents_InputEvents_";
    const auto maskOf = [&](const char* name) {
        return std::uint64_t{1} << control.eventNumber(pins + name);
    };
    EventSubscription rising = control.waitEvents(maskOf("Pin2"), 4);
    EventSubscription both = control.waitEvents(maskOf("Pin2") | maskOf("NotPin2"), 3);
    constexpr std::int64_t ms = 1'000'000;
    control.playInput(2, {.trains = {{.first = ms, .period = 2 * ms, .width = ms / 2, .count = 1'000'000}}});
    control.advanceClock(1e4);  // far beyond the last one
    const auto first = rising.next(0);
    ASSERT_TRUE(first.has_value());
    for (int n = 1; n < 4; ++n) {
        const auto event = rising.next(0);
        ASSERT_TRUE(event.has_value());
        EXPECT_EQ(first->time + n * 2 * ms, event->time);
        EXPECT_EQ(1, event->payload);
    }
    EXPECT_EQ(std::nullopt, rising.next(0));
    control.setInput(2, true);
    control.advanceClock(1);
    const auto last = rising.next(0);
    ASSERT_TRUE(last.has_value());
    EXPECT_EQ(1'000'001, last->count);
    EXPECT_EQ(1'000'000 - 4, last->lost);
    for (const auto& [time, level] : {std::pair{0 * ms, 1}, {ms / 2, 0}, {2 * ms, 1}}) {
        const auto event = both.next(0);
        ASSERT_TRUE(event.has_value());
        EXPECT_EQ(first->time + time, event->time);
        EXPECT_EQ(level, event->payload);
    }
}

TEST_F(Events, WakeWhoWaits) {
    EventSubscription waiter = control.waitEvents(mask);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(std::nullopt, waiter.next(0.05));
    EXPECT_LE(50ms, std::chrono::steady_clock::now() - begun);
    std::thread other([&] { control.raiseEvent(alarm, 3); });
    const auto event = waiter.next(60);
    other.join();
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(3, event->payload);
    GXdevice* second = insertBoard();
    EventSubscription orphan = Control(second).waitEvents(mask);
    std::thread removal([&] { removeBoard(second); });
    EXPECT_THROW(orphan.next(kForever), std::invalid_argument) << "its board is gone";
    removal.join();
}

TEST_F(Events, AreSleptFor) {
    const std::string pin = "Device1_Process1_Trigger_Inputs_InputEvents_InputEvents_Pin2";
    control.setClockMode(ClockMode::RealTime);
    EventSubscription rising = control.waitEvents(std::uint64_t{1} << control.eventNumber(pin));
    const auto sleeps = [] {
        rusage usage{};
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_nvcsw;
    };
    constexpr std::int64_t kLater = 300'000'000;
    const std::int64_t begun = control.time();
    const auto before = sleeps();
    control.playInput(2, {.edges = {{kLater, true}}});
    const auto event = rising.next(60);
    ASSERT_TRUE(event.has_value());
    EXPECT_LE(begun + kLater, event->time);
    EXPECT_GT(30, sleeps() - before) << "who waits looks again and again";

    // Who sleeps because nothing comes wakes when something may.
    control.setInput(2, false);
    control.setEncoder({.inputA = 3});
    control.setBelt({.speed = 0});
    EventSubscription turning =
        control.waitEvents(std::uint64_t{1} << control.eventNumber(
                               "Device1_Process1_Trigger_Inputs_InputEvents_InputEvents_Pin3"));
    std::thread other([&] {
        std::this_thread::sleep_for(20ms);
        control.setBelt({.speed = 500});
    });
    EXPECT_TRUE(turning.next(60).has_value());
    other.join();
}

TEST_F(Events, CallBackUntilTheyAreEnded) {
    std::atomic<int> calls = 0;
    std::atomic<bool> ended = false;
    EventSubscription counting = control.onEvents(mask, [&](const Event& event) { calls = event.count; });
    EventSubscription once;
    std::atomic<int> onces = 0;
    once = control.onEvents(mask, [&](const Event&) {
        ++onces;
        once.end();  // from its own thread
        ended = true;
    });
    EventSubscription failing = control.onEvents(mask, [](const Event&) { throw 1; });
    for (int i = 0; i < 3; ++i) control.raiseEvent(alarm);
    for (int i = 0; i < 6000 && (calls < 3 || !ended); ++i) std::this_thread::sleep_for(10ms);
    EXPECT_EQ(3, calls);
    EXPECT_EQ(1, onces);
    counting.end();
    control.raiseEvent(alarm);
    EXPECT_EQ(3, calls);
}

TEST_F(CInterface, PictureInformationIsThatOfThePicture) {
    const FrameMemory memory(2, 16);
    auto info = sized<FrameMemoryPictureInfo>();
    EXPECT_EQ(kPictureGone, FrameMemoryDescribe(memory.get(), 1, &info));
    EXPECT_EQ(kUnknownMemory, FrameMemoryDescribe(nullptr, 1, &info));
    EXPECT_EQ(kNullPointer, FrameMemoryDescribe(memory.get(), 1, nullptr));
    EXPECT_EQ(0, memory.info(1).number);
}

}  // namespace
}  // namespace virtualboard
