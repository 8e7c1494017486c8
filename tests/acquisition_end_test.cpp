/// What the acquisition refuses, how waits end, and what ends it.

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

#include "board/imaging/Scene.h"
#include "marovine/BoardCodes.h"
#include "tests/AcquisitionFixture.h"
#include "tests/Threads.h"

namespace marovine::test {
namespace {

TEST_F(AcquisitionTest, RefusesWhatMakesNoSense) {
    setWindow(64, 8);
    const FrameMemory memory(2, 64 * 8 * 3), other(2, 64 * 8 * 3), small(2, 64 * 8 * 3 - 1);
    EXPECT_EQ(kNotAcquiring, stop(memory));
    EXPECT_EQ(kNotAcquiring, applet.lastError());
    EXPECT_EQ(kNotAcquiring, waitFor(memory, 1));
    EXPECT_EQ(kNotAcquiring, status(memory, FRAME_STATUS_LOST));
    EXPECT_EQ(kNullPointer, Fg_AcquireEx(applet.record(), 0, 1, 0, nullptr));
    EXPECT_EQ(kUnknownMemory, Fg_AcquireEx(applet.record(), 0, 1, 0, reinterpret_cast<dma_mem*>(this)));
    EXPECT_EQ(kUnknownDma, Fg_AcquireEx(applet.record(), 1, 1, 0, memory.get()));
    EXPECT_EQ(kMemoryTooSmall, acquire(small));
    EXPECT_EQ(kOutOfRange, acquire(memory, 0));
    EXPECT_EQ(kOutOfRange, acquire(memory, -2));

    ASSERT_EQ(0, acquire(memory, 3));
    EXPECT_EQ(kAlreadyAcquiring, acquire(other));
    EXPECT_EQ(kForeignMemory, stop(other));
    EXPECT_EQ(kForeignMemory, waitFor(other, 1));
    EXPECT_EQ(kNullPointer, Fg_getLastPicNumberEx(applet.record(), 0, nullptr));
    EXPECT_EQ(kOutOfRange, waitFor(memory, 0));
    EXPECT_EQ(kOutOfRange, waitFor(memory, 1, -1));
    EXPECT_EQ(kNoMorePictures, waitFor(memory, 4));
    EXPECT_EQ(kUnknownStatus, status(memory, 99));
    EXPECT_EQ(3, waitFor(memory, 3));
    EXPECT_EQ(1, status(memory, FRAME_STATUS_RUNNING)) << "until the stop";
    {
        OpenApplet second;
        EXPECT_EQ(0, second.set("FG_HEIGHT", 4u));
        EXPECT_EQ(0, second.set("FG_WIDTH", 64u));
        EXPECT_EQ(kMemoryInUse, Fg_AcquireEx(second.record(), 0, 1, 0, memory.get()));
    }
    EXPECT_EQ(0, stop(memory));
    EXPECT_EQ(0, status(memory, FRAME_STATUS_RUNNING));
    EXPECT_EQ(nullptr, FrameMemoryCreate(0, 100));
    EXPECT_EQ(nullptr, FrameMemoryCreate(1, std::size_t{1} << 62));
    EXPECT_EQ(kUnknownMemory, FrameMemoryFree(reinterpret_cast<dma_mem*>(this)));
    EXPECT_EQ(kNullPointer, FrameMemoryRead(memory.get(), 1, nullptr));
}

TEST_F(ManualClockTest, APictureThatDoesNotComeTimesOut) {
    const FrameMemory memory(2, 64 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(kTimeout, waitFor(memory, 1, 1));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_EQ(kTimeout, applet.lastError());
}

TEST_F(ManualClockTest, AWaitThatEndsLeavesOthersTheirRoom) {
    setWindow(64, 4);
    const FrameMemory memory(4, 64 * 4 * 3);
    ASSERT_EQ(0, acquire(memory));
    std::thread waiting([&] { EXPECT_LE(20, waitFor(memory, 20, 6)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(kTimeout, waitFor(memory, 5, 1));
    // Two ms each, so that the queue never holds more than the ring.
    for (int i = 0; i < 500 && status(memory, FRAME_STATUS_PICTURES) < 20; ++i) {
        pass(4);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    waiting.join();
}

TEST_F(AcquisitionTest, RefusesAFieldTooLargeAndKeepsTheScene) {
    setWindow(64, 4);
    applet.board().setScene(Image(64, 4, grey(100)));
    for (const std::uint32_t width : {0xFFFFFFFFu, 65537u, 65536u})
        EXPECT_THROW(applet.board().setScene(Image(4, 4), width), std::invalid_argument) << width;
    EXPECT_EQ(grey(100), take().at(20, 2));
}

TEST_F(ManualClockTest, AWaitingHostIsTold) {
    const FrameMemory memory(2, 64 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    std::thread waiting([&] { EXPECT_EQ(kStopped, waitFor(memory, 1)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(0, stop(memory));
    waiting.join();
}

TEST_F(AcquisitionTest, EndsWithMemoryHandleAndBoard) {
    setWindow(64, 4);
    applet.board().setClockMode(ClockMode::RealTime);
    {
        const FrameMemory passing(2, 64 * 4 * 3);
        ASSERT_EQ(0, acquire(passing));
        ASSERT_LE(1, waitFor(passing, 1));
    }
    applet.reopen(1);  // frees the handle that acquires
    const FrameMemory memory(2, 64 * 4 * 3);
    ASSERT_EQ(0, acquire(memory));
    EXPECT_EQ(1u, applet.get<std::uint32_t>("FG_DMASTATUS"));
    ASSERT_LE(1, waitFor(memory, 1));
    removeBoard(applet.device());
    EXPECT_EQ(kStopped, waitFor(memory, 1'000'000));
    EXPECT_EQ(kNotAcquiring, stop(memory));
}

TEST_F(AcquisitionTest, ServesSeveralThreads) {
    applet.board().setClockMode(ClockMode::RealTime);
    setWindow(64, 4);
    const FrameMemory memory(3, 64 * 64 * 3);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(0, acquire(memory));
        onThreads(4, [&](int thread) {
            for (int i = 1; i <= 25; ++i) {
                if (thread == 0) {
                    const std::int64_t last = waitFor(memory, i);
                    EXPECT_LE(i, last);
                    const FrameMemoryPicture picture = memory.picture(last);
                    ASSERT_EQ(last, picture.number) << "not done with: stays";
                    EXPECT_NE(0u, picture.pixels[0] + picture.width);
                } else if (thread == 1) {
                    EXPECT_EQ(0, applet.set("FG_HEIGHT", i % 2 == 0 ? 4u : 64u));
                    EXPECT_EQ(0, applet.set("FG_PROCESSING_GAMMA", 1.0 + i / 100.0));
                } else if (thread == 2) {
                    applet.board().setInput(0, i % 2 == 0);
                    applet.board().setBelt({.speed = 100.0 * i});
                    EXPECT_LE(0, status(memory, FRAME_STATUS_UNREAD));
                } else {
                    EXPECT_LE(0, read("FG_FILLLEVEL"));
                    EXPECT_LE(0, read("FG_SIGNAL_ANALYZER_0_PULSE_COUNT"));
                }
            }
        });
        ASSERT_EQ(0, stop(memory));
    }
}

}  // namespace
}  // namespace marovine::test
