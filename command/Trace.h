#pragma once

/// The design writes that a set causes, in order, as text for people and as data for programs.

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "client/Client.h"
#include "command/Console.h"
#include "command/Json.h"

namespace marovine::host {

/// One design write with what caused it.
struct TracedWrite {
    std::string cause;            ///< "FG_WIDTH = 2048"
    virtualboard::Write write;    ///< full name of the design parameter, value, result
    std::optional<Value> before;  ///< the value before the write; nothing for parameters outside the design
};

/// Follows the design writes of an instance from its making on.
class Trace {
 public:
    explicit Trace(Applet& applet);

    /// Takes in what was written since the last call, under a cause.
    void collect(const std::string& cause);
    /// Takes in one write that was carried out.
    void add(virtualboard::Write write, const std::string& cause);
    /// Forgets all but the newest writes; those that stay keep their numbers.
    void keepNewest(std::size_t count);
    /// Writes taken in so far, forgotten ones counted.
    std::size_t count() const { return forgotten_ + writes_.size(); }
    const std::vector<TracedWrite>& writes() const { return writes_; }

    /// Prints a numbered list: name, value, and the value before where it differs.
    void print(const Console& console, std::size_t indent = 0) const;
    /// The writes from the `first` on as an array of objects; 0 is the first ever taken in.
    Json json(std::size_t first = 0) const;
    /// All writes as CSV.
    std::string csv() const;
    /// Writes all to a file, as JSON or CSV by its ending (.json, .csv), as `writeSafely` does.
    void save(const std::filesystem::path& file) const;

 private:
    Applet& applet_;
    std::map<std::string, Value> values_;  ///< what the design holds as far as this trace has seen
    std::vector<TracedWrite> writes_;
    std::size_t forgotten_ = 0;
};

}  // namespace marovine::host
