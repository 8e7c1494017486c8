#include "virtualboard/Acquisition.h"

namespace virtualboard {

int Acquisition::acquire(std::int64_t, int, dma_mem*) {
    return kNoPictureSource;
}

int Acquisition::stop(int, dma_mem*) {
    return kOk;
}

std::int64_t Acquisition::lastPicture(dma_mem*) const {
    return kNoPictureSource;
}

std::int64_t Acquisition::lastPictureBlocking(std::int64_t, int, dma_mem*) {
    return kNoPictureSource;
}

std::int64_t Acquisition::status(int, std::int64_t, dma_mem*) const {
    return kNoPictureSource;
}

}  // namespace virtualboard
