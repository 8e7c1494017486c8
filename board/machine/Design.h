#pragma once

/// A loaded design: what its description says, less what the control interface hides, with the lookups and
/// records that the runtimes hand out.

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "board/design/DesignData.h"
#include "board/machine/ParameterTree.h"
#include "marovine/OutsideRuntimes.h"

namespace virtualboard {

using Names = std::set<std::string, std::less<>>;

/// Never changes once built, so any thread may read it.
class Design {
 public:
    /// Names of parameters, events and registers in `hidden` are not there for anybody. Throws
    /// `std::invalid_argument` for a description that cannot be read.
    Design(std::string_view description, Names hidden);
    Design(const Design&) = delete;
    Design& operator=(const Design&) = delete;

    const DesignData& data() const { return data_; }
    /// Whether it is made of this description with these names hidden.
    bool isOf(std::string_view description, const Names& hidden) const {
        return description_ == description && hidden_ == hidden;
    }
    bool isLike(const Design& other) const { return isOf(other.description_, other.hidden_); }

    /// Position of a parameter in `data().parameters`; empty when there is none or it is hidden.
    std::optional<std::size_t> indexOf(int id) const;
    std::optional<std::size_t> indexOf(std::string_view name) const;

    /// Event `number`; null past the last one. The runtimes' signatures hand it out as non-const.
    HapEvent* event(int number) const;
    const std::vector<RegisterData>& registers() const { return data_.registers; }
    RegisterInfo* tree() const { return tree_.root(); }

 private:
    bool isHidden(const ParameterData& parameter) const { return hidden_.contains(parameter.name); }

    std::string description_;
    Names hidden_;
    DesignData data_;  ///< hidden parameters keep their place, so that ids stay
    std::map<std::string, std::size_t, std::less<>> byName_;
    std::map<int, std::size_t> runtimeIds_;
    std::size_t designParameters_ = 0;
    mutable std::vector<HapEvent> events_;
    ParameterTree tree_;
};

}  // namespace virtualboard
