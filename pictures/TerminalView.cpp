#include "pictures/TerminalView.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "board/imaging/Scene.h"

namespace virtualboard::imaging {
namespace {

int distance(Pixel a, Pixel b) {
    return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
}

/// The nearest colour of the palette: of its cube with six levels a side, or of its greys.
int indexOf(Pixel colour) {
    constexpr std::array<std::uint8_t, 6> levels{0, 95, 135, 175, 215, 255};
    constexpr int firstOfCube = 16, firstGrey = 232, greys = 24, darkestGrey = 8, greyStep = 10;
    const auto nearest = [&](std::uint8_t level) {
        return static_cast<int>(std::ranges::min_element(
                                    levels, {}, [&](std::uint8_t known) { return std::abs(known - level); }) -
                                levels.begin());
    };
    const int red = nearest(colour.red), green = nearest(colour.green), blue = nearest(colour.blue);
    const auto at = [&](int index) { return levels[static_cast<std::size_t>(index)]; };
    const int mean = (colour.red + colour.green + colour.blue) / 3;
    const int grey = std::clamp((mean - darkestGrey + greyStep / 2) / greyStep, 0, greys - 1);
    const auto shade = static_cast<std::uint8_t>(darkestGrey + greyStep * grey);
    const bool isGrey = distance(colour, {shade, shade, shade}) <
                        distance(colour, {.blue = at(blue), .green = at(green), .red = at(red)});
    return isGrey ? firstGrey + grey : firstOfCube + 36 * red + 6 * green + blue;
}

void appendColour(std::string& text, const char* layer, Pixel colour, Palette palette) {
    text += "\x1b[";
    text += layer;
    if (palette == Palette::Indexed256) {
        text += ";5;" + std::to_string(indexOf(colour)) + 'm';
        return;
    }
    text += ";2";
    for (const auto level : {colour.red, colour.green, colour.blue}) {
        text += ';';
        text += std::to_string(level);
    }
    text += 'm';
}

}  // namespace

std::string halfBlocks(const ImageView& picture, std::uint32_t columns, Palette palette) {
    if (picture.width == 0 || picture.height == 0 || columns == 0) return {};
    const auto wanted = std::uint64_t{picture.height} * columns / picture.width;
    const auto rows =
        static_cast<std::uint32_t>(std::clamp<std::uint64_t>((wanted + 1) / 2 * 2, 2, 1u << 16));
    const Image small = resize(picture, columns, rows);
    std::string text;
    for (std::uint32_t y = 0; y < rows; y += 2) {
        for (std::uint32_t x = 0; x < columns; ++x) {
            const Pixel upper = small.at(x, y), lower = small.at(x, y + 1);
            // Colours are only sent where they change.
            if (x == 0 || upper != small.at(x - 1, y)) appendColour(text, "38", upper, palette);
            if (x == 0 || lower != small.at(x - 1, y + 1)) appendColour(text, "48", lower, palette);
            text += "\xe2\x96\x80";
        }
        text += "\x1b[0m\n";
    }
    return text;
}

}  // namespace virtualboard::imaging
