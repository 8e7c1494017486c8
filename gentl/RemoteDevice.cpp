#include "gentl/RemoteDevice.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/ErrorCodes.h"
#include "client/Explain.h"
#include "client/Influences.h"
#include "gentl/Stream.h"
#include "marovine/Image.h"

namespace marovine::gentl {

namespace {

/// Decides how large a picture is; a consumer that streams has its buffers for that size.
constexpr std::array<std::string_view, 3> kSizes{"FG_WIDTH", "FG_HEIGHT", "FG_FORMAT"};
/// What TLParamsLocked locks.
constexpr std::array<std::string_view, 6> kLockedByStreaming{"FG_WIDTH", "FG_HEIGHT", "FG_FORMAT",
                                                             "Width",    "Height",    "PixelFormat"};
/// What an acquisition locks.
constexpr std::array<std::string_view, 2> kLockedByAcquisition{"AcquisitionMode", "AcquisitionFrameCount"};

/// Puts a world around a board.
void loadWorld(virtualboard::Control& board, const std::string& file) {
    try {
        board.loadWorld(file);
    } catch (const std::exception& error) {
        throw Error(GC_ERR_IO, error.what());
    }
}

}  // namespace

RemoteDevice::RemoteDevice(std::string id, std::string serialNumber, const std::string& worldFile,
                           bool readOnly)
    : Module("Device", std::move(id)),
      serialNumber_(std::move(serialNumber)),
      readOnly_(readOnly),
      applet_(host::Library::load(), std::make_unique<host::VirtualBoard>(),
              {.writeDefaults = true, .rememberSteps = true}) {
    if (!worldFile.empty()) loadWorld(board(), worldFile);
    board().setClockMode(virtualboard::ClockMode::RealTime);
    rememberWindow();
}

void RemoteDevice::setStream(std::weak_ptr<Stream> stream) {
    const std::lock_guard lock(streaming_);
    stream_ = std::move(stream);
}

std::shared_ptr<Stream> RemoteDevice::stream() {
    const std::lock_guard lock(streaming_);
    return stream_.lock();
}

// ---- values ----

std::int64_t RemoteDevice::integer(std::string_view name) const {
    return static_cast<std::int64_t>(host::numberOf(applet_.get(name)).value());
}

double RemoteDevice::real(std::string_view name) const {
    return static_cast<double>(host::numberOf(applet_.get(name)).value());
}

void RemoteDevice::setInteger(std::string_view name, std::int64_t value) {
    const auto own =
        host::valueLike(host::emptyValueOf(applet_.parameter(name).kind), static_cast<long double>(value));
    if (!own)
        throw Error(GC_ERR_INVALID_VALUE,
                    std::string(name) + ": " + std::to_string(value) + " does not fit the parameter's type");
    set(name, *own);
}

void RemoteDevice::set(std::string_view name, const host::Value& value) {
    const std::lock_guard lock(setting_);
    const auto before = standings();
    if (const int code = applet_.trySet(name, value)) refuse(name, value, code);
    rememberWindow();
    tellWhatMoved(before);
}

void RemoteDevice::setElements(std::string_view name, std::uint32_t first, const host::Field& elements) {
    const std::lock_guard lock(setting_);
    const auto before = standings();
    try {
        applet_.setElements(name, first, elements);
    } catch (const host::Refused& refusal) {
        throw Error(refusal.code == error::notAllowed ? GC_ERR_ACCESS_DENIED : GC_ERR_INVALID_VALUE,
                    refusal.what());
    }
    tellWhatMoved(before);
}

void RemoteDevice::refuse(std::string_view name, const host::Value& value, int code) {
    std::string text;
    try {
        const auto why = host::explain(applet_, {std::string(name), value}, code);
        text = why.sentence();
        for (const auto& line : why.advice()) text += "; " + line;
    } catch (const std::exception&) {  // without a second instance the refusal itself has to do
        const auto parameter = applet_.parameter(name);
        text = host::Refused(code, parameter.name, parameter.textOf(value)).what();
    }
    throw Error(code == error::notAllowed ? GC_ERR_ACCESS_DENIED : GC_ERR_INVALID_VALUE, text);
}

std::vector<host::Applet::Standing> RemoteDevice::standings() const {
    std::vector<host::Applet::Standing> all;
    if (registered(EVENT_FEATURE_INVALIDATE) == nullptr) return all;
    for (const auto& name : applet_.names()) all.push_back(applet_.standing(name));
    return all;
}

void RemoteDevice::tellWhatMoved(const std::vector<host::Applet::Standing>& before) {
    const auto events = registered(EVENT_FEATURE_INVALIDATE);
    if (events == nullptr || before.empty()) return;
    const auto& names = applet_.names();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (applet_.standing(names[i]) == before[i]) continue;
        events->push({.id = names[i]});
        if (const auto more = standardNames_.find(names[i]); more != standardNames_.end())
            for (const auto& standard : more->second) events->push({.id = standard});
    }
}

