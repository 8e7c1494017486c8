#include "files/ConfigFileIndex.h"

#include <algorithm>

#include "files/ConfigLine.h"
#include "files/TextFile.h"

namespace marovine {

ConfigFileIndex::ConfigFileIndex(std::FILE* file) {
    std::vector<std::size_t> ends;
    LineReader reader(file);
    reader.rewind();
    while (const auto line = reader.next()) {
        text_.append(*line);
        ends.push_back(text_.size());
        if (std::max(text_.size(), ends.size()) > MaxSize) {
            complete_ = false;
            text_ = {};
            return;
        }
    }

    // Only now does the text stay where it is.
    lines_.reserve(ends.size());
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
        const std::string_view line = std::string_view(text_).substr(begin, end - begin);
        if (const auto key = keyIn(line)) keys_.push_back({*key, static_cast<std::uint32_t>(lines_.size())});
        lines_.push_back(line);
        begin = end;
    }
    std::sort(keys_.begin(), keys_.end());
}

std::optional<std::size_t> ConfigFileIndex::find(std::string_view section, std::string_view key) {
    const auto after = static_cast<std::uint32_t>(findSection(section) + 1);
    const auto found = std::lower_bound(keys_.begin(), keys_.end(), Key{key, after});
    if (found == keys_.end() || found->name != key) return std::nullopt;
    return found->line;
}

std::size_t ConfigFileIndex::findSection(std::string_view section) {
    if (section_ == section) return sectionLine_;
    section_ = section;
    const auto line = std::find_if(lines_.begin(), lines_.end(), [section](std::string_view candidate) {
        return candidate.find(section) != candidate.npos;
    });
    sectionLine_ = static_cast<std::size_t>(line - lines_.begin());  // past the end: no key follows
    return sectionLine_;
}

}  // namespace marovine
