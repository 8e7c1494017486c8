#include "base/Names.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>

namespace marovine::host {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

}  // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
    // Three rows of the table: a swap of neighbours looks two rows back.
    std::array<std::vector<std::size_t>, 3> rows;
    rows.fill(std::vector<std::size_t>(b.size() + 1));
    for (std::size_t j = 0; j <= b.size(); ++j) rows[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        auto& row = rows[i % 3];
        const auto& above = rows[(i + 2) % 3];
        const auto& twoAbove = rows[(i + 1) % 3];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]))
                row[j] = std::min(row[j], twoAbove[j - 2] + 1);
        }
    }
    return rows[a.size() % 3][b.size()];
}

std::vector<std::string> nearestNames(std::string_view name, const std::vector<std::string>& names,
                                      std::size_t count) {
    struct Candidate {
        std::size_t distance;
        const std::string* name;
    };
    const std::string wanted = lowered(name);
    const std::size_t tolerance = std::max<std::size_t>(2, name.size() / 3);
    std::vector<Candidate> candidates;
    for (const auto& known : names) {
        // "WIDTH" means FG_WIDTH although three letters are missing: leaving out costs less than a typing
        // error.
        const bool contained = wanted.size() >= 3 && lowered(known).find(wanted) != std::string::npos;
        // The distance is no less than the difference in length; a name of any length costs no time.
        const std::size_t least = std::max(name.size(), known.size()) - std::min(name.size(), known.size());
        if (!contained && least > tolerance) continue;
        std::size_t distance = editDistance(name, known);
        if (contained) distance = std::min(distance, 1 + (known.size() - wanted.size()) / 4);
        if (contained || distance <= tolerance) candidates.push_back({distance, &known});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return a.distance < b.distance; });
    std::vector<std::string> result;
    for (const auto& candidate : candidates) {
        // Beside a good match, poor ones only confuse.
        if (result.size() == count || candidate.distance > 2 * candidates.front().distance + 1) break;
        result.push_back(*candidate.name);
    }
    return result;
}

bool isPattern(std::string_view text) {
    return text.find_first_of("*?") != std::string_view::npos;
}

bool matchesPattern(std::string_view name, std::string_view pattern) {
    const bool plain = !isPattern(pattern);
    if (plain && pattern.size() > name.size()) return false;
    const std::string text = lowered(name);
    const std::string wanted = lowered(pattern);
    if (plain) return text.find(wanted) != std::string::npos;
    return fnmatch(wanted.c_str(), text.c_str(), 0) == 0;
}

}  // namespace marovine::host
