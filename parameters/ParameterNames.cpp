#include "parameters/ParameterNames.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tables/SdkParameterTable.h"

namespace marovine {

namespace {

/// The parameters, ordered by name, for a search at run time.
const auto& byName() {
    static const auto rows = [] {
        std::array<std::pair<std::string_view, const SdkParameter*>, sdkParameterCount> result;
        std::transform(sdkParameters.begin(), sdkParameters.end(), result.begin(),
                       [](const auto& row) { return std::pair(std::string_view(row.name), &row); });
        std::sort(result.begin(), result.end());
        return result;
    }();
    return rows;
}

}  // namespace

void ParameterNames::addRegister(std::string name, int id) {
    // Two registers of one name share the entry of the first but keep a position each.
    listed_.push_back(registers_.try_emplace(std::move(name), id).first->first.c_str());
}

void ParameterNames::addDesignParameter(std::string name, int id) {
    listed_.push_back(designParameters_.try_emplace(std::move(name), id).first->first.c_str());
}

int ParameterNames::count() const {
    return static_cast<int>(sdkParameterCount + listed_.size());
}

const char* ParameterNames::nameAt(int index) const {
    if (index < 0 || index >= count()) return nullptr;
    const auto position = static_cast<std::size_t>(index);
    return position < sdkParameterCount ? sdkParameters[position].name
                                        : listed_[position - sdkParameterCount];
}

std::optional<int> ParameterNames::idOf(std::string_view name) const {
    if (const auto* row = searchSdkParameter(name)) return row->id;
    const auto found = registers_.find(name);
    return found != registers_.end() ? std::optional(found->second) : std::nullopt;
}

const SdkParameter* searchSdkParameter(std::string_view name) {
    const auto& rows = byName();
    const auto found =
        std::lower_bound(rows.begin(), rows.end(), name,
                         [](const auto& row, std::string_view key) { return row.first < key; });
    return found != rows.end() && found->first == name ? found->second : nullptr;
}

const char* descriptionOf(std::string_view name) {
    const auto* row = searchSdkParameter(name);
    return row != nullptr ? row->description : nullptr;
}

}  // namespace marovine
