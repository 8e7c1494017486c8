#pragma once

/// Reads design images.

#include <cstddef>
#include <span>

#include "board/design/DesignData.h"

namespace virtualboard {

/// Reads and checks an image. Throws `std::invalid_argument` saying what is wrong with it; any bytes may be
/// given, and neither memory nor time grows beyond the image's size.
DesignData readImage(std::span<const std::byte> image);

}  // namespace virtualboard
