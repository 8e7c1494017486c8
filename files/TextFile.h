#pragma once

#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// What the configuration file and the lookup-table file have in common: lines of limited length, values
/// split off at separator characters, and numbers that look the same whatever locale the host has set.
namespace marovine {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open file, flushed and closed at the end of its life.
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Whether the file can be opened for reading; false for a null name.
[[nodiscard]] bool isReadableFile(const char* name);

/// Size of a line and of every text a parser hands out, the closing NUL included.
inline constexpr std::size_t LineSize = 256;

/// Reads a file line by line, a block of it at a time. A longer line comes in pieces of 255 characters; what
/// follows a NUL byte up to the end of its piece is not seen.
class LineReader {
 public:
    /// Has no lines.
    LineReader() = default;
    /// Reads from the file's present position; a null file has no lines.
    explicit LineReader(std::FILE* file) : file_(file) {}

    /// Goes back to the start of the file. A file that fits a block is read once, whoever else changes it.
    void rewind();
    /// To be called when this process writes to the file: the next `rewind` reads it again.
    void forget() { holdsStart_ = false; }

    /// The next piece with its line feed, valid until the next call; none at the end of the file.
    [[nodiscard]] std::optional<std::string_view> next();
    /// The next piece that contains a text.
    [[nodiscard]] std::optional<std::string_view> nextWith(std::string_view text);

 private:
    bool fill();
    void jumpTo(std::string_view text);

    std::FILE* file_ = nullptr;
    std::unique_ptr<char[]> block_;
    const char* at_ = nullptr;   ///< what was not handed out yet, up to `end_`
    const char* end_ = nullptr;  ///< of what the block holds
    bool atStart_ = false;       ///< the file stands at its start
    bool holdsStart_ = false;    ///< the block begins with the file's start
    bool ended_ = false;         ///< nothing comes after the block
    bool hasNul_ = false;        ///< the block has a NUL byte
};

/// Splits the next token off `rest`: separators before it are skipped, the one after it is consumed. None
/// when only separators are left.
std::optional<std::string_view> nextToken(std::string_view& rest, std::string_view separators);

/// Copies at most 255 characters and a NUL into a buffer of `LineSize` bytes.
void copyText(std::string_view text, char* destination);

/// Shortest general form with 12 significant digits, as "%.12g" gives it in the "C" locale.
[[nodiscard]] std::string generalText(double value);

/// Fixed-point form with 12 decimals, as "%.12f" gives it in the "C" locale.
[[nodiscard]] std::string fixedText(double value);

/// The decimal number at the start of a text, as strtol reads it in the "C" locale: the nearest one where it
/// does not fit, 0 when there is none.
[[nodiscard]] long longFromText(std::string_view text);

/// The number at the start of a text, as strtod reads it in the "C" locale; 0 when there is none. `end`, if
/// not null, receives where the number ends.
[[nodiscard]] double doubleFromText(const char* text, char** end = nullptr);

}  // namespace marovine
