#pragma once

/// One call for a line of the log. The text is put together only when somebody listens.

#include <pthread.h>

#include <concepts>
#include <string>
#include <string_view>

#include "base/Logger.h"

namespace marovine {

/// Levels of this library's messages.
inline constexpr unsigned int kLogLookup = 4;          ///< lookups, and parameters that are refused
inline constexpr unsigned int kLogOpenFailed = 5;      ///< the host runtime opened no handle
inline constexpr unsigned int kLogRuntimeLibrary = 6;  ///< the host runtime cannot be used

inline void appendToLogLine(std::string& line, std::string_view text) {
    line += text;
}
inline void appendToLogLine(std::string& line, std::integral auto number) {
    line += std::to_string(number);
}

/// Logs "thread-id=", the calling thread's id, "|" and the parts of the message (texts and integers) if
/// `logger` is enabled for `level` on this thread. Give numbers as numbers: they are written out only when
/// needed.
template <typename... Parts>
void logLine(const tavr::tools::logging::Logger& logger, unsigned int level, const Parts&... parts) {
    if (!logger.isEnabled(level)) {
        return;
    }
    std::string line = "thread-id=" + std::to_string(pthread_self()) + '|';
    (appendToLogLine(line, parts), ...);
    logger.log(level, line.c_str(), 0, nullptr);
}

}  // namespace marovine
