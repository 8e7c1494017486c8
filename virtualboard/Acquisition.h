#pragma once

/// The acquisition side of a board, as the host runtime's functions see it.

#include <cstdint>

#include "entry/marovine.h"
#include "virtualboard/Codes.h"

namespace virtualboard {

/// A board without a camera in front of it: it has nothing to take pictures from and says so.
class Acquisition {
 public:
    /// Starts to take `pictures` pictures (-1: until stopped) into `memory`. 0 or a negative code.
    int acquire(std::int64_t pictures, int flags, dma_mem* memory);
    /// Ends what runs; 0 also when nothing does.
    int stop(int flags, dma_mem* memory);
    /// Number of the last finished picture, from 1; a negative code when there is none.
    std::int64_t lastPicture(dma_mem* memory) const;
    /// Waits up to `timeout` seconds for picture `picture`.
    std::int64_t lastPictureBlocking(std::int64_t picture, int timeout, dma_mem* memory);
    /// The read-out that `parameter` names, or a negative code.
    std::int64_t status(int parameter, std::int64_t data, dma_mem* memory) const;
};

}  // namespace virtualboard
