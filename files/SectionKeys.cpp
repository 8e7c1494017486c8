#include "files/SectionKeys.h"

#include <bit>
#include <functional>
#include <utility>

#include "files/ConfigLine.h"

namespace marovine {

SectionKeys::SectionKeys(std::string section, const std::vector<std::string_view>& keys)
    : section_(std::move(section)), places_(std::bit_ceil(2 * keys.size() + 1)) {
    entries_.reserve(keys.size());
    for (const auto key : keys) {
        if (key.find('=') != key.npos) continue;
        // A key that is given twice has one entry: either would do for a lookup, but only one gets the line.
        auto& place = places_[placeOf(key)];
        if (place != 0) continue;
        entries_.push_back({.key = key});
        place = static_cast<std::uint32_t>(entries_.size());
    }
}

std::size_t SectionKeys::placeOf(std::string_view key) const {
    const std::size_t mask = places_.size() - 1;
    std::size_t place = std::hash<std::string_view>{}(key)&mask;
    while (places_[place] != 0 && entries_[places_[place] - 1].key != key) place = (place + 1) & mask;
    return place;
}

SectionKeys::Entry* SectionKeys::find(std::string_view key) {
    // Asked twice for one key, or for the next.
    for (const std::size_t position : {next_, next_ - 1}) {
        if (position >= entries_.size() || entries_[position].key != key) continue;
        next_ = position + 1;
        return &entries_[position];
    }
    const std::uint32_t position = places_[placeOf(key)];
    if (position == 0) return nullptr;
    next_ = position;
    return &entries_[position - 1];
}

bool SectionKeys::covers(std::string_view section, std::string_view key) {
    return section == section_ && find(key) != nullptr;
}

std::optional<std::string_view> SectionKeys::valueOf(std::string_view key, LineReader& reader) {
    if (!read_) read(reader);
    const Entry* entry = find(key);
    return entry != nullptr && entry->found
               ? std::optional(std::string_view(text_).substr(entry->start, entry->length))
               : std::nullopt;
}

void SectionKeys::forget() {
    read_ = false;
    text_.clear();
    for (auto& entry : entries_) entry.found = false;
}

void SectionKeys::read(LineReader& reader) {
    forget();
    reader.rewind();
    bool more = reader.nextWith(section_).has_value();
    for (auto missing = entries_.size(); more && missing > 0;) {
        const auto line = reader.next();
        more = line.has_value();
        if (!more) break;
        const auto key = keyIn(*line);
        Entry* entry = key ? find(*key) : nullptr;
        if (entry == nullptr || entry->found) continue;
        const auto value = valueIn(*line);
        entry->start = text_.size();
        entry->length = value.size();
        entry->found = true;
        text_ += value;
        --missing;
    }
    read_ = true;
}

}  // namespace marovine
