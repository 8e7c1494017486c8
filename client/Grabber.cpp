#include "client/Grabber.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "client/VirtualBoard.h"
#include "marovine/BoardCodes.h"
#include "marovine/PicturePlan.h"
#include "pictures/Png.h"

namespace marovine::host {

namespace {

using virtualboard::FrameMemory;
using virtualboard::PicturePlan;
using virtualboard::imaging::Image;
using virtualboard::imaging::ImageView;
using virtualboard::imaging::kBytesPerPixel;

std::size_t numberOfPixels(Applet& applet, const char* name) {
    return static_cast<std::size_t>(*numberOf(applet.get(name)));
}

FrameMemory memoryFor(Applet& applet, std::uint32_t buffers) {
    const std::size_t width = numberOfPixels(applet, "FG_WIDTH");
    const std::size_t height = numberOfPixels(applet, "FG_HEIGHT");
    try {
        return {buffers, width * height * kBytesPerPixel};
    } catch (const std::bad_alloc&) {
        throw Failure("no memory for " + std::to_string(buffers) + " pictures of " + std::to_string(width) +
                      " x " + std::to_string(height) + " pixels; make FG_WIDTH or FG_HEIGHT smaller");
    }
}

/// A parameter's value as text: the constant's name for an enumeration.
std::string shown(Applet& applet, const char* name) {
    return applet.parameter(name).textOf(applet.get(name));
}

std::string setting(Applet& applet, const char* name) {
    return std::string(name) + " = " + shown(applet, name);
}

}  // namespace

Grabber::Grabber(Applet& applet, std::int64_t pictures, std::uint32_t buffers)
    : applet_(applet), memory_(memoryFor(applet, buffers)) {
    const int code = applet_.library().acquire(applet_.record(), 0, pictures, 0, memory_.get());
    if (code < 0) throw Refused(code, "taking pictures");
}

std::uint32_t Grabber::generousBuffers(Applet& applet) {
    constexpr std::size_t kBytes = 256 << 20;
    const std::size_t picture =
        numberOfPixels(applet, "FG_WIDTH") * numberOfPixels(applet, "FG_HEIGHT") * kBytesPerPixel;
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(kBytes / picture, 4, 128));
}

Grabber::~Grabber() {
    stop();
}

void Grabber::stop() {
    applet_.library().stopAcquire(applet_.record(), 0, memory_.get(), 0);
}

bool Grabber::comes(int seconds) {
    const std::int64_t last =
        applet_.library().waitForPicture(applet_.record(), taken_ + 1, 0, seconds, memory_.get());
    if (last == virtualboard::kTimeout) return false;
    if (last < 0) throw Refused(static_cast<int>(last), "waiting for a picture");
    return true;
}

ImageView Grabber::newest() {
    const std::int64_t last = applet_.library().lastPicture(applet_.record(), 0, memory_.get());
    taken_ = std::max(taken_, last - 1);
    return next();
}

ImageView Grabber::next() {
    const FrameMemoryPicture picture = memory_.picture(++taken_);
    return {picture.width,
            picture.height,
            {picture.pixels, std::size_t{picture.width} * picture.height * kBytesPerPixel}};
}

std::string Grabber::truth() const {
    return boardOf(applet_).truth(memory_.get(), taken_);
}

std::int64_t Grabber::lost() {
    return applet_.library().status(applet_.record(), FRAME_STATUS_LOST, 0, 0, memory_.get());
}

Image firstPicture(Applet& applet) {
    const Wait wait{.seconds = 60};  // the machine may be busy
    boardOf(applet).setClockMode(virtualboard::ClockMode::AsFastAsPossible);
    Grabber grabber(applet, 1);
    if (!grabber.comes(static_cast<int>(wait.seconds))) throw Failure(whyNoPicture(applet, wait));
    const ImageView picture = grabber.next();
    Image copy(picture.width, picture.height);
    std::ranges::copy(picture.bytes, copy.bytes().begin());
    return copy;
}

