#pragma once

/// The description tree of a design, in the layout that hosts read in place.

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "board/design/DesignData.h"
#include "marovine/marovine.h"

namespace virtualboard {

/// Owns the nodes of one tree and every text in them.
class ParameterTree {
 public:
    /// Describes the parameters of `data` for which `visible` holds; the runtime's own parameters stand in no
    /// group and stay out.
    ParameterTree(const DesignData& data, const std::function<bool(const ParameterData&)>& visible);
    ParameterTree(const ParameterTree&) = delete;
    ParameterTree& operator=(const ParameterTree&) = delete;

    /// First top-level group; null when the design has no group.
    RegisterInfo* root() const { return root_; }

 private:
    struct Group {
        RegisterInfo* node;
        std::vector<RegisterInfo*> children;
    };

    char* keep(const std::string& text);
    RegisterInfo& addNode(std::uint32_t kind, const std::string& displayName);
    void addGroup(const GroupData& data);
    void addParameter(const ParameterData& data);
    void adopt(Group& parent, RegisterInfo& child);

    std::deque<RegisterInfo> nodes_;  ///< a deque: addresses stay
    std::deque<std::string> texts_;
    std::vector<Group> groups_;  ///< in the design's order
    RegisterInfo* root_ = nullptr;
};

}  // namespace virtualboard
