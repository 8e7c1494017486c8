#pragma once

/// The agreement with the logging dispatcher, an optional library of the installation: lib64/lib +
/// `kDispatcherLibrary` + .so exports a `DispatcherDescriptor` named `kDispatcherDescriptor`.

namespace tavr::tools::logging {

inline constexpr const char* kDispatcherLibrary = "common-logging-dispatcher";
inline constexpr const char* kDispatcherDescriptor = "logging_dispatcher_descriptor";

extern "C" {

/// Makes the dispatcher's logger of a name known: stores its handle and its level threshold.
using CreateLoggerFunction = void (*)(const char* name, void** handle, unsigned int* threshold);
/// Writes a message of the logger with that handle.
using LogFunction = void (*)(void* handle, unsigned int level, const char* text, unsigned int number,
                             void* extra);
/// For the dispatcher to call before it ends; it is not called again afterwards.
using DispatcherDestroyedCallback = void (*)();
/// For the dispatcher to call when the threshold of a logger changes.
using SetLogLevelCallback = void (*)(void* handle, unsigned int threshold);

/// First entries of the dispatcher's table of functions.
struct DispatcherDescriptor {
    /// Called once. The dispatcher keeps the callbacks and stores its two functions through the addresses.
    void (*registerLogging)(void* logging, DispatcherDestroyedCallback destroyed,
                            SetLogLevelCallback setLevel, CreateLoggerFunction* createLogger,
                            LogFunction* log);
};

}  // extern "C"

}  // namespace tavr::tools::logging
