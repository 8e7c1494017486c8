#pragma once

/// Walks the parameter tree that the host runtime keeps of the design. It belongs to the runtime, so that
/// pointers may be null and a group may be reached twice.

#include <cstdint>
#include <deque>
#include <unordered_set>
#include <utility>
#include <vector>

#include "marovine/marovine.h"

namespace marovine {

/// Whether a node describes a single value.
constexpr bool isScalar(const RegisterInfo& node) {
    switch (node.kind) {
        case FG_KIND_UINT32:
        case FG_KIND_ENUMERATION:
        case FG_KIND_TEXT:
        case FG_KIND_DOUBLE:
        case FG_KIND_UINT64:
        case FG_KIND_INT32:
        case FG_KIND_INT64:
            return true;
        default:
            return false;
    }
}

/// Calls `visit(leaf, path)` for every scalar leaf, breadth-first, with the groups that lead to it, outermost
/// first. A group's next node is looked at as well, at every depth, when it is itself a group.
template <class Visit>
void forEachScalarLeaf(const RegisterInfo* root, Visit&& visit) {
    using Path = std::vector<const RegisterInfo*>;
    std::unordered_set<const RegisterInfo*> seen;
    std::deque<std::pair<const RegisterInfo*, Path>> queue{{root, {}}};
    for (; !queue.empty(); queue.pop_front()) {
        auto& [group, path] = queue.front();
        if (group == nullptr || group->kind != FG_KIND_GROUP || !seen.insert(group).second) continue;
        Path below = path;
        below.push_back(group);
        const auto& children = group->value.group;
        for (std::int32_t i = 0; children.children != nullptr && i < children.childCount; ++i) {
            const RegisterInfo* child = children.children[i];
            if (child == nullptr) continue;
            if (isScalar(*child))
                visit(*child, below);
            else
                queue.emplace_back(child, below);
        }
        queue.emplace_back(group->next, std::move(path));
    }
}

}  // namespace marovine
