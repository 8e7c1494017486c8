#include "base/Logging.h"

#include <atomic>
#include <map>

#include "base/DynamicLoading.h"
#include "base/LoggingDispatcher.h"
#include "base/TavrDir.h"

namespace tavr::tools::logging {

using templates::platform::Access;
using templates::platform::ReadWriteLock;
using templates::platform::ReadWriteLockGuard;

struct Logging::Record {
    struct LoggerDeleter {
        void operator()(Logger* logger) const { Logger::destroy(logger); }
    };
    using OwnedLogger = std::unique_ptr<Logger, LoggerDeleter>;

    OwnedLogger fallback{Logger::create(nullptr, kSilentThreshold)};
    // Both functions are stored by the dispatcher while it registers and stay as they are.
    CreateLoggerFunction createLogger = nullptr;
    LogFunction log = nullptr;
    std::atomic<const DispatcherDescriptor*> descriptor = nullptr;  ///< null: no dispatcher attached
    std::map<void*, OwnedLogger> loggers;                           ///< by the dispatcher's handle
    std::unique_ptr<RuntimeLibrary> library;
    ReadWriteLock loggersLock;
};

Logging::Logging() : record_(std::make_unique<Record>()) {}

Logging::~Logging() = default;

void Logging::postConstruct() {
    Record& record = *record_;
    record.library = TavrDir::LoadRuntimeLibrary(kDispatcherLibrary, nullptr);
    if (!record.library) {
        return;
    }
    const auto* descriptor =
        marovine::resolve<const DispatcherDescriptor*>(record.library->handle(), kDispatcherDescriptor);
    if (descriptor == nullptr || descriptor->registerLogging == nullptr) {
        record.library.reset();
        return;
    }
    record.descriptor = descriptor;
    descriptor->registerLogging(this, &notifyDispatcherDestroyed, &setLogLevel, &record.createLogger,
                                &record.log);
}

Logger* Logging::getLogger(const char* name) {
    Record& record = *reach().record_;
    if (record.descriptor == nullptr || record.createLogger == nullptr) {
        return record.fallback.get();
    }
    void* handle = nullptr;
    unsigned int threshold = 0;
    record.createLogger(name, &handle, &threshold);

    const ReadWriteLockGuard guard(&record.loggersLock, Access::Write);
    auto& logger = record.loggers[handle];
    if (!logger) {
        logger.reset(Logger::create(handle, threshold));
    }
    return logger.get();
}

void Logging::log(void* handle, unsigned int level, const char* text, unsigned int number, void* extra) {
    const Record& record = *reach().record_;
    if (record.descriptor != nullptr && record.log != nullptr) {
        record.log(handle, level, text, number, extra);
    }
}

void Logging::setLogLevel(void* handle, unsigned int threshold) {
    Record& record = *reach().record_;
    const ReadWriteLockGuard guard(&record.loggersLock, Access::Read);
    const auto entry = record.loggers.find(handle);
    if (entry != record.loggers.end()) {
        entry->second->setLogLevel(threshold);
    }
}

void Logging::notifyDispatcherDestroyed() {
    reach().record_->descriptor = nullptr;
}

}  // namespace tavr::tools::logging
