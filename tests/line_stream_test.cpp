/// From inputs, belt and settings to lines: worked-out times for each trigger mode, and any settings against
/// a model that looks at every nanosecond that matters.

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "board/imaging/FrameSequencer.h"
#include "board/lines/LineStream.h"

namespace virtualboard {
namespace {

using imaging::Belt;
using imaging::DesignSettings;
using imaging::InputSignal;
using Times = std::vector<BoardTime>;

constexpr BoardTime kMicrosecond = 1000, kDebounce = 112;

/// Collects every edge and cuts frames as an acquisition does.
class Bench : public SignalListener, public FrameCutter {
 public:
    explicit Bench(const DesignSettings& wanted, const Belt& belt = {},
                   const std::map<unsigned, InputSignal>& signals = {})
        : settings(wanted), stream(*this, *this) {
        stream.setBelt(belt, false, 0);
        for (const auto& [input, signal] : signals) play(input, signal);
        stream.configure(settings, 0);
        frames.configure(settings, 1000, 0);
        stream.beginFrames(0);
    }
    void edges(Number signal, bool up, const Pulses& pulses) override {
        const bool input = signal >= kFirstInput && signal < kFirstInput + kInputs;
        if (!pulses.empty())
            (input ? firstInput : firstLine) = std::min(input ? firstInput : firstLine, pulses.first());
        auto& times = seen[{signal, up}];
        for (std::uint64_t i = pulses.begin; i < pulses.end; ++i) times.push_back(pulses.at(i));
    }
    std::uint64_t linesLeft(std::uint64_t line) const override { return frames.linesLeft(line); }
    bool listens() const override { return frames.listens(); }
    void imageTrigger(bool active, BoardTime, std::uint64_t line) override {
        if (!active) return frames.closeGate(line);
        if (!frames.trigger(line)) frames.openGate(line);
    }
    void imageTriggerStands(BoardTime, std::uint64_t line) override { frames.openGate(line); }
    /// Advances, and holds what was told against what was foretold.
    void advance(BoardTime until) {
        const BoardTime inputs = stream.inputNotBefore().value_or(kNever);
        const BoardTime lines = stream.lineNotBefore().value_or(kNever);
        firstInput = firstLine = kNever;
        stream.advance(until);
        ASSERT_GE(firstInput, inputs);
        ASSERT_GE(firstLine, lines);
    }
    void play(unsigned input, const InputSignal& signal) {
        stream.setInput(input, std::make_shared<PlayedLevel>(signal, stream.time()), stream.time());
    }
    const Times& rises(Number signal) { return seen[{signal, true}]; }
    /// Belt positions of the lines so far, in pixels.
    std::vector<std::int64_t> rows() const {
        std::vector<std::int64_t> result;
        for (std::uint64_t line = 0; line < stream.started(); ++line)
            result.push_back(stream.log().find(line)->positionOf(line) >> imaging::kBeltBits);
        return result;
    }

