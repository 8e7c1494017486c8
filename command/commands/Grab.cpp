#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "client/Grabber.h"
#include "command/Interrupt.h"
#include "command/Json.h"
#include "command/PictureView.h"
#include "command/Progress.h"
#include "command/commands/Commands.h"
#include "pictures/Png.h"

namespace marovine::host::commands {

namespace {

namespace fs = std::filesystem;
using virtualboard::ClockMode;
using virtualboard::imaging::ImageView;

constexpr int kMostPictures = 100'000;

struct Options {
    fs::path output;
    fs::path scene;
    double speed = 0;  // mm/s; 0 leaves the belt as it is
    int count = 1;
    int patience = 5;  // s
    bool trigger = false;
    bool realTime = false;
    bool view = false;
    bool json = false;
};

/// "belt.png" as "belt-007.png" where there are several.
fs::path numbered(const fs::path& file, int number, int count) {
    if (count == 1) return file;
    const std::string digits = std::to_string(number);
    const std::string padding(std::to_string(count).size() - digits.size(), '0');
    fs::path result = file;
    result.replace_filename(file.stem().string() + "-" + padding + digits + file.extension().string());
    return result;
}

/// What can be told before the first picture is taken.
void check(const Options& options) {
    if (options.output.empty() && !options.view)
        throw UsageError(
            "nothing to do with the pictures; write them with -o FILE.png or show them with --view");
    if (!options.output.empty() && options.output.extension() != ".png")
        throw UsageError(options.output.string() +
                         " does not end in .png, the only kind of picture there is");
    const fs::path folder = options.output.parent_path();
    if (!folder.empty() && !fs::is_directory(folder))
        throw Failure("there is no folder " + folder.string() + " for the pictures");
}

void prepare(const Options& options, Applet& applet) {
    auto& board = applet.board();
    if (!options.scene.empty()) board.setScene(virtualboard::imaging::readPng(options.scene));
    if (options.speed > 0) {
        virtualboard::imaging::Belt belt;
        belt.speed = options.speed;
        board.setBelt(belt);
    }
    board.setClockMode(options.realTime ? ClockMode::RealTime : ClockMode::AsFastAsPossible);
}

/// Waits for a picture in short steps, so that an interrupt is noticed. False after an interrupt.
bool await(Grabber& grabber, Applet& applet, int patience, const Interrupt& interrupt) {
    for (int waited = 0; waited < patience; ++waited) {
        if (interrupt.signal() != 0) return false;
        if (grabber.comes(1)) return true;
    }
    if (interrupt.signal() != 0) return false;
    throw Failure(whyNoPicture(applet) + "; waited for " + std::to_string(patience) + " s");
}

struct Result {
    std::vector<std::string> files;
    int taken = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;  // of the last picture
    std::int64_t lost = 0;
};

Result grab(const Options& options, Session& session, const Interrupt& interrupt) {
    Applet& applet = session.applet();
    prepare(options, applet);
    Grabber grabber(applet, options.count);
    Progress progress(static_cast<std::size_t>(options.count), "pictures");
    Result result;
    while (result.taken < options.count) {
        if (options.trigger) applet.set("FG_SENDSOFTWARETRIGGER", std::int32_t{1});
        if (!await(grabber, applet, options.patience, interrupt)) break;
        const ImageView picture = grabber.next();
        result.width = picture.width;
        result.height = picture.height;
        ++result.taken;
        if (!options.output.empty()) {
            const fs::path file = numbered(options.output, result.taken, options.count);
            virtualboard::imaging::writePng(file, picture);
            result.files.push_back(file.string());
        }
        progress.reached(static_cast<std::size_t>(result.taken));
        if (options.view && result.taken == options.count) showPicture(session.console(), picture);
    }
    result.lost = grabber.lost();
    return result;
}

void print(const Console& console, const Result& result) {
    auto& out = console.out();
    const std::string size = std::to_string(result.width) + " x " + std::to_string(result.height) + " pixels";
    if (result.taken > 1) out << result.taken << " pictures of ";
    if (result.taken == 1 && !result.files.empty()) out << result.files.front() << ": ";
    if (result.taken > 0) out << size;
    if (result.taken > 1 && !result.files.empty())
        out << " in " << result.files.front() << " to " << result.files.back();
    if (result.taken > 0) out << '\n';
    if (result.lost > 0)
        out << result.lost << " pictures were lost: this host was slower than the camera; leave out "
            << "--real-time\n";
}

void run(const Options& options, Session& session) {
    check(options);
    const Interrupt interrupt;
    const Result result = grab(options, session, interrupt);
    if (options.json) {
        session.console().out() << printed({{"files", result.files},
                                            {"pictures", result.taken},
                                            {"width", result.width},
                                            {"height", result.height},
                                            {"lost", result.lost}})
                                << '\n';
    } else {
        print(session.console(), result);
    }
    if (interrupt.signal() == 0) return;
    session.status = 128 + interrupt.signal();
    std::cerr << "marovine: interrupted after " << result.taken << " of " << options.count << " pictures\n";
}

}  // namespace

void defineGrab(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.option("-o,--output", &options->output,
                   "Write the picture to this file; of several, the numbers stand before the ending",
                   {.type = "FILE.png"});
    command.flag("--view", options->view, "Show the last picture in the terminal");
    command.option("-n,--count", &options->count, "Take this many pictures",
                   {.type = "N", .minimum = 1, .maximum = kMostPictures});
    command.option("--scene", &options->scene, "Lay this picture on the belt instead of the test chart",
                   {.type = "FILE.png", .exists = true});
    command.option("--speed", &options->speed, "Speed of the belt; 500 mm/s and 200 us per line fit together",
                   {.type = "MM_PER_S", .minimum = 0.001, .maximum = 1e6});
    command.flag("--trigger", options->trigger, "Send a software trigger for every picture");
    command.option("--timeout", &options->patience, "Give up when a picture takes longer than this",
                   {.type = "SECONDS", .minimum = 1, .maximum = 1e6});
    command.flag("--real-time", options->realTime,
                 "Take pictures when the camera gives them, not as fast as possible");
    command.flag("--json", options->json, "Report as JSON");
    command.footer(
        "The settings of --config and --set decide what the pictures look like. Trigger by software with\n"
        "--set FG_IMGTRIGGERMODE=ASYNC_TRIGGER --set FG_IMGTRIGGERINSRC=TRGINSOFTWARE --trigger.\n"
        "An interrupt (Ctrl-C) ends the run after the picture that is being written.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
