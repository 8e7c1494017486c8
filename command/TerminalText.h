#pragma once

/// Texts from files and command lines on a terminal, which would obey the control characters in them.

#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace marovine::host {

/// A text with its control characters, and what is no UTF-8, written as \xHH. Newlines, tabs and the colours
/// that this program itself sends stay.
std::string harmless(std::string_view text);

/// As long as it lives, all that goes to a stream goes through `harmless` when `descriptor`, where the stream
/// leads, is a terminal. Files and pipes get what was written.
class TerminalText : private std::streambuf {
 public:
    TerminalText(std::ostream& stream, int descriptor);
    TerminalText(const TerminalText&) = delete;
    TerminalText& operator=(const TerminalText&) = delete;
    ~TerminalText() override;

 private:
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int_type overflow(int_type byte) override;
    int sync() override;

    std::ostream& stream_;
    std::streambuf* target_ = nullptr;  ///< null where nothing is to be done
    std::string waiting_;               ///< not yet passed on: a character may come in pieces
};

}  // namespace marovine::host
