/// The board takes pictures: what they show, their stream and what triggers them.

#include <array>
#include <chrono>
#include <thread>

#include "tests/AcquisitionFixture.h"

namespace marovine::test {
namespace {

/// Pictures of a long run; a thread sanitizer takes a second for each.
#ifdef __SANITIZE_THREAD__
constexpr std::int64_t kManyPictures = 5;
#else
constexpr std::int64_t kManyPictures = 100;
#endif

// ---- what the picture shows ----

TEST_F(AcquisitionTest, GammaMapsThePictureThroughItsTable) {
    applet.board().setScene(sceneOf(64, 64, [](auto x, auto y) {
        return Pixel{grey(4 * x).blue, grey(3 * y).green, grey(255 - x).red};
    }));
    setWindow(64, 64);
    const Image plain = take();
    set("FG_PROCESSING_GAMMA", 2.2);
    const Image bright = take();
    const auto table = std::get<std::vector<std::uint32_t>>(
        applet.board().value("Device1_Process0_LookupTable_G_LUTcontent"));
    EXPECT_NE(table[100], 100u);
    for (std::size_t i = 0; i < plain.bytes().size(); ++i)
        ASSERT_EQ(table[plain.bytes()[i]], bright.bytes()[i]) << "byte " << i;
}

TEST_F(AcquisitionTest, BayerPhaseAndGainsColourThePicture) {
    setWindow(64, 8);
    const Pixel orange{.blue = 10, .green = 60, .red = 200};
    applet.board().setScene(Image(64, 8, orange));
    EXPECT_EQ(orange, take().at(20, 4));
    // The white balance takes sensor pixels by the same phase; gains of 1 keep it out of this.
    set("FG_BAYERINIT", 1);
    EXPECT_EQ((Pixel{200, 60, 10}), take().at(20, 4)) << "red and blue change places";
    set("FG_BAYERINIT", 2);
    set("FG_SCALINGFACTOR_RED", 0.5);
    set("FG_SCALINGFACTOR_BLUE", 3.0);
    EXPECT_EQ((Pixel{30, 60, 100}), take().at(20, 4));
}

TEST_F(AcquisitionTest, WindowLiesFromTheVantagePoint) {
    applet.board().setScene(columnRamp(64));
    set("FG_SENSORWIDTH", 64u);
    setWindow(32, 8);
    set("FG_XOFFSET", 16u);
    const Image fromLeft = take();
    set("FG_VANTAGEPOINT", "FG_VANTAGEPOINT_TOP_RIGHT");
    const Image fromRight = take();
    for (std::uint32_t x = 1; x + 1 < 32; ++x) {
        EXPECT_EQ(grey(3 * (16 + x)), fromLeft.at(x, 3)) << x;
        EXPECT_EQ(grey(3 * (63 - 16 - x)), fromRight.at(x, 3)) << x;
    }
}

TEST_F(AcquisitionTest, GeneratorReplacesTheCamera) {
    setWindow(64, 8);
    set("FG_CAMERASIMULATOR_WIDTH", 64u);
    set("FG_CAMERASIMULATOR_HEIGHT", 8u);
    set("FG_CAMERASIMULATOR_ENABLE", 1);
    set("FG_CAMERASIMULATOR_PATTERN", "FG_HORIZONTAL");
    const Image picture = take();
    for (std::uint32_t x = 1; x < 63; ++x) EXPECT_EQ(grey(x), picture.at(x, 4)) << x;
}

TEST_F(AcquisitionTest, SelectorPassesOneOfEachPeriod) {
    applet.board().setScene(rowRamp(256));
    setWindow(64, 4);
    set("FG_IMG_SELECT_PERIOD", 4u);
    set("FG_IMG_SELECT", 2u);
    const FrameMemory memory(3, 64 * 4 * 3);
    ASSERT_EQ(0, acquire(memory));
    for (const std::uint32_t number : {1u, 2u, 3u}) {
        ASSERT_EQ(number, waitFor(memory, number));
        const std::uint32_t skipped = 2 + 4 * (number - 1);
        EXPECT_EQ(grey(4 * skipped + 1), copyOf(memory.picture(number)).at(10, 1));
    }
    EXPECT_EQ(0, status(memory, FRAME_STATUS_LOST));
}

TEST_F(AcquisitionTest, FollowsSceneBeltAndCameraUnderWay) {
    applet.board().setScene(rowRamp(256));
    setWindow(64, 4);
    const FrameMemory memory(2, 64 * 4 * 3);
    ASSERT_EQ(0, acquire(memory));
    ASSERT_EQ(1, waitFor(memory, 1));
    EXPECT_EQ(grey(2), copyOf(memory.picture(1)).at(10, 2));
    applet.board().setBelt({.speed = 5000, .objectPixel = 1});
    applet.board().setScene(Image(64, 4, grey(100)));
    imaging::CameraTraits darker;
    darker.neutralExposure = 38;
    applet.board().setCamera(darker);
    ASSERT_EQ(2, waitFor(memory, 2));
    EXPECT_EQ(grey(50), copyOf(memory.picture(2)).at(10, 2));
    EXPECT_EQ(0, stop(memory));
    applet.board().showTestChart();
    EXPECT_THROW(applet.board().setInput(12, true), std::invalid_argument);
}

// ---- the stream ----

TEST_F(AcquisitionTest, AHundredLargePicturesComeInOrderAndNoneIsLost) {
    applet.board().setRenderThreads(3);
    setWindow(2048, 1024);
    set("FG_SIGNAL_ANALYZER_0_SOURCE", "FG_SIGNAL_CAM0_FRAME_END");
    set("FG_SIGNAL_ANALYZER_CLEAR", 1);
    const FrameMemory memory(4, std::size_t{2048} * 1024 * 3);
    ASSERT_EQ(0, acquire(memory, kManyPictures));
    for (std::int64_t number = 1; number <= kManyPictures; ++number) {
        ASSERT_EQ(number, waitFor(memory, number));
        const FrameMemoryPicture picture = memory.picture(number);
        ASSERT_EQ(number, picture.number);
        ASSERT_EQ(2048u, picture.width);
        ASSERT_EQ(1024u, picture.height);
    }
    EXPECT_EQ(kNoMorePictures, waitFor(memory, kManyPictures + 1));
    EXPECT_EQ(0, status(memory, FRAME_STATUS_LOST));
    EXPECT_EQ(kManyPictures, applet.get<std::uint32_t>("FG_SIGNAL_ANALYZER_0_PULSE_COUNT"));
    EXPECT_EQ(1024 * kManyPictures, applet.get<std::uint32_t>("FG_SIGNAL_ANALYZER_1_PULSE_COUNT")) << "lines";
    EXPECT_EQ(204800.0, applet.get<double>("FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT"));
    EXPECT_EQ(0, stop(memory));
    EXPECT_EQ(kManyPictures, Fg_getLastPicNumberEx(applet.record(), 0, memory.get()))
        << "counts outlast the stop";
}

TEST_F(AcquisitionTest, APollingHostGetsPicturesToo) {
    setWindow(64, 4);
    const FrameMemory memory(1, 64 * 4 * 3);
    ASSERT_EQ(0, acquire(memory));
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(kSeconds);
    while (Fg_getLastPicNumberEx(applet.record(), 0, memory.get()) < 3) {
        ASSERT_LT(std::chrono::steady_clock::now(), giveUp);
        std::this_thread::yield();
    }
}

TEST_F(ManualClockTest, AHostThatDoesNotReadLosesPictures) {
    const FrameMemory memory(4, 64 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    pass(299);
    EXPECT_EQ(50, read("FG_FILLLEVEL"));
    EXPECT_EQ(0, read("FG_OVERFLOW"));
    pass(301);  // six pictures for four buffers
    EXPECT_EQ(1, read("FG_OVERFLOW"));
    EXPECT_EQ(100, read("FG_FILLLEVEL"));
    EXPECT_EQ(2, status(memory, FRAME_STATUS_LOST));
    ASSERT_EQ(4, waitFor(memory, 4)) << "the host has done with three";
    EXPECT_EQ(1, status(memory, FRAME_STATUS_UNREAD));
    EXPECT_EQ(1, read("FG_OVERFLOW")) << "until a picture finds room";
    pass(100);
    ASSERT_EQ(5, waitFor(memory, 5));
    EXPECT_EQ(0, read("FG_OVERFLOW"));
    EXPECT_EQ(25, read("FG_FILLLEVEL"));
    // Picture 5 is the seventh of the stream: lost ones leave no gap in the numbers but one on the belt.
    EXPECT_EQ(grey((600 + 50) % 256), copyOf(memory.picture(5)).at(10, 50));
    EXPECT_EQ(0, status(memory, FRAME_STATUS_BUFFER, 5));
    EXPECT_EQ(kPictureGone, status(memory, FRAME_STATUS_BUFFER, 1)) << "overwritten";
    EXPECT_EQ(nullptr, memory.picture(1).pixels);
    EXPECT_EQ(0, stop(memory));
    EXPECT_EQ(0, read("FG_FILLLEVEL"));
}

TEST_F(ManualClockTest, QueuedBuffersAreFilledInTheirOrderAndHandedBack) {
    constexpr std::size_t bytes = std::size_t{64} * 100 * 3;
    struct Buffer {
        std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(bytes);
        int row = -1;  ///< of the scene, in the middle of the picture
    };
    std::array<Buffer, 3> buffers;
    std::atomic<int> finished = 0;
    const auto note = [](void* context, void* tag, const FrameMemoryPicture* picture,
                         const FrameMemoryPictureInfo*) {
        auto& buffer = *static_cast<Buffer*>(tag);
        if (picture->pixels == buffer.pixels.data() && picture->height == 100)
            buffer.row = picture->pixels[bytes / 2];
        ++*static_cast<std::atomic<int>*>(context);
    };
    const auto waitForFinished = [&](int count) {
        for (int i = 0; i < 100 * kSeconds && finished < count; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_EQ(count, finished);
    };
    dma_mem* memory = FrameMemoryCreateQueued(bytes, note, &finished);
    const auto queue = [&](Buffer& buffer) {
        return FrameMemoryQueue(memory, buffer.pixels.data(), bytes, &buffer);
    };
    EXPECT_EQ(kMemoryTooSmall, FrameMemoryQueue(memory, buffers[0].pixels.data(), bytes - 1, &buffers[0]));
    EXPECT_EQ(kNullPointer, FrameMemoryQueue(memory, nullptr, bytes, &buffers[0]));
    for (const int i : {2, 0, 1}) ASSERT_EQ(0, queue(buffers[i]));
    EXPECT_EQ(kBufferInUse, queue(buffers[0]));
    EXPECT_EQ(0, FrameMemoryTakeBack(memory, &buffers[0]));
    EXPECT_EQ(kUnknownMemory, FrameMemoryTakeBack(memory, &buffers[0]));

    ASSERT_EQ(0, Fg_AcquireEx(applet.record(), 0, -1, 0, memory));
    pass(300);  // two find a buffer, the third none
    waitForFinished(2);
    EXPECT_EQ(50, buffers[2].row);
    EXPECT_EQ(150, buffers[1].row);
    EXPECT_EQ(1, Fg_getStatusEx(applet.record(), FRAME_STATUS_LOST, 0, 0, memory));
    ASSERT_EQ(0, queue(buffers[0]));
    pass(100);
    waitForFinished(3);
    EXPECT_EQ(350 % 256, buffers[0].row);
    ASSERT_EQ(0, queue(buffers[0]));
    EXPECT_EQ(0, Fg_stopAcquireEx(applet.record(), 0, memory, 0));
    EXPECT_EQ(0, FrameMemoryFree(memory));
    EXPECT_EQ(kUnknownMemory, queue(buffers[1]));
    EXPECT_EQ(3, finished);
}

TEST_F(ManualClockTest, ABoardWhoseMemoryIsFullLosesPictures) {
    const FrameMemory memory(8, 64 * 100 * 3);
    // 1024 words of 128 bits hold two pictures of 64 x 100 pixels.
    applet.board().force("Device1_Process0_Buffer_0_DRAM_A_0_RamAddressWidth", 10u);
    ASSERT_EQ(0, acquire(memory));
    pass(300);
    EXPECT_EQ(1, status(memory, FRAME_STATUS_LOST));
    EXPECT_EQ(1, read("FG_OVERFLOW"));
    ASSERT_EQ(2, waitFor(memory, 2));
    pass(100);
    ASSERT_EQ(3, waitFor(memory, 3));
    FrameMemoryPictureInfo info{};
    info.size = sizeof info;
    ASSERT_EQ(0, FrameMemoryDescribe(memory.get(), 3, &info));
    EXPECT_EQ(1, info.lostBefore);
    EXPECT_EQ(3, info.frame);
    EXPECT_EQ(300, info.firstLine);
    // Eight clocks of the link after the last line's start.
    EXPECT_EQ(99 * 200'000 + 95, info.lastLineTime - info.firstLineTime);
}

TEST_F(ManualClockTest, AFlashLightsTheLineItIsGivenFor) {
    applet.board().setScene(Image(64, 4, grey(200)));
    applet.board().setLight({.flashShare = 0.75});
    set("FG_STROBEPULSEDELAY", 2u);
    set("FG_SIGNAL_ANALYZER_0_SOURCE", "FG_SIGNAL_CAM0_FLASH");
    set("FG_SIGNAL_ANALYZER_CLEAR", 1);
    const FrameMemory memory(2, 64 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    pass(200);
    ASSERT_LE(1, waitFor(memory, 1));
    // The middle of the lit line's pixels is its own; around it the interpolation mixes.
    EXPECT_EQ(grey(50), copyOf(memory.picture(1)).at(10, 50));
    EXPECT_EQ(200, copyOf(memory.picture(1)).at(10, 2).red);
    EXPECT_EQ(2u, applet.get<std::uint32_t>("FG_SIGNAL_ANALYZER_0_PULSE_COUNT"));
    EXPECT_EQ(20000.0, applet.get<double>("FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT"));
}

TEST_F(ManualClockTest, ANewLinePeriodCountsOnFromTheLineThatRuns) {
    const FrameMemory memory(4, 64 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    pass(50);
    set("FG_LINEPERIODE", 400.0);
    pass(98);  // 49 lines
    EXPECT_EQ(0, read("FG_FILLLEVEL"));
    pass(2);
    ASSERT_EQ(1, waitFor(memory, 1));
    set("FG_EXSYNCON", 0);
    pass(1000);
    EXPECT_EQ(1, status(memory, FRAME_STATUS_UNREAD)) << "no ExSync, no lines";
    set("FG_EXSYNCON", 1);
    pass(200);
    EXPECT_EQ(2, waitFor(memory, 2));
}

TEST_F(AcquisitionTest, InRealTimePicturesComeByThemselves) {
    applet.board().setClockMode(ClockMode::RealTime);
    setWindow(64, 10);  // 2 ms each
    const FrameMemory memory(4, 64 * 10 * 3);
    ASSERT_EQ(0, acquire(memory));
    ASSERT_LE(1, waitFor(memory, 1));
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(kSeconds);
    while (status(memory, FRAME_STATUS_LOST) < 3) {
        ASSERT_LT(std::chrono::steady_clock::now(), giveUp);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(1, read("FG_OVERFLOW"));
    EXPECT_LE(8, waitFor(memory, 8)) << "the host reads again";
}

TEST_F(ManualClockTest, PicturesKeepTheSettingsTheyWereTakenWith) {
    setWindow(1024, 100);
    applet.board().setScene(Image(64, 4, grey(100)));
    const FrameMemory memory(9, 1024 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    pass(800);
    set("FG_SCALINGFACTOR_RED", 0.0);
    set("FG_WIDTH", 512u);
    pass(100);
    for (std::int64_t number = 1; number <= 9; ++number) {
        ASSERT_LE(number, waitFor(memory, number));
        const bool old = number <= 8;
        EXPECT_EQ(old ? 1024u : 512u, memory.picture(number).width) << number;
        EXPECT_EQ((Pixel{100, 100, static_cast<std::uint8_t>(old ? 100 : 0)}),
                  copyOf(memory.picture(number)).at(20, 50))
            << number;
    }
}

TEST_F(ManualClockTest, AnotherWindowMakesNoPicturesOfThePast) {
    setWindow(64, 1024);
    set("FG_YOFFSET", 2u);
    const FrameMemory memory(4, 64 * 1024 * 3);
    ASSERT_EQ(0, acquire(memory));
    pass(1024);
    set("FG_YOFFSET", 2u);  // passes through 0
    set("FG_HEIGHT", 4u);
    EXPECT_EQ(kTimeout, waitFor(memory, 1, 0));
    EXPECT_EQ(0, status(memory, FRAME_STATUS_LOST));
    pass(6);
    ASSERT_EQ(1, waitFor(memory, 1));
    EXPECT_EQ(4u, memory.picture(1).height);
    EXPECT_EQ(grey((1024 + 2 + 1) % 256), copyOf(memory.picture(1)).at(10, 1));
    EXPECT_EQ(0, status(memory, FRAME_STATUS_LOST));
}

// ---- the image trigger ----

TEST_F(ManualClockTest, ASoftwareTriggerStartsAPicture) {
    set("FG_IMGTRIGGERMODE", "ASYNC_TRIGGER");
    set("FG_IMGTRIGGERINSRC", "TRGINSOFTWARE");
    const FrameMemory memory(4, 64 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    pass(250);
    EXPECT_EQ(kTimeout, waitFor(memory, 1, 0));
    EXPECT_EQ(0, read("FG_IMGTRIGGER_IS_BUSY"));
    set("FG_SENDSOFTWARETRIGGER", 1);
    EXPECT_EQ(1, read("FG_IMGTRIGGER_IS_BUSY"));
    pass(50);
    set("FG_SENDSOFTWARETRIGGER", 1);  // comes while the picture lasts
    pass(500);
    EXPECT_EQ(0, read("FG_IMGTRIGGER_IS_BUSY"));
    ASSERT_EQ(1, waitFor(memory, 1));
    EXPECT_EQ(grey(250 + 3), copyOf(memory.picture(1)).at(10, 3));
    EXPECT_EQ(kTimeout, waitFor(memory, 2, 0));
    set("FG_IMGTRIGGERINSRC", "TRGINSRC_GPI_0");
    set("FG_SENDSOFTWARETRIGGER", 1);
    EXPECT_EQ(0, read("FG_IMGTRIGGER_IS_BUSY")) << "the software is not the source";
}

TEST_F(ManualClockTest, AnInputTriggersAndGates) {
    struct Case {
        const char* mode;
        const char* polarity;
        bool level;  // that is active
        std::uint32_t rows;
    };
    for (const auto& c : {Case{"ASYNC_TRIGGER", "HIGH_ON_ZERO_HIGH", true, 100},
                          Case{"ASYNC_TRIGGER", "HIGH_ON_ZERO_LOW", false, 100},
                          Case{"ASYNC_GATED", "HIGH_ON_ZERO_HIGH", true, 40},
                          Case{"ASYNC_GATED", "HIGH_ON_ZERO_LOW", false, 40}}) {
        SCOPED_TRACE(std::string(c.mode) + ", " + c.polarity);
        set("FG_IMGTRIGGERMODE", c.mode);
        set("FG_IMGTRIGGERINSRC", "TRGINSRC_FRONT_GPI_2");
        set("FG_IMGTRIGGERINPOLARITY", c.polarity);
        applet.board().setInput(10, !c.level);
        const FrameMemory memory(4, 64 * 100 * 3);
        ASSERT_EQ(0, acquire(memory));
        pass(10);
        applet.board().setInput(3, true);  // another input
        EXPECT_EQ(0, read("FG_IMGTRIGGER_IS_BUSY"));
        applet.board().setInput(10, c.level);
        EXPECT_EQ(0, read("FG_IMGTRIGGER_IS_BUSY")) << "it may still bounce";
        applet.board().advanceClock(112e-9);
        EXPECT_EQ(1, read("FG_IMGTRIGGER_IS_BUSY"));
        pass(40);
        applet.board().setInput(10, !c.level);
        pass(300);
        EXPECT_EQ(1, waitFor(memory, 1));
        EXPECT_EQ(c.rows, memory.picture(1).height);
        EXPECT_EQ(1, status(memory, FRAME_STATUS_UNREAD));
        applet.board().setInput(3, false);
        EXPECT_EQ(0, stop(memory));
    }
    const FrameMemory memory(1, 64 * 100 * 3);
    ASSERT_EQ(0, acquire(memory));
    EXPECT_EQ(0, read("FG_IMGTRIGGER_IS_BUSY")) << "input 10 is high";
    applet.board().force("Device1_Process0_Trigger_InputSignal_ImgTrgInSource_Input_Select", 64u + 10);
    pass(1);
    EXPECT_EQ(1, read("FG_IMGTRIGGER_IS_BUSY")) << "no such input: low";
}

}  // namespace
}  // namespace marovine::test
