/// How a board tells of its events.

#include <algorithm>
#include <chrono>

#include "board/machine/Board.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

std::optional<unsigned> Board::findEvent(std::string_view name) const {
    const auto& events = design_->data().events;
    const auto found = std::ranges::find(events, name, &EventData::name);
    if (found == events.end()) return std::nullopt;
    return static_cast<unsigned>(found - events.begin());
}

std::optional<unsigned> Board::eventNumber(std::string_view name) {
    const Lock lock(mutex_);
    return design_ != nullptr ? findEvent(name) : std::nullopt;
}

std::shared_ptr<PendingEvents> Board::subscribe(std::uint64_t mask, std::size_t room) {
    auto pending = std::make_shared<PendingEvents>(mask, room);
    const Lock lock(mutex_);
    settle();  // what happened before is not told
    events_.add(pending);
    acquisition_.listenersChanged();
    return pending;
}

void Board::unsubscribe(const std::shared_ptr<PendingEvents>& pending) {
    const Lock lock(mutex_);
    events_.remove(pending);
    acquisition_.listenersChanged();
}

void Board::endEvents() {
    const Lock lock(mutex_);
    events_.close();
}

int Board::waitEvent(PendingEvents& pending, double seconds, VirtualBoardEvent& event) {
    using Clock = std::chrono::steady_clock;
    constexpr double kLongest = 1e9;  // beyond all patience, so that no addition of times overflows
    const auto patience = std::chrono::duration<double>(std::min(seconds, kLongest));
    const Clock::time_point deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(patience);
    Lock lock(mutex_);
    while (!pending.closed) {
        if (pending.empty()) settle();
        if (const auto next = pending.take()) {
            event = *next;
            return kOk;
        }
        const auto now = Clock::now();
        if (now >= deadline) return kTimeout;
        auto until = deadline;
        // A clock that does not run wakes us when it moves.
        if (clock_.mode() == ClockMode::RealTime) {
            const auto due = nextEvent(events_.sourcesOf(pending.mask()));
            const std::chrono::nanoseconds left(due.has_value() ? std::max<BoardTime>(0, *due - clock_.now())
                                                                : BoardClock::kLatest);
            if (left < deadline - now) until = now + left;
        }
        pending.changed.wait_until(lock, until);
    }
    return kUnknownSubscription;
}

std::optional<BoardTime> Board::nextEvent(std::uint64_t sources) const {
    constexpr auto bit = [](EventSource source) { return std::uint64_t{1} << static_cast<unsigned>(source); };
    // The acquisition's own thread sees pictures end.
    constexpr std::uint64_t kPictures = bit(EventSource::Overflow) | bit(EventSource::FrameEnd);
    constexpr std::uint64_t kInputEdges = bit(EventSource::FrameStart) - bit(EventSource::FirstInputRising);
    // Where edges come fast a thousand looks a second are enough: no sooner is anybody woken who waits.
    constexpr BoardTime kMillisecond = 1'000'000;
    if ((sources & ~kPictures) == 0) return std::nullopt;
    const auto next = acquisition_.nextEdge((sources & ~kPictures & ~kInputEdges) != 0);
    return next ? std::optional(std::max(*next, clock_.now() + kMillisecond)) : std::nullopt;
}

int Board::raiseEvent(unsigned number, std::int64_t payload) {
    const Lock lock(mutex_);
    if (design_ == nullptr || number >= design_->data().events.size()) return kUnknownEvent;
    settle();
    events_.raise(number, clock_.now(), payload);
    return kOk;
}

}  // namespace virtualboard
