#pragma once

/// Bytes as text in JSON documents.

#include <optional>
#include <string>
#include <string_view>

namespace marovine::studio {

std::string toBase64(std::string_view bytes);
/// Nothing for what is no base64 with its padding.
std::optional<std::string> fromBase64(std::string_view text);

}  // namespace marovine::studio
