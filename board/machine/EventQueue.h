#pragma once

/// How events reach those who wait for them.

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "board/lines/BoardClock.h"
#include "board/lines/EventSource.h"
#include "marovine/VirtualBoard.h"

namespace virtualboard {

/// What one waiter has not seen yet: events in the order of their times, as many as there is room for. Where
/// there is none the latest ones are lost.
class PendingEvents {
 public:
    PendingEvents(std::uint64_t mask, std::size_t room) : mask_(mask), room_(room) {}

    std::uint64_t mask() const { return mask_; }
    /// Takes an event in. False when neither it nor a later one finds room.
    bool add(unsigned number, BoardTime time, std::int64_t payload);
    /// Counts events that nobody will look at.
    void skip(unsigned number, std::int64_t count);
    /// The earliest event that is still here.
    std::optional<VirtualBoardEvent> take();
    bool empty() const { return events_.empty(); }

    std::condition_variable changed;  ///< an event came, or the time of the next one may be another
    bool closed = false;              ///< nothing comes any more

 private:
    std::uint64_t mask_;
    std::size_t room_;
    std::deque<VirtualBoardEvent> events_;
    std::array<std::int64_t, 64> counts_{};  ///< occurrences since the subscription, by event number
    std::int64_t lost_ = 0;                  ///< behind the last event in the queue
};

/// The events of one board. The board's lock guards it; the caller holds it.
class EventQueue {
 public:
    using FindEvent = std::function<std::optional<unsigned>(std::string_view)>;

    /// Learns the numbers of a design's events from their names. Who is subscribed stays so.
    void attach(const FindEvent& find);

    void add(const std::shared_ptr<PendingEvents>& subscription);
    void remove(const std::shared_ptr<PendingEvents>& subscription);
    /// Ends all subscriptions.
    void close();

    /// The sources that anybody waits for; bit n stands for source n. What nobody waits for need not be
    /// posted.
    std::uint64_t wanted() const { return wanted_; }
    bool wants(EventSource source) const { return (wanted_ >> static_cast<unsigned>(source) & 1) != 0; }
    /// The sources of the events in a mask.
    std::uint64_t sourcesOf(std::uint64_t mask) const;

    /// An event happened. Events of different sources may come in any order, those of one source by their
    /// times. False when no later event of this source finds room: the caller may skip them.
    bool post(EventSource source, BoardTime time, std::int64_t payload);
    /// `count` events of a source happened which find no room.
    void skip(EventSource source, std::int64_t count);
    /// An event happened that has no source of the board's own. False as for `post`.
    bool raise(unsigned number, BoardTime time, std::int64_t payload);
    /// Wakes all who wait, to look anew when the next event comes.
    void reconsider();

 private:
    static constexpr unsigned kNoNumber = 64;
    using Numbers = std::array<unsigned, kEventSources>;

    unsigned numberOf(EventSource source) const { return numbers_[static_cast<unsigned>(source)]; }
    void update();
    /// Calls `act` with every subscription to an event.
    template <typename Act>
    void forEach(unsigned number, Act act);

    Numbers numbers_ = noNumbers();
    std::vector<std::shared_ptr<PendingEvents>> subscriptions_;
    std::uint64_t wanted_ = 0;

    static constexpr Numbers noNumbers() {
        Numbers none{};
        none.fill(kNoNumber);
        return none;
    }
};

}  // namespace virtualboard
