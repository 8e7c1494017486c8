#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>

#include "base/Locks.h"

namespace tavr::tools::logging {

/// Threshold that silences every message of this library.
inline constexpr std::uint32_t kSilentThreshold = 7;

/// A named source of messages. Levels are unsigned; a larger one is more severe, and a message passes when
/// its level is at least the logger's threshold. Usable from any thread.
class Logger {
 public:
    /// A silent logger without dispatcher handle.
    Logger() : Logger(nullptr, kSilentThreshold) {}
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    virtual ~Logger() = default;

    /// A new logger for the dispatcher's `handle`, given back with `destroy`.
    static Logger* create(void* handle, unsigned int threshold) { return new Logger(handle, threshold); }
    /// Deletes a logger; null is ignored.
    static void destroy(Logger* logger) { delete logger; }

    /// Whether a message of this level from the calling thread would be handed on. Ask before building a
    /// text: a silenced level costs one comparison.
    bool isEnabled(unsigned int level) const {
        return level >= record_->threshold.load(std::memory_order_relaxed) && isEnabledForThisThread();
    }
    /// Hands a message to the dispatcher, whatever the threshold; `isEnabled` decides.
    void log(unsigned int level, const char* text, unsigned int number, void* extra) const;
    /// Sets the threshold.
    void setLogLevel(unsigned int threshold) {
        record_->threshold.store(threshold, std::memory_order_relaxed);
    }
    /// Switches this logger on or off for the calling thread; returns whether it was on before.
    bool setEnabled(bool enable);

 private:
    struct Record {
        void* handle;  ///< the dispatcher's
        templates::platform::RecursiveMutex mutex;
        std::set<pthread_t> disabledThreads;  ///< guarded by `mutex`
        std::atomic<std::uint32_t> threshold;
    };

    Logger(void* handle, unsigned int threshold)
        : record_(new Record{.handle = handle, .mutex = {}, .disabledThreads = {}, .threshold = threshold}) {}
    bool isEnabledForThisThread() const;

    std::unique_ptr<Record> record_;
};

}  // namespace tavr::tools::logging
