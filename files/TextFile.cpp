#include "files/TextFile.h"

#include <fcntl.h>
#include <locale.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

namespace marovine {
namespace {

constexpr int Precision = 12;

/// Bytes: more than the files of this product have.
constexpr std::size_t kBlockSize = std::size_t{32} * 1024;

std::string numberText(double value, std::chars_format format) {
    // Longest: sign, all digits of the largest double, point and decimals.
    std::array<char, std::numeric_limits<double>::max_exponent10 + Precision + 8> buffer;
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format, Precision).ptr;
    return {buffer.data(), end};
}

}  // namespace

bool isReadableFile(const char* name) {
    if (name == nullptr) return false;
    const int descriptor = ::open(name, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    ::close(descriptor);
    return true;
}

void LineReader::rewind() {
    if (holdsStart_) {
        at_ = block_.get();
        return;
    }
    if (file_ != nullptr) std::rewind(file_);
    at_ = end_ = nullptr;
    ended_ = false;
    atStart_ = true;
}

/// Reads on behind what is left of the block; false at the end of the file.
bool LineReader::fill() {
    if (file_ == nullptr || ended_) return false;
    if (block_ == nullptr) block_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
    char* const first = block_.get();
    const auto left = static_cast<std::size_t>(end_ - at_);
    if (left != 0) std::memmove(first, at_, left);
    const std::size_t room = kBlockSize - left;
    const std::size_t count = std::fread(first + left, 1, room, file_);
    holdsStart_ = std::exchange(atStart_, false);
    ended_ = count < room;
    at_ = first;
    end_ = first + left + count;
    hasNul_ = std::memchr(first, '\0', left + count) != nullptr;
    return count != 0;
}

std::optional<std::string_view> LineReader::next() {
    constexpr std::size_t kLongest = LineSize - 1;
    std::size_t held = static_cast<std::size_t>(end_ - at_);
    const auto lineFeed = [&] {
        return static_cast<const char*>(held != 0 ? std::memchr(at_, '\n', std::min(held, kLongest))
                                                  : nullptr);
    };
    const char* last = lineFeed();
    if (last == nullptr && held < kLongest && fill()) {
        held = static_cast<std::size_t>(end_ - at_);
        last = lineFeed();
    }
    if (held == 0) return std::nullopt;
    const std::size_t length =
        last != nullptr ? static_cast<std::size_t>(last + 1 - at_) : std::min(held, kLongest);
    const std::string_view line(std::exchange(at_, at_ + length), length);
    return hasNul_ ? line.substr(0, line.find('\0')) : line;
}

/// Passes over pieces of the block that do not contain the text: one search instead of one for each piece.
void LineReader::jumpTo(std::string_view text) {
    if (hasNul_ || at_ == end_) return;
    const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
    const std::size_t found = std::min(rest.find(text), rest.size());
    if (found == rest.size() && ended_) {
        at_ = end_;
        return;
    }
    // To the piece in which the text begins, or else to the last one, which may go on in the next block: a
    // block is searched once, whatever it holds.
    const std::size_t lineFeed = found != 0 ? rest.rfind('\n', found - 1) : rest.npos;
    const std::size_t line = lineFeed != rest.npos ? lineFeed + 1 : 0;
    constexpr std::size_t kLongest = LineSize - 1;
    at_ += line + (found - line) / kLongest * kLongest;
}

std::optional<std::string_view> LineReader::nextWith(std::string_view text) {
    for (;;) {
        jumpTo(text);
        const auto line = next();
        if (!line || line->find(text) != line->npos) return line;
    }
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

long longFromText(std::string_view text) {
    using Limits = std::numeric_limits<long>;
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    const char* at = std::ranges::find_if_not(text, isBlank);
    const bool negative = at != text.end() && *at == '-';
    if (at != text.end() && (*at == '-' || *at == '+')) ++at;
    unsigned long size = 0;
    const auto error = std::from_chars(at, text.end(), size).ec;
    const unsigned long largest = static_cast<unsigned long>(Limits::max()) + (negative ? 1 : 0);
    if (error == std::errc::result_out_of_range || size > largest) size = largest;
    return static_cast<long>(negative ? 0 - size : size);
}

double doubleFromText(const char* text, char** end) {
    // std::from_chars knows neither leading blanks nor "+" nor "0x", all of which a file may hold.
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(text, end, cLocale);
}

}  // namespace marovine
