/// What a GenTL consumer gets from a stream: pictures, events, and an end to every wait.

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "tests/GenTLFixture.h"

namespace marovine::test {
namespace {

using testing::HasSubstr;

TEST_F(GenTL, FillsBuffersInTheirOrderAndCountsWhatFindsNone) {
    setWindow(64, 64);
    ASSERT_EQ(GC_ERR_SUCCESS, write("FG_XOFFSET", std::uint32_t{8}));
    const std::size_t bytes = streamInfo<std::size_t>(STREAM_INFO_PAYLOAD_SIZE);
    ASSERT_EQ(64u * 64 * 3, bytes);
    auto buffers = announce(3, bytes);
    const EVENT_HANDLE event = newBuffers();
    std::vector<std::uint8_t> own(bytes, 0xAB);
    BUFFER_HANDLE small = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(stream, own.data(), bytes - 1, nullptr, &small));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSAnnounceBuffer(stream, own.data(), bytes, nullptr, &small));
    ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, small));
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, DSFlushQueue(stream, ACQ_QUEUE_ALL_TO_INPUT));
    EXPECT_EQ(0u, streamInfo<std::size_t>(STREAM_INFO_NUM_QUEUED)) << "all move, or none";
    ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));

    for (const int i : {2, 0, 1}) ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, buffers[i]));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSQueueBuffer(stream, buffers[0]));
    EXPECT_EQ(GC_ERR_BUSY, DSRevokeBuffer(stream, buffers[0], nullptr, nullptr));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, DSQueueBuffer(stream, small));
    EXPECT_EQ(nullptr, next(event, 0)) << "the camera has not been started";
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1)) << lastError();
    std::uint64_t before = 0;
    for (const int i : {2, 0, 1}) {
        ASSERT_EQ(buffers[i], next(event));
        const auto time = bufferInfo<std::uint64_t>(buffers[i], BUFFER_INFO_TIMESTAMP_NS);
        EXPECT_GT(time, before);
        before = time;
        EXPECT_EQ(64u, bufferInfo<std::size_t>(buffers[i], BUFFER_INFO_DELIVERED_IMAGEHEIGHT));
        EXPECT_EQ(8u, bufferInfo<std::size_t>(buffers[i], BUFFER_INFO_XOFFSET));
        EXPECT_EQ(bytes, bufferInfo<std::size_t>(buffers[i], BUFFER_INFO_SIZE_FILLED));
        EXPECT_EQ(PFNC_BGR8,
                  static_cast<int>(bufferInfo<std::uint64_t>(buffers[i], BUFFER_INFO_PIXELFORMAT)));
        EXPECT_EQ(&buffers[i], bufferInfo<void*>(buffers[i], BUFFER_INFO_USER_PTR));
    }
    for (int i = 0; i < 6000 && streamInfo<std::uint64_t>(STREAM_INFO_NUM_UNDERRUN) < 2; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_GE(streamInfo<std::uint64_t>(STREAM_INFO_NUM_UNDERRUN), 2u);
    ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, buffers[0]));
    ASSERT_EQ(buffers[0], next(event));
    EXPECT_GE(bufferInfo<std::uint64_t>(buffers[0], BUFFER_INFO_FRAMEID), 5u)
        << "lost pictures have their numbers";
    ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));
    EXPECT_EQ(4u, streamInfo<std::uint64_t>(STREAM_INFO_NUM_DELIVERED));
    ASSERT_EQ(GC_ERR_SUCCESS, write("FG_XOFFSET", std::uint32_t{16}));
    setWindow(64, 128);
    EXPECT_EQ(8u, bufferInfo<std::size_t>(buffers[0], BUFFER_INFO_XOFFSET)) << "as when it was taken";
    EXPECT_EQ(0u, bufferInfo<bool8_t>(buffers[0], BUFFER_INFO_IS_INCOMPLETE));
    for (BUFFER_HANDLE buffer : buffers)
        EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(stream, buffer, nullptr, nullptr));
    void* memory = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(stream, small, &memory, nullptr));
    EXPECT_EQ(own.data(), memory);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, 0xAB), own) << "never filled";
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(stream, small));
}

