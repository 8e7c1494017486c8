/// libcommon-logging-dispatcher.so: writes the applet's log lines to standard error, from the level that
/// MAROVINE_LOG_LEVEL names. Silent by default.

#include <cstddef>
#include <cstdio>
#include <map>
#include <mutex>
#include <new>
#include <string>

#include "board/machine/LogLevel.h"

namespace {

using CreateLogger = void (*)(const char* name, void** handle, unsigned* threshold);
using LogLine = void (*)(void* handle, unsigned level, const char* text, unsigned number, void* extra);
using NotifyDestroyed = void (*)();
using SetLogLevel = void (*)(void* handle, unsigned level);

/// The loggers by name. A logger's handle is its map entry, whose address stays.
struct Loggers {
    std::mutex mutex;
    std::map<std::string, unsigned> thresholds;
};

/// Never destroyed: a logger may be used until the very end of the process.
Loggers& loggers() {
    alignas(Loggers) static std::byte storage[sizeof(Loggers)];
    static Loggers& all = *new (storage) Loggers;
    return all;
}

void createLogger(const char* name, void** handle, unsigned* threshold) {
    if (name == nullptr || handle == nullptr || threshold == nullptr) return;
    Loggers& all = loggers();
    const std::lock_guard lock(all.mutex);
    auto& entry = *all.thresholds.try_emplace(name, virtualboard::logLevel()).first;
    *handle = &entry;
    *threshold = entry.second;
}

void logLine(void* handle, unsigned level, const char* text, unsigned, void*) {
    if (handle == nullptr || text == nullptr) return;
    const auto* entry = static_cast<const std::pair<const std::string, unsigned>*>(handle);
    Loggers& all = loggers();
    const std::lock_guard lock(all.mutex);  // lines of several threads stay whole
    if (entry->second >= virtualboard::kLogSilent || level < entry->second) return;
    std::fprintf(stderr, "[%u] %s: %s\n", level, entry->first.c_str(), text);
}

void registerLogging(void*, NotifyDestroyed, SetLogLevel, CreateLogger* create, LogLine* log) {
    if (create != nullptr) *create = createLogger;
    if (log != nullptr) *log = logLine;
}

using Registration = void (*)(void* logging, NotifyDestroyed, SetLogLevel, CreateLogger*, LogLine*);

struct Descriptor {
    Registration registration;
};

}  // namespace

extern "C" {
extern __attribute__((visibility("default"))) const Descriptor logging_dispatcher_descriptor;
const Descriptor logging_dispatcher_descriptor{.registration = registerLogging};
}
