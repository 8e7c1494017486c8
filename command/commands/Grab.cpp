#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "client/Grabber.h"
#include "client/VirtualBoard.h"
#include "command/GrabReport.h"
#include "command/Interrupt.h"
#include "command/Json.h"
#include "command/PictureView.h"
#include "command/Progress.h"
#include "command/commands/Commands.h"
#include "marovine/PicturePlan.h"
#include "pictures/PictureFormats.h"
#include "pictures/PictureStream.h"
#include "pictures/Png.h"
#include "pictures/SafeFile.h"

namespace marovine::host::commands {

namespace {

namespace fs = std::filesystem;
using virtualboard::ClockMode;
using virtualboard::PicturePlan;
using virtualboard::imaging::ImageView;
using virtualboard::imaging::PictureEncoder;
using virtualboard::imaging::PictureFormat;
using virtualboard::imaging::PictureStream;

constexpr int kMostPictures = 100'000;
constexpr int kMostShared = 100;
constexpr int kLongestShared = 30;  ///< s that others wait for a picture

struct Options {
    fs::path output;
    std::string format;
    fs::path scene;
    fs::path truth;
    double speed = 0;  // mm/s; 0 leaves the belt as it is
    int count = 1;     // 0: without end
    int patience = 5;  // s
    bool trigger = false;
    bool realTime = false;
    bool view = false;
    bool json = false;

    bool toStandardOutput() const { return output == "-"; }
};

/// "belt.png" as "belt-007.png" where there are several.
fs::path numbered(const fs::path& file, std::int64_t number, int count) {
    if (count == 1) return file;
    constexpr int kEndless = 999'999;
    const std::string digits = std::to_string(number);
    const std::size_t width = std::to_string(count != 0 ? count : kEndless).size();
    const std::string padding(std::max(width, digits.size()) - digits.size(), '0');
    fs::path result = file;
    result.replace_filename(file.stem().string() + "-" + padding + digits + file.extension().string());
    return result;
}

/// Whether all pictures go to one place, one behind the other.
bool isOneStream(const Options& options, PictureFormat format) {
    return format == PictureFormat::Y4m || options.toStandardOutput() ||
           !virtualboard::imaging::isReplaceable(options.output);
}

PictureFormat formatOf(const Options& options) {
    if (!options.format.empty()) return *virtualboard::imaging::pictureFormatNamed(options.format);
    if (const auto format = virtualboard::imaging::pictureFormatOf(options.output)) return *format;
    if (isOneStream(options, PictureFormat::Png)) return PictureFormat::Png;
    throw UsageError(options.output.string() +
                     " does not end in .png, .ppm, .raw or .y4m; say with --format what to write");
}

/// What can be told before the first picture is taken.
void check(const Options& options) {
    if (options.output.empty() && (!options.view || options.count == 0))
        throw UsageError("nothing to do with the pictures; write them with -o FILE" +
                         std::string(options.count == 0 ? "" : ".png or show them with --view"));
    const fs::path folder = options.output.parent_path();
    if (!folder.empty() && !fs::is_directory(folder))
        throw Failure("there is no folder " + folder.string() + " for the pictures");
    if (!options.output.empty()) formatOf(options);
}

/// Where the pictures go: one stream, a file each, or nowhere. PNG files are made by threads beside the one
/// that takes pictures, at most one for each core; all are written in their order by the calling thread.
class Output {
 public:
    /// Is told of a picture that was written the file that it went to, empty where there is none.
    using Written = std::function<void(const std::string& file)>;

    Output(const Options& options, double secondsPerPicture, const Interrupt& interrupt) : options_(options) {
        if (options.output.empty()) return;
        encoder_.emplace(formatOf(options), secondsPerPicture);
        if (isOneStream(options, encoder_->format()))
            stream_.emplace(options.output, [&interrupt] { return interrupt.signal() != 0; });
    }

    /// Writes a picture, now or later. False when nobody reads any more; nobody is told of that picture then.
    bool write(const ImageView& picture, std::int64_t number, Written written) {
        if (!encoder_.has_value()) {
            written({});
            return true;
        }
        const fs::path file =
            stream_.has_value() ? options_.output : numbered(options_.output, number, options_.count);
        if (encoder_->format() != PictureFormat::Png) {
            return save(
                file, [&] { return encoder_->encode(picture); }, written);
        }
        if (waiting_.size() >= kMostWaiting && !writeFirst()) return false;
        // The board's memory takes the next pictures meanwhile.
        Pixels pixels = std::exchange(spare_, nullptr);
        if (pixels == nullptr) pixels = std::make_unique<std::vector<std::uint8_t>>();
        pixels->assign(picture.bytes.begin(), picture.bytes.end());
        const auto encode = [view = ImageView{picture.width, picture.height, *pixels}] {
            return virtualboard::imaging::encodePng(view);
        };
        waiting_.push_back(
            {std::move(pixels), std::async(std::launch::async, encode), file, std::move(written)});
        return true;
    }

