#pragma once

/// Pieces of an XML document.

#include <cstdint>
#include <string>
#include <string_view>

namespace marovine::gentl {

/// A text with XML's own characters written as references.
std::string escaped(std::string_view text);
/// An element of the third level with a text, on a line of its own.
std::string xmlElement(std::string_view name, std::string_view value);
/// A number in base 16, without a prefix.
std::string hexadecimal(std::uint64_t number);

}  // namespace marovine::gentl
