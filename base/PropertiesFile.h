#pragma once

#include <map>
#include <set>
#include <string>

#include "base/Locks.h"

namespace tavr::templates::platform {

/// A store of named texts in sections, kept in memory: key = section + "::" + name. Usable from any thread.
class PropertiesFile {
 public:
    /// With the flag set (as at first), a key needs a section before its first "::" and must not end in "::".
    void setSections(bool sections) { sections_ = sections; }
    /// With the flag clear (as at first), keys and section names are upper-cased before use.
    void setCaseSensitive(bool caseSensitive) { caseSensitive_ = caseSensitive; }

    /// The key of a property.
    static std::string key(const std::string& section, const std::string& name);

    /// Creates or overwrites a property; a key without section or name is ignored while sections are on.
    void setProperty(const std::string& key, const std::string& value);
    /// The value under a key; an absent key gives the default value, the empty text.
    std::string getProperty(const std::string& key) const;
    /// Names of the properties of a section; empty while sections are off.
    std::set<std::string> getSectionPropertyNames(const std::string& section) const;

 private:
    std::string inStoredCase(const std::string& text) const;

    mutable RecursiveMutex lock_;
    std::map<std::string, std::string> entries_ GUARDED_BY(lock_);
    bool sections_ = true;
    bool caseSensitive_ = false;
    std::string defaultValue_;
};

}  // namespace tavr::templates::platform
