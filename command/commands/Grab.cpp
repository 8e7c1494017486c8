#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "client/Grabber.h"
#include "client/VirtualBoard.h"
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

virtualboard::imaging::Belt beltOf(const Options& options) {
    virtualboard::imaging::Belt belt;
    if (options.speed > 0) belt.speed = options.speed;
    return belt;
}

void prepare(const Options& options, Applet& applet) {
    auto& board = boardOf(applet);
    if (!options.output.empty()) refuseWhatNoPngHolds(applet);
    if (!options.scene.empty()) board.setScene(virtualboard::imaging::readPng(options.scene));
    board.setBelt(beltOf(options));
    board.setClockMode(options.realTime ? ClockMode::RealTime : ClockMode::AsFastAsPossible);
}

/// Waits for a picture in short steps, so that an interrupt is noticed. False after an interrupt.
bool await(Grabber& grabber, Applet& applet, const Wait& wait, const Interrupt& interrupt) {
    for (int waited = 0; waited < wait.seconds; ++waited) {
        if (interrupt.signal() != 0) return false;
        if (grabber.comes(1)) return true;
    }
    if (interrupt.signal() != 0) return false;
    throw Failure(whyNoPicture(applet, wait));
}

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool operator==(const Size&) const = default;

    std::string text() const { return std::to_string(width) + " x " + std::to_string(height) + " pixels"; }
};

struct Result {
    std::vector<std::string> files{};
    std::vector<Size> sizes{};  ///< of the pictures taken
    std::int64_t lost = 0;

    /// The number of pictures from one on that share its size.
    std::size_t alike(std::size_t first) const {
        const auto from = sizes.begin() + static_cast<std::ptrdiff_t>(first);
        const auto to = std::find_if(from, sizes.end(), [&](const Size& size) { return size != *from; });
        return static_cast<std::size_t>(to - from);
    }
};

void takePictures(const Options& options, Session& session, const Interrupt& interrupt, Result& result) {
    Applet& applet = session.applet();
    prepare(options, applet);
    const Wait wait{.seconds = options.patience,
                    .sentTriggers = options.trigger,
                    .realTime = options.realTime,
                    .attached = session.options.attach,
                    .belt = beltOf(options)};
    const auto count = static_cast<std::size_t>(options.count);
    Grabber grabber(applet, options.count);
    Progress progress(count, "pictures");
    while (result.sizes.size() < count) {
        if (options.trigger) applet.set("FG_SENDSOFTWARETRIGGER", std::int32_t{1});
        if (!await(grabber, applet, wait, interrupt)) break;
        const ImageView picture = grabber.next();
        const std::size_t number = result.sizes.size() + 1;
        if (!options.output.empty()) {
            const fs::path file = numbered(options.output, static_cast<int>(number), options.count);
            virtualboard::imaging::writePng(file, picture);
            result.files.push_back(file.string());
        }
        result.sizes.push_back({picture.width, picture.height});
        progress.reached(number);
        if (options.view && number == count) showPicture(session.console(), picture);
    }
    result.lost = grabber.lost();
}

/// What was taken until the end or an interrupt.
Result grab(const Options& options, Session& session, const Interrupt& interrupt) {
    Result result;
    try {
        takePictures(options, session, interrupt, result);
    } catch (const std::runtime_error&) {
        // A pipe that was waited for cannot be opened any more: that is the interrupt, told by the caller.
        if (interrupt.signal() == 0) throw;
    }
    return result;
}

void print(const Console& console, const Result& result) {
    auto& out = console.out();
    const auto& files = result.files;
    const auto& sizes = result.sizes;
    const std::size_t taken = sizes.size();
    if (taken == 1) {
        out << (files.empty() ? "" : files.front() + ": ") << sizes.front().text() << '\n';
    } else if (taken > 0 && result.alike(0) == taken) {
        out << taken << " pictures of " << sizes.front().text();
        if (!files.empty()) out << " in " << files.front() << " to " << files.back();
        out << '\n';
    } else {
        for (std::size_t i = 0, count = 0; i < taken; i += count) {
            count = result.alike(i);
            const auto name = [&](std::size_t at) {
                return files.empty() ? "picture " + std::to_string(at + 1) : files[at];
            };
            out << name(i) << (count > 1 ? " to " + name(i + count - 1) : "") << ": " << sizes[i].text()
                << '\n';
        }
    }
    if (result.lost > 0)
        out << result.lost << " pictures were lost: this host was slower than the camera; leave out "
            << "--real-time\n";
}

/// Width and height stand for all pictures; they are null where those differ.
Json jsonOf(const Result& result) {
    const bool same = result.sizes.empty() || result.alike(0) == result.sizes.size();
    const Size size = result.sizes.empty() ? Size{} : result.sizes.front();
    Json sizes = Json::array();
    for (const auto& [width, height] : result.sizes) sizes.push_back({{"width", width}, {"height", height}});
    return {{"files", result.files},
            {"pictures", result.sizes.size()},
            {"width", same ? Json(size.width) : Json()},
            {"height", same ? Json(size.height) : Json()},
            {"sizes", std::move(sizes)},
            {"lost", result.lost}};
}

void run(const Options& options, Session& session) {
    check(options);
    const Interrupt interrupt;
    const Result result = grab(options, session, interrupt);
    if (options.json) {
        session.console().out() << printed(jsonOf(result)) << '\n';
    } else {
        print(session.console(), result);
    }
    if (interrupt.signal() == 0) return;
    session.status = 128 + interrupt.signal();
    std::cerr << "marovine: interrupted after " << result.sizes.size() << " of " << options.count
              << " pictures\n";
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
