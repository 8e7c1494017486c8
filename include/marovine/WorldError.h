#pragma once

/// What is wrong with a world file.

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace virtualboard {

/// One thing that keeps a world file from being used.
struct WorldFault {
    int line = 0;        ///< of the file, from 1; 0 where it concerns the file as a whole
    std::string path{};  ///< of the value: "parts[0].spacing"; empty for the file as a whole
    std::string reason{};
};

using WorldFaults = std::vector<WorldFault>;

/// A world that was refused. The text has one line per fault.
class WorldError : public std::runtime_error {
 public:
    explicit WorldError(WorldFaults faults) : runtime_error(textOf(faults)), faults_(std::move(faults)) {}

    /// All faults, in the order of their lines; at least one.
    const WorldFaults& faults() const { return faults_; }

    /// "line 3: belt.speed: above 100000 mm/s" for each.
    static std::string textOf(const WorldFaults& faults) {
        std::string text;
        for (const auto& fault : faults) {
            if (!text.empty()) text += '\n';
            if (fault.line > 0) text += "line " + std::to_string(fault.line) + ": ";
            if (!fault.path.empty()) text += fault.path + ": ";
            text += fault.reason;
        }
        return text;
    }

 private:
    WorldFaults faults_;
};

}  // namespace virtualboard