    DesignSettings settings;
    imaging::FrameSequencer frames;
    LineStream stream;
    std::map<std::pair<Number, bool>, Times> seen;
    static constexpr BoardTime kNever = BoardClock::kLatest;
    BoardTime firstInput = kNever, firstLine = kNever;  ///< edges since the last step
};

using Change = std::function<void(DesignSettings&)>;

DesignSettings with(const Change& change) {
    DesignSettings settings;
    change(settings);
    return settings;
}

/// Rising edges at these µs, each 5 µs long.
InputSignal pulsesAt(std::initializer_list<int> microseconds) {
    InputSignal signal;
    for (const int at : microseconds)
        for (const bool high : {true, false})
            signal.edges.push_back({(at + (high ? 0 : 5)) * kMicrosecond, high});
    return signal;
}

Times inMicroseconds(std::initializer_list<double> times, BoardTime later) {
    Times result;
    for (const double time : times) result.push_back(static_cast<BoardTime>(time * kMicrosecond) + later);
    return result;
}

// ---- worked-out times ----

TEST(LineStream, everyTriggerModeHasItsTimes) {
    struct Case {
        const char* what;
        Change change;
        std::initializer_list<double> lines;  // µs, by the end of 1000 µs
        BoardTime later = kClockCycle;
    };
    const auto external = [](Change more) {
        return [more](DesignSettings& s) { s.lineTriggerMode = 1, s.lineSourceA = 3, more(s); };
    };
    const auto frames = [](std::uint32_t mode, Change more) {
        return [=](DesignSettings& s) {
            s.lineTriggerMode = mode, s.lineSourceA = 3, s.imageTriggerMode = 1, s.triggerYLength = 2,
            more(s);
        };
    };
    const Case cases[] = {
        {"by itself", [](auto&) {}, {0, 200, 400, 600, 800}},
        {"another period", [](auto& s) { s.exsyncPeriod = 300; }, {0, 300, 600, 900}},
        {"ExSync off", [](auto& s) { s.exsyncEnable = 0; }, {}},
        {"CC1 at ground", [](auto& s) { s.cc1Select = 0; }, {}},
        {"link in reset", [](auto& s) { s.coreReset = 1; }, {}},
        {"no camera", [](auto& s) { s.pixelClock = 0; }, {}},
        {"the second ExSync",
         [](auto& s) { s.cc1Select = 2, s.exsync2Delay = 50; },
         {50, 250, 450, 650, 850}},
        {"CC1 at an input",
         [](auto& s) { s.cc1Select = kFirstInput + 3; },
         {100, 150, 300, 310, 700, 900},
         0},
        {"and turned round",
         [](auto& s) { s.cc1Select = kFirstInput + 3, s.cc1Invert = 1; },
         {105, 155, 305, 315, 705, 905},
         0},
        {"CC1 turned round", [](auto& s) { s.cc1Invert = 1; }, {19, 219, 419, 619, 819}},
        {"both turned round", [](auto& s) { s.cc1Invert = s.exsyncPolarity = 1; }, {0, 200, 400, 600, 800}},
        {"a slow link",
         [](auto& s) { s.exsyncPeriod = 10, s.tapWidth = 16384 * 8, s.fullMode = 0; },
         {0, 200, 400, 600, 800}},  // a line takes 192.8 µs
        // Input 3 rises at 100, 150, 300, 310, 700 and 900 µs.
        {"from outside", external([](auto&) {}), {100, 150, 300, 700, 900}, kDebounce},
        {"falling edges",
         external([](auto& s) { s.linePolarity = 1; }),
         {105, 155, 305, 705, 905},
         kDebounce},
        {"each pulse of 10 µs exposure",
         external([](auto& s) { s.exsyncExposure = 10; }),
         {100, 150, 300, 310, 700, 900},
         kDebounce},
        {"pulses of 5 µs bounce", external([](auto& s) { s.lineDebouncing = 5.008; }), {}},
        {"every third from the second on",
         external([](auto& s) { s.lineDownscaler = 3, s.linePhase = 2; }),
         {150, 700},
         kDebounce},
        // Input 0, the image trigger, rises at 250 and 620 µs.
        {"its own, in frames", frames(2, [](auto&) {}), {250, 450, 620, 820}, kDebounce + kClockCycle},
        {"from outside, in frames", frames(3, [](auto&) {}), {300, 700}, kDebounce},
        {"in a frame each second one, the first at once",
         frames(3, [](auto& s) { s.lineDownscaler = 2, s.exsyncExposure = 5; }),
         {300, 700},
         kDebounce},
        {"the generator by itself",
         [](auto& s) {
             s.generatorEnable = 1, s.generatorSequence = 25000, s.generatorActiveLines = 2,
             s.generatorFrameLines = 3;
         },
         {0, 200, 600, 800}},
        {"edges start its lines",
         [](auto& s) {
             s.generatorEnable = 1, s.generatorFreeRun = 0, s.generatorValve = 1, s.generatorSequence = 31250;
         },  // 250 µs
         {0, 400, 800}},
        {"edges start its frames",
         [](auto& s) {
             s.generatorEnable = 1, s.generatorFreeRun = 0, s.generatorActiveLines = 2,
             s.generatorFrameLines = 3, s.generatorSequence = 12500;
         },  // 100 µs
         {0, 100, 400, 500, 800, 900}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Bench bench(with(c.change));
        bench.play(3, pulsesAt({100, 150, 300, 310, 700, 900}));
        bench.play(0, pulsesAt({250, 620}));
        for (BoardTime now = 0; now <= 1000 * kMicrosecond; now += 25 * kMicrosecond)
            bench.stream.advance(now);
        EXPECT_EQ(bench.rises(kLineStart), inMicroseconds(c.lines, c.later));
        EXPECT_EQ(bench.rises(kLineEnd).size(), bench.stream.completed());
    }
}

TEST(LineStream, theEncoderCountsStepsAndMakesUpForThoseBackwards) {
    // 1 mm of belt in 1 s and back: forwards 0.5 s, backwards 0.2 s, then forwards.
    Belt belt{.objectPixel = 0.01, .encoderPitch = 0.1};
    belt.profile = {{0, 1}, {0.45, 1}, {0.45, -1}, {0.65, -1}, {0.65, 1}};
    struct Case {
        std::uint32_t filter, lead, compensation;
        std::size_t forward;  // by 0.45 s
        std::uint32_t held;   // by 0.65 s
        std::size_t all;      // by 1.15 s
    };
    const Case cases[] = {
        {1, 0, 1, 4, 2, 7},    // at 0.1, 0.2 ... 0.4 mm; again from 0.45 mm on: 0.5, 0.6, 0.7
        {1, 0, 0, 4, 0, 9},    // 0.3 and 0.4 once more
        {2, 0, 1, 9, 4, 15},   // at 0.025, 0.1, 0.125 ... 0.425 mm
        {3, 0, 1, 17, 8, 29},  // every 0.025 mm; the steps at 0.45 and 0.25 mm are where the belt turns
        {1, 1, 1, 0, 2, 0},    // seen from the other side: 4 back, 2 forth, 5 back
    };
    for (const Case& c : cases) {
        for (const bool byTracks : {false, true}) {
            SCOPED_TRACE(testing::Message() << "x" << c.filter << " lead " << c.lead << " " << byTracks);
            Bench bench(with([&](auto& s) {
                            s.lineTriggerMode = 1, s.encoderMode = c.filter, s.encoderLead = c.lead;
                            s.encoderCompensation = c.compensation;
                        }),
                        belt);
            // A faulty encoder, if hardly, is followed edge by edge.
            if (byTracks) bench.stream.setEncoder({.inputA = 1, .inputB = 2, .missing = 1e-15}, 0);
            const auto at = [&](double seconds) {
                while (!bench.stream.advance(static_cast<BoardTime>(seconds * 1e9))) {
                }
                return bench.rises(kExsync).size();
            };
            EXPECT_EQ(at(0.445), c.forward);
            at(0.655);
            if (c.lead == 0) {
                EXPECT_NEAR(bench.stream.compensation().count(), c.held, c.filter == 3 ? 1 : 0);
            }
            EXPECT_NEAR(at(1.149), c.all, c.filter == 3 ? 1 : 0);
            EXPECT_EQ(bench.rises(kLineStart).size(), bench.rises(kExsync).size());
        }
    }
}

TEST(LineStream, anInputOnCC1ExposesTheCameraAsLongAsItsPulse) {
    Bench bench(with([](auto& s) { s.cc1Select = kFirstInput; }));
    bench.play(
        0,
        {.edges = {{100'000, true}, {130'000, false}, {300'000, true}, {900'000, false}, {950'000, true}}});
    EXPECT_EQ(bench.stream.completeNotBefore(0), 100'000 + 1506);
    bench.stream.advance(1000 * kMicrosecond);
    ASSERT_EQ(bench.stream.started(), 3u);
    EXPECT_EQ(bench.stream.log().find(0)->exposure, 30);
    EXPECT_EQ(bench.stream.log().find(1)->exposure, 200) << "at most a line period";
    EXPECT_EQ(bench.stream.completeNotBefore(3), std::nullopt);
}

TEST(LineStream, theCamerasOwnFrameIsThatOfTheHighestSpeed) {
    // At rest, forwards faster and faster, backwards: a write at any time leaves the frame as long as it is.
    Belt belt{.objectPixel = 0.1};
    belt.profile = {{0, 0}, {0.001, 0}, {0.002, 100}, {0.003, -200}};
    Bench bench({}, belt);
    bench.stream.setCamera({}, 1024, 0);
    for (const BoardTime millisecond : {0, 1, 2, 3}) {
        bench.stream.advance(millisecond * 1000 * kMicrosecond);
        bench.stream.configure(bench.settings, bench.stream.time());
        EXPECT_EQ(bench.stream.linesPerFrame(), 2560u) << millisecond;  // 0.4 pixels a line
    }
}

TEST(LineStream, aLevelThatStoodBeforeOpensAGateAndIsNoEdge) {
    const InputSignal high{.high = true, .edges = {{100 * kMicrosecond, false}, {200 * kMicrosecond, true}}};
    for (const std::uint32_t mode : {1u, 2u}) {
        for (const bool low : {false, true}) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << (low ? ", low active" : ""));
            InputSignal signal = high;
            signal.high = !low;
            for (auto& edge : signal.edges) edge.high = edge.high != low;
            Bench bench(with([&](auto& s) { s.imageTriggerMode = mode, s.imagePolarity = low ? 1 : 0; }), {},
                        {{0, signal}});
            EXPECT_EQ(bench.frames.triggers(), mode - 1);
            bench.stream.advance(150 * kMicrosecond);
            EXPECT_EQ(bench.frames.triggers(), mode - 1);
            bench.stream.advance(300 * kMicrosecond);
            EXPECT_EQ(bench.frames.triggers(), mode);
        }
    }
}

TEST(LineStream, theSceneNeverJumps) {
    Bench bench(with([](auto& s) { s.exsyncPeriod = 100; }), {.speed = 1000});  // a pixel per line
    bench.stream.advance(kMicrosecond * 1000);
    EXPECT_EQ(bench.rows(), (std::vector<std::int64_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    bench.stream.setBelt({.speed = -2000}, true, bench.stream.time());
    bench.stream.advance(kMicrosecond * 1350);
    const auto rows = bench.rows();
    // 10 pixels on, then twice as fast backwards, from the moment of the change.
    EXPECT_EQ((std::vector<std::int64_t>(rows.begin() + 10, rows.end())),
              (std::vector<std::int64_t>{9, 7, 5, 3}));
    bench.stream.setBelt({.speed = 0}, true, bench.stream.time());
    bench.stream.advance(kMicrosecond * 1650);
    EXPECT_EQ(bench.rows().back(), bench.rows()[bench.rows().size() - 2]) << "a belt at rest shows one line";
}

TEST(LineStream, aLongTimeOfAnySteadySourceCostsNothing) {
    const BoardTime year = BoardTime{31'536'000} * 1'000'000'000;
    class Counter : public Bench {
     public:
        using Bench::Bench;
        void edges(Number signal, bool up, const Pulses& pulses) override {
            if (up) counts[signal] += pulses.count();
        }
        std::map<Number, std::uint64_t> counts;
    };
    for (const std::uint32_t encoder : {0u, 1u, 3u}) {
        for (const std::uint32_t mode : {0u, 1u}) {
            Counter bench(with([&](auto& s) { s.lineTriggerMode = mode, s.encoderMode = encoder; }));
            ASSERT_TRUE(bench.stream.advance(year)) << mode << encoder;
            EXPECT_NEAR(bench.counts[kLineStart], 31'536'000 * 5e3 * (mode * encoder == 3 ? 4 : 1), 1);
            EXPECT_EQ(bench.counts[kLineStart], bench.counts[kExsync]);
        }
    }
    Counter bench(
        with([](auto& s) { s.lineTriggerMode = 1, s.exsyncExposure = 0.512, s.lineDownscaler = 10; }));
    bench.play(1, {.trains = {{.first = 0, .period = 1000, .width = 500, .count = 0}}});  // a MHz
    bench.play(0, {.trains = {{.first = 0, .period = 200, .width = 100, .count = 0}}});   // it only bounces
    bench.stream.watchInputs(3, 0);
    ASSERT_TRUE(bench.stream.advance(year));
    EXPECT_NEAR(bench.counts[kFirstInput + 1], 31'536'000 * 1e6, 1);
    EXPECT_EQ(bench.counts[kFirstInput], 0u);
    EXPECT_NEAR(bench.counts[kLineStart], 31'536'000 * 1e5, 1);
}

TEST(LineStream, looksAheadAsFarAsItCan) {
    Belt swing{.objectPixel = 0.01, .encoderPitch = 0.1};
    swing.profile = {{0, 0.01}, {0.5, 0.01}, {0.5, -0.01}, {1, -0.01}};
    swing.profilePeriod = 1;
    Bench bench(DesignSettings{}, swing);
    bench.stream.setEncoder({.inputA = 1, .inputB = 2}, 0);
    bench.stream.watchInputs(1u << 2, 0);  // track B has its edges where this belt never comes
    EXPECT_GT(bench.stream.inputNotBefore(), BoardTime{100} * 1'000'000'000);
    bench.stream.setBelt({.speed = 0}, true, 0);
    EXPECT_EQ(bench.stream.inputNotBefore(), std::nullopt);
}

TEST(LineStream, refusesABeltAndAnInputThatCannotBe) {
    Bench bench({});
    for (const Belt& belt :
         {Belt{.speed = 1e300}, Belt{.objectPixel = 0}, Belt{.encoderPitch = std::nan("")},
          Belt{.profile = {{1, 1}, {0.5, 1}}}, Belt{.profile = {{0, 1}}, .profilePeriod = 1e-9}})
        EXPECT_THROW(bench.stream.setBelt(belt, true, 0), std::invalid_argument);
    EXPECT_THROW(bench.stream.setEncoder({.inputA = 12}, 0), std::invalid_argument);
    EXPECT_THROW(bench.stream.setEncoder({.jitter = 0.2}, 0), std::invalid_argument);
    for (const InputSignal& signal :
         {InputSignal{.edges = {{5, true}, {5, false}}}, InputSignal{.edges = {{-1, true}}},
          InputSignal{.trains = {{.period = 10, .width = 10}}}, InputSignal{.trains = {{.period = 10}}}})
        EXPECT_THROW(bench.play(0, signal), std::invalid_argument);
    EXPECT_EQ(bench.stream.travel().belt().speed, 500);
}

// ---- any settings against a model that takes one clock cycle after the other ----

/// What the lines are by a board that does nothing but look at every cycle of 8 ns.
struct Cycles {
    const DesignSettings& s;
    const std::vector<bool>& line;    // levels of the line trigger's input, cycle by cycle
    const std::vector<bool>& image;   // of the image trigger's
    const std::vector<bool>& camera;  // and of the one that CC1 may lead to the camera
    Times exsync{}, lines{}, begun{};
    std::uint64_t lost = 0;

    static BoardTime cycles(double microseconds) { return toCycles(microseconds) / kClockCycle; }

    void run() {
        Filter lineFilter{line[0]}, imageFilter{image[0]};
        BoardTime next = 1, busy = 0,
                  readout = 0;  // ExSync's own pulse; until when it and the camera are busy
        std::uint64_t skip = s.linePhase - 1, left = 0;
        const bool gated = s.lineTriggerMode >= 2, outside = s.lineTriggerMode % 2 == 1;
        const BoardTime perLine = (s.tapWidth / 8 * 1000 + 84) / 85;  // ns
        for (BoardTime now = 1; now < static_cast<BoardTime>(line.size()); ++now) {
            bool trigger = false;
            if (outside) {
                trigger = lineFilter.rises(line, now, cycles(s.lineDebouncing));
            } else if (now == next && (!gated || left > 0)) {
                trigger = true;
                next = now + cycles(s.exsyncPeriod);
            }
            if (trigger && (!gated || left > 0)) {
                if (outside && skip > 0) {
                    --skip;
                } else {
                    if (outside) skip = s.lineDownscaler - 1;
                    if (!outside || now >= busy) pulse(now, busy, readout, perLine, left);
                }
            }
            if (cameraOnInput() && camera[now] != camera[now - 1] && camera[now] != (s.cc1Invert != 0))
                start(now, readout, perLine, left);
            if (!imageFilter.rises(image, now, cycles(s.imageDebouncing)) || left > 0 ||
                s.imageTriggerMode != 1)
                continue;
            begun.push_back(now * kClockCycle);
            // A frame begins at a row pair.
            left = s.triggerYLength + s.imageTriggerDelay + (lines.size() + s.imageTriggerDelay) % 2;
            if (!gated) continue;
            next = now + 1;
            skip = s.linePhase - 1;
        }
    }
    void pulse(BoardTime now, BoardTime& busy, BoardTime& readout, BoardTime perLine, std::uint64_t& left) {
        exsync.push_back(now * kClockCycle);
        busy = now + cycles(s.exsyncExposure);
        if (!cameraOnInput()) start(now, readout, perLine, left);
    }
    bool cameraOnInput() const { return s.cc1Select >= kFirstInput; }
    void start(BoardTime now, BoardTime& readout, BoardTime perLine, std::uint64_t& left) {
        if (now * kClockCycle < readout) {
            ++lost;
            return;
        }
        readout = now * kClockCycle + perLine;
        lines.push_back(now * kClockCycle);
        if (left > 0) --left;
    }
    struct Filter {
        bool level;
        BoardTime since = 0;
        bool rises(const std::vector<bool>& raw, BoardTime now, BoardTime debounce) {
            const bool lasts = raw[now - 1] != level && now - since >= debounce;
            if (lasts) level = raw[now - 1];
            if (raw[now] != raw[now - 1]) since = now;
            return lasts && level;
        }
    };
};

InputSignal playable(const std::vector<bool>& levels) {
    InputSignal signal{.high = levels[0]};
    for (std::size_t i = 1; i < levels.size(); ++i)
        if (levels[i] != levels[i - 1])
            signal.edges.push_back({static_cast<BoardTime>(i) * kClockCycle, levels[i]});
    return signal;
}

TEST(LineStream, isWhatAModelOfEveryCycleIs) {
    // The same in every run; --gtest_shuffle brings other ones, --gtest_random_seed one of them again.
    std::mt19937 random(12 + testing::UnitTest::GetInstance()->random_seed());
    const auto below = [&](std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); };
    for (int turn = 0; turn < 100; ++turn) {
        SCOPED_TRACE(turn);
        const auto levels = [&](std::uint32_t shortest, std::uint32_t longest) {
            std::vector<bool> result;
            bool level = false;
            while (result.size() < 20000) {
                result.insert(result.end(), shortest + below(longest), level);
                level = !level;
            }
            result.resize(20000);
            return result;
        };
        // Each may be any input, and one input more than one of them.
        const std::uint32_t lineInput = below(kInputs), imageInput = below(kInputs);
        const std::uint32_t cameraInput = below(kInputs);
        std::map<unsigned, std::vector<bool>> inputs;
        inputs.emplace(lineInput, levels(1, 1 + below(200)));
        inputs.emplace(imageInput, levels(1, 1 + below(2000)));
        inputs.emplace(cameraInput, levels(1, 1 + below(1000)));
        const DesignSettings settings = with([&](auto& s) {
            s.lineTriggerMode = below(4), s.lineSourceA = lineInput, s.imageSelect = imageInput;
            s.lineDebouncing = 0.008 * (1 + below(40));
            if (s.lineTriggerMode < 2 && below(3) == 0)
                s.cc1Select = kFirstInput + cameraInput, s.cc1Invert = below(2);
            s.lineDownscaler = 1 + below(4), s.linePhase = 1 + below(4);
            s.exsyncPeriod = 0.512 + 0.008 * below(400), s.exsyncExposure = 0.512 + 0.008 * below(100);
            s.tapWidth = 8 * (1 + below(300));
            s.imageTriggerMode = s.lineTriggerMode >= 2 ? 1 : below(2);
            s.imageDebouncing = 0.008 * (1 + below(40)), s.imageTriggerDelay = below(3);
            s.imageHeight = s.yLength = s.triggerYLength = 1 + below(20);
        });
        Cycles model{settings, inputs[lineInput], inputs[imageInput], inputs[cameraInput]};
        model.run();
        // Played from the beginning on, so that the encoder reaches none of them.
        std::map<unsigned, InputSignal> signals;
        for (const auto& [input, raw] : inputs) signals[input] = playable(raw);
        Bench bench(settings, {}, signals);
        bench.stream.watchInputs(1u << lineInput, 0);
        const BoardTime end = 19999 * kClockCycle;
        for (BoardTime now = 0; now < end; now += 1 + below(20000)) bench.advance(now);
        bench.advance(end);
        ASSERT_EQ(bench.rises(kExsync), model.exsync);
        ASSERT_EQ(bench.rises(kLineStart), model.lines);
        ASSERT_EQ(bench.stream.lostLines(), model.lost);
        // Analyzer 0 less analyzer 1, by the default wiring.
        if (!model.cameraOnInput()) {
            ASSERT_EQ(bench.rises(kExsync).size() - bench.rises(kLineStart).size(), bench.stream.lostLines());
        }
        ASSERT_EQ(bench.frames.triggers(), settings.imageTriggerMode == 1 ? model.begun.size() : 0);
        // Pictures take the lines one after the other, whole ones only, and their times are the lines'.
        std::uint64_t next = 0, number = 0;
        while (const auto picture = bench.frames.next(bench.stream.completed())) {
            ASSERT_EQ(picture->number, number++);
            ASSERT_GE(picture->firstLine, next);
            next = picture->firstLine + picture->lines;
            ASSERT_LE(next, bench.stream.completed());
            const LineRun* run = bench.stream.log().find(picture->firstLine);
            ASSERT_EQ(run->startOf(picture->firstLine), model.lines[picture->firstLine]);
            if (picture->trigger > 0) {
                ASSERT_GE(model.lines[picture->firstLine], model.begun[picture->trigger - 1]);
            }
        }
    }
}

}  // namespace
}  // namespace virtualboard
