#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "board/world/WorldFile.h"
#include "marovine/WorldError.h"

namespace virtualboard::world {

/// What is wrong, and where the values stand that were read.
class Findings {
 public:
    /// Notes where a value stands.
    void note(const std::string& path, int line) { lines_.emplace(path, line); }
    /// Adds a fault at a value; at one that the file leaves out, the object around it tells the line.
    void add(const std::string& path, std::string reason);

    /// All of them, by their lines; of very many only the first.
    WorldFaults faults{};

 private:
    std::unordered_map<std::string, int> lines_;
};

/// Reads a world file's text and checks it field by field. `found` says what is wrong; then the result is
/// good for nothing but further checks of other values.
WorldText readWorldText(std::string_view json, Findings& found);

}  // namespace virtualboard::world
