#pragma once

/// Reads the description text of a design. `marovine.design` explains the language in its first lines.

#include <string>
#include <string_view>

#include "board/design/DesignData.h"

namespace virtualboard {

/// Reads a description; `fileName` only serves the messages. Throws `std::invalid_argument` with a text that
/// begins with "FILE:LINE: ". Any bytes may be given, and neither memory nor time grows beyond what their
/// number and the bounds of `DesignData.h` allow.
DesignData parseDescription(std::string_view text, const std::string& fileName);

}  // namespace virtualboard
