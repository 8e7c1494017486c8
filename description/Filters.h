#pragma once

#include <string>
#include <string_view>

/// Replaces the five characters that XML reserves (" & ' < >) by their entities; all others are copied.
std::string xmlStringFilter(std::string_view text);

/// Keeps what a feature or category name may hold: letters everywhere, digits and underscores except as the
/// first character of `text`. Everything else is dropped.
std::string xmlNameFilter(std::string_view text);