    /// Writes what waits, nothing once a picture could not be written. False when nobody reads any more.
    bool flush() {
        while (!over_ && !waiting_.empty()) writeFirst();
        return !over_;
    }

    /// Whatever was written whole stays.
    void finish() {
        if (stream_.has_value()) stream_->finish();
    }

 private:
    using Pixels = std::unique_ptr<std::vector<std::uint8_t>>;
    struct Waiting {
        Pixels pixels;  ///< outlives who encodes them
        std::future<std::vector<char>> bytes;
        fs::path file;
        Written written;
    };

    bool writeFirst() {
        Waiting first = std::move(waiting_.front());
        waiting_.pop_front();
        std::vector<char> bytes;
        const auto encoded = [&] {
            bytes = first.bytes.get();
            spare_ = std::move(first.pixels);  // fresh memory costs more than the copy
            return std::string_view(bytes.data(), bytes.size());
        };
        return save(first.file, encoded, first.written);
    }

    template <typename Encoded>
    bool save(const fs::path& file, const Encoded& encoded, const Written& written) {
        over_ = true;
        std::string_view bytes;
        try {
            bytes = encoded();
        } catch (const std::runtime_error& error) {
            throw Failure(file.string() + " cannot be written: " + error.what());
        }
        if (!stream_.has_value()) {
            virtualboard::imaging::writeSafely(file, bytes);
        } else if (!stream_->write(bytes)) {
            return false;
        }
        over_ = false;
        written(file.string());
        return true;
    }

    static inline const std::size_t kMostWaiting = std::max(1U, std::thread::hardware_concurrency());

