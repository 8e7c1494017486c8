#include "board/machine/FrameRing.h"

#include <exception>

#include "board/machine/Machine.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

FrameRing::FrameRing(std::uint32_t buffers, std::size_t bytes) : bytes_(bytes), slots_(buffers) {
    // Pages that no picture reaches are never touched, so generous buffers cost nothing.
    for (Slot& slot : slots_) slot.pixels = std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
}

bool FrameRing::claim() {
    const std::lock_guard lock(mutex_);
    if (claimed_) return false;
    claimed_ = true;
    for (Slot& slot : slots_) slot.picture = {};
    return true;
}

void FrameRing::release() {
    const std::lock_guard lock(mutex_);
    claimed_ = false;
}

std::span<std::uint8_t> FrameRing::begin(std::int64_t number) {
    const std::lock_guard lock(mutex_);
    Slot& slot = slots_[bufferOf(number)];
    slot.picture = {};
    return {slot.pixels.get(), bytes_};
}

void FrameRing::finish(const FrameMemoryPicture& picture) {
    const std::lock_guard lock(mutex_);
    slots_[bufferOf(picture.number)].picture = picture;
}

int FrameRing::read(std::int64_t number, FrameMemoryPicture& picture) const {
    if (number < 1) return kPictureGone;
    const std::lock_guard lock(mutex_);
    const Slot& slot = slots_[bufferOf(number)];
    if (slot.picture.number != number) return kPictureGone;
    picture = slot.picture;
    return kOk;
}

}  // namespace virtualboard

using virtualboard::FrameRing;
using virtualboard::Machine;

extern "C" {

dma_mem* FrameMemoryCreate(uint32_t buffers, size_t bytes) {
    constexpr std::size_t most = std::size_t{1} << 40;  // beyond all machines
    if (buffers == 0 || bytes == 0 || bytes > most / buffers) return nullptr;
    try {
        return Machine::instance().memories.add(std::make_shared<FrameRing>(buffers, bytes));
    } catch (const std::exception&) {
        return nullptr;
    }
}

int FrameMemoryRead(dma_mem* memory, int64_t number, FrameMemoryPicture* picture) {
    const auto ring = Machine::instance().memories.find(memory);
    if (ring == nullptr) return virtualboard::kUnknownMemory;
    return picture != nullptr ? ring->read(number, *picture) : virtualboard::kNullPointer;
}

int FrameMemoryFree(dma_mem* memory) {
    if (memory == nullptr || Machine::instance().memories.take(memory) != nullptr) return virtualboard::kOk;
    return virtualboard::kUnknownMemory;
}

}  // extern "C"
