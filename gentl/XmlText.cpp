#include "gentl/XmlText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>

namespace marovine::gentl {

namespace {

/// A character that is none, in its place.
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Whether a document can hold a character.
constexpr bool isAllowed(std::uint32_t code) {
    if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
    return code < 0xD800 || (code > 0xDFFF && code < 0xFFFE) || (code > 0xFFFF && code < 0x110000);
}

/// Bytes of the UTF-8 character at the front of a text that is not empty; 0 where none that a document can
/// hold stands there.
std::size_t lengthOfFirst(std::string_view text) {
    const auto lead = static_cast<std::uint8_t>(text.front());
    const int ones = std::countl_one(lead);
    if (ones == 0) return isAllowed(lead) ? 1 : 0;
    const auto length = static_cast<std::size_t>(ones);
    if (length < 2 || length > 4 || length > text.size()) return 0;
    std::uint32_t code = lead & (0x7Fu >> length);
    for (const char c : text.substr(1, length - 1)) {
        const auto byte = static_cast<std::uint8_t>(c);
        if (byte >> 6 != 2) return 0;
        code = (code << 6) | (byte & 0x3Fu);
    }
    constexpr std::array<std::uint32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
    return code >= kLeast[length] && isAllowed(code) ? length : 0;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = lengthOfFirst(text);
        const auto first = text.substr(0, std::max<std::size_t>(length, 1));
        text.remove_prefix(first.size());
        if (length == 0)
            result += kReplacement;
        else if (first == "&")
            result += "&amp;";
        else if (first == "<")
            result += "&lt;";
        else if (first == ">")
            result += "&gt;";
        else if (first == "\"")
            result += "&quot;";
        else
            result += first;
    }
    return result;
}

std::string xmlElement(std::string_view name, std::string_view value) {
    std::string text = "    <";
    ((text += name) += '>') += escaped(value);
    ((text += "</") += name) += ">\n";
    return text;
}

std::string hexadecimal(std::uint64_t number) {
    std::array<char, 16> digits{};
    return {digits.data(), std::to_chars(digits.begin(), digits.end(), number, 16).ptr};
}

}  // namespace marovine::gentl
