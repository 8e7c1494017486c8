/// Windows and tap geometries, and every way to render against one that takes a pixel at a time.

#include <algorithm>
#include <random>

#include "board/imaging/PatternGenerator.h"
#include "tests/ImagingFixture.h"

namespace virtualboard::imaging {
namespace {

// ---- tap geometry and window ----

// The window's line as sensor pixel numbers; -1 for black.
std::vector<int> windowPixels(const DesignSettings& settings, const CameraTraits& camera) {
    const LinePlan plan = planLine(settings, camera);
    Bytes sensor(plan.count), line(plan.width);
    for (std::uint32_t i = 0; i < plan.count; ++i) sensor[i] = static_cast<std::uint8_t>(plan.first + i + 1);
    if (plan.inOrder)
        line = sensor;
    else
        plan.rearrangement.apply(sensor.data(), line.data());
    std::vector<int> result;
    for (const int pixel : line) result.push_back(pixel - 1);
    return result;
}

std::vector<int> counting(int first, int step, int count) {
    std::vector<int> result;
    for (int i = 0; i < count; ++i) result.push_back(first + step * i);
    return result;
}

TEST(TapSorter, windowsFromBothVantagePoints) {
    struct Geometry {
        std::uint32_t taps, tapCount, dummyTaps, fullMode;
        std::array<std::uint32_t, 10> mirrorFromLeft;
        TapReadout readout;
    };
    constexpr bool F = false, T = true;
    const Geometry geometries[] = {
        {1, 1, 0, 0, {}, {1, 8, {}}},    {1, 1, 0, 1, {}, {1, 10, {}}},
        {4, 5, 1, 0, {}, {4, 2, {}}},    {4, 5, 1, 0, {0, 0, 1, 1, 0, 0, 0, 1, 1, 0}, {4, 2, {F, F, T, T}}},
        {5, 5, 0, 1, {}, {5, 2, {}}},    {8, 10, 1, 0, {}, {8, 1, {}}},
        {10, 10, 0, 1, {}, {10, 1, {}}},
    };
    for (const auto& g : geometries) {
        for (const bool physical : {false, true}) {
            DesignSettings settings = windowOf(24, 4);
            CameraTraits camera;
            camera.sensorWidth = 83;  // some taps leave three pixels out
            if (physical) camera.readout = g.readout;
            settings.xOffset = 8;
            settings.fullMode = g.fullMode;
            settings.tapWidth = 83 / g.taps;
            settings.tapCount = g.tapCount;
            settings.dummyTaps = g.dummyTaps;
            settings.tapMirror = g.mirrorFromLeft;
            EXPECT_EQ(windowPixels(settings, camera), counting(8, 1, 24)) << g.taps << physical;

            settings.translateVantagePoint = 1;
            for (std::uint32_t tap = 0; tap < g.taps; ++tap) {
                settings.tapOrder[tap] = g.taps - 1 - tap;
                settings.tapMirror[tap] ^= 1;
            }
            EXPECT_EQ(windowPixels(settings, camera), counting(74, -1, 24)) << g.taps << physical;
        }
    }
}

TEST(TapSorter, wrongGeometryScramblesTheLine) {
    // A camera with one tap of eight pixels per clock, sorted as if its eight lanes were taps of four pixels.
    DesignSettings settings = windowOf(8, 4);
    settings.tapCount = 10;
    settings.dummyTaps = 1;
    settings.tapWidth = 4;
    CameraTraits camera;
    camera.sensorWidth = 32;
    camera.readout = TapReadout{};
    EXPECT_EQ(windowPixels(settings, camera), (std::vector{0, 8, 16, 24, 1, 9, 17, 25}));
    // Ten taps on a link that was told of eight lanes: the last two never arrive.
    settings = windowOf(40, 4);
    settings.tapCount = 10, settings.tapWidth = 4;
    settings.tapOrder = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    camera = {.sensorWidth = 40, .readout = TapReadout{10, 1, {}}};
    std::vector<int> expected = counting(0, 1, 32);
    expected.resize(40, -1);
    EXPECT_EQ(windowPixels(settings, camera), expected);
}

TEST(TapSorter, isBlackBeyondTheLine) {
    DesignSettings settings = windowOf(8, 4);
    settings.xOffset = 8;
    settings.tapWidth = 12;
    EXPECT_EQ(windowPixels(settings, {}), (std::vector{8, 9, 10, 11, -1, -1, -1, -1}));
    settings.tapCount = 5;  // the last one a dummy
    settings.dummyTaps = 1;
    settings.tapWidth = 3;
    EXPECT_EQ(windowPixels(settings, {}), (std::vector{8, 9, 10, 11, -1, -1, -1, -1}));
    settings.tapWidth = 0;
    EXPECT_EQ(windowPixels(settings, {}), counting(-1, 0, 8));
    settings.tapWidth = settings.tapCount = settings.xOffset = 0xFFFFFFFF;  // raw writes must not hurt
    EXPECT_EQ(windowPixels(settings, {}), counting(-1, 0, 8));
}

// ---- every path against one that takes a pixel at a time ----

// The picture as the stages are defined, from the source's rows before exposure.
Bytes plainPicture(const DesignSettings& s, const LineSource& source, float exposure,
                   std::uint64_t firstRow) {
    const int width = static_cast<int>(s.xLength), rows = static_cast<int>(s.imageHeight);
    const LinePlan plan = planLine(s, {});
    const std::uint16_t gains[] = {whiteBalanceGain(s.blueGain), whiteBalanceGain(s.greenGain),
                                   whiteBalanceGain(s.redGain)};
    std::vector<std::vector<int>> raw;
    for (int y = 0; y < rows; ++y) {
        const Bytes sensor = rawRow(source, firstRow + static_cast<unsigned>(y), plan.first, plan.count);
        auto& line = raw.emplace_back();
        for (std::size_t x = 0; x < s.xLength; ++x) {
            const std::size_t from = plan.inOrder ? x : plan.rearrangement.from()[x];
            const auto colour = bayerColour(s.whiteBalancePhase, plan.first + from, static_cast<unsigned>(y));
            line.push_back(0);
            if (from == Rearrangement::kBlack) continue;
            const int exposed =
                static_cast<int>(std::min(std::nearbyint(float{1} * sensor[from] * exposure), 255.0F));
            line.back() = std::min(exposed * gains[static_cast<int>(colour)] >> 10, 255);
        }
    }
    const auto inside = [](int i, int size) { return size == 1 ? 0 : i < 0 ? 1 : i == size ? size - 2 : i; };
    const auto at = [&](int x, int y) { return raw[inside(y, rows)][inside(x, width)]; };
    const auto mean2 = [](int a, int b) { return (a + b + 1) / 2; };
    Bytes out;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < width; ++x) {
            const int left = at(x - 1, y), right = at(x + 1, y), up = at(x, y - 1), down = at(x, y + 1);
            const auto colour = [&](int i) {
                return bayerColour(interpolationPhase(s), static_cast<unsigned>(i), static_cast<unsigned>(y));
            };
            const bool redRow = (colour(0) == Colour::Green ? colour(1) : colour(0)) == Colour::Red;
            int own = mean2(left, right), green = at(x, y), other = mean2(up, down);
            if (colour(x) != Colour::Green) {
                const int across = std::abs(left - right), along = std::abs(up - down);
                green = s.fastDeBayer != 0 || across == along ? (left + right + up + down + 2) / 4
                        : across < along                      ? own
                                                              : other;
                own = at(x, y);
                other = (at(x - 1, y - 1) + at(x + 1, y - 1) + at(x - 1, y + 1) + at(x + 1, y + 1) + 2) / 4;
            }
            const int blue = redRow ? other : own, red = redRow ? own : other;
            out.insert(out.end(), {s.tables[0][blue], s.tables[1][green], s.tables[2][red]});
        }
    }
    return out;
}

