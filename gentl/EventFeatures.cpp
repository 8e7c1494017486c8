/// The design's events as a consumer hears of them.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include "gentl/RemoteDevice.h"

namespace marovine::gentl {

namespace {

constexpr const char* kEvents = "EventControl";
/// The numbers that consumers know events by begin here.
constexpr std::uint64_t kFirstNumber = 0x9000;

/// What follows the number of an event: one number behind the other.
struct EventData {
    std::int64_t time;
    std::int64_t payload;
    std::int64_t lost;
};

/// The standard's way to name what the design names: a beginning and, where it has one, an end.
struct Renamed {
    std::string_view begin, end;
    std::string_view before, after;
};
constexpr std::array kNames{
    Renamed{"FG_OVERFLOW_CAM0", "", "BufferOverflow", ""},
    Renamed{"FG_START_OF_FRAME_CAM_PORT_0", "", "FrameStart", ""},
    Renamed{"FG_END_OF_FRAME_CAM_PORT_0", "", "FrameEnd", ""},
    Renamed{"FG_START_OF_LINE_CAM_PORT_0", "", "LineStart", ""},
    Renamed{"FG_END_OF_LINE_CAM_PORT_0", "", "LineEnd", ""},
    Renamed{"FG_TRIGGER_INPUT", "_RISING", "Line", "RisingEdge"},
    Renamed{"FG_TRIGGER_INPUT", "_FALLING", "Line", "FallingEdge"},
    Renamed{"FG_TRIGGER_FRONT_GPI", "_RISING", "FrontLine", "RisingEdge"},
    Renamed{"FG_TRIGGER_FRONT_GPI", "_FALLING", "FrontLine", "FallingEdge"},
    Renamed{"FG_CUSTOM_SIGNAL_EVENT_", "", "CustomSignal", ""},
    Renamed{"Device1_Process1_BoardMonitor_", "", "", ""},
};

std::string standardName(std::string_view name) {
    for (const auto& row : kNames) {
        if (!name.starts_with(row.begin) || !name.ends_with(row.end)) continue;
        const auto middle = name.substr(row.begin.size(), name.size() - row.begin.size() - row.end.size());
        return std::string(row.before) + std::string(middle) + std::string(row.after);
    }
    return std::string(name);
}

}  // namespace

void RemoteDevice::describeEvents(NodeMap& nodes) {
    const auto events = applet_.events();
    std::vector<EntryNode> entries;
    for (std::size_t i = 0; i < events.size(); ++i) {
        entries.push_back({standardName(events[i].name), static_cast<std::int64_t>(i), events[i].name});
        eventMasks_.push_back(events[i].mask);
    }
    nodes.enumeration({.name = "EventSelector",
                       .category = kEvents,
                       .toolTip = "The event that EventNotification is about",
                       .selects = {"EventNotification"}},
                      entries,
                      {.read = [this] { return eventSelector_.load(); },
                       .write =
                           [this](std::int64_t value) {
                               if (value < 0 || value >= static_cast<std::int64_t>(eventMasks_.size()))
                                   throw Error(GC_ERR_INVALID_VALUE, "there is no such event");
                               eventSelector_ = value;
                           }});
    const auto mask = [this] { return eventMasks_[static_cast<std::size_t>(eventSelector_.load())]; };
    nodes.enumeration({.name = "EventNotification",
                       .category = kEvents,
                       .toolTip = "Whether the selected event is told; register for the event of the remote "
                                  "device to hear of it",
                       .movedBy = {"EventSelector"}},
                      {{.name = "Off", .value = 0}, {.name = "On", .value = 1}},
                      {.read = [this, mask] { return (notified_ & mask()) != 0 ? 1 : 0; },
                       .write =
                           [this, mask](std::int64_t on) {
                               if (on != 0 && on != 1)
                                   throw Error(GC_ERR_INVALID_VALUE, "EventNotification is 0 or 1");
                               notify(on == 1 ? notified_ | mask() : notified_ & ~mask());
                           }});
    for (std::size_t i = 0; i < events.size(); ++i) {
        const std::string name = "Event" + entries[i].name;
        const std::string category = std::string(kEvents) + " > " + name + "Data";
        const std::uint64_t number = kFirstNumber + i;
        nodes.integer({.name = name,
                       .category = category,
                       .toolTip = "Number of the event " + events[i].name,
                       .visibility = Visibility::Expert},
                      {.read = [number] { return static_cast<std::int64_t>(number); }});
        const auto data = [&](const char* what, const char* toolTip, const char* unit, std::size_t offset) {
            nodes.eventData({.name = name + what,
                             .category = category,
                             .toolTip = toolTip,
                             .unit = unit,
                             .visibility = Visibility::Expert},
                            number, offset);
        };
        data("Timestamp", "Board time at which it happened", "ns", offsetof(EventData, time));
        data("Payload", "An input's level, the number of a frame or a line, or pictures lost", "",
             offsetof(EventData, payload));
        data("Lost", "Events that came too fast to be told between the one before and this one", "",
             offsetof(EventData, lost));
    }
}

/// Listens to the events of a mask, and to no others.
void RemoteDevice::notify(std::uint64_t mask) {
    const std::lock_guard lock(listening_);
    subscription_.end();
    notified_ = mask;
    if (mask == 0) return;
    subscription_ = board().onEvents(mask, [this](const virtualboard::Event& event) { tell(event); });
}

void RemoteDevice::tell(const virtualboard::Event& event) {
    const auto events = registered(EVENT_REMOTE_DEVICE);
    if (events == nullptr) return;
    const auto place = std::ranges::find(eventMasks_, std::uint64_t{1} << event.number);
    const EventData data{.time = event.time, .payload = event.payload, .lost = event.lost};
    Event told{.number = kFirstNumber + static_cast<std::uint64_t>(place - eventMasks_.begin())};
    told.value.resize(sizeof data);
    std::memcpy(told.value.data(), &data, sizeof data);
    events->push(std::move(told));
}

}  // namespace marovine::gentl
