#include "client/ConfigDiff.h"

#include <utility>

#include "client/ConfigFile.h"
#include "client/SkippedValues.h"
#include "tables/SdkParameterTable.h"

namespace marovine::host {

namespace {

/// One side of the comparison: a file, or the applet as it is now.
class Side {
 public:
    Side(Applet& applet, const std::filesystem::path& file) : applet_(applet) {
        if (!file.empty()) file_ = ConfigFile::read(file);
    }

    DifferentSide of(const Parameter& parameter) const {
        if (!file_) return {.value = applet_.get(parameter.name), .note = {}};
        const auto* line = file_->find(parameter.name);
        if (line == nullptr) return {};
        return {.value = configValue(parameter, *line),
                .note = readsAsWritten(parameter, *line) ? "" : misreadText(parameter, *line)};
    }

 private:
    Applet& applet_;
    std::optional<ConfigFile> file_;
};

bool same(const DifferentSide& a, const DifferentSide& b) {
    if (!a.value || !b.value) return a.value.has_value() == b.value.has_value();
    return sameInFile(*a.value, *b.value);
}

}  // namespace

std::vector<Difference> differencesBetween(Applet& applet, const std::filesystem::path& first,
                                           const std::filesystem::path& second, bool all) {
    const Side one(applet, first);
    const Side other(applet, second);
    std::vector<Difference> result;
    for (const auto& row : sdkParameters) {
        if (!isRead(row) && !(all && row.fileUse == FileUse::StoredOnly)) continue;
        Difference difference{.parameter = applet.parameter(row.name), .first = {}, .second = {}};
        difference.first = one.of(difference.parameter);
        difference.second = other.of(difference.parameter);
        if (!same(difference.first, difference.second)) result.push_back(std::move(difference));
    }
    // What the applet holds beyond the file's reach belongs to its meaning all the same.
    if (!second.empty()) return result;
    for (const auto& name : tablesLostInSave(applet)) {
        const Parameter parameter = applet.parameter(name);
        result.push_back({parameter, {.value = {}, .note = {}, .hasPlace = false}, other.of(parameter)});
    }
    return result;
}

}  // namespace marovine::host
