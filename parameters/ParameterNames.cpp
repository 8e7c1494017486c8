#include "parameters/ParameterNames.h"

#include <utility>

#include "tables/SdkParameterSearch.h"

namespace marovine {

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
    if (const auto position = positionOf(name)) return sdkParameters[*position].id;
    const auto found = registers_.find(name);
    return found != registers_.end() ? std::optional(found->second) : std::nullopt;
}

const char* descriptionOf(std::string_view name) {
    const auto position = positionOf(name);
    return position ? sdkParameters[*position].description : nullptr;
}

}  // namespace marovine
