// The virtual board's image path against pixels, lines and times worked out by hand.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "board/imaging/FrameRenderer.h"
#include "board/imaging/PatternGenerator.h"
#include "board/imaging/Scene.h"
#include "pictures/Png.h"
#include "pictures/TerminalView.h"

namespace virtualboard::imaging {

void PrintTo(const Pixel& pixel, std::ostream* out) {
    *out << "(b " << +pixel.blue << ", g " << +pixel.green << ", r " << +pixel.red << ")";
}

namespace {

using Change = std::function<void(DesignSettings&)>;
using Bytes = std::vector<std::uint8_t>;

// Settings of a small window.
DesignSettings windowOf(std::uint32_t width, std::uint32_t height) {
    DesignSettings settings;
    settings.tapWidth = settings.xLength = width;
    settings.yLength = settings.triggerYLength = settings.imageHeight = height;
    return settings;
}

// The sorter's settings for one tap, or for eight, looked at from the right.
void lookFromTheRight(DesignSettings& settings, std::uint32_t sensorWidth, std::uint32_t taps = 1) {
    settings.tapWidth = sensorWidth / taps;
    settings.tapCount = taps == 1 ? 1 : 10;
    settings.dummyTaps = taps != 1;
    settings.translateVantagePoint = 1;
    for (std::uint32_t tap = 0; tap < taps; ++tap) {
        settings.tapOrder[tap] = taps - 1 - tap;
        settings.tapMirror[tap] = 1;
    }
    settings.deBayerPhase ^= 1 ^ (sensorWidth & 1);
    settings.deBayerMode = phaseOfMode(settings.deBayerPhase);  // the coding is its own inverse
}

Image take(const DesignSettings& settings, const Image& scene = testChart(), const CameraTraits& camera = {},
           const Belt& belt = {}, std::uint64_t firstLine = 0) {
    FrameRenderer renderer(std::make_shared<SensorScene>(scene, camera));
    renderer.configure(settings);
    Image picture(renderer.width(), settings.yLength, {1, 2, 3});
    const double step = belt.speed * settings.exsyncPeriod * 1e-6 / belt.objectPixel;
    const double exposure = exposureTime(settings, settings.exsyncPeriod) / camera.neutralExposure;
    const Motion motion{{SceneRun{.step = Motion::stepOf(step), .gain = exposureGain(exposure)}},
                        rowsPerTrigger(settings)};
    EXPECT_EQ(
        renderer.render({0, firstLine, settings.imageHeight, settings.yLength}, motion, picture.bytes()),
        picture.height);
    return picture;
}

// A scene whose pixel (x, y) is grey (10 x + y).
Image numberedScene(std::uint32_t width, std::uint32_t height) {
    Image scene(width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto value = static_cast<std::uint8_t>(10 * x + y);
            scene.at(x, y) = {value, value, value};
        }
    }
    return scene;
}

Bytes rawRow(const LineSource& source, std::uint64_t row, std::uint32_t first, std::size_t count) {
    Bytes line(count, 99);
    source.readRow(row, first, line);
    return line;
}

// ---- pattern generator ----

TEST(PatternGenerator, countersModuloTheirDivisors) {
    struct Case {
        std::uint32_t enableX, yDivisor, frameDivisor, offset;
        std::uint64_t row;
        Bytes expected;
    };
    // Frames of 300 lines: row 602 is line 2 of frame 2, row 299 is line 299 of frame 0.
    const Case cases[] = {
        {1, 1, 1, 0, 602, {6, 7, 8, 9}},          // horizontal, still
        {0, 256, 1, 0, 602, {2, 2, 2, 2}},        // vertical
        {0, 256, 1, 0, 299, {43, 43, 43, 43}},    // 299 mod 256
        {1, 256, 1, 0, 602, {8, 9, 10, 11}},      // diagonal
        {1, 256, 256, 0, 602, {10, 11, 12, 13}},  // rolled by two frames
        {1, 1, 1, 248, 0, {254, 255, 0, 1}},      // offset, beyond 255
        {1, 0, 0, 0, 602, {6, 7, 8, 9}},          // a divisor of 0 counts as 1
    };
    for (const auto& c : cases) {
        DesignSettings settings;
        settings.generatorActiveLines = 300;
        settings.generatorEnableX = c.enableX;
        settings.generatorYDivisor = c.yDivisor;
        settings.generatorFrameDivisor = c.frameDivisor;
        settings.generatorOffset = c.offset;
        EXPECT_EQ(rawRow(PatternGenerator(settings), c.row, 6, 4), c.expected) << "row " << c.row;
    }
}

TEST(PatternGenerator, isBlackBehindItsLine) {
    DesignSettings settings;
    settings.generatorActiveWords = 2;
    settings.generatorOffset = 100;
    EXPECT_EQ(rawRow(PatternGenerator(settings), 0, 14, 4), (Bytes{114, 115, 0, 0}));
    EXPECT_EQ(rawRow(PatternGenerator(settings), 0, 20, 2), (Bytes{0, 0}));
}

// ---- camera ----

TEST(LineScanCamera, samplesTheBeltAtTheLinePeriod) {
    const auto scene = std::make_shared<SensorScene>(numberedScene(4, 6), CameraTraits{});
    struct Case {
        double step;
        std::uint32_t rowsPerExposure;
        std::uint64_t row;
        std::uint8_t first;  // grey of pixel 0 = scene row
    };
    const Case cases[] = {{1, 1, 5, 5}, {1, 1, 7, 1}, {2, 1, 2, 4}, {0.5, 1, 3, 1}, {0, 1, 9, 0},
                          {2, 2, 4, 4}, {2, 2, 5, 5}, {1, 2, 5, 3}, {-1, 1, 2, 4}};
    for (const auto& c : cases) {
        const LineScanCamera camera(scene, {{SceneRun{.step = Motion::stepOf(c.step)}}, c.rowsPerExposure});
        EXPECT_EQ(rawRow(camera, c.row, 0, 1)[0], c.first) << c.step << " row " << c.row;
    }
    // The scene repeats across the belt, the sensor ends.
    CameraTraits narrow;
    narrow.sensorWidth = 7;
    const LineScanCamera camera(std::make_shared<SensorScene>(numberedScene(4, 6), narrow), Motion{});
    EXPECT_EQ(rawRow(camera, 1, 3, 6), (Bytes{31, 1, 11, 21, 0, 0}));
}

TEST(LineScanCamera, exposureScalesAndClips) {
    const Image flat(2, 2, {30, 100, 200});
    struct Case {
        Change change;
        Pixel expected;
    };
    const Case cases[] = {
        {[](auto&) {}, {30, 100, 200}},
        {[](auto& s) { s.exsyncExposure = 38; }, {60, 200, 255}},
        {[](auto& s) { s.exsyncExposure = 9.5; }, {15, 50, 100}},
        {[](auto& s) { s.exsyncExposure = 0.5; }, {1, 3, 5}},            // 0.8, 2.6, 5.3
        {[](auto& s) { s.exsyncExposure = 19.11875; }, {30, 101, 201}},  // 30.2, 100.6, 201.3
        // Never longer than the line, and the rest of the line when the camera's input is inverted.
        {[](auto& s) { s.exsyncExposure = 38, s.exsyncPeriod = 19; }, {30, 100, 200}},
        {[](auto& s) { s.exsyncPeriod = 38, s.exsyncExposure = 28.5, s.exsyncPolarity = 1; }, {15, 50, 100}},
        {[](auto& s) { s.exsyncPolarity = s.cc1Invert = 1; }, {30, 100, 200}},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        auto settings = windowOf(8, 4);
        cases[i].change(settings);
        EXPECT_EQ(take(settings, flat).at(3, 2), cases[i].expected) << "case " << i;
    }
}

// ---- Bayer pattern ----

TEST(Bayer, phasesNameTheirFirstTwoPixels) {
    const char* const expected[] = {"GBRG", "BGGR", "RGGB", "GRBG"};  // rows 0 and 1
    for (std::uint32_t phase = 0; phase < 4; ++phase) {
        std::string pattern;
        for (unsigned i = 0; i < 4; ++i) pattern += "BGR"[static_cast<int>(bayerColour(phase, i % 2, i / 2))];
        EXPECT_EQ(pattern, expected[phase]);
    }
}

TEST(DeBayer, everyPhaseGivesBackAFlatColour) {
    const Pixel colour{20, 100, 220};
    const Image flat(8, 8, colour);
    for (std::uint32_t phase = 0; phase < 4; ++phase) {
        for (const std::uint32_t fast : {0u, 1u}) {
            CameraTraits camera;
            camera.phase = phase;
            auto settings = windowOf(8, 6);
            settings.fastDeBayer = fast;
            settings.deBayerPhase = phase;
            settings.deBayerMode = phaseOfMode(phase);
            const Image right = take(settings, flat, camera);
            EXPECT_TRUE(std::ranges::all_of(right.pixels, [&](Pixel p) { return p == colour; })) << phase;
            // Shifted by one row and one column, red and blue change places.
            settings.deBayerPhase = phase ^ 3;
            settings.deBayerMode = phaseOfMode(phase ^ 3);
            const Image wrong = take(settings, flat, camera);
            EXPECT_TRUE(std::ranges::all_of(wrong.pixels, [&](Pixel p) {
                return p == Pixel{220, 100, 20};
            })) << phase;
        }
    }
}

// R G R G / G B G B / R G R G / G B G B as numbers:
//  10 20 30 40 /  51 61 71 81 / 93 103 113 125 / 130 140 150 160
TEST(DeBayer, interpolatesByHand) {
    Image scene(4, 4);
    const std::uint8_t values[] = {10, 20, 30, 40, 51, 61, 71, 81, 93, 103, 113, 125, 130, 140, 150, 160};
    for (std::size_t i = 0; i < 16; ++i) scene.pixels[i] = {values[i], values[i], values[i]};
    auto settings = windowOf(4, 4);
    settings.fastDeBayer = 1;
    const Image plain = take(settings, scene);
    struct Case {
        std::uint32_t x, y;
        Pixel expected;
    };
    const Case cases[] = {
        {2, 2, {(61 + 81 + 140 + 160 + 2) / 4, (103 + 125 + 71 + 150 + 2) / 4, 113}},  // a red pixel
        {1, 1, {61, (51 + 71 + 20 + 103 + 2) / 4, (10 + 30 + 93 + 113 + 2) / 4}},      // a blue pixel
        {1, 2, {(61 + 140 + 1) / 2, 103, (93 + 113 + 1) / 2}},                         // green between reds
        {2, 1, {(61 + 81 + 1) / 2, 71, (30 + 113 + 1) / 2}},                           // green between blues
        {0, 0, {61, (20 + 20 + 51 + 51 + 2) / 4, 10}},  // corners see inner pixels
        {3, 3, {160, (150 + 150 + 125 + 125 + 2) / 4, 113}},
    };
    for (const auto& c : cases) EXPECT_EQ(plain.at(c.x, c.y), c.expected) << c.x << ", " << c.y;

    // The enhanced one differs only in green, by the smaller difference: 103 and 125 against 71 and 150.
    settings.fastDeBayer = 0;
    const Image enhanced = take(settings, scene);
    EXPECT_EQ(enhanced.at(2, 2), (Pixel{111, (103 + 125 + 1) / 2, 113}));
    EXPECT_EQ(enhanced.at(1, 1), (Pixel{61, (51 + 71 + 1) / 2, 62}));
    EXPECT_EQ(enhanced.at(0, 0), (Pixel{61, 36, 10}));  // equal differences: the mean of all four
    EXPECT_EQ(enhanced.at(1, 2), plain.at(1, 2));
}

// ---- white balance, tables ----

TEST(WhiteBalance, scalesItsColourSeenFromBothSides) {
    const Image flat(16, 4, {40, 100, 200});
    struct Case {
        double blue, green, red;
        Pixel expected;
    };
    const Case cases[] = {
        {1, 1, 0.5, {40, 100, 100}},
        {2, 1, 1, {80, 100, 200}},
        {1, 1.5, 1, {40, 150, 200}},
        {0, 3.9990234375, 1.25, {0, 255, 250}},
        {1, 1, 1.00546875, {40, 100, 201}},       // 1029.6 / 1024, rounded
        {1.0009765625, 1, 1.01, {40, 100, 201}},  // floor(40 x 1025 / 1024), floor(200 x 1034 / 1024)
    };
    for (const auto& c : cases) {
        for (const auto& [sensorWidth, taps] : {std::pair{0u, 1u}, {16u, 1u}, {17u, 1u}, {65u, 8u}}) {
            auto settings = windowOf(8, 4);
            settings.blueGain = c.blue;
            settings.greenGain = c.green;
            settings.redGain = c.red;
            if (sensorWidth != 0) lookFromTheRight(settings, sensorWidth, taps);
            const Image picture = take(settings, flat);
            EXPECT_TRUE(std::ranges::all_of(picture.pixels, [&](Pixel p) { return p == c.expected; }))
                << ::testing::PrintToString(c.expected) << ::testing::PrintToString(picture.at(0, 0))
                << sensorWidth;
        }
    }
}

TEST(WhiteBalance, picturesMayBeginAtAnyRowOfTheStream) {
    auto settings = windowOf(8, 4);
    settings.generatorEnable = 1;
    settings.redGain = 2;
    const Image picture = take(settings);
    settings.generatorOffset = ~0U;  // makes good for the row
    EXPECT_EQ(take(settings, testChart(), {}, {}, 1).pixels, picture.pixels);
}

TEST(Settings, tableEntriesAreClippedAndEverythingIsRead) {
    struct Design : ValueReader {
        mutable std::vector<std::string> names;
        std::uint32_t u32(std::string_view name) const override { return names.emplace_back(name), 7; }
        double real(std::string_view name) const override { return names.emplace_back(name), 2.5; }
        void field(std::string_view name, std::span<std::uint32_t> out) const override {
            names.emplace_back(name);
            for (std::uint32_t i = 0; i < out.size(); ++i) out[i] = i * 3;
        }
    } design;
    const DesignSettings settings = readSettings(design);
    EXPECT_EQ(settings.tables[2][84], 252);
    EXPECT_EQ(settings.tables[2][86], 255);
    EXPECT_EQ(settings.tapOrder[9], 27u);
    EXPECT_EQ(settings.exsyncExposure, 2.5);
    std::ranges::sort(design.names);
    EXPECT_EQ(std::ranges::adjacent_find(design.names), design.names.end());
    EXPECT_TRUE(
        std::ranges::all_of(design.names, [](auto& name) { return name.starts_with("Device1_Process"); }));
}

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

// ---- pictures in files and on the terminal ----

TEST(Scene, resizeAveragesAndRepeats) {
    Image scene(2, 2);
    scene.pixels = {{0, 10, 20}, {10, 20, 30}, {20, 30, 40}, {31, 41, 51}};
    EXPECT_EQ(resize(scene, 1, 1).at(0, 0), (Pixel{15, 25, 35}));
    EXPECT_EQ(resize(scene, 4, 2).at(3, 0), (Pixel{10, 20, 30}));
    EXPECT_EQ(SensorScene(Image(300, 100), {}, 150).rows(), 50u);
    Bytes row(8);
    SensorScene(numberedScene(5, 2), {}).sample(1, true, 0, row);
    EXPECT_EQ(row, (Bytes{1, 11, 21, 31, 41, 41, 1, 11}));  // an odd width keeps its columns
}

TEST(Png, roundTripAndNothingHalfWritten) {
    const auto folder = std::filesystem::temp_directory_path() / ("imaging_test" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    const auto file = folder / "picture.png";
    Image picture(3, 2);
    for (std::size_t i = 0; i < 6; ++i)
        picture.pixels[i] = {std::uint8_t(i), std::uint8_t(40 * i), std::uint8_t(200 + i)};
    writePng(file, Image(1, 1));
    writePng(file, picture);
    EXPECT_EQ(readPng(file).pixels, picture.pixels);
    // Larger than what is compressed at once, with much and with little that repeats.
    for (const unsigned noise : {1u, 255u}) {
        Image large(1001, 300);
        std::mt19937 random(noise);
        for (auto& [b, g, r] : large.pixels)
            b = g = std::uint8_t(90 + random() % noise), r = std::uint8_t(random() % noise);
        writePng(file, large);
        EXPECT_EQ(readPng(file).pixels, large.pixels);
    }

    std::ofstream(folder / "text.png") << "no picture";
    EXPECT_THROW(readPng(folder / "text.png"), std::runtime_error);
    EXPECT_THROW(readPng(folder / "missing.png"), std::runtime_error);
    EXPECT_THROW(writePng(folder / "missing" / "picture.png", picture), std::runtime_error);
    using namespace std::string_literals;
    const auto header = "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s;
    std::ofstream(folder / "deep.png")  // one grey pixel of 0x8080, nothing said about its colour
        << header +
               "\0\0\0\1\0\0\0\1\x10\0\0\0\0\x6A\xEE\x47\x16"
               "\0\0\0\x0BIDAT\x78\xDA\x63\x68\x68\0\0\1\x83\1\1\x8B\x91\x55\xF2\0\0\0\0IEND\xAE\x42\x60\x82"s;
    EXPECT_EQ(readPng(folder / "deep.png").at(0, 0), (Pixel{128, 128, 128}));
    std::ofstream(folder / "vast.png")  // 8193 x 8192
        << header + "\0\0\x20\1\0\0\x20\0\1\0\0\0\0\xB5\x13\x9C\xCA\0\0\0\1IDAT"s;
    try {
        readPng(folder / "vast.png");
        ADD_FAILURE();
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("it has 8193 x 8192 pixels; at most"), std::string::npos);
    }
    std::filesystem::create_directory(folder / "taken.png");
    std::ofstream(folder / "taken.png" / "inside");
    EXPECT_THROW(writePng(folder / "taken.png", picture), std::runtime_error);
    EXPECT_THROW(writePng(file, Image()), std::runtime_error);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 5);
    std::filesystem::remove_all(folder);
}

TEST(TerminalView, twoPixelsPerCharacter) {
    Image picture(2, 2);
    picture.pixels = {{0, 0, 255}, {0, 0, 255}, {255, 0, 0}, {0, 255, 0}};
    EXPECT_EQ(halfBlocks(picture, 2),
              "\x1b[38;2;255;0;0m\x1b[48;2;0;0;255m\u2580\x1b[48;2;0;255;0m\u2580\x1b[0m\n");
    EXPECT_EQ(halfBlocks(picture, 2, Palette::Indexed256),
              "\x1b[38;5;196m\x1b[48;5;21m\u2580\x1b[48;5;46m\u2580\x1b[0m\n");
    EXPECT_EQ(halfBlocks(Image(1, 2, {120, 121, 119}), 1, Palette::Indexed256),
              "\x1b[38;5;243m\x1b[48;5;243m\u2580\x1b[0m\n");
    EXPECT_EQ(halfBlocks(picture, 0), "");
    EXPECT_EQ(halfBlocks(Image(), 10), "");
}

}  // namespace
}  // namespace virtualboard::imaging
