#include "command/PictureView.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "board/imaging/Scene.h"
#include "pictures/TerminalView.h"

namespace marovine::host {

namespace {

using virtualboard::imaging::Image;
using virtualboard::imaging::ImageView;

constexpr std::uint64_t kLongest = 50;  // lines, of two pixels each

/// Of what the environment says: a terminal named after 256 colours has no more unless COLORTERM promises it.
virtualboard::imaging::Palette paletteOfTerminal() {
    using virtualboard::imaging::Palette;
    const auto variable = [](const char* name) {
        const char* text = std::getenv(name);
        return std::string_view(text != nullptr ? text : "");
    };
    const bool more = variable("COLORTERM") == "truecolor" || variable("COLORTERM") == "24bit";
    const bool few = variable("TERM").find("256color") != std::string_view::npos;
    return few && !more ? Palette::Indexed256 : Palette::TrueColour;
}

/// One character per two pixels, one above the other.
std::string shades(const ImageView& picture, std::uint32_t columns) {
    constexpr std::array levels{" ", "░", "▒", "▓", "█"};
    const auto rows = static_cast<std::uint32_t>(
        std::max<std::uint64_t>(1, std::uint64_t{picture.height} * columns / picture.width / 2));
    const Image small = virtualboard::imaging::resize(picture, columns, rows);
    std::string text;
    for (std::uint32_t y = 0; y < rows; ++y) {
        for (std::uint32_t x = 0; x < columns; ++x) {
            const auto pixel = small.at(x, y);
            const std::size_t luminance = (pixel.red * 3u + pixel.green * 6u + pixel.blue * 1u) / 10u;
            text += levels[luminance * levels.size() / 256];
        }
        text += '\n';
    }
    return text;
}

}  // namespace

void showPicture(const Console& console, const ImageView& picture, std::size_t widest) {
    if (picture.width == 0 || picture.height == 0) return;
    const std::uint64_t narrow = std::max<std::uint64_t>(1, 2 * kLongest * picture.width / picture.height);
    const auto columns = static_cast<std::uint32_t>(
        std::min({std::uint64_t{console.drawingWidth()}, std::uint64_t{widest}, narrow}));
    console.out() << (console.coloured()
                          ? virtualboard::imaging::halfBlocks(picture, columns, paletteOfTerminal())
                          : shades(picture, columns));
}

}  // namespace marovine::host
