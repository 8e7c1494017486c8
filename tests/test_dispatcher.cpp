#include "tests/TestDispatcher.h"

namespace {

TestDispatcher dispatcher;

void createLogger(const char* name, void** handle, unsigned int* threshold) {
    {
        const std::scoped_lock guard(dispatcher.mutex);
        const auto entry = dispatcher.thresholds.try_emplace(name, 0).first;
        *handle = &*entry;
        *threshold = entry->second;
    }
    if (dispatcher.onCreate) {
        dispatcher.onCreate();
    }
}

void log(void* handle, unsigned int level, const char* text, unsigned int number, void* extra) {
    const std::scoped_lock guard(dispatcher.mutex);
    dispatcher.messages.push_back({handle, level, text, number, extra});
}

void registerLogging(void* logging, tavr::tools::logging::DispatcherDestroyedCallback destroyed,
                     tavr::tools::logging::SetLogLevelCallback setLevel,
                     tavr::tools::logging::CreateLoggerFunction* create,
                     tavr::tools::logging::LogFunction* logFunction) {
    ++dispatcher.registrations;
    dispatcher.logging = logging;
    dispatcher.destroyed = destroyed;
    dispatcher.setLevel = setLevel;
    setLevel(&dispatcher, 3);  // calls back while the applet is still registering
    if (dispatcher.offersFunctions) {
        *create = createLogger;
        *logFunction = log;
    }
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {
extern const tavr::tools::logging::DispatcherDescriptor logging_dispatcher_descriptor;
const tavr::tools::logging::DispatcherDescriptor logging_dispatcher_descriptor{registerLogging};

TestDispatcher* testDispatcher() {
    return &dispatcher;
}
}
#pragma GCC visibility pop
