#include "files/Fg_LutFileParser.h"

#include <array>
#include <cstdlib>
#include <utility>

#include "files/LutSections.h"

using namespace marovine::lut_file;
using marovine::LineReader;

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
    reader_ = LineReader(file_.get());
    return file_ != nullptr;
}

bool Fg_LutFileParser::setSaveFile(const char* name) {
    if (name == nullptr) return false;
    file_.reset();  // first, so that nothing of it is flushed into the same file emptied
    file_.reset(std::fopen(name, "w"));
    reader_ = LineReader(file_.get());
    return file_ != nullptr;
}

int Fg_LutFileParser::getIntValue(const char* text, int* value) {
    convert(text, *value);
    return 0;
}

int Fg_LutFileParser::getDoubleValue(const char* text, double* value) {
    *value = marovine::doubleFromText(text);
    return 0;
}

int Fg_LutFileParser::parseKeyFromLine(const char* key, char* text, const char* delimiters) {
    reader_.rewind();
    while (const auto line = reader_.nextWith(key)) {
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

int Fg_LutFileParser::parseIntInt(std::int32_t* values, std::uint32_t count, const char* delimiter,
                                  const char* section) {
    readEntries(values, count, delimiter, section);
    return 0;
}

int Fg_LutFileParser::saveLutToFile(const char* name, const LookupTable_s& red, const LookupTable_s& green,
                                    const LookupTable_s& blue) {
    return saveSections<LookupTable_s>(name, "# Lut data file v1.1",
                                       {{Red, &red}, {Green, &green}, {Blue, &blue}});
}

int Fg_LutFileParser::saveLutToFile(const char* name, const LookupTable_s& table) {
    return saveSections<LookupTable_s>(name, "# Lut data file v1.1\n\n", {{"[gray]", &table}});
}

LookupTable_s Fg_LutFileParser::readKeys() {
    const auto keyValue = [this](const char* key) {
        int value = 0;
        parseIntKey(key, &value, ReadKeyDelimiters);
        return value;
    };
    LookupTable_s keys;
    keys.id = keyValue(IdKey);
    // As an unsigned number a negative one is above any bound.
    keys.nrOfElements = static_cast<std::uint32_t>(keyValue(CountKey));
    keys.format = keyValue(FormatKey);
    keys.number = static_cast<std::uint8_t>(keyValue(NumberKey)) != 0;
    return keys;
}

int Fg_LutFileParser::readTable(const LookupTable_s& keys, LookupTable_s& table, const char* section) {
    table = keys;
    if (!allocateValues(table, keys.nrOfElements)) return -1;
    return readToTheEnd(parseIntInt(table.values, table.nrOfElements, EntryDelimiter, section));
}

int Fg_LutFileParser::readToTheEnd(int result) const {
    return std::ferror(file_.get()) != 0 ? -1 : result;
}

int Fg_LutFileParser::getLutFromFile(const char* name, LookupTable_s& table, const char* section) {
    releaseValues(table);
    return setOpenFile(name, true) ? readTable(readKeys(), table, section) : -1;
}

int Fg_LutFileParser::getLutFromFile(const char* name, LookupTable_s& red, LookupTable_s& green,
                                     LookupTable_s& blue) {
    releaseValues(red);
    if (!setOpenFile(name, true)) return -1;
    const LookupTable_s keys = readKeys();
    int result = readTable(keys, red, Red);
    for (const auto& [table, section] : {std::pair(&green, Green), std::pair(&blue, Blue)}) {
        if (result != 0) break;
        releaseValues(*table);
        result = readTable(keys, *table, section);
    }
    return result;
}

bool Fg_LutFileParser::putText(const char* text) {
    reader_.forget();
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

bool Fg_LutFileParser::putTable(const LookupTable_s& table) {
    return putKey(IdKey, table.id) && putKey(CountKey, static_cast<std::int32_t>(table.nrOfElements)) &&
           putKey(FormatKey, table.format) && putKey(NumberKey, table.number ? 1 : 0) &&
           putEntries(table.values, table.nrOfElements);
}

int Fg_LutFileParser::flushed(bool written) {
    return file_ && std::fflush(file_.get()) == 0 && written ? 0 : -1;
}
