#pragma once

/// How functions of the C interface end: with a code, and a text for the thread that called.

#include <exception>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

#include "board/machine/Machine.h"
#include "board/machine/Records.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

/// A refusal with a code of its own.
class Refusal : public std::runtime_error {
 public:
    Refusal(int code, const std::string& why) : std::runtime_error(why), code_(code) {}
    /// In the words of BoardCodes.h.
    explicit Refusal(int code) : Refusal(code, codeMeaning(code)) {}

    int code() const { return code_; }

 private:
    int code_;
};

/// Keeps the text for `VirtualBoardLastError` and returns the code. An empty text is that of success.
int told(int code, const char* why) noexcept;

/// Runs what a function of the interface does. What is thrown becomes a code: nothing else may leave.
template <typename Act>
int guarded(Act act) noexcept {
    try {
        act();
        return told(kOk, "");
    } catch (const Refusal& refusal) {
        return told(refusal.code(), refusal.what());
    } catch (const std::out_of_range& error) {
        return told(kUnknownParameter, error.what());
    } catch (const std::invalid_argument& error) {
        return told(kWrongArgument, error.what());
    } catch (const std::bad_alloc&) {
        return told(kInternalFailure, "there is no memory for it");
    } catch (const std::exception& error) {
        return told(kInternalFailure, error.what());
    } catch (...) {
        return told(kInternalFailure, codeMeaning(kInternalFailure));
    }
}

inline std::shared_ptr<Board> boardOf(GXdevice* device) {
    auto board = Machine::instance().boards.find(device);
    if (board == nullptr) throw Refusal(kUnknownBoard);
    return board;
}

/// The same for a function of one board.
template <typename Act>
int onBoard(GXdevice* device, Act act) noexcept {
    return guarded([&] { act(*boardOf(device)); });
}

inline void check(int code) {
    if (code != kOk) throw Refusal(code);
}

/// A pointer that must be given.
template <typename T>
T* given(T* pointer) {
    if (pointer == nullptr) throw Refusal(kNullPointer);
    return pointer;
}

/// A caller's record, as this version knows it.
template <typename Record>
Record taken(const Record* record) {
    Record known;
    check(takeRecord(given(record), known));
    return known;
}

/// A run of a caller's array; null only when there is nothing in it.
template <typename T>
std::span<const T> run(const T* first, std::size_t count) {
    return {count != 0 ? given(first) : first, count};
}

/// What a callback is given. It is released when nobody can call it any more: to be taken over first of all,
/// so that it is released as well where the call is refused.
inline std::shared_ptr<void> contextOf(void* context, VirtualBoardRelease release) {
    if (release == nullptr) return {context, [](void*) {}};
    return {context, release};
}

}  // namespace virtualboard
