#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marovine {

/// The lines that answer for a known set of keys, found in one pass over the file: a load asks for over 200
/// keys with the instance lock held, whatever the file's size. Memory is that of one line for each key.
class SectionKeys {
 public:
    /// Keys to be looked up after the first line that contains the section text. Those with a '=' are left
    /// out: no line has such a key. The keys' texts must outlive the object.
    SectionKeys(std::string section, const std::vector<std::string_view>& keys);

    /// Whether `lineOf` answers for this lookup.
    [[nodiscard]] bool covers(std::string_view section, std::string_view key) const;
    /// The first line of the key after the section's; none when there is no such line. The first call reads
    /// the file from its start.
    [[nodiscard]] std::optional<std::string_view> lineOf(std::string_view key, std::FILE* file);
    /// Makes the next call read the file again.
    void forget();

 private:
    struct Entry {
        std::string_view key;
        std::optional<std::string> line;
    };
    const Entry* find(std::string_view key) const;
    void read(std::FILE* file);

    std::string section_;
    std::vector<Entry> entries_;  ///< ordered by key
    bool read_ = false;
};

}  // namespace marovine
