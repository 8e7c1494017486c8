#include "client/ConfigFile.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

#include "client/Failure.h"
#include "files/ConfigFileIndex.h"
#include "files/ConfigHeader.h"
#include "files/ConfigLine.h"
#include "files/Fg_ConfigFileParser.h"

namespace marovine::host {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kQuotedLength = 40;
/// A file keeps 12 significant digits of a double.
constexpr double kFilePrecision = 1e-11;

std::string parameterSection() {
    return Fg_ConfigFileParser::getPortString(0);
}

/// What stands between the apostrophes of a text's line, or behind the "=" without them.
std::string_view writtenText(const ConfigLine& line) {
    std::string_view text = trimmed(line.text);
    text.remove_prefix(std::min(text.find('=') + 1, text.size()));
    if (!text.starts_with('\'')) return text.substr(0, text.rfind(';'));
    text.remove_prefix(1);
    return text.substr(0, text.rfind('\''));
}

/// Whether the whole text is a number that a double can hold.
bool isWholeDouble(const std::string& text) {
    char* end = nullptr;
    const double number = doubleFromText(text.c_str(), &end);
    const bool tooLarge = std::isinf(number) && text.find_first_of("0123456789") != std::string::npos;
    return end != text.c_str() && trimmed(end).empty() && !tooLarge;
}

/// The whole number that a person reads in a text, decimal or hexadecimal.
std::optional<std::int64_t> wholeNumber(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto number = parseNumber(std::int64_t{}, text);
    return number ? std::optional(std::get<std::int64_t>(*number)) : std::nullopt;
}

}  // namespace

ConfigFile ConfigFile::read(const fs::path& file) {
    std::error_code failed;
    if (!fs::exists(file, failed))
        throw Failure(failed ? file.string() + " cannot be read: " + failed.message()
                             : "there is no file " + file.string());
    if (!fs::is_regular_file(file, failed)) throw Failure(file.string() + " is no regular file");
    const File open(std::fopen(file.c_str(), "r"));
    if (!open) throw Failure(file.string() + " cannot be read");
    auto index = std::make_unique<ConfigFileIndex>(open.get());
    if (!index->complete()) throw Failure(file.string() + " is too large for a configuration");
    return ConfigFile(std::move(index));
}

ConfigFile::ConfigFile(std::unique_ptr<ConfigFileIndex> index) : index_(std::move(index)) {
    std::size_t number = 1;
    bool begins = true;
    lines_.reserve(index_->lines().size());
    for (const std::string_view text : index_->lines()) {
        const bool ends = text.ends_with('\n');
        lines_.push_back({.number = number,
                          .begins = begins,
                          .cut = !ends && text.size() == LineSize - 1,
                          .text = std::string(text),
                          .key = std::string(keyIn(text).value_or("")),
                          .value = std::string(valueIn(text))});
        begins = ends;
        number += ends ? 1 : 0;
    }
    // A last line that just fills a piece goes on nowhere.
    if (!lines_.empty()) lines_.back().cut = false;
}

ConfigFile::ConfigFile(ConfigFile&&) noexcept = default;
ConfigFile& ConfigFile::operator=(ConfigFile&&) noexcept = default;
ConfigFile::~ConfigFile() = default;

const ConfigLine* ConfigFile::heading() const {
    const std::size_t number = index_->findSection(parameterSection());
    return number < lines_.size() ? &lines_[number] : nullptr;
}

const ConfigLine* ConfigFile::find(std::string_view parameter) const {
    return lineAfter(parameterSection(), parameter);
}

const ConfigLine* ConfigFile::lineAfter(std::string_view section, std::string_view key) const {
    const auto number = index_->find(section, key);
    return number ? &lines_[*number] : nullptr;
}

const ConfigLine* ConfigFile::findInHeader(std::string_view key) const {
    const auto found = std::find_if(lines_.begin(), lines_.end(),
                                    [&](const auto& line) { return headerValueIn(line.text, key); });
    return found != lines_.end() ? &*found : nullptr;
}

std::string ConfigFile::headerValue(const ConfigLine& line, std::string_view key) {
    return std::string(headerValueIn(line.text, key).value_or(""));
}

