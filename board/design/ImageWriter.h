#pragma once

/// Writes design images.

#include <cstddef>
#include <vector>

#include "board/design/DesignData.h"

namespace design {

/// The image of a design, exactly `size` bytes. Throws `std::length_error` saying how much is missing when
/// the design does not fit.
std::vector<std::byte> writeImage(const virtualboard::DesignData& data, std::size_t size);

}  // namespace design
