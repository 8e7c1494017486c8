#pragma once

/// Names of design parameters that are put together when they are needed.

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

namespace marovine {

/// A name in memory of its own: a typed call allocates none. What does not fit is cut off, and so is the name
/// of no parameter.
class DesignName {
 public:
    /// The parts one after the other, behind "Device1_Process0_".
    DesignName(std::initializer_list<std::string_view> parts) {
        append("Device1_Process0_");
        for (const auto part : parts) append(part);
    }

    /// Terminated.
    const char* c_str() const { return text_.data(); }

 private:
    void append(std::string_view part) {
        const auto room = static_cast<std::size_t>(text_.end() - 1 - end_);
        end_ = std::copy_n(part.begin(), std::min(part.size(), room), end_);
    }

    std::array<char, 256> text_{};
    std::array<char, 256>::iterator end_ = text_.begin();
};

}  // namespace marovine
