#include "command/commands/DemoPictures.h"

#include <array>
#include <filesystem>
#include <span>
#include <stdexcept>

#include "client/Grabber.h"
#include "client/VirtualBoard.h"
#include "command/ContactSheet.h"
#include "command/PictureView.h"
#include "pictures/Png.h"

namespace marovine::host::commands {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kWidth = 48;  // columns of the picture

/// The lines of a picture that came first.
virtualboard::imaging::ImageView upperHalf(const virtualboard::imaging::ImageView& picture) {
    return {picture.width, picture.height / 2, picture.bytes.first(picture.bytes.size() / 2)};
}

/// A picture and the file that it goes to.
struct Work {
    fs::path file;
    virtualboard::imaging::Image picture;
    bool there = false;  ///< as an earlier demonstration left it
};

bool holds(const fs::path& file, const virtualboard::imaging::Image& picture) {
    if (!fs::is_regular_file(file)) return false;
    try {
        const auto there = virtualboard::imaging::readPng(file);
        return there.width == picture.width && there.pixels == picture.pixels;
    } catch (const std::runtime_error&) {
        return false;  // no picture at all
    }
}

void write(std::span<Work> works, bool replace) {
    for (auto& work : works) {
        work.there = holds(work.file, work.picture);
        if (!work.there && !replace && fs::exists(fs::symlink_status(work.file)))
            throw Failure(work.file.string() +
                          " is there already and holds something else: name another folder " +
                          "with -o, or replace it with --force");
    }
    for (const auto& work : works)
        if (!work.there) virtualboard::imaging::writePng(work.file, work.picture);
}

}  // namespace

void demonstratePictures(Session& session, const DemoOutput& output) {
    const Console& console = session.console();
    const auto library = session.library();

    console.heading("A picture of the belt, taken with the defaults: its first half");
    Applet applet(library, std::make_unique<VirtualBoard>());
    std::array works{Work{output.folder / "belt.png", firstPicture(applet)},
                     Work{output.folder / "contact-sheet.png", contactSheet(library)}};
    showPicture(console, upperHalf(works.front().picture), kWidth);
    write(works, output.replace);

    Table table;
    const auto told = [](const Work& work) {
        return (work.there ? "was written before to " : "written to ") + work.file.string();
    };
    table.add({"all of it", told(works.front())});
    table.add({"what settings do to it", told(works.back())});
    table.print(console, 2);
}

}  // namespace marovine::host::commands