TEST_F(GenTL, TakesAsManyPicturesAsAskedAndFlushesAsTold) {
    constexpr std::int32_t kMultiFrame = 2;
    setWindow(64, 64);
    asFastAsPossible();
    const auto buffers = announce(4, 64 * 64 * 3);
    const EVENT_HANDLE event = newBuffers();
    const auto counts = [&] {
        return std::pair(streamInfo<std::size_t>(STREAM_INFO_NUM_QUEUED),
                         streamInfo<std::size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY));
    };
    using Counts = std::pair<std::size_t, std::size_t>;
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_UNQUEUED_TO_INPUT));
    EXPECT_EQ(Counts(4, 0), counts());
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, 2));
    for (int i = 0; i < 6000 && streamInfo<bool8_t>(STREAM_INFO_IS_GRABBING) != 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(Counts(2, 2), counts());
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSQueueBuffer(stream, buffers[0])) << "it waits for delivery";
    ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_KILL));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_OUTPUT_DISCARD));
    EXPECT_EQ(Counts(2, 0), counts());
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(Counts(0, 2), counts());
    EXPECT_EQ(buffers[2], next(event));
    EXPECT_EQ(0u, bufferInfo<bool8_t>(buffers[2], BUFFER_INFO_NEW_DATA)) << "moved without a picture";
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_TO_INPUT));
    EXPECT_EQ(Counts(4, 0), counts());
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD));
    EXPECT_EQ(Counts(0, 0), counts());
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, DSFlushQueue(stream, 5));
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, DSStartAcquisition(stream, 0, 0));

    // Single pictures, one for each start of the camera.
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStop", 1));
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionMode", 1));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_UNQUEUED_TO_INPUT));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
        EXPECT_NE(nullptr, next(event));
        EXPECT_EQ(nullptr, next(event, 20));
    }
    ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    EXPECT_EQ(nullptr, next(event, 20)) << "the camera's acquisition was over";
    EXPECT_EQ(0, read<std::int32_t>("AcquisitionStart"));

    // Three, over two runs of the stream.
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionMode", kMultiFrame)) << lastError();
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int64_t>("AcquisitionFrameCount", 3)) << lastError();
    ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_TO_INPUT));
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
    EXPECT_EQ(1, read<std::int32_t>("AcquisitionStart")) << "not done";
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1)) << "changes nothing";
    for (const int pictures : {2, 1}) {
        ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, pictures == 2 ? 2 : GENTL_INFINITE));
        for (int i = 0; i < pictures; ++i) EXPECT_NE(nullptr, next(event));
        EXPECT_EQ(pictures == 2 ? GC_ERR_ACCESS_DENIED : GC_ERR_SUCCESS,
                  write<std::int32_t>("AcquisitionMode", kMultiFrame));
        EXPECT_EQ(nullptr, next(event, 20));
        ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));
    }
    EXPECT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionMode", 0)) << lastError();
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(stream)) << "while it grabs";
}

TEST_F(GenTL, EventsOfFeaturesAndOfTheDesignArrive) {
    EVENT_HANDLE moved = nullptr;
    EVENT_HANDLE happened = nullptr;
    EVENT_HANDLE again = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(device, EVENT_FEATURE_INVALIDATE, &moved));
    ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(remote, EVENT_REMOTE_DEVICE, &happened));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, GCRegisterEvent(device, EVENT_REMOTE_DEVICE, &again));
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GCRegisterEvent(system, EVENT_MODULE, &again));
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GCRegisterEvent(system, 99, &again));
    ASSERT_EQ(GC_ERR_SUCCESS, write("FG_WIDTH", std::uint32_t{512}));
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
    ASSERT_EQ(GC_ERR_SUCCESS, write("TLParamsLocked", std::int64_t{1}));
    std::vector<std::string> names;
    for (char name[128] = "";;) {
        std::size_t size = sizeof name;
        if (EventGetData(moved, name, &size, 0) != GC_ERR_SUCCESS) break;
        names.push_back(textOf([&](char* text, auto* length) {
            return EventGetDataInfo(moved, name, size, EVENT_DATA_ID, nullptr, text, length);
        }));
    }
    for (const char* name : {"FG_WIDTH", "Width", "FG_XOFFSET", "OffsetX", "PixelFormat", "AcquisitionMode"})
        EXPECT_THAT(names, testing::Contains(name));

    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("EventSelector", 1)) << "input 0 rises";
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("EventNotification", 1));
    for (const std::int32_t level : {1, 0, 1})
        ASSERT_EQ(GC_ERR_SUCCESS, write("BoardInputLevel", level, device));
    for (int i = 0; i < 2; ++i) {
        std::uint8_t data[64];
        std::size_t size = sizeof data;
        std::size_t less = 8;
        if (i == 0) {
            EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, EventGetData(happened, data, &less, kPatience));
        }
        ASSERT_EQ(GC_ERR_SUCCESS, EventGetData(happened, data, &size, kPatience));
        EXPECT_EQ(0x9001u, answerOf<std::uint64_t>([&](auto* type, void* place, auto* length) {
                      return EventGetDataInfo(happened, data, size, EVENT_DATA_NUMID, type, place, length);
                  }));
    }
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(device, EVENT_REMOTE_DEVICE));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(happened));
}

