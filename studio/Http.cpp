#include "studio/Http.h"

#include <algorithm>
#include <charconv>

#include "command/Json.h"

namespace marovine::studio {

using host::Json;

namespace {

/// A percent-encoded text; nothing for a broken escape, and for a zero byte, which ends texts elsewhere.
std::optional<std::string> decoded(std::string_view text, bool plusIsBlank) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '%') {
            unsigned code = 0;
            if (i + 2 >= text.size()) return std::nullopt;
            const char* end = text.data() + i + 3;
            if (std::from_chars(text.data() + i + 1, end, code, 16).ptr != end) return std::nullopt;
            c = static_cast<char>(code);
            i += 2;
        } else if (c == '+' && plusIsBlank) {
            c = ' ';
        }
        if (c == '\0') return std::nullopt;
        result += c;
    }
    return result;
}

}  // namespace

const std::string* Request::find(std::string_view name) const {
    const auto found = std::ranges::find(query, name, &std::pair<std::string, std::string>::first);
    return found != query.end() ? &found->second : nullptr;
}

std::optional<Target> parseTarget(std::string_view target) {
    if (!target.starts_with('/')) return std::nullopt;
    const auto mark = std::min(target.find('?'), target.size());
    const auto path = decoded(target.substr(0, mark), false);
    if (!path) return std::nullopt;
    Target result{*path, {}};
    for (std::string_view rest = target.substr(std::min(mark + 1, target.size())); !rest.empty();) {
        const auto end = std::min(rest.find('&'), rest.size());
        const std::string_view pair = rest.substr(0, end);
        const auto equals = std::min(pair.find('='), pair.size());
        const auto name = decoded(pair.substr(0, equals), true);
        const auto value = decoded(pair.substr(std::min(equals + 1, pair.size())), true);
        if (!name || !value) return std::nullopt;
        if (!pair.empty()) result.query.emplace_back(*name, *value);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return result;
}

std::string errorText(std::string_view message) {
    constexpr int kStatusOfCommand = 1;
    return host::printed({{"error", Json{{"message", message},
                                         {"code", Json()},
                                         {"advice", Json::array()},
                                         {"status", kStatusOfCommand}}}});
}

Response errorResponse(int status, std::string_view message) {
    return {.status = status, .body = errorText(message)};
}

}  // namespace marovine::studio
