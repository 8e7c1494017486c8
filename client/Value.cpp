#include "client/Value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <type_traits>

namespace marovine::host {

namespace {

/// Elements of a long field that are printed before and after the gap.
constexpr std::size_t kShownElements = 5;

std::string textOfField(const Field& field, bool whole) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (!whole && field.size() > 2 * kShownElements + 1 && i == kShownElements) {
            i = field.size() - kShownElements;
            text += " ...";
        }
        text += (text.empty() ? "" : " ") + std::to_string(field[i]);
    }
    return text;
}

/// A whole number, decimal or hexadecimal; nothing when the text is anything else or is too large.
template <std::integral T>
std::optional<Value> parseInteger(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    std::uint64_t magnitude = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), magnitude, hexadecimal ? 16 : 10);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    const long double number = static_cast<long double>(magnitude);
    return valueLike(T{}, negative ? -number : number);
}

std::optional<Value> parseDouble(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace

std::string textOf(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

std::string textOf(const Value& value, bool whole) {
    return std::visit(
        [whole]<class T>(const T& v) -> std::string {
            if constexpr (std::is_same_v<T, std::string>) {
                return v;
            } else if constexpr (std::is_same_v<T, Field>) {
                return textOfField(v, whole);
            } else if constexpr (std::is_same_v<T, double>) {
                return textOf(v);
            } else {
                return std::to_string(v);
            }
        },
        value);
}

std::optional<long double> numberOf(const Value& value) {
    return std::visit(
        []<class T>(const T& v) -> std::optional<long double> {
            if constexpr (std::is_arithmetic_v<T>) {
                return static_cast<long double>(v);
            } else {
                return std::nullopt;
            }
        },
        value);
}

std::optional<Value> valueLike(const Value& like, long double number) {
    return std::visit(
        [number]<class T>(const T&) -> std::optional<Value> {
            if constexpr (std::is_same_v<T, double>) {
                return static_cast<double>(number);
            } else if constexpr (std::is_integral_v<T>) {
                using Limits = std::numeric_limits<T>;
                // A comparison with not-a-number is false, so it fails here as well.
                const bool fits = number >= static_cast<long double>(Limits::min()) &&
                                  number <= static_cast<long double>(Limits::max());
                if (!fits || std::trunc(number) != number) return std::nullopt;
                return static_cast<T>(number);
            } else {
                return std::nullopt;
            }
        },
        like);
}

std::optional<Value> parseNumber(const Value& like, std::string_view text) {
    return std::visit(
        [text]<class T>(const T&) -> std::optional<Value> {
            if constexpr (std::is_same_v<T, double>) {
                return parseDouble(text);
            } else if constexpr (std::is_integral_v<T>) {
                return parseInteger<T>(text);
            } else {
                return std::nullopt;
            }
        },
        like);
}

std::string utf8FromLatin1(std::string_view text) {
    std::string result;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            result += character;
        } else {
            result += static_cast<char>(0xC0 | (code >> 6));
            result += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return result;
}

}  // namespace marovine::host