TEST_F(GenTL, AWaitEndsWhenItIsKilledOrWhatItWaitsForCloses) {
    EVENT_HANDLE event = newBuffers();
    std::uint8_t data[16];
    std::size_t size = sizeof data;
    EXPECT_EQ(GC_ERR_TIMEOUT, EventGetData(event, data, &size, 10));
    ASSERT_EQ(GC_ERR_SUCCESS, EventKill(event));
    EXPECT_EQ(GC_ERR_ABORT, EventGetData(event, data, &size, kPatience)) << "the kill is remembered once";
    EXPECT_EQ(GC_ERR_TIMEOUT, EventGetData(event, data, &size, 0));
    const std::function<void()> ends[] = {[&] { EventKill(event); },
                                          [&] {
                                              GCUnregisterEvent(stream, EVENT_NEW_BUFFER);
                                              event = newBuffers();
                                          },
                                          [&] {
                                              DSClose(stream);
                                              openStream(device, stream);
                                              event = newBuffers();
                                          },
                                          [&] {
                                              GCCloseLib();
                                              GCInitLib();
                                          }};
    for (const auto& end : ends) {
        std::atomic<GC_ERROR> answer = 1;
        std::thread waiting([&answer, event] {
            std::uint8_t place[16];
            std::size_t length = sizeof place;
            answer = EventGetData(event, place, &length, GENTL_INFINITE);
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        end();
        waiting.join();
        // A thread that comes late finds the handle gone.
        EXPECT_TRUE(answer == GC_ERR_ABORT || answer == GC_ERR_INVALID_HANDLE) << answer;
    }
}

TEST_F(GenTL, AWaitWithoutRoomLeavesTheEventToAnother) {
    const EVENT_HANDLE event = newBuffers();
    const BUFFER_HANDLE buffer = announce(1, 64).front();
    GC_ERROR without = -1;
    BUFFER_HANDLE got = nullptr;
    std::thread first([&] {
        std::uint8_t place = 0;
        std::size_t size = sizeof place;
        without = EventGetData(event, &place, &size, GENTL_INFINITE);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::thread second([&] { got = next(event, 5000); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, buffer));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_INPUT_TO_OUTPUT));
    second.join();
    EXPECT_EQ(buffer, got);
    EventKill(event);
    first.join();
    EXPECT_TRUE(without == GC_ERR_BUFFER_TOO_SMALL || without == GC_ERR_ABORT) << without;
}

TEST_F(GenTL, WhatClosesWhileAnotherThreadUsesItIsGoneForIt) {
    const auto atOnce = [](const auto& one, const auto& other) {
        std::atomic<int> ready = 0;
        const auto meet = [&ready] {
            for (++ready; ready < 2;) std::this_thread::yield();
        };
        std::thread thread([&] { meet(), one(); });
        meet(), other();
        thread.join();
    };
    for (int i = 0; i < 3000; ++i) {
        const BUFFER_HANDLE buffer = announce(1, 64).front();
        GC_ERROR queued = -1;
        GC_ERROR revoked = -1;
        atOnce([&] { queued = DSQueueBuffer(stream, buffer); },
               [&] { revoked = DSRevokeBuffer(stream, buffer, nullptr, nullptr); });
        ASSERT_TRUE(queued == GC_ERR_SUCCESS ? revoked == GC_ERR_BUSY : revoked == GC_ERR_SUCCESS);
        ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD));
        if (revoked == GC_ERR_BUSY) {
            ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(stream, buffer, nullptr, nullptr));
        }
    }
    for (int i = 0; i < 500; ++i) {
        EVENT_HANDLE event = nullptr;
        atOnce([&] { GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event); }, [&] { DSClose(stream); });
        ASSERT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(event)) << "the event has outlived its module";
        openStream(device, stream);
    }
}

