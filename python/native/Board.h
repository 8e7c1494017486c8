#pragma once

/// A virtual board as a Python object, and what listens to its writes.

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "client/VirtualBoard.h"
#include "python/native/Raising.h"

namespace marovine::python {

using Writes = std::vector<virtualboard::Write>;

/// Everything that follows the writes of one board. They come in whichever thread sets a parameter, without
/// the interpreter's lock.
class WriteListeners {
 public:
    explicit WriteListeners(virtualboard::Control control) : control_(control) {}

    /// Whether a journal was kept before.
    bool keepJournal(bool on);
    Writes takeJournal();
    /// Adds a list that takes in every write until it is removed.
    void add(Writes* list);
    void remove(Writes* list);
    /// Calls a Python function at each write; none ends that.
    void call(nb::object function);
    /// Whether this thread is in that function now.
    bool isCalling() const;

 private:
    void listen();
    void heard(const virtualboard::Write& write);

    virtualboard::Control control_;
    std::mutex mutex_;
    bool journalOn_ = false;
    Writes journal_;
    std::vector<Writes*> lists_;
    std::shared_ptr<nb::object> function_;  ///< the object itself is touched with the interpreter's lock only
};

/// What a board object and the applets on it share.
struct BoardState {
    host::VirtualBoard board{};
    std::shared_ptr<WriteListeners> listeners = std::make_shared<WriteListeners>(board.control());
    virtualboard::ClockMode clock = virtualboard::ClockMode::Manual;
    virtualboard::imaging::Belt belt{};
    std::atomic<bool> hasWorld = false;  ///< so that pictures have a ground truth
};

/// The Python object.
class BoardObject {
 public:
    BoardObject() : state_(std::make_shared<BoardState>()) {}
    BoardObject(const BoardObject&) = delete;
    BoardObject& operator=(const BoardObject&) = delete;
    ~BoardObject();

    /// The board; raises `ClosedError` or `ForkedError`.
    std::shared_ptr<BoardState> use() const;
    void close();
    bool closed() const { return state_ == nullptr; }

 private:
    Birthplace born_;
    std::shared_ptr<BoardState> state_;
};

/// A write as (name, value, first element, code).
nb::object writeToPython(const virtualboard::Write& write);
nb::list writesToPython(const Writes& writes);

void bindBoard(nb::module_& module);

}  // namespace marovine::python
