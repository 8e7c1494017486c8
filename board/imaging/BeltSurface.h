#pragma once

#include <cstdint>
#include <span>

#include "marovine/Image.h"

namespace virtualboard::imaging {

/// What lies on an endless belt, drawn when a line of it is seen. Immutable, thread-safe.
class BeltSurface {
 public:
    BeltSurface() = default;
    BeltSurface(const BeltSurface&) = delete;
    BeltSurface& operator=(const BeltSurface&) = delete;
    virtual ~BeltSurface() = default;

    /// The colours across the belt at a position along it, counted in pixels from where the camera looked
    /// when the belt was given to the board: `out` takes them from sensor column `first` on.
    virtual void row(std::int64_t position, std::uint32_t first, std::span<Pixel> out) const = 0;
};

}  // namespace virtualboard::imaging