    const Options& options_;
    std::optional<PictureEncoder> encoder_;
    std::optional<PictureStream> stream_;
    std::deque<Waiting> waiting_;
    Pixels spare_;
    bool over_ = false;  ///< a picture could not be written
};

virtualboard::imaging::Belt beltOf(const Options& options) {
    virtualboard::imaging::Belt belt;
    if (options.speed > 0) belt.speed = options.speed;
    return belt;
}

void prepare(const Options& options, Applet& applet) {
    auto& board = boardOf(applet);
    if (!options.output.empty() && formatOf(options) == PictureFormat::Png) refuseWhatNoPngHolds(applet);
    if (!options.scene.empty()) board.setScene(virtualboard::imaging::readPng(options.scene));
    // A world has a belt of its own.
    if (options.speed > 0) board.setBelt(beltOf(options));
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

/// Takes pictures until there are enough, nobody reads them any more or an interrupt comes.
void takePictures(const Options& options, Session& session, const Interrupt& interrupt, Output& output,
                  GrabReport& report, std::vector<std::string>& truth) {
    Applet& applet = session.applet();
    const Wait wait{.seconds = static_cast<double>(options.patience),
                    .sentTriggers = options.trigger,
                    .realTime = options.realTime,
                    .attached = session.options.attach,
                    .belt = beltOf(options)};
    const bool endless = options.count == 0;
    const Console& told = session.console();
    Grabber grabber(applet, endless ? -1 : options.count,
                    options.realTime ? Grabber::generousBuffers(applet) : Grabber::kBuffers);
    std::optional<Progress> progress;
    if (!session.isShared() && !endless)
        progress.emplace(static_cast<std::size_t>(options.count), "pictures");
    const auto take = [&](std::int64_t number) {
        if (options.trigger) applet.set("FG_SENDSOFTWARETRIGGER", std::int32_t{1});
        if (!await(grabber, applet, wait, interrupt)) return false;
        const ImageView picture = grabber.next();
        const ImageView size{picture.width, picture.height, {}};
        const auto written = [&, size, info = grabber.info(),
                              shows = options.truth.empty() ? std::string()
                                                            : grabber.truth()](const std::string& file) {
            report.add(file, size, info);
            if (!options.truth.empty()) truth.push_back(shows);
            if (endless && options.json)
                told.out() << printedOnOneLine(jsonOf(file, size, info)) << std::endl;
            if (progress) progress->reached(static_cast<std::size_t>(report.taken()));
        };
        if (!output.write(picture, number, written)) return false;
        report.lost(grabber.lost());
        if (options.view && number == options.count && output.flush()) showPicture(told, picture);
        return true;
    };
    try {
        for (std::int64_t number = 1; (endless || number <= options.count) && take(number); ++number) {
        }
    } catch (...) {
        output.flush();  // what came before
        throw;
    }
    output.flush();
}

/// What was taken until the end or an interrupt.
GrabReport grab(const Options& options, Session& session, const Interrupt& interrupt,
                std::vector<std::string>& truth) {
    GrabReport report(options.json && options.count != 0);
    try {
        prepare(options, session.applet());
        const auto plan = virtualboard::picturePlan(boardOf(session.applet()), beltOf(options));
        Output output(options, plan.start == PicturePlan::Start::FreeRun ? plan.seconds : 0, interrupt);
        try {
            takePictures(options, session, interrupt, output, report, truth);
        } catch (...) {
            output.finish();
            throw;
        }
        output.finish();
    } catch (const std::runtime_error&) {
        // A pipe that was waited for cannot be opened any more: that is the interrupt, told by the caller.
        if (interrupt.signal() == 0) throw;
    }
    return report;
}

/// Writes the truth of all pictures as an array, one picture to a line.
void writeTruth(const fs::path& file, const std::vector<std::string>& pictures) {
    std::string text = "[";
    for (const auto& picture : pictures) text += (text.size() > 1 ? ",\n " : "") + picture;
    virtualboard::imaging::writeSafely(file, text + "]\n");
}

void run(const Options& options, Session& session) {
    if (session.isShared() && options.toStandardOutput())
        throw UsageError("a board that others use has no standard output for pictures: name a file");
    if (session.isShared() && (options.count == 0 || options.count > kMostShared))
        throw UsageError("a board that others use takes at most " + std::to_string(kMostShared) +
                         " pictures at a time");
    if (session.isShared() && options.patience > kLongestShared)
        throw UsageError("a board that others use waits at most " + std::to_string(kLongestShared) +
                         " s for a picture");
    if (options.toStandardOutput()) session.keepOutputFree();
    check(options);
    if (!options.truth.empty() && session.options.world.empty())
        throw UsageError("--truth tells of a world: give one with --world FILE.json");
    if (!options.truth.empty() && options.count == 0)
        throw UsageError("--truth is written at the end: say with -n how many pictures");
    const Interrupt interrupt;
    std::vector<std::string> truth;
    const GrabReport report = grab(options, session, interrupt, truth);
    if (!options.truth.empty()) writeTruth(options.truth, truth);
    const Console& told = session.console();
    if (!options.json) {
        report.print(told);
    } else {
        told.out() << (options.count != 0 ? printed(report.json()) : printedOnOneLine(report.json())) << '\n';
    }
    if (interrupt.signal() == 0) return;
    session.status = 128 + interrupt.signal();
    session.errors().out() << "marovine: interrupted after " << report.taken()
                           << (options.count != 0 ? " of " + std::to_string(options.count) : "")
                           << " pictures\n";
}

}  // namespace

void defineGrab(CommandLine command, Session& session) {
    auto options = std::make_shared<Options>();
    command.option("-o,--output", &options->output,
                   "Write to this file, by its ending PNG, PPM, raw or Y4M; of several pictures the numbers "
                   "stand before the ending, while a Y4M file, a pipe and - (standard output) take them all",
                   {.type = "FILE", .file = FileRole::Written});
    command.option("--format", &options->format, "Write this, whatever the file's ending; PNG without one",
                   {.type = "FORMAT", .choices = {"png", "ppm", "pnm", "raw", "y4m"}});
    command.flag("--view", options->view, "Show the last picture in the terminal");
    command.option("-n,--count", &options->count,
                   "Take this many pictures; 0: until an interrupt, or until nobody reads them",
                   {.type = "N", .minimum = 0, .maximum = kMostPictures});
    command.option("--truth", &options->truth,
                   "Write what the pictures show of the world (--world) to this file",
                   {.type = "FILE.json", .file = FileRole::Written});
    command.option("--scene", &options->scene, "Lay this picture on the belt instead of the test chart",
                   {.type = "FILE.png", .exists = true, .file = FileRole::Read});
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
        "PPM holds red, green, blue, raw as the board blue, green, red; both without padding. Y4M is 4:4:4,\n"
        "BT.601 at full range. Where the pictures go to standard output, the report goes to standard error.\n"
        "An interrupt (Ctrl-C) ends the run after the picture that is being written.");
    command.action([options, &session] { run(*options, session); });
}

}  // namespace marovine::host::commands
