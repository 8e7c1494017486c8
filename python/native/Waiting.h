#pragma once

/// Waits that an interrupt ends: in slices, with a look at Python's signals between them.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>

#include "python/native/Applet.h"

namespace marovine::python {

/// The seconds that a timeout stands for; nothing for None. Raises `TypeError` or `ValueError`.
inline std::optional<double> timeoutFrom(nb::handle timeout) {
    constexpr const char* kText = "a timeout is a number of seconds, 0 or more, or None";
    if (timeout.is_none()) return std::nullopt;
    const double seconds = PyFloat_AsDouble(timeout.ptr());
    if (seconds >= 0) return seconds;
    const bool isNoNumber = PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_TypeError) != 0;
    PyErr_Clear();
    raise(isNoNumber ? PyExc_TypeError : PyExc_ValueError, kText);
}

/// Ends one wait from another thread. Set for good, so that it also ends a wait that has not begun yet.
class Interrupt {
 public:
    void set() { set_ = true; }
    bool isSet() const { return set_; }

 private:
    std::atomic<bool> set_ = false;
};

/// Asks `next`, without the interpreter's lock, for something that comes within a moment, until it has come,
/// it is over, or the time is up. Nothing when it is over; `TimeoutError`, with what `why` says, when the
/// time is up or `interrupt`, which may be null, is set.
template <class Next, class IsOver, class Why>
auto waitFor(std::optional<double> timeout, const Interrupt* interrupt, const Next& next,
             const IsOver& isOver, const Why& why) -> decltype(next(std::chrono::milliseconds())) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kSlice{50};
    const auto begin = Clock::now();
    while (true) {
        if (interrupt != nullptr && interrupt->isSet()) raise(PyExc_TimeoutError, "the wait was ended");
        std::chrono::milliseconds slice = kSlice;
        bool last = false;
        if (timeout) {
            const std::chrono::duration<double> left =
                std::chrono::duration<double>(*timeout) - (Clock::now() - begin);
            last = left <= kSlice;
            if (last) slice = std::max(slice.zero(), std::chrono::ceil<std::chrono::milliseconds>(left));
        }
        if (auto found = unlocked([&] { return next(slice); })) return found;
        if (isOver()) return std::nullopt;
        if (PyErr_CheckSignals() != 0) throw nb::python_error();
        if (last) raise(PyExc_TimeoutError, unlocked(why));
    }
}

}  // namespace marovine::python
