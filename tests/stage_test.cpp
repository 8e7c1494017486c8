/// The image path's stages one by one against pixels and lines worked out by hand.

#include <cmath>

#include "board/imaging/PatternGenerator.h"
#include "tests/ImagingFixture.h"

namespace virtualboard::imaging {
namespace {

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

}  // namespace
}  // namespace virtualboard::imaging
