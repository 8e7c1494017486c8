#include "command/ContactSheet.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "board/imaging/Scene.h"
#include "client/Grabber.h"
#include "client/VirtualBoard.h"
#include "command/Console.h"
#include "pictures/Lettering.h"

namespace marovine::host {

namespace {

using virtualboard::imaging::Image;
using virtualboard::imaging::Pixel;

struct Setting {
    const char* name;
    const char* value;
};

struct View {
    const char* title;
    std::vector<Setting> settings;
};

const std::array<View, 8>& views() {
    static const std::array<View, 8> all{{
        {"Defaults", {}},
        {"Gamma", {{"FG_PROCESSING_GAMMA", "2.2"}}},
        {"White balance", {{"FG_SCALINGFACTOR_RED", "1.5"}, {"FG_SCALINGFACTOR_BLUE", "0.5"}}},
        {"Wrong Bayer phase", {{"FG_BAYERINIT", "BlueFollowedByGreen"}}},
        {"Window", {{"FG_WIDTH", "512"}, {"FG_HEIGHT", "512"}, {"FG_XOFFSET", "256"}, {"FG_YOFFSET", "32"}}},
        {"From the right", {{"FG_VANTAGEPOINT", "FG_VANTAGEPOINT_TOP_RIGHT"}}},
        {"Lines too rare", {{"FG_LINEPERIODE", "400"}}},
        {"Half the exposure", {{"FG_LINEEXPOSURE", "9.504"}}},
    }};
    return all;
}

constexpr Pixel kPaper{250, 250, 250};
constexpr Pixel kInk{40, 40, 40};
constexpr Pixel kFaint{120, 120, 120};

constexpr std::uint32_t kColumns = 4;
constexpr std::uint32_t kSide = 252;  // of a view, pixels
constexpr std::uint32_t kGap = 16;
constexpr std::uint32_t kTitleScale = 2;
constexpr std::uint32_t kCaptionLines = 2;
constexpr std::uint32_t kLineHeight = kLetterHeight + 1;
constexpr std::uint32_t kCaption = kTitleScale * kLineHeight + kCaptionLines * kLineHeight;

Image taken(const std::shared_ptr<const Library>& library, const View& view) {
    Applet applet(library, std::make_unique<VirtualBoard>());
    for (const auto& [name, value] : view.settings) applet.set(name, applet.parameter(name).parse(value));
    return virtualboard::imaging::resize(firstPicture(applet), kSide, kSide);
}

void draw(Image& sheet, std::uint32_t left, std::uint32_t top, const View& view, const Image& picture) {
    writeText(sheet, left, top, kTitleScale, kInk, view.title);
    std::string caption;
    for (const auto& [name, value] : view.settings)
        caption += (caption.empty() ? "" : ", ") + std::string(name) + " = " + value;
    top += kTitleScale * kLineHeight;
    std::uint32_t line = top;
    for (const auto& text : wrapped(caption, kSide / kLetterWidth)) {
        writeText(sheet, left, line, 1, kFaint, text);
        line += kLineHeight;
    }
    top += kCaptionLines * kLineHeight;
    for (std::uint32_t y = 0; y < kSide; ++y)
        std::copy_n(&picture.pixels[std::size_t{y} * kSide], kSide, &sheet.at(left, top + y));
}

}  // namespace

Image contactSheet(const std::shared_ptr<const Library>& library) {
    const auto rows = static_cast<std::uint32_t>((views().size() + kColumns - 1) / kColumns);
    Image sheet(kColumns * (kSide + kGap) + kGap, rows * (kCaption + kSide + kGap) + kGap, kPaper);
    std::uint32_t at = 0;
    for (const View& view : views()) {
        const std::uint32_t left = kGap + at % kColumns * (kSide + kGap);
        const std::uint32_t top = kGap + at / kColumns * (kCaption + kSide + kGap);
        draw(sheet, left, top, view, taken(library, view));
        ++at;
    }
    return sheet;
}

}  // namespace marovine::host
