#pragma once

/// A configuration file (.mcf) as a person reads it: which line says what.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/Client.h"
#include "host/Explain.h"

namespace marovine::host {

/// One "KEY=VALUE;" line.
struct ConfigLine {
    std::size_t number = 0;  ///< in the file, from 1
    std::string section;     ///< "Kamerasektion", "Port A"
    std::string key;
    std::string value;  ///< without apostrophes and semicolon
};

/// The lines of a file. A key counts with its first line in the parameters' section.
class ConfigFile {
 public:
    /// Throws `Failure` when the file cannot be read.
    static ConfigFile read(const std::filesystem::path& file);

    const std::vector<ConfigLine>& lines() const { return lines_; }
    /// The line that a load takes a parameter from; null when the file lacks it.
    const ConfigLine* find(std::string_view parameter) const;
    /// The line of a key of the header; null when the file lacks it.
    const ConfigLine* findInHeader(std::string_view key) const;

 private:
    std::vector<ConfigLine> lines_;
};

/// The value that a line gives to a parameter, as a load reads it: numbers as far as they go, 0 for none.
Value configValue(const Parameter& parameter, const ConfigLine& line);

/// Whether two values are the same in a file, which keeps 12 digits of a double.
bool sameInFile(const Value& a, const Value& b);

/// Why a load of the file fails as a whole, a sentence each: no configuration file, another applet's, missing
/// keys. Empty when nothing stands against it.
std::vector<std::string> reasonsAgainstLoading(const std::filesystem::path& file);

/// What a load of a file did not take: a load skips values that a setter refuses, and says nothing.
struct SkippedValue {
    const ConfigLine* line = nullptr;
    Explanation why;
};

/// The values that a load of `file` skipped on this applet, which must be in the state that the load left and
/// remember its steps. `file` must outlive the result.
std::vector<SkippedValue> skippedValues(const Applet& loaded, const ConfigFile& file);

}  // namespace marovine::host
