/// Pictures in files and on the terminal.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "pictures/Png.h"
#include "pictures/TerminalView.h"
#include "tests/ImagingFixture.h"

namespace virtualboard::imaging {
namespace {

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
