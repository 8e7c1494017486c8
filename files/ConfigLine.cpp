#include "files/ConfigLine.h"

#include "files/TextFile.h"

namespace marovine {

std::optional<std::string_view> keyIn(std::string_view line) {
    const std::size_t length = line.find('=');
    return length != line.npos ? std::optional(line.substr(0, length)) : std::nullopt;
}

std::string_view valueIn(std::string_view line) {
    nextToken(line, "=;");
    // A value ends at a separator, so an empty one leaves the end of the line as the next token.
    const std::string_view value = nextToken(line, "=;'").value_or("");
    return value.starts_with('\r') || value.starts_with('\n') ? std::string_view{} : value;
}

std::optional<std::string_view> headerValueIn(std::string_view line, std::string_view needle) {
    if (line.find(needle) == line.npos || !nextToken(line, "='")) return std::nullopt;
    return nextToken(line, "='").value_or("");
}

}  // namespace marovine
