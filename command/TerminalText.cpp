#include "command/TerminalText.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace marovine::host {

namespace {

bool isControl(unsigned char byte) {
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char deletion = 0x7F;
    return (byte < firstPrintable && byte != '\n' && byte != '\t') || byte == deletion;
}

/// Bytes of a colour at the beginning of a text, one that `Console` or a picture sends; 0 for anything else.
std::size_t colourLength(std::string_view text) {
    constexpr std::string_view introduction = "\033[";
    if (!text.starts_with(introduction)) return 0;
    const std::size_t end = text.find_first_not_of("0123456789;", introduction.size());
    if (end == text.npos || text[end] != 'm') return 0;
    const std::string_view what = text.substr(introduction.size(), end - introduction.size());
    constexpr std::array<std::string_view, 6> styles{"0", "1", "2", "31", "32", "36"};
    const bool known =
        std::ranges::find(styles, what) != styles.end() || what.starts_with("38;") || what.starts_with("48;");
    return known ? end + 1 : 0;
}

/// Bytes of the character at the beginning of a text; 0 when it is no UTF-8 or a control character.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return isControl(first) ? 0 : 1;
    const std::size_t length = first >= 0xF0 && first < 0xF5 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first >= 0xF5 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    constexpr unsigned char lead = 0xC2;  // of the 32 control characters above ASCII
    return first == lead && byte(1) < 0xA0 ? 0 : length;
}

}  // namespace

std::string harmless(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = std::max(colourLength(text), characterLength(text));
        if (length != 0) {
            result += text.substr(0, length);
        } else {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned char>(text.front()));
            result += code.data();
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

TerminalText::TerminalText(std::ostream& stream, int descriptor) : stream_(stream) {
    if (isatty(descriptor) == 1) target_ = stream_.rdbuf(this);
}

TerminalText::~TerminalText() {
    if (target_ == nullptr) return;
    sync();
    stream_.rdbuf(target_);
}

std::streamsize TerminalText::xsputn(const char* text, std::streamsize count) {
    waiting_.append(text, static_cast<std::size_t>(count));
    return count;
}

TerminalText::int_type TerminalText::overflow(int_type byte) {
    if (!traits_type::eq_int_type(byte, traits_type::eof())) waiting_ += traits_type::to_char_type(byte);
    return traits_type::not_eof(byte);
}

int TerminalText::sync() {
    const std::string text = harmless(waiting_);
    waiting_.clear();
    const auto length = static_cast<std::streamsize>(text.size());
    return target_->sputn(text.data(), length) == length ? target_->pubsync() : -1;
}

}  // namespace marovine::host
