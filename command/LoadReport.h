#pragma once

/// What a load of a configuration leaves out without a word: values that setters refuse, and files that are
/// not there.

#include <filesystem>
#include <string>
#include <vector>

#include "client/SkippedValues.h"
#include "command/Console.h"
#include "command/Json.h"

namespace marovine::host {

/// Made after a load that succeeded.
class LoadReport {
 public:
    /// `before` is in the state that the file was loaded into and remembers its steps. Throws `Failure` as
    /// `skippedValues` does.
    LoadReport(const Applet& before, const std::filesystem::path& file);

    bool empty() const { return skipped_.empty() && missing_.empty(); }
    /// Whether a value was skipped; a missing file alone is no failure.
    bool hasSkipped() const { return !skipped_.empty(); }

    void print(const Console& console) const;
    /// Adds "skipped" and "missingFiles" to a document.
    void addTo(Json& document) const;

 private:
    struct MissingFile {
        std::size_t line;
        std::string text;
    };

    ConfigFile file_;
    std::vector<SkippedValue> skipped_;
    std::vector<MissingFile> missing_;
};

}  // namespace marovine::host
