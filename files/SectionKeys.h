#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/TextFile.h"

namespace marovine {

/// The values of a known set of keys, found in one pass over the file: a load asks for over 200
/// keys with the instance lock held, whatever the file's size. Memory is that of one value for each key.
class SectionKeys {
 public:
    /// Keys to be looked up after the first line that contains the section text. Those with a '=' are left
    /// out: no line has such a key. The keys' texts must outlive the object.
    SectionKeys(std::string section, const std::vector<std::string_view>& keys);

    /// Whether `valueOf` answers for this lookup.
    [[nodiscard]] bool covers(std::string_view section, std::string_view key);
    /// The value in the first line of the key after the section's; none when there is no such line. The first
    /// call reads the file from its start. Valid until the file is read again.
    [[nodiscard]] std::optional<std::string_view> valueOf(std::string_view key, LineReader& reader);
    /// Makes the next call read the file again.
    void forget();

 private:
    /// A key and where its value lies in `text_`.
    struct Entry {
        std::string_view key;
        bool found = false;
        std::size_t start = 0;
        std::size_t length = 0;
    };
    /// The entry of a key, or null. Asked for in their order, keys are found without a search.
    Entry* find(std::string_view key);
    /// The place of a key in `places_`, or the free one where it would stand.
    std::size_t placeOf(std::string_view key) const;
    void read(LineReader& reader);

    std::string section_;
    std::vector<Entry> entries_;         ///< in the order given
    std::vector<std::uint32_t> places_;  ///< positions in it by hash, counted from 1; 0 is free
    std::size_t next_ = 0;               ///< the one behind the last that was found
    std::string text_;                   ///< the values
    bool read_ = false;
};

}  // namespace marovine
