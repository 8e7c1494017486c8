#include "python/native/Events.h"

#include <chrono>
#include <utility>

namespace marovine::python {

using virtualboard::Event;

EventsObject::EventsObject(const BoardObject& board, std::uint64_t mask, std::uint32_t room)
    : state_(std::make_shared<State>()) {
    state_->board = board.use();
    state_->subscription = unlocked([&] { return state_->board->board.control().waitEvents(mask, room); });
}

EventsObject::~EventsObject() {
    if (!born_.isHere()) {
        abandon(std::move(state_));
        return;
    }
    end();
}

void EventsObject::end() {
    born_.check();
    state_->over = true;
    unlocked([state = state_] {
        const std::lock_guard turn(state->turn);  // a wait that is under way looks every moment
        state->subscription.end();
    });
}

nb::object EventsObject::next(nb::handle timeout, const Interrupt* interrupt) {
    const auto seconds = timeoutFrom(timeout);
    born_.check();
    const auto state = state_;
    const auto moment = [&](std::chrono::milliseconds slice) -> std::optional<Event> {
        const std::unique_lock turn(state->turn, slice);
        if (!turn || state->over) return std::nullopt;
        return state->subscription.next(std::chrono::duration<double>(slice).count());
    };
    const auto event = waitFor(
        seconds, interrupt, moment, [&] { return state->over.load(); },
        [] {
            return std::string("no event came in time; unless the clock runs in real time, it must be moved");
        });
    if (!event) return nb::none();
    return nb::make_tuple(event->number, event->time, event->count, event->payload, event->lost);
}

void bindEvents(nb::module_& module) {
    nb::class_<Interrupt>(module, "Interrupt").def(nb::init<>()).def("set", &Interrupt::set);
    nb::class_<EventsObject>(module, "Events", nb::is_weak_referenceable())
        .def(nb::init<const BoardObject&, std::uint64_t, std::uint32_t>(), nb::arg("board"), nb::arg("mask"),
             nb::arg("room"))
        .def("next_event", &EventsObject::next, nb::arg("timeout").none(), nb::arg("interrupt").none())
        .def("end", &EventsObject::end);
}

}  // namespace marovine::python
