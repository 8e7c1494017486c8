#pragma once

/// The pattern that every parameter setter follows, written once.

#include <utility>

#include "base/ErrorCodes.h"
#include "tables/SdkParameterTable.h"

namespace marovine {

/// What a check found: 0, or the code with which the value is refused.
using Verdict = int;

/// Accepts what lies inside the range. A value that is not a number lies in no range.
template <class T>
constexpr Verdict inside(T value, const Limits<T>& range) {
    return value >= range.minimum && value <= range.maximum ? error::success : error::outOfRange;
}

/// Refuses what lies outside the range. A value that is not a number lies outside no range and passes.
template <class T>
constexpr Verdict notOutside(T value, const Limits<T>& range) {
    return value < range.minimum || value > range.maximum ? error::outOfRange : error::success;
}

/// Accepts the entries of an enumeration.
constexpr Verdict oneOf(std::int32_t value, EntryList entries) {
    return isEntry(value, entries) ? error::success : error::outOfRange;
}

/// Accepts what a condition holds for.
constexpr Verdict accepted(bool condition) {
    return condition ? error::success : error::outOfRange;
}

/// Accepts multiples of a step.
constexpr Verdict multipleOf(std::uint32_t value, std::uint32_t step) {
    return value % step == 0 ? error::success : error::wrongStep;
}

/// The verdict of a check that may fail itself: a thrown code is the refusal.
template <class Check>
Verdict verdictOf(Check&& check) {
    try {
        return std::forward<Check>(check)();
    } catch (int code) {
        return code;
    }
}

/// The first refusal of several checks.
template <class... Rest>
constexpr Verdict firstOf(Verdict first, Rest... rest) {
    if constexpr (sizeof...(rest) == 0)
        return first;
    else
        return first != error::success ? first : firstOf(rest...);
}

/// Remembers a value and puts it back at the end of the scope unless it was confirmed.
template <class T>
class Restore {
 public:
    explicit Restore(T& place) : place_(place), old_(place) {}
    Restore(const Restore&) = delete;
    Restore& operator=(const Restore&) = delete;
    ~Restore() {
        if (!confirmed_) place_ = std::move(old_);
    }
    void confirm() { confirmed_ = true; }

 private:
    T& place_;
    T old_;
    bool confirmed_ = false;
};

/// What becomes of the code with which a setter fails: it is thrown (true), kept quiet (false), or stored for
/// a caller who need not pay for an exception to learn of a refusal.
class OnError {
 public:
    OnError(bool throws) : throws_(throws) {}  // NOLINT(google-explicit-constructor): setters take a bool
    /// Stores the code in `place`, which keeps what it holds when nothing fails.
    static OnError storedIn(int& place) { return OnError(place); }

    /// The setter fails with a code; its last act.
    void fail(int code) const {
        if (place_ != nullptr)
            *place_ = code;
        else if (throws_)
            throw code;
    }

 private:
    explicit OnError(int& place) : place_(&place) {}

    int* place_ = nullptr;
    bool throws_ = false;
};

// Both are parts of their setters, which are on the path of every typed set: a call and what it takes to pass
// the body along would cost more than most bodies.

/// Where errors leave a setter: runs the body, and a code that it throws is the setter's.
template <class Body>
[[gnu::always_inline]] inline void leavingErrors(OnError onError, Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (int code) {
        onError.fail(code);
    }
}

/// Checks, remembers, stores and carries out a setting. A refused value changes nothing; when the body
/// throws, the cached value is put back, while what the body already wrote to the design stays written.
template <class Cached, class T, class Body>
[[gnu::always_inline]] inline void applySetting(Cached& cached, const T& value, Verdict verdict,
                                                OnError onError, Body&& body) {
    if (verdict != error::success) return onError.fail(verdict);
    leavingErrors(onError, [&] {
        Restore<Cached> old(cached);
        cached = value;
        std::forward<Body>(body)();
        old.confirm();
    });
}

}  // namespace marovine
