#pragma once

/// A JSON document with the line of every value. The library that reads it takes seconds to compile, so only
/// JsonTree.cpp includes it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marovine/WorldError.h"

namespace virtualboard::world {

/// A value of a document.
struct JsonNode {
    enum class Kind { Null, Truth, Number, Text, Array, Object };

    Kind kind = Kind::Null;
    int line = 0;                          ///< that the value begins on, from 1; of a member that of its name
    double number = 0;                     ///< of a number; 0 or 1 of a truth value
    std::optional<std::uint64_t> whole{};  ///< the number, exactly, when it is written as a whole one
    std::string text{};
    std::vector<JsonNode> elements{};  ///< of an array, or the members of an object
    std::vector<std::string> names{};  ///< of the members
};

inline constexpr std::size_t kMostJsonBytes = std::size_t{1} << 22;
inline constexpr int kMostJsonDepth = 12;

/// Reads a document of at most `kMostJsonBytes`, nested at most `kMostJsonDepth` deep, in which no object has
/// a name twice. Nothing when it is none; `faults` then says why, line by line.
std::optional<JsonNode> readJson(std::string_view text, WorldFaults& faults);

/// A text from a file, short enough for a message.
std::string shortened(std::string_view text);

}  // namespace virtualboard::world
