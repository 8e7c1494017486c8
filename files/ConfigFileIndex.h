#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace marovine {

/// The lines of a configuration file in memory with their keys in order, for those who show and explain a
/// file line by line.
class ConfigFileIndex {
 public:
    /// A file with more lines or more text than this is not held: many times what a configuration needs, and
    /// a bound on the memory that any file can claim.
    static constexpr std::size_t MaxSize = std::size_t{1} << 18;

    /// Reads the file from its start.
    explicit ConfigFileIndex(std::FILE* file);
    ConfigFileIndex(const ConfigFileIndex&) = delete;  // the lines lie in its own text
    ConfigFileIndex& operator=(const ConfigFileIndex&) = delete;

    /// Whether the whole file is held; else there are no lines.
    [[nodiscard]] bool complete() const { return complete_; }
    /// The lines as `LineReader` gives them; valid as long as the index is.
    [[nodiscard]] std::span<const std::string_view> lines() const { return lines_; }

    /// Number, from 0, of the first line that starts with the key and a '=' after the first line that
    /// contains the section text; none when there is no such line. Not for a key that itself holds a '='.
    [[nodiscard]] std::optional<std::size_t> find(std::string_view section, std::string_view key);
    /// Number of the first line that contains the section text; the number of lines when none does.
    [[nodiscard]] std::size_t findSection(std::string_view section);

 private:
    /// What stands before a line's first '='. The order makes a key's lines neighbours, first line first.
    struct Key {
        std::string_view name;
        std::uint32_t line;
        friend bool operator<(const Key& a, const Key& b) {
            return std::tie(a.name, a.line) < std::tie(b.name, b.line);
        }
    };

    std::string text_;
    std::vector<std::string_view> lines_;
    std::vector<Key> keys_;
    bool complete_ = true;

    // The section asked for last: nearly all lookups name the same one.
    std::optional<std::string> section_;
    std::size_t sectionLine_ = 0;
};

}  // namespace marovine
