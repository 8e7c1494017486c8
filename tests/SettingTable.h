#pragma once

/// The tables of settings and their expected writes, as settings_test.cpp describes them.

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tests/AppletFixture.h"

namespace marovine::test {

using Value = std::variant<std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double, std::string>;
using Words = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

struct Macro {
    Words parameters;
    std::string body;
};

struct Section {
    std::string title;
    std::string file;
    std::vector<std::pair<int, std::string>> lines;  ///< with their numbers
    std::vector<Variables> instances;
    std::map<std::string, Macro> macros;
};

/// The parts between separators, without blanks around them.
Words split(const std::string& text, char separator);
/// Puts values in place of "$name".
std::string withVariables(std::string text, const Variables& variables);
/// One line for each alternative of "{a|b}".
Words alternatives(const std::string& line);
/// The sections of a table.
std::vector<Section> readTable(const std::filesystem::path& path);
/// A number or the name of a constant. A text stands in quotes, with "~" for a blank; "'x'*9" is nine times
/// x.
Value valueOf(ValueType type, const std::string& text);
/// A list of writes with its macros in place.
Writes writesOf(const Section& section, std::string text);

}  // namespace marovine::test
