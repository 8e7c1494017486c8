#include "pictures/TerminalView.h"

#include <algorithm>

#include "board/imaging/Scene.h"

namespace virtualboard::imaging {
namespace {

void appendColour(std::string& text, const char* layer, Pixel colour) {
    text += "\x1b[";
    text += layer;
    for (const auto level : {colour.red, colour.green, colour.blue}) {
        text += ';';
        text += std::to_string(level);
    }
    text += 'm';
}

}  // namespace

std::string halfBlocks(const ImageView& picture, std::uint32_t columns) {
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
            if (x == 0 || upper != small.at(x - 1, y)) appendColour(text, "38;2", upper);
            if (x == 0 || lower != small.at(x - 1, y + 1)) appendColour(text, "48;2", lower);
            text += "\xe2\x96\x80";
        }
        text += "\x1b[0m\n";
    }
    return text;
}

}  // namespace virtualboard::imaging
