#include "base/Logger.h"

#include "base/Logging.h"

namespace tavr::tools::logging {

using templates::platform::RecursiveMutexGuard;

void Logger::log(unsigned int level, const char* text, unsigned int number, void* extra) const {
    Logging::log(record_->handle, level, text, number, extra);
}

bool Logger::setEnabled(bool enable) {
    const RecursiveMutexGuard guard(&record_->mutex);
    const auto entry = record_->disabledThreads.find(pthread_self());
    const bool wasEnabled = entry == record_->disabledThreads.end();
    if (wasEnabled && !enable) {
        record_->disabledThreads.insert(pthread_self());
    } else if (!wasEnabled && enable) {
        record_->disabledThreads.erase(entry);
    }
    return wasEnabled;
}

bool Logger::isEnabledForThisThread() const {
    const RecursiveMutexGuard guard(&record_->mutex);
    return !record_->disabledThreads.contains(pthread_self());
}

}  // namespace tavr::tools::logging
