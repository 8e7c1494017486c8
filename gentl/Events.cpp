#include "gentl/Events.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "gentl/Answer.h"

namespace marovine::gentl {

Handles& Handles::instance() {
    // Never destroyed: a consumer that ends without GCCloseLib may still have threads of its boards here.
    static Handles* const handles = std::make_unique<Handles>().release();
    return *handles;
}

// ---- one queue ----

void EventQueue::push(Event event) {
    const std::lock_guard lock(mutex_);
    if (events_.size() >= kMost) events_.pop_front();
    events_.push_back(std::move(event));
    ++fired_;
    changed_.notify_one();
}

std::vector<std::uint8_t> EventQueue::bytesOf(const Event& event) const {
    std::vector<std::uint8_t> bytes;
    const auto append = [&bytes](const void* data, std::size_t size) {
        const auto* from = static_cast<const std::uint8_t*>(data);
        bytes.insert(bytes.end(), from, from + size);
    };
    if (type == EVENT_NEW_BUFFER) {
        const EVENT_NEW_BUFFER_DATA data{event.buffer, event.userPointer};
        append(&data, sizeof data);
    } else if (type == EVENT_REMOTE_DEVICE) {
        append(&event.number, sizeof event.number);
        append(event.value.data(), event.value.size());
    } else {
        append(event.id.c_str(), event.id.size() + 1);
    }
    return bytes;
}

std::size_t EventQueue::largest() const {
    constexpr std::size_t kLongestName = 128;
    constexpr std::size_t kLargestValue = 64;
    if (type == EVENT_NEW_BUFFER) return sizeof(EVENT_NEW_BUFFER_DATA);
    return type == EVENT_REMOTE_DEVICE ? sizeof(std::uint64_t) + kLargestValue : kLongestName;
}

void EventQueue::get(void* buffer, std::size_t* size, std::uint64_t timeout) {
    using Clock = std::chrono::steady_clock;
    mustBeGiven(size, "the size");
    std::unique_lock lock(mutex_);
    if (buffer == nullptr) {
        *size = largest();
        return;
    }
    // Beyond a year nobody waits, and no addition of times overflows.
    constexpr std::uint64_t kYear = 365ull * 24 * 3600 * 1000;
    const auto deadline = Clock::now() + std::chrono::milliseconds(std::min(timeout, kYear));
    const std::uint64_t registration = registration_;
    const auto closed = [&] { return registration_ != registration; };
    ++waiters_;
    const bool came =
        changed_.wait_until(lock, deadline, [&] { return !events_.empty() || kills_ > 0 || closed(); });
    --waiters_;
    if (closed()) throw Error(GC_ERR_ABORT, "the event was unregistered or its module closed");
    if (kills_ > 0) {
        --kills_;
        throw Error(GC_ERR_ABORT, "the wait was ended by EventKill");
    }
    if (!came) throw Error(GC_ERR_TIMEOUT, "no event came within " + std::to_string(timeout) + " ms");
    const auto bytes = bytesOf(events_.front());
    if (*size < bytes.size()) changed_.notify_one();  // it stays: another wait may have room for it
    Answer(nullptr, buffer, size).bytes(bytes);
    events_.pop_front();
}

void EventQueue::partOf(const void* event, std::size_t eventSize, EVENT_DATA_INFO_CMD command,
                        INFO_DATATYPE* answerType, void* buffer, std::size_t* size) const {
    mustBeGiven(event, "the event");
    Answer answer(answerType, buffer, size);
    const auto* bytes = static_cast<const std::uint8_t*>(event);
    const auto needs = [eventSize](std::size_t least) {
        if (eventSize < least) throw Error(GC_ERR_INVALID_PARAMETER, "this is too short for such an event");
    };
    if (type == EVENT_NEW_BUFFER) {
        EVENT_NEW_BUFFER_DATA data{};
        needs(sizeof data);
        std::memcpy(&data, bytes, sizeof data);
        if (command == EVENT_DATA_ID) return answer.pointer(data.buffer);
        if (command == EVENT_DATA_VALUE) return answer.pointer(data.userPointer);
    } else if (type == EVENT_REMOTE_DEVICE) {
        std::uint64_t number = 0;
        needs(sizeof number);
        std::memcpy(&number, bytes, sizeof number);
        if (command == EVENT_DATA_NUMID) return answer.uint64(number);
        if (command == EVENT_DATA_VALUE)
            return answer.bytes({bytes + sizeof number, eventSize - sizeof number});
        if (command == EVENT_DATA_ID) {
            constexpr std::string_view digits = "0123456789ABCDEF";
            std::string text;
            for (; number != 0 || text.empty(); number /= digits.size())
                text.insert(text.begin(), digits[number % digits.size()]);
            return answer.text(text);
        }
    } else if (command == EVENT_DATA_ID) {
        const auto* text = reinterpret_cast<const char*>(bytes);
        return answer.text({text, std::find(text, text + eventSize, '\0')});
    }
    if (command >= EVENT_DATA_ID && command <= EVENT_DATA_NUMID)
        throw Error(GC_ERR_NOT_AVAILABLE, "events of this sort do not have that part");
    unknownCommand("an event", command);
}

void EventQueue::info(EVENT_INFO_CMD command, INFO_DATATYPE* answerType, void* buffer,
                      std::size_t* size) const {
    Answer answer(answerType, buffer, size);
    const std::lock_guard lock(mutex_);
    switch (command) {
        case EVENT_EVENT_TYPE:
            return answer.int32(type);
        case EVENT_NUM_IN_QUEUE:
            return answer.size(events_.size());
        case EVENT_NUM_FIRED:
            return answer.uint64(fired_);
        case EVENT_SIZE_MAX:
        case EVENT_INFO_DATA_SIZE_MAX:
            return answer.size(largest());
        default:
            unknownCommand("an event", command);
    }
}

void EventQueue::flush() {
    const std::lock_guard lock(mutex_);
    events_.clear();
}

void EventQueue::kill() {
    const std::lock_guard lock(mutex_);
    // Without a wait under way it is remembered for the next, once.
    kills_ = std::max(1u, std::min(kills_ + 1, waiters_));
    changed_.notify_all();
}

void EventQueue::close() {
    const std::lock_guard lock(mutex_);
    ++registration_;
    kills_ = 0;
    changed_.notify_all();
}

std::size_t EventQueue::waiting() const {
    const std::lock_guard lock(mutex_);
    return events_.size();
}

bool EventQueue::holds(const void* buffer) const {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(events_, [&](const Event& event) { return event.buffer == buffer; });
}

std::vector<void*> EventQueue::takeBuffers(const void* buffer) {
    const std::lock_guard lock(mutex_);
    std::vector<void*> taken;
    std::erase_if(events_, [&](const Event& event) {
        if (buffer != nullptr && event.buffer != buffer) return false;
        taken.push_back(event.buffer);
        return true;
    });
    return taken;
}

// ---- a source of events ----

void* EventSource::registerEvent(EVENT_TYPE type) {
    if (type < EVENT_ERROR || type > EVENT_MODULE)
        throw Error(GC_ERR_INVALID_PARAMETER, "there is no event type " + std::to_string(type));
    if (!fires(type)) throw Error(GC_ERR_NOT_IMPLEMENTED, "this module has no events of that type");
    const std::lock_guard lock(mutex_);
    // Whoever found the module before it closed may come here after it.
    if (closed_) throw Error(GC_ERR_INVALID_HANDLE, "the module was closed");
    auto& queue = queues_[type];
    if (queue != nullptr) throw Error(GC_ERR_RESOURCE_IN_USE, "this event is registered already");
    queue = makeQueue(type);
    return Handles::instance().add(queue);
}

void EventSource::unregisterEvent(EVENT_TYPE type) {
    const std::lock_guard lock(mutex_);
    const auto found = queues_.find(type);
    if (found == queues_.end()) throw Error(GC_ERR_INVALID_PARAMETER, "this event is not registered");
    found->second->close();
    Handles::instance().remove(*found->second);
    queues_.erase(found);
}

void EventSource::closeEvents() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    for (const auto& [type, queue] : queues_) {
        queue->close();
        Handles::instance().remove(*queue);
    }
    queues_.clear();
}

std::shared_ptr<EventQueue> EventSource::registered(EVENT_TYPE type) const {
    const std::lock_guard lock(mutex_);
    const auto found = queues_.find(type);
    return found != queues_.end() ? found->second : nullptr;
}

}  // namespace marovine::gentl
