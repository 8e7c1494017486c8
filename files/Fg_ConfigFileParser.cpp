#include "files/Fg_ConfigFileParser.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/ErrorCodes.h"
#include "family/Fg_Log.h"
#include "files/ConfigLine.h"

using marovine::LineReader;

namespace {

/// Bytes; more than a configuration has.
constexpr std::size_t kFileRoom = std::size_t{32} * 1024;

int refuse(char* destination) {
    marovine::copyText(marovine::MissingText, destination);
    return marovine::error::keyMissing;
}

/// Reads on to the line that holds the key, for its value.
std::optional<std::string_view> findValue(LineReader& reader, std::string_view section,
                                          std::string_view key) {
    reader.rewind();
    if (!reader.nextWith(section)) return std::nullopt;
    const auto isOfKey = [key](std::string_view line) {
        return line.starts_with(key) && line.substr(key.size()).starts_with('=');
    };
    auto line = reader.nextWith(key);
    while (line && !isOfKey(*line)) line = reader.nextWith(key);
    return line ? std::optional(marovine::valueIn(*line)) : std::nullopt;
}

}  // namespace

Fg_ConfigFileParser::Fg_ConfigFileParser(Fg_Log* log, const char* fileName, bool readOnly) : log_(log) {
    logEntry(__func__);
    if (checkFileType(fileName) && checkFileExist(fileName)) {
        file_.reset(std::fopen(fileName, readOnly ? "r" : "r+"));
        reader_ = LineReader(file_.get());
    }
}

bool Fg_ConfigFileParser::setSaveFile(const char* path) {
    logEntry(__func__);
    if (!checkFileType(path)) {
        logError("Config File is Invalid");
        return false;
    }
    if (expected_) expected_->forget();
    file_.reset();  // first, so that nothing of it is flushed into the same file emptied
    file_.reset(std::fopen(path, "w"));
    reader_ = LineReader(file_.get());
    if (!file_) {
        logError("Config File: fopen failed");
        return false;
    }
    logInfo("Config File is valid");
    return true;
}

bool Fg_ConfigFileParser::checkFileType(const char* path) const {
    logEntry(__func__);
    const bool matches = path != nullptr && std::strstr(path, ".mcf") != nullptr;
    logInfo(matches ? "File type ok" : "File type not ok");
    return matches;
}

bool Fg_ConfigFileParser::checkFileExist(const char* path) const {
    logEntry(__func__);
    const bool exists = marovine::isReadableFile(path);
    logInfo(exists ? "Config File exist" : "Config File don't exist");
    return exists;
}

void Fg_ConfigFileParser::flushAtEnd() {
    flushesEachLine_ = false;
    if (!file_) return;
    // The whole file in one write.
    room_ = std::make_unique_for_overwrite<char[]>(kFileRoom);
    std::setvbuf(file_.get(), room_.get(), _IOFBF, kFileRoom);
}

int Fg_ConfigFileParser::writeConfigFileHeader() {
    logEntry(__func__);
    return write({CameraSectionText, ConfigFileVersionText});
}

int Fg_ConfigFileParser::writeConfigFilePortA() {
    return writeConfigFileByPort(0);
}

int Fg_ConfigFileParser::writeConfigFileByPort(int port) {
    logEntry(__func__);
    return write({"\n", getPortString(port).c_str(), "\n"});
}

int Fg_ConfigFileParser::writeConfigFile(const char* key, const char* value) {
    logEntry(__func__);
    return write({key, "='", value, "';\n"});
}

int Fg_ConfigFileParser::writeConfigFileValue(const char* key, const char* value) {
    logEntry(__func__);
    return write({key, "=", value, ";\n"});
}

int Fg_ConfigFileParser::writeConfigFileIntKey(const char* key, int value) {
    return writeConfigFileValue(key, std::to_string(value).c_str());
}

int Fg_ConfigFileParser::writeConfigFileInt64Key(const char* key, long value) {
    return writeConfigFileValue(key, std::to_string(value).c_str());
}

int Fg_ConfigFileParser::writeConfigFileDoubleKey(const char* key, double value) {
    return writeConfigFileValue(key, marovine::generalText(value).c_str());
}

std::string Fg_ConfigFileParser::getPortString(int port) {
    return std::string("[Port ") + static_cast<char>(static_cast<unsigned>(port) + 'A') + ']';
}

void Fg_ConfigFileParser::expectKeys(const char* section, const std::vector<std::string_view>& keys) {
    expected_.emplace(section, keys);
}

