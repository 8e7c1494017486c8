#pragma once

/// What an applet's library says of itself.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "client/Library.h"

namespace marovine::host {

struct About {
    std::vector<std::pair<std::string, std::string>> texts;  ///< "name", "version", ... in this order
    int designType = 0;
    /// The runtime's questions about capabilities, by selector, and their answers.
    std::vector<std::pair<int, int>> capabilities;
    std::string_view icon;         ///< a PNG file; in the library's memory, as is the next
    std::string_view designImage;  ///< a design file
};

About aboutLibrary(const Library& library);

}  // namespace marovine::host
