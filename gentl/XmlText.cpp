#include "gentl/XmlText.h"

#include <array>
#include <charconv>

namespace marovine::gentl {

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += c;
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
