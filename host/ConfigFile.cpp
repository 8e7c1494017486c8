#include "host/ConfigFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "entry/AppletIdentity.h"
#include "params/SdkParameterTable.h"

namespace marovine::host {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kParameterSection = "Port A";
/// A file keeps 12 significant digits of a double.
constexpr double kFilePrecision = 1e-11;

/// "KEY='VALUE';" without apostrophes and semicolon; nothing for a line without "=".
bool readLine(std::string_view text, ConfigLine& line) {
    const auto split = text.find('=');
    if (split == std::string_view::npos) return false;
    line.key = text.substr(0, split);
    std::string_view value = text.substr(split + 1);
    value = value.substr(std::min(value.find_first_not_of("='"), value.size()));
    line.value = value.substr(0, value.find_first_of("=;'\r"));
    return true;
}

/// Keys that a load reads; without one of them it fails.
bool isRead(const SdkParameter& row) {
    return row.fileUse == FileUse::Preloaded || row.fileUse == FileUse::Applied;
}

}  // namespace

ConfigFile ConfigFile::read(const fs::path& file) {
    std::ifstream in(file);
    if (!in) throw Failure(file.string() + " cannot be read");
    ConfigFile result;
    ConfigLine line;
    for (std::string text; std::getline(in, text);) {
        ++line.number;
        if (text.starts_with('[')) line.section = text.substr(1, text.find(']') - 1);
        if (readLine(text, line)) result.lines_.push_back(line);
    }
    return result;
}

const ConfigLine* ConfigFile::find(std::string_view parameter) const {
    // A load takes the first line behind the section's heading, even if it stands in a later section.
    bool inSection = false;
    for (const auto& line : lines_) {
        inSection = inSection || line.section == kParameterSection;
        if (inSection && line.key == parameter) return &line;
    }
    return nullptr;
}

const ConfigLine* ConfigFile::findInHeader(std::string_view key) const {
    const auto found =
        std::find_if(lines_.begin(), lines_.end(), [&](const auto& line) { return line.key == key; });
    return found != lines_.end() ? &*found : nullptr;
}

Value configValue(const Parameter& parameter, const ConfigLine& line) {
    return std::visit(
        [&]<class T>(const T&) -> Value {
            if constexpr (std::is_same_v<T, std::string>) {
                return line.value;
            } else if constexpr (std::is_same_v<T, double>) {
                double number = 0;
                std::from_chars(line.value.data(), line.value.data() + line.value.size(), number);
                return number;
            } else if constexpr (std::is_same_v<T, std::int64_t> || std::is_same_v<T, std::uint64_t>) {
                return static_cast<T>(std::strtoll(line.value.c_str(), nullptr, 0));
            } else if constexpr (std::is_integral_v<T>) {
                // Unsigned values stand in the file as signed ones; the lower 32 bits count.
                return static_cast<T>(std::strtoll(line.value.c_str(), nullptr, 10));
            } else {
                return T();
            }
        },
        parameter.emptyValue());
}

bool sameInFile(const Value& a, const Value& b) {
    const auto* x = std::get_if<double>(&a);
    const auto* y = std::get_if<double>(&b);
    if (x == nullptr || y == nullptr) return a == b;
    return *x == *y || std::fabs(*x - *y) <= std::fabs(*y) * kFilePrecision;
}

std::vector<std::string> reasonsAgainstLoading(const fs::path& file) {
    if (file.string().find(".mcf") == std::string::npos)
        return {"the name of a configuration file ends in .mcf; " + file.string() + " does not"};
    std::error_code failed;
    if (!fs::exists(file, failed)) return {"there is no file " + file.string()};
    const ConfigFile config = ConfigFile::read(file);
    std::vector<std::string> reasons;
    for (const char* key : {"Hersteller", "Typ", "AktivePort"})
        if (config.findInHeader(key) == nullptr)
            reasons.push_back(std::string("the header lacks the key ") + key);
    const auto* type = config.findInHeader("Typ");
    if (type != nullptr && type->value != identity::name)
        reasons.push_back("line " + std::to_string(type->number) + ": the file belongs to the applet " +
                          type->value + ", this is " + identity::name);
    for (const auto& row : sdkParameters)
        if (isRead(row) && config.find(row.name) == nullptr)
            reasons.push_back(std::string("the key ") + row.name + " is missing");
    return reasons;
}

std::vector<SkippedValue> skippedValues(const Applet& loaded, const ConfigFile& file) {
    std::vector<SkippedValue> result;
    Rehearsal rehearsal(loaded);
    for (const auto& row : sdkParameters) {
        if (row.fileUse != FileUse::Applied) continue;
        const auto* line = file.find(row.name);
        if (line == nullptr) continue;
        const Setting setting{row.name, configValue(loaded.parameter(row.name), *line)};
        if (const int code = rehearsal.codeOf(setting))
            result.push_back({line, explain(loaded, setting, code)});
    }
    return result;
}

}  // namespace marovine::host
