#include "files/SectionKeys.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "files/ConfigLine.h"
#include "files/TextFile.h"

namespace marovine {

SectionKeys::SectionKeys(std::string section, const std::vector<std::string_view>& keys)
    : section_(std::move(section)) {
    entries_.reserve(keys.size());
    for (const auto key : keys)
        if (key.find('=') == key.npos) entries_.push_back({.key = key});
    sorted_.resize(entries_.size());
    std::iota(sorted_.begin(), sorted_.end(), 0U);
    const auto keyAt = [this](std::uint32_t i) { return entries_[i].key; };
    std::ranges::sort(sorted_, {}, keyAt);
    // A key that is given twice has one entry: either would do for a lookup, but only one gets the line.
    const auto end = std::unique(sorted_.begin(), sorted_.end(),
                                 [&](std::uint32_t a, std::uint32_t b) { return keyAt(a) == keyAt(b); });
    if (end == sorted_.end()) return;
    sorted_.erase(end, sorted_.end());
    std::vector<Entry> once;
    for (const auto position : sorted_) once.push_back(entries_[position]);
    entries_ = std::move(once);
    std::iota(sorted_.begin(), sorted_.end(), 0U);
}

SectionKeys::Entry* SectionKeys::find(std::string_view key) {
    // Asked twice for one key, or for the next.
    for (const std::size_t position : {next_, next_ - 1}) {
        if (position >= entries_.size() || entries_[position].key != key) continue;
        next_ = position + 1;
        return &entries_[position];
    }
    const auto found =
        std::ranges::lower_bound(sorted_, key, {}, [this](std::uint32_t i) { return entries_[i].key; });
    if (found == sorted_.end() || entries_[*found].key != key) return nullptr;
    next_ = *found + 1;
    return &entries_[*found];
}

bool SectionKeys::covers(std::string_view section, std::string_view key) {
    return section == section_ && find(key) != nullptr;
}

std::optional<std::string_view> SectionKeys::valueOf(std::string_view key, std::FILE* file) {
    if (!read_) read(file);
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

void SectionKeys::read(std::FILE* file) {
    forget();
    LineReader reader(file);
    reader.rewind();
    bool inSection = false;
    auto missing = entries_.size();
    while (missing > 0) {
        const auto line = reader.next();
        if (!line) break;
        if (!inSection) {
            inSection = line->find(section_) != line->npos;
            continue;
        }
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