void RemoteDevice::tellMoved(std::span<const std::string_view> names) {
    const auto events = registered(EVENT_FEATURE_INVALIDATE);
    if (events == nullptr) return;
    for (const auto name : names) events->push({.id = std::string(name)});
}

void RemoteDevice::setStreaming(std::int64_t locked) {
    if (locked != 0 && locked != 1) throw Error(GC_ERR_INVALID_VALUE, "TLParamsLocked is 0 or 1");
    if (tlParamsLocked_.exchange(locked) != locked) tellMoved(kLockedByStreaming);
}

bool RemoteDevice::isLocked(const std::string& name) const {
    if (locked() && std::ranges::find(kSizes, name) != kSizes.end()) return true;
    return !applet_.writable(name);
}

std::string RemoteDevice::whyLocked(const std::string& name) {
    std::string text = name + " cannot be set now";
    if (locked() && applet_.writable(name)) {
        text += ", because TLParamsLocked is 1: end the acquisition first";
    } else {
        const std::lock_guard lock(setting_);
        const auto causes = host::causesOfReadOnly(applet_, name);
        if (!causes.empty()) text += ", because " + host::causesText(causes);
    }
    return text;
}

// ---- the acquisition ----

std::size_t RemoteDevice::payloadSize() const {
    return static_cast<std::size_t>(integer("FG_WIDTH") * integer("FG_HEIGHT")) *
           virtualboard::imaging::kBytesPerPixel;
}

RemoteDevice::Window RemoteDevice::window() const {
    const std::lock_guard lock(windowing_);
    return window_;
}

void RemoteDevice::rememberWindow() {
    const auto value = [this](const char* name) { return static_cast<std::uint32_t>(integer(name)); };
    const Window now{value("FG_XOFFSET"), value("FG_YOFFSET"), value("FG_HEIGHT")};
    const std::lock_guard lock(windowing_);
    window_ = now;
}

std::uint64_t RemoteDevice::picturesOfMode() const {
    switch (acquisitionMode_) {
        case kSingleFrame:
            return 1;
        case kMultiFrame:
            return static_cast<std::uint64_t>(frameCount_.load());
        default:
            return GENTL_INFINITE;
    }
}

void RemoteDevice::setPicturesLeft(std::uint64_t pictures) {
    const bool before = picturesLeft_.exchange(pictures) > 0;
    if (before != (pictures > 0)) tellMoved(kLockedByAcquisition);
}

void RemoteDevice::pictureTaken() {
    std::uint64_t left = picturesLeft_;
    while (left != 0 && left != GENTL_INFINITE && !picturesLeft_.compare_exchange_weak(left, left - 1)) {
    }
    if (left == 1) tellMoved(kLockedByAcquisition);
}

void RemoteDevice::start() {
    // Pictures that are still to come are not asked for again.
    if (!acquiring()) setPicturesLeft(picturesOfMode());
    try {
        if (const auto data = stream()) data->cameraStarts();
    } catch (...) {
        setPicturesLeft(0);
        throw;
    }
}

void RemoteDevice::stop() {
    setPicturesLeft(0);
    if (const auto data = stream()) data->cameraStops();
}

std::vector<std::string> RemoteDevice::moversOf(const std::string& name) {
    // The same for every device: found once, on one that is as it was opened.
    static const auto movers = [] {
        const host::Applet fresh(host::Library::load(), std::make_unique<host::VirtualBoard>(),
                                 {.writeDefaults = true, .rememberSteps = true});
        return host::moversOfAll(fresh);
    }();
    const auto found = movers.find(name);
    auto names = found != movers.end() ? found->second : std::vector<std::string>();
    if (std::ranges::find(kSizes, name) != kSizes.end()) names.emplace_back("TLParamsLocked");
    return names;
}

void RemoteDevice::close() {
    notify(0);
    Module::close();
}

void RemoteDevice::describe(NodeMap& nodes) {
    describeApplet(nodes);  // first: the standard features are made of its parameters
    describeDevice(nodes);
    describePicture(nodes);
    describeAcquisition(nodes);
    describeTriggers(nodes);
    describeColour(nodes);
    describeEvents(nodes);
}

}  // namespace marovine::gentl
