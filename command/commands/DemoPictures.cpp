#include "command/commands/DemoPictures.h"

#include <unistd.h>

#include <filesystem>

#include "client/Grabber.h"
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

/// Beside the applet's library, in the build folder that is; an installation's folder may be closed to us.
fs::path folderFor(const Library& library) {
    const fs::path folder = fs::absolute(library.file()).parent_path();
    return access(folder.c_str(), W_OK) == 0 ? folder : fs::temp_directory_path();
}

}  // namespace

void demonstratePictures(Session& session) {
    const Console& console = session.console();
    const auto library = session.library();
    const fs::path folder = folderFor(*library);

    console.heading("A picture of the belt, taken with the defaults: its first half");
    Applet applet(library);
    const auto picture = firstPicture(applet);
    showPicture(console, upperHalf(picture), kWidth);
    const fs::path belt = folder / "belt.png";
    virtualboard::imaging::writePng(belt, picture);
    const fs::path sheet = folder / "contact-sheet.png";
    virtualboard::imaging::writePng(sheet, contactSheet(library));

    Table table;
    table.add({"all of it", belt.string()});
    table.add({"what settings do to it", sheet.string()});
    table.print(console, 2);
}

}  // namespace marovine::host::commands
