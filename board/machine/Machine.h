#pragma once

/// The machine that the boards stand in: who is who behind the opaque pointers that hosts hold.

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <type_traits>
#include <utility>

#include "board/machine/Board.h"
#include "board/machine/EventWaiter.h"
#include "board/machine/FrameRing.h"

namespace virtualboard {

/// How the next opening behaves, as the control interface wants it.
struct OpeningFaults {
    bool refuseDesign = false;
    bool refuseHandle = false;
    int handleError = 0;
    Names hidden;
};

/// One handle that the host runtime opened on a board.
struct Handle {
    Fg_Struct record{};  ///< what the host holds; its instance is this handle
    std::shared_ptr<Board> board;
    std::shared_ptr<const Design> design;
    std::atomic<int> lastError = 0;
    std::mutex textsMutex;
    std::map<char*, std::unique_ptr<char[]>> texts;  ///< handed out and not yet given back
};

/// The handle behind a record; null for a null record or one without instance.
inline Handle* handleOf(Fg_Struct* record) {
    return record != nullptr ? static_cast<Handle*>(record->instance) : nullptr;
}

/// What stands behind one sort of opaque pointer. Thread-safe.
template <typename Key, typename Thing>
class Registry {
 public:
    Key* add(Key* key, std::shared_ptr<Thing> thing) {
        const std::lock_guard lock(mutex_);
        things_.emplace(key, std::move(thing));
        return key;
    }
    /// Adds a thing under its own address.
    Key* add(std::shared_ptr<Thing> thing) {
        auto* key = reinterpret_cast<Key*>(const_cast<std::remove_const_t<Thing>*>(thing.get()));
        return add(key, std::move(thing));
    }

    /// Null for a pointer that is not of this machine.
    std::shared_ptr<Thing> find(Key* key) {
        const std::lock_guard lock(mutex_);
        const auto found = things_.find(key);
        return found == things_.end() ? nullptr : found->second;
    }

    /// Takes a thing out; null for a pointer that is not of this machine. Whatever ends with the thing does
    /// so outside of the lock.
    std::shared_ptr<Thing> take(Key* key) {
        const std::lock_guard lock(mutex_);
        const auto found = things_.find(key);
        if (found == things_.end()) return nullptr;
        auto thing = std::move(found->second);
        things_.erase(found);
        return thing;
    }

 private:
    std::mutex mutex_;
    std::map<Key*, std::shared_ptr<Thing>> things_;
};

/// The boards, designs, handles, picture memories and subscriptions of this process. Thread-safe.
class Machine {
 public:
    static Machine& instance();

    Registry<GXdevice, Board> boards;
    Registry<fpga_design, const Design> designs;
    Registry<Fg_Struct, Handle> handles;
    Registry<dma_mem, FrameRing> memories;
    Registry<VirtualBoardSubscription, EventWaiter> subscriptions;

    /// Loads a design; one that is like the last one loaded is read no more. With a type other than 0 the
    /// design must be of it. Null when the control interface refuses it; throws `std::invalid_argument`
    /// saying what is wrong with the image.
    fpga_design* loadDesign(std::string_view image, int requiredType);

    OpeningFaults openingFaults();
    void changeOpeningFaults(const std::function<void(OpeningFaults&)>& change);

    /// The last error of calls that have no handle.
    std::atomic<int> lastError = 0;

 private:
    std::mutex mutex_;
    OpeningFaults openingFaults_;
    std::shared_ptr<const Design> loaded_;  ///< the last one
};

}  // namespace virtualboard
