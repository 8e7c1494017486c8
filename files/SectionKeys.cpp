#include "files/SectionKeys.h"

#include <algorithm>
#include <utility>

#include "files/ConfigLine.h"
#include "files/TextFile.h"

namespace marovine {

SectionKeys::SectionKeys(std::string section, const std::vector<std::string_view>& keys)
    : section_(std::move(section)) {
    entries_.reserve(keys.size());
    for (const auto key : keys)
        if (key.find('=') == key.npos) entries_.push_back({.key = key, .line = {}});
    std::ranges::sort(entries_, {}, &Entry::key);
}

const SectionKeys::Entry* SectionKeys::find(std::string_view key) const {
    const auto found = std::ranges::lower_bound(entries_, key, {}, &Entry::key);
    return found != entries_.end() && found->key == key ? &*found : nullptr;
}

bool SectionKeys::covers(std::string_view section, std::string_view key) const {
    return section == section_ && find(key) != nullptr;
}

std::optional<std::string_view> SectionKeys::lineOf(std::string_view key, std::FILE* file) {
    if (!read_) read(file);
    const Entry* entry = find(key);
    return entry != nullptr && entry->line ? std::optional<std::string_view>(*entry->line) : std::nullopt;
}

void SectionKeys::forget() {
    read_ = false;
    for (auto& entry : entries_) entry.line.reset();
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
        auto* entry = key ? const_cast<Entry*>(find(*key)) : nullptr;
        if (entry == nullptr || entry->line) continue;
        entry->line = *line;
        --missing;
    }
    read_ = true;
}

}  // namespace marovine
