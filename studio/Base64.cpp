#include "studio/Base64.h"

#include <array>
#include <cstdint>

namespace marovine::studio {

namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNone = 0xFF;

constexpr auto kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNone);
    for (std::size_t i = 0; i < kDigits.size(); ++i)
        values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
    return values;
}();

}  // namespace

std::string toBase64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = (group << 8) | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        const std::size_t digits = i + 3 <= bytes.size() ? 4 : bytes.size() - i + 1;
        for (std::size_t j = 0; j < 4; ++j)
            text += j < digits ? kDigits[(group >> (18 - 6 * j)) & 0x3F] : '=';
    }
    return text;
}

std::optional<std::string> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        std::size_t digits = 4;
        if (i + 4 == text.size())
            while (digits > 2 && text[i + digits - 1] == '=') --digits;
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 4; ++j) {
            const std::uint8_t value = j < digits ? kValues[static_cast<unsigned char>(text[i + j])] : 0;
            if (value == kNone) return std::nullopt;
            group = (group << 6) | value;
        }
        for (std::size_t j = 0; j + 1 < digits; ++j)
            bytes += static_cast<char>((group >> (16 - 8 * j)) & 0xFF);
    }
    return bytes;
}

}  // namespace marovine::studio
