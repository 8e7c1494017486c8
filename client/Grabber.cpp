#include "client/Grabber.h"

#include <algorithm>
#include <new>

#include "marovine/BoardCodes.h"

namespace marovine::host {

namespace {

using virtualboard::FrameMemory;
using virtualboard::imaging::Image;
using virtualboard::imaging::ImageView;
using virtualboard::imaging::kBytesPerPixel;

constexpr std::uint32_t kBuffers = 4;

std::size_t numberOfPixels(Applet& applet, const char* name) {
    return static_cast<std::size_t>(*numberOf(applet.get(name)));
}

FrameMemory memoryFor(Applet& applet) {
    const std::size_t width = numberOfPixels(applet, "FG_WIDTH");
    const std::size_t height = numberOfPixels(applet, "FG_HEIGHT");
    try {
        return {kBuffers, width * height * kBytesPerPixel};
    } catch (const std::bad_alloc&) {
        throw Failure("no memory for " + std::to_string(kBuffers) + " pictures of " + std::to_string(width) +
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

Grabber::Grabber(Applet& applet, std::int64_t pictures) : applet_(applet), memory_(memoryFor(applet)) {
    const int code = applet_.library().acquire(applet_.record(), 0, pictures, 0, memory_.get());
    if (code < 0) throw Refused(code, "taking pictures");
}

Grabber::~Grabber() {
    applet_.library().stopAcquire(applet_.record(), 0, memory_.get(), 0);
}

bool Grabber::comes(int seconds) {
    const std::int64_t last =
        applet_.library().waitForPicture(applet_.record(), taken_ + 1, 0, seconds, memory_.get());
    if (last == virtualboard::kTimeout) return false;
    if (last < 0) throw Refused(static_cast<int>(last), "waiting for a picture");
    return true;
}

ImageView Grabber::next() {
    const FrameMemoryPicture picture = memory_.picture(++taken_);
    return {picture.width,
            picture.height,
            {picture.pixels, std::size_t{picture.width} * picture.height * kBytesPerPixel}};
}

std::int64_t Grabber::lost() {
    return applet_.library().status(applet_.record(), FRAME_STATUS_LOST, 0, 0, memory_.get());
}

Image firstPicture(Applet& applet) {
    constexpr int patience = 60;  // s; the machine may be busy
    applet.board().setClockMode(virtualboard::ClockMode::AsFastAsPossible);
    Grabber grabber(applet, 1);
    if (!grabber.comes(patience)) throw Failure(whyNoPicture(applet));
    const ImageView picture = grabber.next();
    Image copy(picture.width, picture.height);
    std::ranges::copy(picture.bytes, copy.bytes().begin());
    return copy;
}

std::string whyNoPicture(Applet& applet) {
    const std::string none = "no picture came: ";
    const std::string mode = shown(applet, "FG_IMGTRIGGERMODE");
    if (mode.starts_with("ASYNC")) {
        if (shown(applet, "FG_IMGTRIGGERON") == "FG_OFF")
            return none + setting(applet, "FG_IMGTRIGGERMODE") + " with FG_IMGTRIGGERON = FG_OFF";
        return none + setting(applet, "FG_IMGTRIGGERMODE") + " waits for " +
               setting(applet, "FG_IMGTRIGGERINSRC");
    }
    if (shown(applet, "FG_CAMERASIMULATOR_ENABLE") == "FG_CAMERASIMULATOR")
        return none + "the camera simulator waits for the line trigger, " + setting(applet, "FG_EXSYNCON");
    return none + "the camera gets no line trigger or is cut off (" + setting(applet, "FG_EXSYNCON") + ", " +
           setting(applet, "FG_CCSEL0") + ", " + setting(applet, "FG_CAMERA_LINK_CORE_RESET") + ")";
}

}  // namespace marovine::host
