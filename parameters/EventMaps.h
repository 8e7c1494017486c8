#pragma once

/// The events of a design: from name to mask and back.

#include <algorithm>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace marovine {

/// A mask has the bit of one event, or none for an event past the bits of a mask. Several names may lead to
/// one mask; a mask leads to the name entered last, the empty mask to none. They are some dozens, asked for
/// once by a host and entered at every opening, so that a list serves better than a tree.
class EventMaps {
 public:
    /// A name that is entered again has the new mask.
    void enter(std::string_view name, std::uint64_t mask) {
        // Pointers into the deque stay.
        entered_.emplace_back(name, mask);
    }
    /// The mask of exactly this name; none when there is no such event.
    std::optional<std::uint64_t> maskOf(std::string_view name) const {
        const auto found = std::find_if(entered_.rbegin(), entered_.rend(),
                                        [&](const auto& event) { return event.first == name; });
        return found != entered_.rend() ? std::optional(found->second) : std::nullopt;
    }
    /// The name of exactly this mask, valid as long as the object; null when there is none.
    const char* nameOf(std::uint64_t mask) const {
        const auto found = std::find_if(entered_.rbegin(), entered_.rend(),
                                        [&](const auto& event) { return event.second == mask && mask != 0; });
        return found != entered_.rend() ? found->first.c_str() : nullptr;
    }

 private:
    std::deque<std::pair<std::string, std::uint64_t>> entered_;
};

}  // namespace marovine