std::optional<std::string_view> Fg_ConfigFileParser::find(const char* section, const char* key) {
    logEntry("parseKey");
    if (section == nullptr || key == nullptr || !file_) return std::nullopt;
    const auto value = expected_ && expected_->covers(section, key) ? expected_->valueOf(key, reader_)
                                                                    : findValue(reader_, section, key);
    // No more than a text's room.
    return value ? std::optional(value->substr(0, marovine::LineSize - 1)) : std::nullopt;
}

int Fg_ConfigFileParser::parseKey(const char* section, const char* key, char* destination) {
    const auto value = find(section, key);
    if (!value) return refuse(destination);
    marovine::copyText(*value, destination);
    return 0;
}

int Fg_ConfigFileParser::parseKeyFromLine(const char* needle, char* destination) {
    logEntry(__func__);
    if (needle == nullptr) return refuse(destination);
    reader_.rewind();
    while (const auto line = reader_.nextWith(needle)) {
        const auto value = marovine::headerValueIn(*line, needle);
        if (!value) continue;
        marovine::copyText(*value, destination);
        return 0;
    }
    return refuse(destination);
}

std::optional<std::string_view> Fg_ConfigFileParser::numberText(const char* section, const char* key) {
    const auto value = find(section, key);
    // The text decides as well: a value that says "Error" counts as missing.
    return value && value->find(marovine::MissingText) == value->npos ? value : std::nullopt;
}

int Fg_ConfigFileParser::parseIntKey(const char* section, const char* key, int* value) {
    const auto text = numberText(section, key);
    if (!text) return -1;
    *value = static_cast<int>(marovine::longFromText(*text));
    return 0;
}

int Fg_ConfigFileParser::parseInt64Key(const char* section, const char* key, long* value) {
    const auto text = numberText(section, key);
    return text ? getInt64Value(std::string(*text).c_str(), value) : -1;
}

int Fg_ConfigFileParser::parseDoubleKey(const char* section, const char* key, double* value) {
    const auto text = numberText(section, key);
    return text ? getDoubleValue(std::string(*text).c_str(), value) : -1;
}

int Fg_ConfigFileParser::parseKeySection(int port, const char* key, char* destination) {
    return key == nullptr ? -1 : parseKey(getPortString(port).c_str(), key, destination);
}

int Fg_ConfigFileParser::parseIntKeySection(int port, const char* key, int* value) {
    return parseIntKey(getPortString(port).c_str(), key, value);
}

int Fg_ConfigFileParser::parseInt64KeySection(int port, const char* key, long* value) {
    return parseInt64Key(getPortString(port).c_str(), key, value);
}

int Fg_ConfigFileParser::parseDoubleKeySection(int port, const char* key, double* value) {
    return parseDoubleKey(getPortString(port).c_str(), key, value);
}

int Fg_ConfigFileParser::parseIntKeyFromHeader(const char* key, int* value) {
    return parseIntKey(CameraSectionText, key, value);
}

int Fg_ConfigFileParser::getIntValue(const char* text, int* value) {
    *value = static_cast<int>(marovine::longFromText(text));
    return 0;
}

int Fg_ConfigFileParser::getInt64Value(const char* text, long* value) {
    char* end = nullptr;
    const long number = std::strtol(text, &end, 0);
    if (end != text) *value = number;
    return 0;
}

int Fg_ConfigFileParser::getDoubleValue(const char* text, double* value) {
    *value = marovine::doubleFromText(text);
    return 0;
}

int Fg_ConfigFileParser::write(std::initializer_list<const char*> texts) {
    if (!file_ || std::find(texts.begin(), texts.end(), nullptr) != texts.end()) return -1;
    if (expected_) expected_->forget();
    reader_.forget();
    for (const char* text : texts) std::fputs(text, file_.get());
    if (flushesEachLine_ && std::fflush(file_.get()) != 0) return -1;
    return std::ferror(file_.get()) == 0 ? 0 : -1;
}

void Fg_ConfigFileParser::logError(const char* message) const {
    if (log_ != nullptr) log_->Error(message);
}

void Fg_ConfigFileParser::logInfo(const char* message) const {
    if (log_ != nullptr) log_->Info(message);
}

void Fg_ConfigFileParser::logEntry(const char* member) const {
    if (log_ != nullptr) log_->Func((std::string("Fg_ConfigFileParser::") + member).c_str());
}
