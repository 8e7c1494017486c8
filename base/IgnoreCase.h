#pragma once

#include <algorithm>
#include <string_view>

namespace marovine {

/// Whether two texts are equal apart from the case of the letters A to Z, whatever the locale.
constexpr bool equalIgnoringCase(std::string_view a, std::string_view b) {
    constexpr auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

}  // namespace marovine
