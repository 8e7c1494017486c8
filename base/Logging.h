#pragma once

#include <memory>

#include "base/GuardedSingleton.h"
#include "base/Logger.h"

namespace tavr::tools::logging {

/// The process's connection to the logging dispatcher of the installation. Made by the first logging call;
/// without a dispatcher every logger is the same silent one. Usable from any thread.
class Logging final : public templates::patterns::GuardedSingleton<Logging> {
 public:
    /// The logger of a name; never null. It lives as long as the process.
    static Logger* getLogger(const char* name);
    /// Hands a message to the dispatcher, or drops it when none is attached. No lock is held meanwhile.
    static void log(void* handle, unsigned int level, const char* text, unsigned int number, void* extra);
    /// For the dispatcher: sets the threshold of the logger with that handle; an unknown handle is ignored.
    static void setLogLevel(void* handle, unsigned int threshold);
    /// For the dispatcher: detaches it for good. Loggers that were handed out stay valid and fall silent.
    static void notifyDispatcherDestroyed();

    ~Logging() override;
    /// Finds the dispatcher and registers with it.
    void postConstruct() override;

 private:
    friend class templates::patterns::GuardedSingleton<Logging>;
    struct Record;

    Logging();

    std::unique_ptr<Record> record_;
};

}  // namespace tavr::tools::logging
