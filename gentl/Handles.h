#pragma once

/// Who is who behind the handles that the consumer holds.

#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

#include "gentl/Error.h"

namespace marovine::gentl {

/// Whatever a consumer may hold a handle to.
class Entity {
 public:
    Entity() = default;
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;
    virtual ~Entity() = default;

    /// The consumer's handle; null when it has none.
    void* handle() const { return handle_; }

 private:
    friend class Handles;
    void* handle_ = nullptr;
};

/// The handles of this process. A handle is a number that is never given out again, so a stale or foreign one
/// is recognised without looking behind it. Thread-safe.
class Handles {
 public:
    static Handles& instance();

    void* add(const std::shared_ptr<Entity>& entity) {
        const std::lock_guard lock(mutex_);
        next_ += 16;
        // A number that is never used again shows a stale handle; nobody follows it as a pointer.
        entity->handle_ = reinterpret_cast<void*>(next_);  // NOLINT(performance-no-int-to-ptr)
        entities_.emplace(entity->handle_, entity);
        return entity->handle_;
    }
    void remove(const Entity& entity) {
        const std::lock_guard lock(mutex_);
        entities_.erase(entity.handle_);
    }
    std::size_t count() const {
        const std::shared_lock lock(mutex_);
        return entities_.size();
    }

    /// What a handle stands for. Throws INVALID_HANDLE for one that is null, foreign, stale, or of another
    /// sort; `what` names the sort: "a data stream".
    template <class T>
    std::shared_ptr<T> find(void* handle, const char* what) const {
        std::shared_ptr<Entity> entity;
        {
            const std::shared_lock lock(mutex_);
            if (const auto found = entities_.find(handle); found != entities_.end()) entity = found->second;
        }
        auto wanted = std::dynamic_pointer_cast<T>(entity);
        if (wanted == nullptr) refuse(handle, entity != nullptr, what);
        return wanted;
    }

 private:
    [[noreturn]] static void refuse(const void* handle, bool known, const char* what) {
        const char* why = handle == nullptr ? "null"
                          : known           ? "a handle of another sort"
                                            : "closed or foreign";
        throw Error(GC_ERR_INVALID_HANDLE, std::string("the handle of ") + what + " is " + why);
    }

    mutable std::shared_mutex mutex_;
    std::uintptr_t next_ = 0x10000;
    std::unordered_map<void*, std::shared_ptr<Entity>> entities_;
};

}  // namespace marovine::gentl
