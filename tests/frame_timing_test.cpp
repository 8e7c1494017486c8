// How lines become pictures.

#include <gtest/gtest.h>

#include <functional>

#include "board/imaging/FrameSequencer.h"

namespace virtualboard::imaging {
namespace {

using Change = std::function<void(DesignSettings&)>;

// ---- image trigger ----

DesignSettings heightOf(std::uint32_t lines) {
    DesignSettings settings;
    settings.yLength = settings.triggerYLength = settings.imageHeight = lines;
    return settings;
}

struct Sequence : FrameSequencer {
    explicit Sequence(const Change& change, std::uint64_t linesPerFrame = 1000) {
        DesignSettings settings = heightOf(100);
        change(settings);
        configure(settings, linesPerFrame, 0);
    }
    // Pictures complete after so many lines, as (number, first line, rows).
    std::vector<std::array<std::uint64_t, 3>> upTo(std::uint64_t lines) {
        std::vector<std::array<std::uint64_t, 3>> result;
        while (const auto position = next(lines))
            if (position->selected) result.push_back({position->number, position->firstLine, position->rows});
        return result;
    }
};
using Pictures = std::vector<std::array<std::uint64_t, 3>>;

TEST(FrameSequencer, freeRun) {
    EXPECT_EQ(Sequence([](auto&) {}).upTo(299), (Pictures{{0, 0, 100}, {1, 100, 100}}));
    EXPECT_EQ(Sequence([](auto& s) { s.triggerYOffset = 10; }).upTo(220),
              (Pictures{{0, 10, 100}, {1, 120, 100}}));
    // Single sampling: half the lines, two rows each.
    EXPECT_EQ(Sequence([](auto& s) { s.triggerYLength = s.imageHeight = 50; }).upTo(100),
              (Pictures{{0, 0, 100}, {1, 50, 100}}));
    EXPECT_EQ(Sequence([](auto& s) { s.selectPeriod = 3, s.selectPhase = 1; }).upTo(500),
              (Pictures{{1, 100, 100}, {4, 400, 100}}));
    EXPECT_EQ(Sequence([](auto& s) { s.yLength = 60; }).upTo(100), (Pictures{{0, 0, 60}}));
    EXPECT_EQ(Sequence([](auto& s) { s.triggerYLength = 0; }).upTo(100), Pictures{});
    EXPECT_EQ(Sequence([](auto& s) { s.selectPhase = 1; }).upTo(100), Pictures{});
}

TEST(FrameSequencer, sourceFrames) {
    const auto fval = [](auto& s) { s.cameraFval = 1, s.triggerYLength = 0xFFFFFE; };
    EXPECT_EQ(Sequence(fval, 250).upTo(400),
              (Pictures{{0, 0, 100}, {1, 100, 100}, {2, 200, 50}, {3, 250, 100}}));
    const auto tooFar = [](auto& s) { s.cameraFval = 1, s.triggerYOffset = 250; };
    EXPECT_EQ(Sequence(tooFar, 250).upTo(9999), Pictures{});
}

TEST(FrameSequencer, sourceFrameChangesWithinAFrame) {
    DesignSettings settings = heightOf(100);
    settings.cameraFval = 1;
    settings.triggerYLength = 0xFFFFFE;
    Sequence sequence([&](auto& s) { s = settings; }, 1000);
    EXPECT_EQ(sequence.upTo(650).size(), 6u);
    sequence.configure(settings, 250, 650);  // six pictures are more than a frame has now
    EXPECT_EQ(sequence.upTo(950), (Pictures{{6, 750, 100}, {7, 850, 100}}));
    sequence.configure(settings, 1000, 960);
    EXPECT_EQ(sequence.upTo(1100), (Pictures{{8, 1000, 100}}));
}

TEST(FrameSequencer, onePicturePerTrigger) {
    Sequence sequence([](auto& s) { s.imageTriggerMode = 1, s.imageTriggerDelay = 6; });
    EXPECT_EQ(sequence.nextEnd(), std::nullopt);
    EXPECT_TRUE(sequence.trigger(11));  // 17, then the next row pair
    EXPECT_FALSE(sequence.trigger(60));
    EXPECT_TRUE(sequence.busy(117));
    EXPECT_FALSE(sequence.busy(118));
    EXPECT_EQ(sequence.nextEnd(), 118u);
    EXPECT_EQ(sequence.upTo(117), Pictures{});
    EXPECT_EQ(sequence.upTo(118), (Pictures{{0, 18, 100}}));
    EXPECT_TRUE(sequence.trigger(118));
    sequence.start(500);
    EXPECT_EQ(sequence.upTo(9999), Pictures{});

    Sequence off([](auto& s) { s.imageTriggerMode = 1, s.imageTriggerEnable = 0; });
    EXPECT_FALSE(off.trigger(0));
    EXPECT_FALSE(off.upTo(1000).empty());  // off is free run
}

TEST(FrameSequencer, severalPicturesPerTrigger) {
    Sequence sequence([](auto& s) { s.imageTriggerMode = 1, s.triggerYLength = 250; });
    EXPECT_TRUE(sequence.trigger(0));
    EXPECT_EQ(sequence.upTo(1000), (Pictures{{0, 0, 100}, {1, 100, 100}, {2, 200, 50}}));
}

TEST(FrameSequencer, gate) {
    Sequence single([](auto& s) { s.imageTriggerMode = 2; });
    EXPECT_TRUE(single.openGate(0));
    single.closeGate(40);
    EXPECT_TRUE(single.openGate(200));  // longer than a picture
    EXPECT_EQ(single.upTo(400), (Pictures{{0, 0, 40}, {1, 200, 100}}));
    single.closeGate(400);
    EXPECT_TRUE(single.openGate(400));
    single.closeGate(400);  // too short for a picture
    EXPECT_FALSE(single.busy(400));
    EXPECT_EQ(single.upTo(9999), Pictures{});

    Sequence later([](auto& s) { s.imageTriggerMode = 2, s.imageTriggerDelay = 6; });
    EXPECT_TRUE(later.openGate(0));
    later.closeGate(40);  // both edges are delayed
    EXPECT_EQ(later.upTo(400), (Pictures{{0, 6, 40}}));

    Sequence endless([](auto& s) { s.imageTriggerMode = 2, s.maxGatedHeight = 1; });
    EXPECT_TRUE(endless.openGate(0));
    EXPECT_EQ(endless.upTo(150), (Pictures{{0, 0, 100}}));
    EXPECT_EQ(endless.nextEnd(), 200u);
    endless.closeGate(170);
    EXPECT_EQ(endless.upTo(170), (Pictures{{1, 100, 70}}));
    EXPECT_FALSE(endless.busy(170));
}

TEST(FrameSequencer, settingsChangeBetweenPictures) {
    Sequence sequence([](auto&) {});
    EXPECT_EQ(sequence.upTo(100).size(), 1u);
    DesignSettings settings = heightOf(40);
    sequence.configure(settings, 1000, 120);
    sequence.configure(settings, 1000, 150);  // the same: disturbs nothing
    EXPECT_EQ(sequence.upTo(160), (Pictures{{1, 120, 40}}));
    settings.imageTriggerMode = 1;
    sequence.configure(settings, 1000, 200);
    EXPECT_EQ(sequence.upTo(9999), Pictures{});
    settings.imageTriggerMode = 0;
    sequence.configure(settings, 1000, 500);  // goes on from now, not from long ago
    EXPECT_EQ(sequence.upTo(540), (Pictures{{2, 500, 40}}));
}

}  // namespace
}  // namespace virtualboard::imaging
