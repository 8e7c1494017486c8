#include "board/machine/EventWaiter.h"

#include <limits>
#include <utility>

#include "marovine/BoardCodes.h"

namespace virtualboard {

namespace {

void deliver(Board& board, PendingEvents& pending, const EventWaiter::Callback& callback) {
    VirtualBoardEvent event;
    try {
        for (;;) {
            const int code = board.waitEvent(pending, std::numeric_limits<double>::infinity(), event);
            if (code == kUnknownSubscription) return;
            if (code == kOk) callback(event);
        }
    } catch (...) {  // a callback that fails is called no more
    }
}

}  // namespace

void EventWaiter::callBack(Callback callback) {
    callsBack_ = true;
    thread_ = std::thread([board = board_, pending = pending_, callback = std::move(callback)] {
        deliver(*board, *pending, callback);
    });
}

int EventWaiter::wait(double seconds, VirtualBoardEvent& event) {
    return callsBack_ ? int{kUnknownSubscription} : board_->waitEvent(*pending_, seconds, event);
}

void EventWaiter::end() {
    board_->unsubscribe(pending_);
    const std::lock_guard lock(mutex_);
    if (!thread_.joinable()) return;
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

}  // namespace virtualboard
