/// The C interface to events.

#include <cmath>
#include <limits>
#include <utility>

#include "board/machine/EventWaiter.h"
#include "board/machine/Guarded.h"

using namespace virtualboard;

namespace {

std::shared_ptr<EventWaiter> waiterOf(VirtualBoardSubscription* subscription) {
    auto waiter = Machine::instance().subscriptions.find(subscription);
    if (waiter == nullptr) throw Refusal(kUnknownSubscription);
    return waiter;
}

/// A subscription, which nobody has a handle of yet.
std::shared_ptr<EventWaiter> subscribed(GXdevice* device, std::uint64_t mask, std::uint32_t room) {
    if (room == 0) throw std::invalid_argument("a subscription needs room for an event");
    if (mask == 0) throw std::invalid_argument("the mask names no event");
    return std::make_shared<EventWaiter>(boardOf(device), mask, room);
}

}  // namespace

extern "C" {

int VirtualBoardEventNumber(GXdevice* board, const char* name, uint32_t* number) {
    return onBoard(board, [&](Board& b) {
        const auto found = b.eventNumber(given(name));
        if (!found.has_value())
            throw Refusal(kUnknownEvent, "the design has no event '" + std::string(name) + "'");
        *given(number) = *found;
    });
}

int VirtualBoardSubscribe(GXdevice* board, uint64_t mask, uint32_t room,
                          VirtualBoardSubscription** subscription) {
    return guarded([&] {
        given(subscription);
        *subscription = Machine::instance().subscriptions.add(subscribed(board, mask, room));
    });
}

int VirtualBoardWaitEvent(VirtualBoardSubscription* subscription, double seconds, VirtualBoardEvent* event) {
    return guarded([&] {
        const auto waiter = waiterOf(subscription);
        check(checkRecord(given(event)));
        if (!(seconds >= 0)) throw std::invalid_argument("nobody can wait for a negative time");
        VirtualBoardEvent next;
        check(waiter->wait(seconds, next));
        check(answerRecord(next, event));
    });
}

int VirtualBoardOnEvents(GXdevice* board, uint64_t mask, uint32_t room, VirtualBoardEventCallback callback,
                         void* context, VirtualBoardRelease release,
                         VirtualBoardSubscription** subscription) {
    return guarded([&] {
        const auto kept = contextOf(context, release);
        given(subscription);
        given(callback);
        auto waiter = subscribed(board, mask, room);
        waiter->callBack([callback, kept](const VirtualBoardEvent& event) { callback(&event, kept.get()); });
        *subscription = Machine::instance().subscriptions.add(std::move(waiter));
    });
}

int VirtualBoardUnsubscribe(VirtualBoardSubscription* subscription) {
    return guarded([&] {
        if (subscription == nullptr) return;
        if (const auto waiter = Machine::instance().subscriptions.take(subscription)) return waiter->end();
        throw Refusal(kUnknownSubscription);
    });
}

int VirtualBoardRaiseEvent(GXdevice* board, uint32_t number, int64_t payload) {
    return onBoard(board, [&](Board& b) { check(b.raiseEvent(number, payload)); });
}

}  // extern "C"
