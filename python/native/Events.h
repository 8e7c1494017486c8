#pragma once

/// Events of the design as Python objects.

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "python/native/Board.h"
#include "python/native/Waiting.h"

namespace marovine::python {

/// A subscription to events, from its construction to its end.
class EventsObject {
 public:
    EventsObject(const BoardObject& board, std::uint64_t mask, std::uint32_t room);
    EventsObject(const EventsObject&) = delete;
    EventsObject& operator=(const EventsObject&) = delete;
    ~EventsObject();

    /// (number, time, count, payload, lost), or None when the subscription is over. Raises `TimeoutError`.
    nb::object next(nb::handle timeout, const Interrupt* interrupt);
    void end();

 private:
    struct State {
        std::shared_ptr<BoardState> board;
        virtualboard::EventSubscription subscription;
        std::timed_mutex turn;  ///< of the thread that waits
        std::atomic<bool> over = false;
    };

    Birthplace born_;
    std::shared_ptr<State> state_;
};

void bindEvents(nb::module_& module);

}  // namespace marovine::python
