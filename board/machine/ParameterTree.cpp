#include "board/machine/ParameterTree.h"

namespace virtualboard {

namespace {

void fillValue(RegisterInfoValue& value, const ParameterData& data, char* attribute) {
    const auto u32 = [](Number number) { return static_cast<std::uint32_t>(number); };
    const auto i32 = [](Number number) { return static_cast<std::int32_t>(number); };
    const auto i64 = [](Number number) { return static_cast<std::int64_t>(number); };
    switch (data.kind) {
        case ParameterKind::UInt32:
            value.uint32 = {u32(data.minimum), u32(data.maximum), u32(data.increment)};
            break;
        case ParameterKind::Int32:
            value.int32 = {i32(data.minimum), i32(data.maximum), i32(data.increment)};
            break;
        case ParameterKind::UInt64:
            value.uint64 = {data.minimum, data.maximum, data.increment};
            break;
        case ParameterKind::Int64:
            value.int64 = {i64(data.minimum), i64(data.maximum), i64(data.increment)};
            break;
        case ParameterKind::Double:
            value.real = {toDouble(data.minimum), toDouble(data.maximum), toDouble(data.increment)};
            break;
        case ParameterKind::UInt32Field:
            value.uint32Field = {data.elements, u32(data.minimum), u32(data.maximum), u32(data.increment)};
            break;
        case ParameterKind::Text:
            value.text.attribute = attribute;
            break;
    }
}

}  // namespace

ParameterTree::ParameterTree(const DesignData& data,
                             const std::function<bool(const ParameterData&)>& visible) {
    groups_.reserve(data.groups.size());
    for (const GroupData& group : data.groups) addGroup(group);
    for (const ParameterData& parameter : data.parameters) {
        if (parameter.group >= 0 && visible(parameter)) addParameter(parameter);
    }
    for (Group& group : groups_) {
        group.node->value.group.childCount = static_cast<std::int32_t>(group.children.size());
        group.node->value.group.children = group.children.data();
        group.node->value.group.nextChildIndex = static_cast<std::uint32_t>(group.children.size());
    }
}

char* ParameterTree::keep(const std::string& text) {
    return texts_.emplace_back(text).data();
}

RegisterInfo& ParameterTree::addNode(std::uint32_t kind, const std::string& displayName) {
    RegisterInfo& node = nodes_.emplace_back();
    node.kind = kind;
    node.displayName = keep(displayName);
    node.secondFlags = 1;
    node.publish = 1;
    return node;
}

void ParameterTree::adopt(Group& parent, RegisterInfo& child) {
    child.index = static_cast<std::uint32_t>(parent.children.size());
    parent.children.push_back(&child);
}

void ParameterTree::addGroup(const GroupData& data) {
    RegisterInfo& node = addNode(FG_KIND_GROUP, data.name);
    if (data.parent < 0) {
        node.next = root_;  // the list begins with the newest top-level group
        if (root_ != nullptr) root_->previous = &node;
        root_ = &node;
    } else {
        Group& parent = groups_[static_cast<std::size_t>(data.parent)];
        node.depth = parent.node->depth + 1;
        node.parentName = keep(parent.node->displayName);
        adopt(parent, node);
    }
    groups_.push_back({.node = &node, .children = {}});
}

void ParameterTree::addParameter(const ParameterData& data) {
    RegisterInfo& node = addNode(static_cast<std::uint32_t>(data.kind), data.leaf);
    node.name = keep(data.name);
    node.accessFlags = data.readOnly ? 1 : 3;
    node.address = data.id;
    node.unit = keep(data.unit);
    fillValue(node.value, data, keep(std::string()));
    adopt(groups_[static_cast<std::size_t>(data.group)], node);
}

}  // namespace virtualboard
