#include "base/PropertiesFile.h"

#include <boost/algorithm/string/case_conv.hpp>

namespace tavr::templates::platform {

namespace {

constexpr const char kSeparator[] = "::";

bool hasSectionAndName(const std::string& key) {
    const std::size_t separator = key.find(kSeparator);
    return separator != std::string::npos && separator != 0 && !key.ends_with(kSeparator);
}

}  // namespace

std::string PropertiesFile::key(const std::string& section, const std::string& name) {
    return section + kSeparator + name;
}

void PropertiesFile::setProperty(const std::string& key, const std::string& value) {
    const RecursiveMutexGuard guard(&lock_);
    if (!sections_ || hasSectionAndName(key)) {
        entries_.insert_or_assign(inStoredCase(key), value);
    }
}

std::string PropertiesFile::getProperty(const std::string& key) const {
    const RecursiveMutexGuard guard(&lock_);
    const auto entry = entries_.find(inStoredCase(key));
    return entry == entries_.end() ? defaultValue_ : entry->second;
}

std::set<std::string> PropertiesFile::getSectionPropertyNames(const std::string& section) const {
    const RecursiveMutexGuard guard(&lock_);
    std::set<std::string> names;
    if (!sections_) {
        return names;
    }
    const std::string prefix = key(inStoredCase(section), "");
    for (auto entry = entries_.lower_bound(prefix);
         entry != entries_.end() && entry->first.starts_with(prefix); ++entry) {
        names.insert(entry->first.substr(prefix.size()));
    }
    return names;
}

std::string PropertiesFile::inStoredCase(const std::string& text) const {
    return caseSensitive_ ? text : boost::algorithm::to_upper_copy(text);
}

}  // namespace tavr::templates::platform
