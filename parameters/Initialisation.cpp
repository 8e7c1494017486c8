/// The state of a new instance: the design's debug points, the start values of the simulator, the defaults.

#include <algorithm>

#include "parameters/FgGxWrapperImpl.h"
#include "parameters/ParameterHandlers.h"

namespace error = marovine::error;

namespace {

/// Longest name, kind or path of a debug point, and longest count of debug points, without terminator.
constexpr std::size_t kDebugTextRoom = 127;
constexpr std::size_t kDebugCountRoom = 14;

/// Pixels per second that the test-pattern generator can deliver.
constexpr double kMaximumPixelRate = 999999999.9999999;

marovine::DebugEntry::Kind debugKind(const std::string& text) {
    if (text == "Inject") return marovine::DebugEntry::Kind::Inject;
    if (text == "InjectMonitor") return marovine::DebugEntry::Kind::InjectMonitor;
    throw error::internalFailure;
}

}  // namespace

std::string FgGxWrapperImpl::readDebugText(std::string_view name, std::size_t room) const {
    // The design may hold more than there is room for: read into a buffer that fits any text, then cut.
    char* buffer = textBuffer_.get();
    buffer[0] = '\0';
    readByName({"Debug_", name}, buffer, FG_TYPE_TEXT);
    return std::string(buffer, std::find(buffer, buffer + room, '\0'));
}

int FgGxWrapperImpl::readDebugEntryCount() const {
    // One decimal digit; whatever else stands there gives no sensible number, and most of it a negative one.
    const std::string count = readDebugText("Entries", kDebugCountRoom);
    return (count.empty() ? '\0' : count.front()) - '0';
}

void FgGxWrapperImpl::readDebugEntries() {
    const int count = readDebugEntryCount();
    for (int k = 0; k < count; ++k) {
        const std::string number = std::to_string(k);
        marovine::DebugEntry entry;
        entry.name = readDebugText("Name" + number, kDebugTextRoom);
        entry.kind = debugKind(readDebugText("Type" + number, kDebugTextRoom));
        entry.path = readDebugText("Path" + number, kDebugTextRoom);
        debugEntries_.push_back(std::move(entry));
    }
}

void FgGxWrapperImpl::executeInitRoutines() {
    try {
        readDebugEntries();
    } catch (int) {
        return;
    }
    simulator_ = {.effectiveWidth = 1024,
                  .effectiveLineGap = 0,
                  .effectiveHeight = 1024,
                  .effectiveFrameGap = 0,
                  .maximumPixelRate = kMaximumPixelRate,
                  .computedFrameRate = 10.0};
    setMaximum(marovine::sdkId("FG_CAMERASIMULATOR_PIXEL_FREQUENCY"), kMaximumPixelRate / 1000000.0);
    effectiveBayerInit_ = marovine::constant("RedFollowedByGreen");
}

void FgGxWrapperImpl::setDefaultValues() {
    for (std::size_t i = 0; i < marovine::sdkParameterCount; ++i) {
        const auto apply = [&]<class V, class T>(const V& value, marovine::Setter<T> set) {
            if constexpr (std::is_convertible_v<V, T>) (this->*set)(static_cast<T>(value), false);
        };
        std::visit(
            [&]<class V, class H>(const V& value, const H& handler) {
                if constexpr (requires { apply(value, handler); }) apply(value, handler);
            },
            marovine::sdkParameters[i].defaultValue, marovine::parameterHandlers[i].set);
    }
}
