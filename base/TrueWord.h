#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "base/IgnoreCase.h"

namespace marovine {

/// Whether a switch is on: "yes", "true", "on" or "1", in any case.
constexpr bool isTrueWord(std::string_view text) {
    constexpr std::array<std::string_view, 4> words{"yes", "true", "on", "1"};
    return std::ranges::any_of(words, [&](std::string_view word) { return equalIgnoringCase(text, word); });
}

/// Whether an environment variable is set and switches something on.
inline bool isSwitchedOnByEnvironment(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && isTrueWord(value);
}

}  // namespace marovine