const ConfigLine* ConfigFile::activePort() const {
    const auto* line = lineAfter(Fg_ConfigFileParser::CameraSectionText, config_header::activePort);
    return line != nullptr && line->value.find(MissingText) == std::string::npos ? line : nullptr;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

bool isRead(const SdkParameter& row) {
    return row.fileUse == FileUse::Preloaded || row.fileUse == FileUse::Applied;
}

bool countsAsMissing(const SdkParameter& row, const ConfigLine& line) {
    return row.type != ValueType::Text && line.value.find(MissingText) != std::string::npos;
}

Value configValue(const Parameter& parameter, const ConfigLine& line) {
    const char* text = line.value.c_str();
    return std::visit(
        [&]<class T>(const T&) -> Value {
            if constexpr (std::is_same_v<T, std::string>) {
                return line.value;
            } else if constexpr (std::is_same_v<T, double>) {
                double number = 0;
                Fg_ConfigFileParser::getDoubleValue(text, &number);
                return number;
            } else if constexpr (std::is_same_v<T, std::int64_t> || std::is_same_v<T, std::uint64_t>) {
                long number = 0;
                Fg_ConfigFileParser::getInt64Value(text, &number);
                return static_cast<T>(number);
            } else if constexpr (std::is_integral_v<T>) {
                // Unsigned values stand in the file as signed ones; the lower 32 bits count.
                int number = 0;
                Fg_ConfigFileParser::getIntValue(text, &number);
                return static_cast<T>(number);
            } else {
                return T();
            }
        },
        parameter.emptyValue());
}

bool readsAsWritten(const Parameter& parameter, const ConfigLine& line) {
    const Value read = configValue(parameter, line);
    if (std::holds_alternative<std::string>(read)) {
        const bool valueIsCut = line.cut && !line.value.empty() && line.text.ends_with(line.value);
        return !valueIsCut && trimmed(line.value) == trimmed(writtenText(line));
    }
    if (std::holds_alternative<double>(read)) return isWholeDouble(line.value);
    const auto written = wholeNumber(line.value);
    if (!written) return false;
    return std::visit(
        [&]<class T>(const T& number) {
            if constexpr (std::is_integral_v<T>) {
                constexpr auto lowest = sizeof(T) == 4 ? std::numeric_limits<std::int32_t>::min()
                                                       : std::numeric_limits<std::int64_t>::min();
                constexpr auto highest = sizeof(T) == 4
                                             ? std::int64_t{std::numeric_limits<std::uint32_t>::max()}
                                             : std::numeric_limits<std::int64_t>::max();
                return *written >= lowest && *written <= highest && static_cast<T>(*written) == number;
            } else {
                return true;
            }
        },
        read);
}

std::string misreadText(const Parameter& parameter, const ConfigLine& line) {
    const Value read = configValue(parameter, line);
    const auto* text = std::get_if<std::string>(&read);
    if (text == nullptr)
        return "the file says " + inQuotes(line.value) + ", read as " + parameter.textOf(read);
    if (line.cut)
        return "the line is longer than 255 characters, so the text is cut after " +
               std::to_string(text->size());
    return "the file says " + inQuotes(writtenText(line)) + ", read as " + inQuotes(*text);
}

std::vector<const ConfigLine*> filesNamedIn(const ConfigFile& file) {
    std::vector<const ConfigLine*> result;
    for (const auto& row : sdkParameters) {
        const auto* line = row.type == ValueType::Text && isRead(row) ? file.find(row.name) : nullptr;
        if (line != nullptr && !line->value.empty()) result.push_back(line);
    }
    return result;
}

std::vector<const ConfigLine*> linesWithMissingFiles(const ConfigFile& file) {
    auto lines = filesNamedIn(file);
    std::error_code unknown;
    std::erase_if(lines, [&](const ConfigLine* line) { return fs::exists(line->value, unknown); });
    return lines;
}

std::string missingFileText(const ConfigLine& line) {
    std::error_code unknown;
    return line.key + " names " + inQuotes(line.value) +
           (fs::path(line.value).is_relative()
                ? ", which is not found from " + fs::current_path(unknown).string()
                : ", which does not exist");
}

bool sameInFile(const Value& a, const Value& b) {
    const auto* x = std::get_if<double>(&a);
    const auto* y = std::get_if<double>(&b);
    if (x == nullptr || y == nullptr) return a == b;
    if (std::isnan(*x) && std::isnan(*y)) return true;
    return *x == *y || std::fabs(*x - *y) <= std::fabs(*y) * kFilePrecision;
}

std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (const char c : trimmed(text).substr(0, kQuotedLength)) {
        const auto code = static_cast<unsigned char>(c);
        result += code < 0x20 || code == 0x7F ? '?' : c;
    }
    return result + (trimmed(text).size() > kQuotedLength ? "...\"" : "\"");
}

}  // namespace marovine::host