TEST(GenTLSeveral, TwoDevicesStreamAtOnceWhileTheirFeaturesAreRead) {
    class Two : public GenTL {
     public:
        void TestBody() override {
            IF_HANDLE otherInterface = nullptr;
            DEV_HANDLE otherDevice = nullptr;
            PORT_HANDLE otherRemote = nullptr;
            DS_HANDLE otherStream = nullptr;
            open(1, otherInterface, otherDevice, otherRemote, otherStream);
            std::vector<std::thread> threads;
            std::atomic<int> taken = 0;
            struct Board {
                PORT_HANDLE remote;
                DEV_HANDLE device;
                DS_HANDLE stream;
            };
            for (const Board& board :
                 {Board{remote, device, stream}, Board{otherRemote, otherDevice, otherStream}}) {
                remote = board.remote, device = board.device, stream = board.stream;
                setWindow(64, 64);
                asFastAsPossible();
                announce(3, 64 * 64 * 3);
                const EVENT_HANDLE event = newBuffers();
                ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_TO_INPUT));
                ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
                ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
                threads.emplace_back([event, board, &taken] {
                    for (int i = 0; i < 200; ++i)
                        if (BUFFER_HANDLE buffer = next(event);
                            DSQueueBuffer(board.stream, buffer) == GC_ERR_SUCCESS)
                            ++taken;
                });
                threads.emplace_back([place = address(remote, "FG_LINEEXPOSURE"), board] {
                    for (int i = 0; i < 2000; ++i) {
                        double value = 10 + i % 7;
                        std::size_t size = sizeof value;
                        EXPECT_EQ(GC_ERR_SUCCESS,
                                  (i % 2 != 0 ? GCReadPort(board.remote, place, &value, &size)
                                              : GCWritePort(board.remote, place, &value, &size)));
                    }
                });
            }
            for (auto& thread : threads) thread.join();
            EXPECT_EQ(400, taken);
        }
    };
    const std::string world = std::string(WORLD_FILE);
    setenv("MAROVINE_WORLD", (world + ":" + world).c_str(), 1);
    Two two;
    two.TestBody();
    unsetenv("MAROVINE_WORLD");
}

/// A consumer in a process of its own.
class Consumer : public GenTL {
 public:
    /// Takes pictures of its own width while another consumer, at the other end of `meeting`, takes its.
    void take(std::uint32_t width, int meeting) {
        constexpr std::uint32_t kHeight = 16;
        setWindow(width, kHeight);
        asFastAsPossible();
        announce(3, std::size_t{width} * kHeight * 3);
        const EVENT_HANDLE event = newBuffers();
        ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_TO_INPUT));
        ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
        ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
        for (std::uint64_t number = 0; number < 100; ++number) {
            const BUFFER_HANDLE buffer = next(event);
            ASSERT_NE(nullptr, buffer);
            ASSERT_EQ(number, bufferInfo<std::uint64_t>(buffer, BUFFER_INFO_FRAMEID));
            ASSERT_EQ(width, bufferInfo<std::size_t>(buffer, BUFFER_INFO_WIDTH));
            ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, buffer));
            char met = 1;
            if (number > 0) continue;
            ASSERT_EQ(1, ::write(meeting, &met, 1));
            ASSERT_EQ(1, ::read(meeting, &met, 1)) << "the other consumer has ended before its first picture";
        }
    }

 private:
    void TestBody() override {}
};

TEST(GenTLSeveral, TwoProcessesStreamAtOnce) {
    std::array<int, 2> meeting{};
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, meeting.data()));
    std::array<pid_t, 2> consumers{};
    std::fflush(nullptr);
    for (std::size_t i = 0; i < consumers.size(); ++i) {
        consumers[i] = fork();
        if (consumers[i] != 0) continue;
        close(meeting[1 - i]);
        [&]() noexcept { Consumer().take(i == 0 ? 64 : 128, meeting[i]); }();
        std::exit(HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    for (const int end : meeting) close(end);
    for (const pid_t consumer : consumers) {
        int status = -1;
        ASSERT_EQ(consumer, waitpid(consumer, &status, 0));
        EXPECT_EQ(0, status);
    }
}

}  // namespace
}  // namespace marovine::test
