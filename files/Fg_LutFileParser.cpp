#include "files/Fg_LutFileParser.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>

using marovine::LineReader;
using marovine::nextToken;

namespace {

constexpr char Red[] = "[red]";
constexpr char Green[] = "[green]";
constexpr char Blue[] = "[blue]";

constexpr char IdKey[] = "id";
constexpr char CountKey[] = "nrOfElements";
constexpr char FormatKey[] = "format";
constexpr char NumberKey[] = "number";

constexpr char KeyDelimiter[] = "=";
constexpr char EntryDelimiter[] = ",";
constexpr char ReadKeyDelimiters[] = "='";

std::string valueText(std::int32_t value) {
    return std::to_string(value);
}
std::string valueText(double value) {
    return marovine::fixedText(value);
}

/// The second piece of a line.
std::optional<std::string_view> secondPiece(std::string_view line, std::string_view delimiters) {
    nextToken(line, delimiters);
    return nextToken(line, delimiters);
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

}  // namespace

bool Fg_LutFileParser::checkFileType(const char*) const {
    return true;
}

bool Fg_LutFileParser::checkFileExist(const char* name) const {
    return marovine::isReadableFile(name);
}

bool Fg_LutFileParser::setOpenFile(const char* name, bool readOnly) {
    if (!checkFileType(name) || !checkFileExist(name)) return false;
    file_.reset();
    file_.reset(std::fopen(name, readOnly ? "r" : "r+"));
    return file_ != nullptr;
}

bool Fg_LutFileParser::setSaveFile(const char* name) {
    if (name == nullptr) return false;
    file_.reset();  // first, so that nothing of it is flushed into the same file emptied
    file_.reset(std::fopen(name, "w"));
    return file_ != nullptr;
}

int Fg_LutFileParser::writeLutFileHeader(const char* text) {
    return flushed(putText(text));
}

int Fg_LutFileParser::writeLutFileValue(const char* key, const char* value, const char* delimiter) {
    return flushed(putLine(key, value, delimiter));
}

int Fg_LutFileParser::writeIntKey(const char* key, int value, const char* delimiter) {
    return writeLutFileValue(key, valueText(value).c_str(), delimiter);
}

int Fg_LutFileParser::writeDoubleKey(const char* key, double value, const char* delimiter) {
    return writeLutFileValue(key, marovine::generalText(value).c_str(), delimiter);
}

int Fg_LutFileParser::writeIntInt(int index, int value, const char* delimiter) {
    return writeIntKey(std::to_string(index).c_str(), value, delimiter);
}

int Fg_LutFileParser::writeIntDouble(int index, double value, const char* delimiter) {
    return writeLutFileValue(std::to_string(index).c_str(), valueText(value).c_str(), delimiter);
}

int Fg_LutFileParser::getIntValue(const char* text, int* value) {
    using Limits = std::numeric_limits<int>;
    const long number = std::strtol(text, nullptr, 10);
    *value = static_cast<int>(std::clamp<long>(number, Limits::min(), Limits::max()));
    return 0;
}

int Fg_LutFileParser::getDoubleValue(const char* text, double* value) {
    *value = marovine::doubleFromText(text);
    return 0;
}

int Fg_LutFileParser::parseKeyFromLine(const char* key, char* text, const char* delimiters) {
    LineReader reader(file_.get());
    reader.rewind();
    while (const auto line = reader.next()) {
        if (line->find(key) == line->npos) continue;
        if (const auto piece = secondPiece(*line, delimiters)) {
            marovine::copyText(*piece, text);
            return 0;
        }
    }
    marovine::copyText("Error", text);
    return -1;
}

int Fg_LutFileParser::parseIntKey(const char* key, int* value, const char* delimiters) {
    std::array<char, marovine::LineSize> text;
    *value = 0;
    return parseKeyFromLine(key, text.data(), delimiters) == 0 ? getIntValue(text.data(), value) : -1;
}

int Fg_LutFileParser::parseDoubleKey(const char* key, double* value, const char* delimiters) {
    std::array<char, marovine::LineSize> text;
    *value = 0.0;
    return parseKeyFromLine(key, text.data(), delimiters) == 0 ? getDoubleValue(text.data(), value) : -1;
}

template <typename Value>
void Fg_LutFileParser::readEntries(Value* values, std::uint32_t count, const char* delimiter,
                                   const char* section, int (*convert)(const char*, Value*)) {
    LineReader reader(file_.get());
    reader.rewind();
    auto line = reader.next();
    while (line && line->find(section) == line->npos) line = reader.next();

    std::array<char, marovine::LineSize> text;
    std::string pattern;
    for (std::uint32_t index = 0; line && index < count; line = reader.next()) {
        if (pattern.empty()) pattern = std::to_string(index) + delimiter;
        if (line->find(pattern) == line->npos) continue;
        const auto piece = secondPiece(*line, delimiter);
        if (!piece) continue;
        marovine::copyText(*piece, text.data());
        convert(text.data(), &values[index]);
        ++index;
        pattern.clear();
    }
}

int Fg_LutFileParser::parseIntInt(std::int32_t* values, std::uint32_t count, const char* delimiter,
                                  const char* section) {
    readEntries(values, count, delimiter, section, getIntValue);
    return 0;
}

int Fg_LutFileParser::parseIntDouble(double* values, std::uint32_t count, const char* delimiter,
                                     const char* section) {
    readEntries(values, count, delimiter, section, getDoubleValue);
    return 0;
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

int Fg_LutFileParser::saveLutToFile(const char* name, const LookupTable_s& red, const LookupTable_s& green,
                                    const LookupTable_s& blue) {
    return saveSections<LookupTable_s>(name, "# Lut data file v1.1",
                                       {{Red, &red}, {Green, &green}, {Blue, &blue}});
}

int Fg_LutFileParser::saveLutToFile(const char* name, const LookupTable_s& table) {
    return saveSections<LookupTable_s>(name, "# Lut data file v1.1\n\n", {{"[gray]", &table}});
}

int Fg_LutFileParser::saveLutToFile(const char* name, const KneeLookupTable_s& red,
                                    const KneeLookupTable_s& green, const KneeLookupTable_s& blue) {
    return saveSections<KneeLookupTable_s>(name, "# KneeLut data file v1.1",
                                           {{Red, &red}, {Green, &green}, {Blue, &blue}});
}

int Fg_LutFileParser::saveLutToFile(const char* name, const KneeLookupTable_s& knee, const char* text) {
    return saveSections<KneeLookupTable_s>(name, "# KneeLut data file v1.0", {{text, &knee}});
}

int Fg_LutFileParser::getLutFromFile(const char* name, LookupTable_s& table, const char* section) {
    releaseValues(table);
    if (!setOpenFile(name, true)) return -1;
    const auto keyValue = [this](const char* key) {
        int value = 0;
        parseIntKey(key, &value, ReadKeyDelimiters);
        return value;
    };
    table.id = keyValue(IdKey);
    // As an unsigned number a negative one is above any bound.
    const auto count = static_cast<std::uint32_t>(keyValue(CountKey));
    table.format = keyValue(FormatKey);
    table.number = static_cast<std::uint8_t>(keyValue(NumberKey)) != 0;
    if (!allocateValues(table, count)) return -1;
    return readToTheEnd(parseIntInt(table.values, count, EntryDelimiter, section));
}

int Fg_LutFileParser::getLutFromFile(const char* name, KneeLookupTable_s& knee, const char* section) {
    releaseValues(knee);
    if (!setOpenFile(name, true) || !allocateValues(knee, knee.nrOfElements)) return -1;
    return readToTheEnd(parseIntDouble(knee.values, knee.nrOfElements, EntryDelimiter, section));
}

int Fg_LutFileParser::readToTheEnd(int result) const {
    return std::ferror(file_.get()) != 0 ? -1 : result;
}

template <typename Table>
int Fg_LutFileParser::readChannels(const char* name, Table& red, Table& green, Table& blue) {
    int result = getLutFromFile(name, red, Red);
    if (result == 0) result = getLutFromFile(name, green, Green);
    if (result == 0) result = getLutFromFile(name, blue, Blue);
    return result;
}

int Fg_LutFileParser::getLutFromFile(const char* name, LookupTable_s& red, LookupTable_s& green,
                                     LookupTable_s& blue) {
    return readChannels(name, red, green, blue);
}

int Fg_LutFileParser::getLutFromFile(const char* name, KneeLookupTable_s& red, KneeLookupTable_s& green,
                                     KneeLookupTable_s& blue) {
    return readChannels(name, red, green, blue);
}

int Fg_LutFileParser::saveMatrixToFile(const char* name, const char* header, const std::int32_t* values,
                                       std::uint32_t count) {
    if ((values == nullptr && count != 0) || !setSaveFile(name)) return -1;
    return flushed(putText(header) && putKey(CountKey, static_cast<std::int32_t>(count)) &&
                   putEntries(values, count));
}

int Fg_LutFileParser::getMatrixFromFile(const char*, std::int32_t*, std::uint32_t) {
    return -1;
}

bool Fg_LutFileParser::putText(const char* text) {
    return file_ && std::fputs(text, file_.get()) >= 0;
}

bool Fg_LutFileParser::putLine(const char* key, const char* value, const char* delimiter) {
    std::string line(key);
    line.append(delimiter).append(value).append(";\n");
    return line.size() < marovine::LineSize && putText(line.c_str());
}

bool Fg_LutFileParser::putKey(const char* key, std::int32_t value) {
    return putLine(key, valueText(value).c_str(), KeyDelimiter);
}

template <typename Value>
bool Fg_LutFileParser::putEntries(const Value* values, std::uint32_t count) {
    bool written = true;
    for (std::uint32_t index = 0; written && index < count; ++index) {
        written = putLine(std::to_string(index).c_str(), valueText(values[index]).c_str(), EntryDelimiter);
    }
    return written;
}

bool Fg_LutFileParser::putTable(const LookupTable_s& table) {
    return putKey(IdKey, table.id) && putKey(CountKey, static_cast<std::int32_t>(table.nrOfElements)) &&
           putKey(FormatKey, table.format) && putKey(NumberKey, table.number ? 1 : 0) &&
           putEntries(table.values, table.nrOfElements);
}

bool Fg_LutFileParser::putTable(const KneeLookupTable_s& table) {
    return putEntries(table.values, table.nrOfElements);
}

int Fg_LutFileParser::flushed(bool written) {
    return file_ && std::fflush(file_.get()) == 0 && written ? 0 : -1;
}
