#pragma once

#include <optional>
#include <string_view>

/// What single lines of a configuration file say. Lines are as `LineReader` gives them.
namespace marovine {

/// What a lookup hands out when it finds nothing. A number whose text contains it counts as missing.
inline constexpr std::string_view MissingText = "Error";

/// The key of a line: what stands before its first '='. None in a line without '='.
[[nodiscard]] std::optional<std::string_view> keyIn(std::string_view line);

/// The value in a line "key=value;" or "key='value';", empty when there is none.
[[nodiscard]] std::string_view valueIn(std::string_view line);

/// The value that a header lookup takes from a line, which holds the text anywhere; none when the lookup
/// goes on to the next line.
[[nodiscard]] std::optional<std::string_view> headerValueIn(std::string_view line, std::string_view needle);

}  // namespace marovine
