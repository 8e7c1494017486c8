#pragma once

/// Parameter values as people read and write them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "marovine/Control.h"

namespace marovine::host {

/// A value in the type of its parameter; a field is the vector of its elements. The same type as the virtual
/// board's, so that parameters and design writes share one way of printing.
using Value = virtualboard::Value;
using Field = std::vector<std::uint32_t>;

/// A number as the shortest text that reads back the same.
std::string textOf(double number);
/// A value as text: numbers in decimal, texts as they stand, fields as their elements, the middle of a long
/// field left out unless `whole`.
std::string textOf(const Value& value, bool whole = false);

/// A value as a number; nothing for texts and fields. A `long double` holds every 64-bit integer exactly.
std::optional<long double> numberOf(const Value& value);
/// A number in the type of `like`; nothing when it does not fit, for instance 1.5 for an integer.
std::optional<Value> valueLike(const Value& like, long double number);

/// A number in decimal, hexadecimal (0x...) or, for doubles, with point and exponent, in the type of `like`.
/// Nothing when the text is no number or does not fit the type.
std::optional<Value> parseNumber(const Value& like, std::string_view text);

/// ISO-8859-1 as UTF-8.
std::string utf8FromLatin1(std::string_view text);

}  // namespace marovine::host
