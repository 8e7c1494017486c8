#pragma once

/// What a consumer waits for.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "gentl/Handles.h"

namespace marovine::gentl {

/// One thing that happened.
struct Event {
    void* buffer = nullptr;  ///< of EVENT_NEW_BUFFER: its handle and the consumer's pointer
    void* userPointer = nullptr;
    std::string id{};                   ///< a feature's name, or the number of an event in hexadecimal
    std::uint64_t number = 0;           ///< of EVENT_REMOTE_DEVICE
    std::vector<std::uint8_t> value{};  ///< of EVENT_REMOTE_DEVICE: what its features read
};

/// Events of one sort from one module, oldest first. Thread-safe.
class EventQueue final : public Entity {
 public:
    explicit EventQueue(EVENT_TYPE sort) : type(sort) {}

    const EVENT_TYPE type;

    /// Appends an event; of more than `kMost` the oldest is dropped.
    void push(Event event);
    /// Takes the first event out, or, with a null buffer, only says how large it can be. Waits at most
    /// `timeout` ms. Throws TIMEOUT, ABORT after a kill or when the module was closed, and BUFFER_TOO_SMALL,
    /// which leaves the event where it is.
    void get(void* buffer, std::size_t* size, std::uint64_t timeout);
    /// A part of an event that `get` gave out.
    void partOf(const void* event, std::size_t eventSize, EVENT_DATA_INFO_CMD command, INFO_DATATYPE* type,
                void* buffer, std::size_t* size) const;
    void info(EVENT_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const;
    /// Forgets what waits.
    void flush();
    /// Ends one wait, the present one or else the next.
    void kill();
    /// Ends all waits; the events stay.
    void close();

    std::size_t waiting() const;
    /// Whether an event of this buffer waits.
    bool holds(const void* buffer) const;
    /// Takes out the events of one buffer, or of all where it is null. Returns the buffers in order.
    std::vector<void*> takeBuffers(const void* buffer = nullptr);

 private:
    /// The most events that wait.
    static constexpr std::size_t kMost = 65536;

    std::size_t largest() const;
    std::vector<std::uint8_t> bytesOf(const Event& event) const;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Event> events_;
    std::uint64_t fired_ = 0;
    unsigned waiters_ = 0;
    unsigned kills_ = 0;
    std::uint64_t registration_ = 0;  ///< waits end when it changes
};

/// Something that fires events: who registers for a sort gets a queue of it. Thread-safe.
class EventSource {
 public:
    virtual ~EventSource() = default;

    /// The handle of a new registration. Throws NOT_IMPLEMENTED for a sort that this source never fires,
    /// RESOURCE_IN_USE for one that is registered and INVALID_HANDLE after `closeEvents`.
    void* registerEvent(EVENT_TYPE type);
    void unregisterEvent(EVENT_TYPE type);
    /// Ends all registrations, for good.
    void closeEvents();

 protected:
    virtual bool fires(EVENT_TYPE) const { return false; }
    /// The queue to be registered; a new one where the source keeps none.
    virtual std::shared_ptr<EventQueue> makeQueue(EVENT_TYPE type) {
        return std::make_shared<EventQueue>(type);
    }
    /// The queue that somebody registered for; null when nobody did.
    std::shared_ptr<EventQueue> registered(EVENT_TYPE type) const;

 private:
    mutable std::mutex mutex_;
    std::map<EVENT_TYPE, std::shared_ptr<EventQueue>> queues_;
    bool closed_ = false;
};

}  // namespace marovine::gentl
