#include "command/ContactSheet.h"

#include <filesystem>
#include <memory>

#include "command/Json.h"
#include "command/PictureView.h"
#include "command/commands/Commands.h"
#include "pictures/Png.h"

namespace marovine::host::commands {

namespace {

struct Options {
    std::filesystem::path output;
    bool view = false;
    bool json = false;
};

void run(const Options& options, Session& session) {
    session.refuseShared("contact-sheet");
    const auto sheet = contactSheet(session.library());
    virtualboard::imaging::writePng(options.output, sheet);
    const Console& console = session.console();
    if (options.view) showPicture(console, sheet);
    if (options.json) {
        console.out() << printed({{"file", options.output.string()},
                                  {"width", sheet.width},
                                  {"height", sheet.height}})
                      << '\n';
        return;
    }
    console.out() << options.output.string() << ": " << sheet.width << " x " << sheet.height << " pixels\n";
}

}  // namespace

void defineContactSheet(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.option("-o,--output", &options->output, "Write the picture to this file",
                   {.type = "FILE.png", .required = true});
    command.flag("--view", options->view, "Show it in the terminal as well");
    command.flag("--json", options->json, "As a JSON object");
    command.footer("Every view comes from an applet of its own: --config and --set do not touch it.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
