#include "files/TextFile.h"

#include <locale.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>

namespace marovine {
namespace {

constexpr int Precision = 12;

std::string numberText(double value, std::chars_format format) {
    // Longest: sign, all digits of the largest double, point and decimals.
    std::array<char, std::numeric_limits<double>::max_exponent10 + Precision + 8> buffer;
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format, Precision).ptr;
    return {buffer.data(), end};
}

}  // namespace

bool isReadableFile(const char* name) {
    return name != nullptr && File(std::fopen(name, "r")) != nullptr;
}

void LineReader::rewind() {
    if (file_ != nullptr) std::rewind(file_);
}

std::optional<std::string_view> LineReader::next() {
    if (file_ == nullptr || std::fgets(line_.data(), static_cast<int>(line_.size()), file_) == nullptr) {
        return std::nullopt;
    }
    return line_.data();
}

std::optional<std::string_view> nextToken(std::string_view& rest, std::string_view separators) {
    // Lines are short and separators few: a plain loop is quicker than the general searches.
    const auto separates = [separators](char c) {
        for (const char separator : separators)
            if (c == separator) return true;
        return false;
    };
    rest.remove_prefix(static_cast<std::size_t>(std::ranges::find_if_not(rest, separates) - rest.begin()));
    if (rest.empty()) return std::nullopt;
    const auto end = std::ranges::find_if(rest, separates);
    const std::string_view token = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    rest.remove_prefix(std::min(token.size() + 1, rest.size()));
    return token;
}

void copyText(std::string_view text, char* destination) {
    destination[text.copy(destination, LineSize - 1)] = '\0';
}

std::string generalText(double value) {
    return numberText(value, std::chars_format::general);
}

std::string fixedText(double value) {
    return numberText(value, std::chars_format::fixed);
}

double doubleFromText(const char* text, char** end) {
    // std::from_chars knows neither leading blanks nor "+" nor "0x", all of which a file may hold.
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(text, end, cLocale);
}

}  // namespace marovine
