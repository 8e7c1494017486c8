#pragma once

/// A configuration file (.mcf) as a person reads it: which line says what, and what a load makes of it. The
/// answers are those of the applet's own reader.

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "client/Parameter.h"
#include "tables/SdkParameterTable.h"

namespace marovine {
class ConfigFileIndex;
}

namespace marovine::host {

/// A line, or a piece of one: a load reads at most 255 characters at a time.
struct ConfigLine {
    std::size_t number = 0;  ///< of the line in the file, from 1
    bool begins = true;      ///< whether the line begins here
    bool cut = false;        ///< whether the line goes on in the next piece
    std::string text;        ///< with its end
    std::string key;         ///< empty when there is none
    std::string value;       ///< as a load reads it, without apostrophes and semicolon
};

/// The lines of a file, and which of them a load takes.
class ConfigFile {
 public:
    /// Throws `Failure` when the file cannot be read, is no regular file or is absurdly large.
    static ConfigFile read(const std::filesystem::path& file);
    ConfigFile(ConfigFile&&) noexcept;
    ConfigFile& operator=(ConfigFile&&) noexcept;
    ~ConfigFile();

    const std::vector<ConfigLine>& lines() const { return lines_; }
    /// The line with the heading of the parameters' section; null without one.
    const ConfigLine* heading() const;
    /// The line that a load takes a parameter from; null when the file lacks it.
    const ConfigLine* find(std::string_view parameter) const;
    /// The line that a load takes a text of the header from, which may be another key's; null without one.
    const ConfigLine* findInHeader(std::string_view key) const;
    /// What a load reads there.
    static std::string headerValue(const ConfigLine& line, std::string_view key);
    /// The line of the header's port number; null when the file lacks it.
    const ConfigLine* activePort() const;

 private:
    explicit ConfigFile(std::unique_ptr<ConfigFileIndex> index);
    const ConfigLine* lineAfter(std::string_view section, std::string_view key) const;

    std::unique_ptr<ConfigFileIndex> index_;
    std::vector<ConfigLine> lines_;
};

/// A text without the blanks and line ends around it.
std::string_view trimmed(std::string_view text);

/// Whether a load reads the key; without one of those it fails.
bool isRead(const SdkParameter& row);
/// Whether a load takes the line for a missing one: a number that says "Error".
bool countsAsMissing(const SdkParameter& row, const ConfigLine& line);

/// The value that a line gives to a parameter, as a load reads it: numbers as far as they go, 0 for none.
Value configValue(const Parameter& parameter, const ConfigLine& line);
/// Whether a load reads what the line says: not for a number that is none, is too large, or is followed by
/// something else, and not for a text that a load reads in pieces.
bool readsAsWritten(const Parameter& parameter, const ConfigLine& line);
/// 'the file says "xyz", read as 0'.
std::string misreadText(const Parameter& parameter, const ConfigLine& line);

/// The lines that a load takes the name of a file from.
std::vector<const ConfigLine*> filesNamedIn(const ConfigFile& file);
std::vector<const ConfigLine*> filesNamedIn(ConfigFile&& file) = delete;  // the lines would be gone
/// Those of them whose file does not exist. A relative name is looked for in
/// the current folder, as the applet does.
std::vector<const ConfigLine*> linesWithMissingFiles(const ConfigFile& file);
std::vector<const ConfigLine*> linesWithMissingFiles(ConfigFile&& file) = delete;
/// 'FG_LUT_CUSTOM_FILE names "x.lut", which is not found from /home'
std::string missingFileText(const ConfigLine& line);

/// Whether two values are the same in a file, which keeps 12 digits of a double.
bool sameInFile(const Value& a, const Value& b);

/// A piece of a file for a message: between quotation marks, shortened, without control characters.
std::string inQuotes(std::string_view text);

}  // namespace marovine::host