void refuseWhatNoPngHolds(Applet& applet) {
    const PicturePlan plan = picturePlan(boardOf(applet), {});
    if (virtualboard::imaging::fitsPng(plan.width, plan.rows)) return;
    throw Failure("no PNG file holds a picture of " + std::to_string(plan.width) + " x " +
                  std::to_string(plan.rows) +
                  " pixels; make FG_WIDTH or FG_HEIGHT smaller, or use --view alone");
}

namespace {

/// Why a trigger that the image trigger waits for does not come.
std::string whyNoTrigger(Applet& applet, const PicturePlan& plan, const Wait& wait) {
    const std::string& trigger = wait.words.trigger;
    const std::string waits =
        setting(applet, "FG_IMGTRIGGERMODE") + " waits for " + setting(applet, "FG_IMGTRIGGERINSRC");
    if (shown(applet, "FG_IMGTRIGGERINSRC") != "TRGINSOFTWARE")
        return waits + (wait.sentTriggers ? ", and " + trigger + " is heard by TRGINSOFTWARE only"
                                          : ", which nothing drives here; TRGINSOFTWARE hears " + trigger);
    if (plan.start == PicturePlan::Start::Gate) {
        return waits + ", for a level and not for a pulse" +
               (wait.sentTriggers ? " as " + trigger + " sends it" : "") +
               ": set FG_SETSOFTWARETRIGGER to 1; one gate brings as many pictures as fit into it";
    }
    if (!wait.sentTriggers) return waits + "; " + trigger + " sends one for every picture";
    if (plan.selectPeriod > 1) {
        return "of every " + std::to_string(plan.selectPeriod) +
               " triggered pictures only one is passed on (" + setting(applet, "FG_IMG_SELECT_PERIOD") +
               "), and " + trigger + " sends one trigger for each wanted";
    }
    return waits + ", and a trigger that comes while a picture is taken does not count";
}

/// Why the camera, or the generator in its place, gives no lines.
std::string whyNoLines(Applet& applet, const PicturePlan& plan) {
    std::string text = "the camera gets no line trigger or is cut off (" + setting(applet, "FG_EXSYNCON") +
                       ", " + setting(applet, "FG_CCSEL0") + ", " +
                       setting(applet, "FG_CAMERA_LINK_CORE_RESET") + ")";
    if (plan.generated)
        text = "the camera simulator waits for the line trigger, " + setting(applet, "FG_EXSYNCON");
    return text;
}

}  // namespace

std::string whyNoPicture(Applet& applet, const Wait& wait) {
    const std::string none = "no picture came within " + textOf(wait.seconds) + " s: ";
    const std::string longer = "wait longer with " + wait.words.timeout;
    if (*numberOf(applet.get("FG_FILLLEVEL")) > 0) return none + "a large one is still being made; " + longer;
    // The design's own values: with --attach they need not be what the parameters say.
    const PicturePlan plan = picturePlan(boardOf(applet), wait.belt);
    if (!plan.linesCome) {
        if (wait.attached)
            return none + "with " + wait.words.attach +
                   " the design is as it was left, and there its camera gives no lines";
        return none + whyNoLines(applet, plan);
    }
    if (!plan.passesAny)
        return none + "the design is set to pass none on" +
               (wait.attached ? " (" + wait.words.attach + " left it as it was)" : "");
    const bool slow = wait.realTime && plan.seconds > wait.seconds;
    if (plan.start != PicturePlan::Start::FreeRun && !(slow && wait.sentTriggers))
        return none + whyNoTrigger(applet, plan, wait);
    if (slow) {
        return none + "at this line rate one takes " + textOf(std::ceil(plan.seconds)) + " s; " + longer +
               ", or " + wait.words.withoutRealTime;
    }
    return none + "this machine is too busy or the picture too large; " + longer;
}

}  // namespace marovine::host
