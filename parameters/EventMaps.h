#pragma once

/// The events of a design: from name to mask and back.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace marovine {

/// A mask has the bit of one event, or none for an event past the bits of a mask. Several names may lead to
/// one mask; a mask leads to the name entered last, the empty mask to none.
class EventMaps {
 public:
    void enter(std::string_view name, std::uint64_t mask) {
        masks_.insert_or_assign(std::string(name), mask);
        if (mask != 0) names_.insert_or_assign(mask, std::string(name));
    }
    /// The mask of exactly this name; none when there is no such event.
    std::optional<std::uint64_t> maskOf(std::string_view name) const {
        const auto found = masks_.find(name);
        return found != masks_.end() ? std::optional(found->second) : std::nullopt;
    }
    /// The name of exactly this mask, valid as long as the object; null when there is none.
    const char* nameOf(std::uint64_t mask) const {
        const auto found = names_.find(mask);
        return found != names_.end() ? found->second.c_str() : nullptr;
    }

 private:
    std::map<std::string, std::uint64_t, std::less<>> masks_;
    std::map<std::uint64_t, std::string> names_;
};

}  // namespace marovine
