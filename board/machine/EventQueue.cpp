#include "board/machine/EventQueue.h"

#include <algorithm>
#include <string>

namespace virtualboard {

namespace {

constexpr unsigned kInputs = 12;  // of an applet's board: eight, and four at the front
constexpr unsigned kFirstFront = 8;

/// The name that designs give an event.
std::string nameOf(unsigned source) {
    constexpr auto rising = static_cast<unsigned>(EventSource::FirstInputRising);
    constexpr auto falling = static_cast<unsigned>(EventSource::FirstInputFalling);
    if (source >= rising && source < falling + kInputs) {
        const unsigned input = (source - rising) % kInputs;
        const std::string pin = source < falling ? "Pin" : "NotPin";
        const std::string inputs = "Device1_Process1_Trigger_Inputs_InputEvents_";
        return input < kFirstFront
                   ? inputs + "InputEvents_" + pin + std::to_string(input)
                   : inputs + "InputFrontEvents_Front" + pin + std::to_string(input - kFirstFront);
    }
    const std::string transfers = "Device1_Process1_Trigger_Events_Events_LVAL_FVAL_";
    switch (static_cast<EventSource>(source)) {
        case EventSource::Overflow:
            return "Device1_Process0_Overflow_Overflow";
        case EventSource::FrameStart:
            return transfers + "Cam0FrameStart";
        case EventSource::FrameEnd:
            return transfers + "Cam0FrameEnd";
        case EventSource::LineStart:
            return transfers + "Cam0LineStart";
        case EventSource::LineEnd:
            return transfers + "Cam0LineEnd";
        case EventSource::CustomSignal0:
            return transfers + "CustomSignalEvent0";
        case EventSource::CustomSignal1:
            return transfers + "CustomSignalEvent1";
        default:
            return {};
    }
}

}  // namespace

bool PendingEvents::add(unsigned number, BoardTime time, std::int64_t payload) {
    const std::int64_t count = ++counts_[number];
    const bool full = events_.size() >= room_;
    if (full && events_.back().time <= time) {
        ++lost_;
        return false;
    }
    if (full) {
        // The lost ones before it come back as lost ones behind the last that stays.
        lost_ += 1 + events_.back().lost;
        events_.pop_back();
    }
    const auto place = std::ranges::upper_bound(events_, time, {}, &VirtualBoardEvent::time);
    VirtualBoardEvent event{.size = sizeof(VirtualBoardEvent),
                            .number = number,
                            .time = time,
                            .count = count,
                            .payload = payload,
                            .lost = 0};
    if (place == events_.end() && !full) std::swap(event.lost, lost_);
    events_.insert(place, event);
    return true;
}

void PendingEvents::skip(unsigned number, std::int64_t count) {
    counts_[number] += count;
    lost_ += count;
}

std::optional<VirtualBoardEvent> PendingEvents::take() {
    if (events_.empty()) return std::nullopt;
    const VirtualBoardEvent event = events_.front();
    events_.pop_front();
    return event;
}

void EventQueue::attach(const FindEvent& find) {
    for (unsigned source = 0; source < kEventSources; ++source) {
        numbers_[source] = std::min(find(nameOf(source)).value_or(kNoNumber), kNoNumber);
    }
    update();
    reconsider();
}

void EventQueue::add(const std::shared_ptr<PendingEvents>& subscription) {
    subscriptions_.push_back(subscription);
    update();
}

void EventQueue::remove(const std::shared_ptr<PendingEvents>& subscription) {
    std::erase(subscriptions_, subscription);
    subscription->closed = true;
    subscription->changed.notify_all();
    update();
}

void EventQueue::close() {
    while (!subscriptions_.empty()) remove(std::shared_ptr(subscriptions_.back()));
}

void EventQueue::update() {
    std::uint64_t masks = 0;
    for (const auto& subscription : subscriptions_) masks |= subscription->mask();
    wanted_ = sourcesOf(masks);
}

std::uint64_t EventQueue::sourcesOf(std::uint64_t mask) const {
    std::uint64_t sources = 0;
    for (unsigned source = 0; source < kEventSources; ++source) {
        const unsigned number = numbers_[source];
        if (number != kNoNumber && (mask >> number & 1) != 0) sources |= std::uint64_t{1} << source;
    }
    return sources;
}

template <typename Act>
void EventQueue::forEach(unsigned number, Act act) {
    for (const auto& subscription : subscriptions_) {
        if ((subscription->mask() >> number & 1) != 0) act(*subscription);
    }
}

bool EventQueue::post(EventSource source, BoardTime time, std::int64_t payload) {
    return wants(source) && raise(numberOf(source), time, payload);
}

bool EventQueue::raise(unsigned number, BoardTime time, std::int64_t payload) {
    bool room = false;
    forEach(number, [&](PendingEvents& subscription) {
        if (subscription.add(number, time, payload)) room = true;
        subscription.changed.notify_all();
    });
    return room;
}

void EventQueue::skip(EventSource source, std::int64_t count) {
    if (!wants(source)) return;
    forEach(numberOf(source),
            [&](PendingEvents& subscription) { subscription.skip(numberOf(source), count); });
}

void EventQueue::reconsider() {
    for (const auto& subscription : subscriptions_) subscription->changed.notify_all();
}

}  // namespace virtualboard
