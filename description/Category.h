#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A category of the XML description: a named list of features, with categories below it. Children and
/// features keep the order in which they were added.
class Category {
 public:
    explicit Category(std::string name) : name_(std::move(name)) {}

    const std::string& getName() const { return name_; }

    std::size_t getChildCount() const { return children_.size(); }
    /// Null when there is no such child.
    Category* getChild(std::size_t index) const;
    Category* getChild(std::string_view name) const;
    bool hasChild(std::string_view name) const { return getChild(name) != nullptr; }
    /// Adds a category with this name and returns it; it belongs to this one.
    Category& addChild(std::string name);

    std::size_t getFeatureCount() const { return features_.size(); }
    /// An empty text when there is no such feature.
    std::string getFeature(std::size_t index) const;
    bool hasFeature(std::string_view name) const;
    /// Appends a feature; a name may occur more than once.
    void addFeature(std::string name) { features_.push_back(std::move(name)); }

 private:
    std::string name_;
    std::vector<std::unique_ptr<Category>> children_;
    std::vector<std::string> features_;
};
