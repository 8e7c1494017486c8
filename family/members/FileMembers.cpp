/// Members of the file parsers that other applets of the family call: a second port, unsigned 64-bit keys,
/// knee tables, matrices, and lookup-table files written line by line.

#include <array>
#include <cstdlib>
#include <string>

#include "files/Fg_ConfigFileParser.h"
#include "files/LutSections.h"

using namespace marovine::lut_file;

// ---- configuration files ----

int Fg_ConfigFileParser::writeConfigFilePortB() {
    return writeConfigFileByPort(1);
}

int Fg_ConfigFileParser::writeConfigFileUInt64Key(const char* key, unsigned long value) {
    return writeConfigFileValue(key, std::to_string(value).c_str());
}

int Fg_ConfigFileParser::parseUInt64Key(const char* section, const char* key, unsigned long* value) {
    const auto text = numberText(section, key);
    return text ? getUInt64Value(std::string(*text).c_str(), value) : -1;
}

int Fg_ConfigFileParser::parseUInt64KeySection(int port, const char* key, unsigned long* value) {
    return parseUInt64Key(getPortString(port).c_str(), key, value);
}

int Fg_ConfigFileParser::getUInt64Value(const char* text, unsigned long* value) {
    char* end = nullptr;
    const unsigned long number = std::strtoul(text, &end, 10);
    if (end != text) *value = number;
    return 0;
}

// ---- lookup-table files ----

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

int Fg_LutFileParser::parseDoubleKey(const char* key, double* value, const char* delimiters) {
    std::array<char, marovine::LineSize> text;
    *value = 0.0;
    return parseKeyFromLine(key, text.data(), delimiters) == 0 ? getDoubleValue(text.data(), value) : -1;
}

int Fg_LutFileParser::parseIntDouble(double* values, std::uint32_t count, const char* delimiter,
                                     const char* section) {
    readEntries(values, count, delimiter, section);
    return 0;
}

int Fg_LutFileParser::saveLutToFile(const char* name, const KneeLookupTable_s& red,
                                    const KneeLookupTable_s& green, const KneeLookupTable_s& blue) {
    return saveSections<KneeLookupTable_s>(name, "# KneeLut data file v1.1",
                                           {{Red, &red}, {Green, &green}, {Blue, &blue}});
}

int Fg_LutFileParser::saveLutToFile(const char* name, const KneeLookupTable_s& knee, const char* text) {
    return saveSections<KneeLookupTable_s>(name, "# KneeLut data file v1.0", {{text, &knee}});
}

int Fg_LutFileParser::getLutFromFile(const char* name, KneeLookupTable_s& knee, const char* section) {
    releaseValues(knee);
    if (!setOpenFile(name, true) || !allocateValues(knee, knee.nrOfElements)) return -1;
    return readToTheEnd(parseIntDouble(knee.values, knee.nrOfElements, EntryDelimiter, section));
}

int Fg_LutFileParser::getLutFromFile(const char* name, KneeLookupTable_s& red, KneeLookupTable_s& green,
                                     KneeLookupTable_s& blue) {
    int result = getLutFromFile(name, red, Red);
    if (result == 0) result = getLutFromFile(name, green, Green);
    if (result == 0) result = getLutFromFile(name, blue, Blue);
    return result;
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

bool Fg_LutFileParser::putTable(const KneeLookupTable_s& table) {
    return putEntries(table.values, table.nrOfElements);
}