TEST(FrameRenderer, everyInstructionSetGivesThePlainPicture) {
    std::mt19937 random(20);
    const auto below = [&](std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); };
    Image noise(300, 40);
    for (auto& byte : noise.bytes()) byte = static_cast<std::uint8_t>(random() >> below(8));
    const auto scene = std::make_shared<SensorScene>(noise, CameraTraits{});
    Crew crew(3);
    for (int turn = 0; turn < 150; ++turn) {
        auto s = windowOf(turn == 0 ? 4104 : 1 + below(200), turn == 0 ? 100 : 1 + below(6));
        s.generatorEnable = below(4) == 0;
        s.fastDeBayer = below(2);
        s.deBayerPhase = below(4), s.deBayerMode = below(4), s.whiteBalancePhase = below(4);
        for (double* gain : {&s.redGain, &s.greenGain, &s.blueGain})
            *gain = below(2) == 0 ? 1 : 4e-4 * below(10000);
        s.exsyncExposure = below(2) == 0 ? 19 : 0.01 * below(10000);
        for (auto& table : s.tables) {
            if (below(3) == 0) continue;
            for (auto& entry : table) entry = static_cast<std::uint8_t>(random());
        }
        s.translateVantagePoint = below(2), s.tapMirror[0] = below(2), s.xOffset = below(40);
        if (below(2) == 0) {
            s.tapCount = 10, s.dummyTaps = below(2), s.tapWidth = 1 + below(1 + s.xLength / 4);
            std::shuffle(s.tapOrder.begin(), s.tapOrder.begin() + 8, random);
            for (auto& mirror : s.tapMirror) mirror = below(2);
        } else {
            s.tapWidth += s.xOffset - below(2) * below(s.xLength);
        }
        const std::uint64_t firstLine = below(100);
        const float exposure = s.generatorEnable != 0 ? 1 : exposureGain(s.exsyncExposure / 19);
        const PatternGenerator generator(s);
        const LineScanCamera camera(scene, Motion{});
        Motion motion;
        motion.runs.front().gain = exposure;
        const Bytes expected =
            plainPicture(s, s.generatorEnable != 0 ? static_cast<const LineSource&>(generator) : camera,
                         exposure, firstLine);
        for (const char* const set : instructionSets()) {
            useInstructionSet(set);
            FrameRenderer renderer(scene, &crew);
            renderer.configure(s);
            // A row that does not fit is left out.
            Bytes picture(expected.size() + renderer.rowBytes() - 1, 77);
            ASSERT_EQ(renderer.render({0, firstLine, 9999, 9999}, motion, picture), s.imageHeight);
            const auto end = picture.begin() + static_cast<std::ptrdiff_t>(expected.size());
            ASSERT_TRUE(std::equal(picture.begin(), end, expected.begin())) << set << " turn " << turn;
            ASSERT_TRUE(std::all_of(end, picture.end(), [](auto byte) { return byte == 77; })) << set;
        }
    }
    useInstructionSet(instructionSets().front());
}

}  // namespace
}  // namespace virtualboard::imaging
