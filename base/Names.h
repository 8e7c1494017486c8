#pragma once

/// Finding names that a user may have meant.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace marovine::host {

/// Number of single-character insertions, deletions, replacements and swaps of neighbours that turn one text
/// into the other, without regard to case.
std::size_t editDistance(std::string_view a, std::string_view b);

/// The names nearest to `name`, best first, at most `count`; names that only share a few letters are left
/// out. A name that contains `name` counts as near.
std::vector<std::string> nearestNames(std::string_view name, const std::vector<std::string>& names,
                                      std::size_t count = 3);

/// Whether a text is a pattern rather than a name: it has * or ?.
bool isPattern(std::string_view text);

/// Whether a name matches a pattern without regard to case: with * or ? the whole name, else a part of it.
bool matchesPattern(std::string_view name, std::string_view pattern);

}  // namespace marovine::host
