#pragma once

/// How tables of any kind of value lie in a lookup-table file: what the parser of this product and the
/// members for the rest of the family are made of.

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "files/Fg_LutFileParser.h"

namespace marovine::lut_file {

inline constexpr char Red[] = "[red]";
inline constexpr char Green[] = "[green]";
inline constexpr char Blue[] = "[blue]";

inline constexpr char IdKey[] = "id";
inline constexpr char CountKey[] = "nrOfElements";
inline constexpr char FormatKey[] = "format";
inline constexpr char NumberKey[] = "number";

inline constexpr char KeyDelimiter[] = "=";
inline constexpr char EntryDelimiter[] = ",";
inline constexpr char ReadKeyDelimiters[] = "='";

inline std::string valueText(std::int32_t value) {
    return std::to_string(value);
}
inline std::string valueText(double value) {
    return marovine::fixedText(value);
}

/// The second piece of a line.
inline std::optional<std::string_view> secondPiece(std::string_view line, std::string_view delimiters) {
    marovine::nextToken(line, delimiters);
    return marovine::nextToken(line, delimiters);
}

template <typename Table>
void releaseValues(Table& table) {
    delete[] std::exchange(table.values, nullptr);
}

/// Gives the table `count` zeros, to be released by whoever reads it; false when that is more than a table
/// may hold.
template <typename Table>
bool allocateValues(Table& table, std::uint32_t count) {
    using Value = std::remove_pointer_t<decltype(table.values)>;
    const bool fits = count <= Fg_LutFileParser::MaxElements;
    table.nrOfElements = fits ? count : 0;
    if (fits) table.values = std::make_unique<Value[]>(count).release();
    return fits;
}

}  // namespace marovine::lut_file

// ---- members ----

template <typename Value>
void Fg_LutFileParser::readEntries(Value* values, std::uint32_t count, const char* delimiter,
                                   const char* section, int (*convert)(const char*, Value*)) {
    marovine::LineReader reader(file_.get());
    reader.rewind();
    auto line = reader.next();
    while (line && line->find(section) == line->npos) line = reader.next();

    std::array<char, marovine::LineSize> text;
    std::string pattern;
    for (std::uint32_t index = 0; line && index < count; line = reader.next()) {
        if (pattern.empty()) pattern = std::to_string(index) + delimiter;
        if (line->find(pattern) == line->npos) continue;
        const auto piece = marovine::lut_file::secondPiece(*line, delimiter);
        if (!piece) continue;
        marovine::copyText(*piece, text.data());
        convert(text.data(), &values[index]);
        ++index;
        pattern.clear();
    }
}

template <typename Table>
int Fg_LutFileParser::saveSections(const char* name, const char* title,
                                   std::initializer_list<std::pair<const char*, const Table*>> sections) {
    const auto lacksValues = [](const auto& section) {
        return section.second->values == nullptr && section.second->nrOfElements != 0;
    };
    // Before the file is emptied.
    if (std::any_of(sections.begin(), sections.end(), lacksValues) || !setSaveFile(name)) return -1;
    bool written = putText(title);
    for (const auto& [section, table] : sections) {
        written = written && putText("\n\n") && putText(section) && putText("\n\n") && putTable(*table);
    }
    return flushed(written);
}

template <typename Table>
int Fg_LutFileParser::readChannels(const char* name, Table& red, Table& green, Table& blue) {
    int result = getLutFromFile(name, red, marovine::lut_file::Red);
    if (result == 0) result = getLutFromFile(name, green, marovine::lut_file::Green);
    if (result == 0) result = getLutFromFile(name, blue, marovine::lut_file::Blue);
    return result;
}

template <typename Value>
bool Fg_LutFileParser::putEntries(const Value* values, std::uint32_t count) {
    bool written = true;
    for (std::uint32_t index = 0; written && index < count; ++index) {
        written = putLine(std::to_string(index).c_str(), marovine::lut_file::valueText(values[index]).c_str(),
                          marovine::lut_file::EntryDelimiter);
    }
    return written;
}
