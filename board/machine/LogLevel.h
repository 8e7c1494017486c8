#pragma once

/// From which severity on the virtual board's libraries write to standard error.

#include <cstdlib>
#include <cstring>

#include "marovine/EnvironmentVariables.h"

namespace virtualboard {

/// A level that silences every line; also what counts when nothing is asked for.
inline constexpr unsigned kLogSilent = 7;
/// The level of a failure that the caller sees only as a null or a code.
inline constexpr unsigned kLogFailure = 5;

/// The environment variable MAROVINE_LOG_LEVEL, 0 (everything) to 7 (nothing); nothing else counts.
inline unsigned logLevel() {
    const char* text = std::getenv(marovine::environment::kLogLevel);
    if (text == nullptr || std::strlen(text) != 1 || *text < '0' || *text > '7') return kLogSilent;
    return static_cast<unsigned>(*text - '0');
}

}  // namespace virtualboard
