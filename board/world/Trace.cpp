#include "board/world/Trace.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "board/world/WorldFields.h"

namespace virtualboard::world {
namespace {

constexpr std::size_t kLongestRow = 200;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct Row {
    double at;
    bool high;
};

std::string_view trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(" \r\"");
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(" \r\"") - begin + 1);
}

std::optional<double> numberOf(std::string_view text) {
    double value = 0;
    const std::string_view digits = trimmed(text);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
    return value;
}

/// Names of the columns. A row that has only one number right is none: it would be lost without a word.
bool isHeading(std::string_view line) {
    const auto divider = line.find_first_of(",;\t");
    return !numberOf(line.substr(0, divider)) &&
           (divider == std::string_view::npos || !numberOf(line.substr(divider + 1)));
}

std::optional<Row> rowOf(std::string_view line) {
    const auto divider = line.find_first_of(",;\t");
    if (divider == std::string_view::npos) return std::nullopt;
    const auto at = numberOf(line.substr(0, divider)), level = numberOf(line.substr(divider + 1));
    if (!at || !level || (*level != 0 && *level != 1)) return std::nullopt;
    return Row{*at, *level == 1};
}

}  // namespace

std::int64_t nanoseconds(double milliseconds) {
    return std::llround(milliseconds * 1e6);
}

imaging::InputSignal readTrace(const std::filesystem::path& file, bool high, std::size_t mostEdges) {
    if (!std::filesystem::is_regular_file(file))
        throw std::runtime_error("there is no file '" + file.string() + "'");
    std::ifstream stream(file);
    imaging::InputSignal signal{.high = high};
    std::string line;
    std::optional<double> last;
    std::size_t number = 0;
    const auto fail = [&](const std::string& reason) {
        throw std::runtime_error("'" + file.string() + "', line " + std::to_string(number) + ": " + reason);
    };
    while (std::getline(stream, line)) {
        ++number;
        if (line.size() > kLongestRow) fail("too long for a time and a level");
        if (number == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
        if (trimmed(line).empty() || (number == 1 && isHeading(line))) continue;
        const auto row = rowOf(line);
        if (!row) fail("no time in ms and level 0 or 1");
        if (!(row->at >= 0 && row->at <= kMostTime)) fail("the time is below 0 or above 1e9 ms");
        if (last && row->at < *last) fail("earlier than the row before");
        last = row->at;
        const bool before = signal.edges.empty() ? signal.high : signal.edges.back().high;
        if (row->high != before) signal.edges.push_back({nanoseconds(row->at), row->high});
        if (signal.edges.size() > mostEdges)
            fail("more than " + std::to_string(mostEdges) + " changes of the level");
    }
    if (!last) throw std::runtime_error("'" + file.string() + "' holds no row with a time and a level");
    return signal;
}

}  // namespace virtualboard::world
