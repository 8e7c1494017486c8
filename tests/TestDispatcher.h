#pragma once

/// A logging dispatcher that remembers what it is told. It lies in a small installation of its own, where the
/// applet finds it by name; a test opens the same file to look into it.

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "base/LoggingDispatcher.h"

struct TestDispatcher {
    struct Message {
        void* handle;
        unsigned int level;
        std::string text;
        unsigned int number;
        void* extra;
    };

    std::mutex mutex;
    std::map<std::string, unsigned int> thresholds;  ///< by logger name; an entry's address is the handle
    std::vector<Message> messages;
    int registrations = 0;
    bool offersFunctions = true;     ///< stores its two functions when the applet registers
    std::function<void()> onCreate;  ///< called at the end of each creation of a logger
    void* logging = nullptr;
    tavr::tools::logging::DispatcherDestroyedCallback destroyed = nullptr;
    tavr::tools::logging::SetLogLevelCallback setLevel = nullptr;

    void* handleOf(const std::string& name) {
        const std::scoped_lock guard(mutex);
        return &*thresholds.find(name);
    }
};
