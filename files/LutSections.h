#pragma once

/// How tables of any kind of value lie in a lookup-table file: what the parser of this product and the
/// members for the rest of the family are made of.

#include <algorithm>
#include <cstdint>
#include <limits>
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

/// The number at the start of a value's text; a number that does not fit becomes the nearest one that does.
inline void convert(std::string_view text, std::int32_t& value) {
    using Limits = std::numeric_limits<std::int32_t>;
    value = static_cast<std::int32_t>(std::clamp<long>(longFromText(text), Limits::min(), Limits::max()));
}
inline void convert(std::string_view text, double& value) {
    value = doubleFromText(std::string(text).c_str());
}

/// The second piece of a line.
inline std::optional<std::string_view> secondPiece(std::string_view line, std::string_view delimiters) {
    marovine::nextToken(line, delimiters);
    return marovine::nextToken(line, delimiters);
}

/// "index,", counted up as a text: what the line of the next entry holds.
class EntryPattern {
 public:
    explicit EntryPattern(std::string_view delimiter) : text_("0"), delimiter_(delimiter) {
        text_ += delimiter;
    }
    void countUp() {
        std::size_t digit = text_.size() - delimiter_.size();
        while (digit != 0 && text_[digit - 1] == '9') text_[--digit] = '0';
        if (digit != 0)
            ++text_[digit - 1];
        else
            text_.insert(0, 1, '1');
    }
    /// The value's text in a line that holds the pattern: it stands at the start of the view. None when the
    /// line does not hold it or has nothing behind it.
    std::optional<std::string_view> valueIn(std::string_view line) const {
        // Most lines begin with the pattern. What follows a number does not count, the next delimiter
        // neither.
        if (delimiter_ == EntryDelimiter && startsWithPattern(line)) {
            const std::size_t value = line.find_first_not_of(EntryDelimiter[0], text_.size());
            return value != line.npos ? std::optional(line.substr(value)) : std::nullopt;
        }
        return line.find(text_) != line.npos ? secondPiece(line, delimiter_) : std::nullopt;
    }

 private:
    /// In a plain loop: the pattern is shorter than a call of the general comparison.
    bool startsWithPattern(std::string_view line) const {
        if (line.size() < text_.size()) return false;
        for (std::size_t i = 0; i < text_.size(); ++i)
            if (line[i] != text_[i]) return false;
        return true;
    }

    std::string text_;
    std::string_view delimiter_;
};

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
                                   const char* section) {
    using namespace marovine::lut_file;
    reader_.rewind();
    EntryPattern pattern(delimiter);
    auto line = reader_.nextWith(section);
    for (std::uint32_t index = 0; line && index < count; line = reader_.next()) {
        const auto text = pattern.valueIn(*line);
        if (!text) continue;
        convert(*text, values[index++]);
        pattern.countUp();
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

template <typename Value>
bool Fg_LutFileParser::putEntries(const Value* values, std::uint32_t count) {
    bool written = true;
    for (std::uint32_t index = 0; written && index < count; ++index) {
        written = putLine(std::to_string(index).c_str(), marovine::lut_file::valueText(values[index]).c_str(),
                          marovine::lut_file::EntryDelimiter);
    }
    return written;
}
