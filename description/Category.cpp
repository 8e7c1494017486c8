#include "description/Category.h"

#include <algorithm>

Category* Category::getChild(std::size_t index) const {
    return index < children_.size() ? children_[index].get() : nullptr;
}

Category* Category::getChild(std::string_view name) const {
    const auto found =
        std::ranges::find(children_, name, [](const auto& child) { return std::string_view(child->name_); });
    return found == children_.end() ? nullptr : found->get();
}

Category& Category::addChild(std::string name) {
    return *children_.emplace_back(std::make_unique<Category>(std::move(name)));
}

std::string Category::getFeature(std::size_t index) const {
    return index < features_.size() ? features_[index] : std::string();
}

bool Category::hasFeature(std::string_view name) const {
    return std::ranges::find(features_, name) != features_.end();
}
