#pragma once

/// Reads the description text of a design. `marovine.design` explains the language in its first lines.

#include <stdexcept>
#include <string>
#include <string_view>

#include "board/design/DesignData.h"

namespace design {

/// A description that cannot be packed; the text begins with "FILE:LINE: ".
class DescriptionError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Reads a description; `fileName` only serves the messages. Throws `DescriptionError`.
virtualboard::DesignData parseDescription(std::string_view text, const std::string& fileName);

}  // namespace design
