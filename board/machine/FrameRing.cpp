#include "board/machine/FrameRing.h"

#include <exception>
#include <new>
#include <utility>

#include "board/machine/Machine.h"
#include "board/machine/Records.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

FrameRing::FrameRing(std::uint32_t buffers, std::size_t bytes) : bytes_(bytes), slots_(buffers) {
    spare_.reserve(slots_.size());  // so that giving back never needs memory
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
    released();
}

std::span<std::uint8_t> FrameRing::begin(std::int64_t number) {
    const std::lock_guard lock(mutex_);
    Slot& slot = slots_[bufferOf(number)];
    slot.picture = {};
    return {slot.pixels.get(), bytes_};
}

void FrameRing::finish(const FrameMemoryPicture& picture, const FrameMemoryPictureInfo& info) {
    const std::lock_guard lock(mutex_);
    Slot& slot = slots_[bufferOf(picture.number)];
    slot.picture = picture;
    slot.info = info;
    slot.info.number = picture.number;
}

const FrameRing::Slot* FrameRing::find(std::int64_t number) const {
    if (number < 1 || slots_.empty()) return nullptr;
    const Slot& slot = slots_[bufferOf(number)];
    return slot.picture.number == number ? &slot : nullptr;
}

int FrameRing::read(std::int64_t number, FrameMemoryPicture& picture) const {
    const std::lock_guard lock(mutex_);
    const Slot* slot = find(number);
    if (slot == nullptr) return kPictureGone;
    picture = slot->picture;
    return kOk;
}

int FrameRing::describe(std::int64_t number, FrameMemoryPictureInfo& info) const {
    const std::lock_guard lock(mutex_);
    const Slot* slot = find(number);
    if (slot == nullptr) return kPictureGone;
    info = slot->info;
    return kOk;
}

int FrameRing::take(std::int64_t number, FrameMemoryPicture& picture) try {
    const std::lock_guard lock(mutex_);
    if (number < 1 || slots_.empty()) return kPictureGone;
    Slot& slot = slots_[bufferOf(number)];
    if (slot.picture.number != number) return kPictureGone;
    if (spare_.empty()) spare_.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(bytes_));
    Buffer& place = taken_[slot.pixels.get()];
    picture = std::exchange(slot.picture, {});
    place = std::exchange(slot.pixels, std::move(spare_.back()));
    spare_.pop_back();
    return kOk;
} catch (const std::bad_alloc&) {
    return kNoBuffer;
}

int FrameRing::giveBack(const std::uint8_t* pixels) {
    Buffer surplus;  // freed without the lock
    const std::lock_guard lock(mutex_);
    const auto found = taken_.find(pixels);
    if (found == taken_.end()) return kPictureGone;
    surplus = std::move(found->second);
    taken_.erase(found);
    if (spare_.size() < slots_.size()) spare_.push_back(std::move(surplus));
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

int FrameMemoryDescribe(dma_mem* memory, int64_t number, FrameMemoryPictureInfo* info) {
    const auto ring = Machine::instance().memories.find(memory);
    if (ring == nullptr) return virtualboard::kUnknownMemory;
    if (info == nullptr) return virtualboard::kNullPointer;
    FrameMemoryPictureInfo known{};
    const int code = ring->describe(number, known);
    return code == virtualboard::kOk ? virtualboard::answerRecord(known, info) : code;
}

int FrameMemoryTake(dma_mem* memory, int64_t number, FrameMemoryPicture* picture) {
    const auto ring = Machine::instance().memories.find(memory);
    if (ring == nullptr) return virtualboard::kUnknownMemory;
    return picture != nullptr ? ring->take(number, *picture) : virtualboard::kNullPointer;
}

int FrameMemoryGiveBack(dma_mem* memory, const uint8_t* pixels) {
    const auto ring = Machine::instance().memories.find(memory);
    return ring != nullptr ? ring->giveBack(pixels) : virtualboard::kUnknownMemory;
}

int FrameMemoryFree(dma_mem* memory) {
    if (memory == nullptr || Machine::instance().memories.take(memory) != nullptr) return virtualboard::kOk;
    return virtualboard::kUnknownMemory;
}

}  // extern "C"
