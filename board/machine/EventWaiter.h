#pragma once

/// Who waits for events: a thread of the host, or one of the board's own that calls the host back.

#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "board/machine/Board.h"

namespace virtualboard {

/// One subscription. Whoever holds it ends it: a thread that calls back keeps what it needs by itself.
class EventWaiter {
 public:
    using Callback = std::function<void(const VirtualBoardEvent&)>;

    EventWaiter(std::shared_ptr<Board> board, std::uint64_t mask, std::size_t room)
        : board_(std::move(board)), pending_(board_->subscribe(mask, room)) {}
    EventWaiter(const EventWaiter&) = delete;
    EventWaiter& operator=(const EventWaiter&) = delete;
    ~EventWaiter() { end(); }

    /// Gives all events to a function from now on. To be called once.
    void callBack(Callback callback);
    /// The code of `Board::waitEvent`; `kUnknownSubscription` when the events are given to a function.
    int wait(double seconds, VirtualBoardEvent& event);
    /// Ends the subscription and waits for a call that is under way, unless it is that call's own thread.
    void end();

 private:
    std::shared_ptr<Board> board_;
    std::shared_ptr<PendingEvents> pending_;
    std::mutex mutex_;  ///< of the thread below
    std::thread thread_;
    bool callsBack_ = false;
};

}  // namespace virtualboard
