#include "board/machine/QueuedFrames.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "board/machine/Machine.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

int QueuedFrames::queue(std::uint8_t* pixels, std::size_t size, void* tag) {
    if (pixels == nullptr) return kNullPointer;
    if (size < bytes()) return kMemoryTooSmall;
    const std::lock_guard lock(mutex_);
    const auto isTagged = [tag](const Buffer& buffer) { return buffer.tag == tag; };
    if (std::ranges::any_of(queue_, isTagged) || (filling_ && filling_->tag == tag)) return kBufferInUse;
    queue_.push_back({{pixels, size}, tag});
    return kOk;
}

int QueuedFrames::takeBack(void* tag) {
    const std::lock_guard lock(mutex_);
    if (filling_ && filling_->tag == tag) return kBufferInUse;
    const auto found = std::ranges::find(queue_, tag, &Buffer::tag);
    if (found == queue_.end()) return kUnknownMemory;
    queue_.erase(found);
    return kOk;
}

std::uint32_t QueuedFrames::buffers() const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::uint32_t>(queue_.size() + (filling_ ? 1 : 0));
}

std::span<std::uint8_t> QueuedFrames::begin(std::int64_t) {
    const std::lock_guard lock(mutex_);
    if (!filling_) {
        if (queue_.empty()) return {};
        filling_ = queue_.front();
        queue_.pop_front();
    }
    return filling_->pixels;
}

void QueuedFrames::finish(const FrameMemoryPicture& picture, const FrameMemoryPictureInfo& info) {
    FrameMemoryPictureInfo known = info;
    known.size = sizeof known;
    known.number = picture.number;
    std::optional<Buffer> filled;
    {
        const std::lock_guard lock(mutex_);
        filled = std::exchange(filling_, std::nullopt);
    }
    // Without the lock: the host may queue the buffer again at once.
    if (filled) finished_(context_, filled->tag, &picture, &known);
}

void QueuedFrames::released() {
    if (filling_) queue_.push_front(*std::exchange(filling_, std::nullopt));
}

namespace {

/// What stands behind a memory of queued buffers; null for any other memory.
std::shared_ptr<QueuedFrames> queuedFrames(dma_mem* memory) {
    return std::dynamic_pointer_cast<QueuedFrames>(Machine::instance().memories.find(memory));
}

}  // namespace

}  // namespace virtualboard

using virtualboard::Machine;

extern "C" {

dma_mem* FrameMemoryCreateQueued(size_t bytes, FrameMemoryFinished finished, void* context) {
    if (bytes == 0 || finished == nullptr) return nullptr;
    try {
        return Machine::instance().memories.add(
            std::make_shared<virtualboard::QueuedFrames>(bytes, finished, context));
    } catch (const std::exception&) {
        return nullptr;
    }
}

int FrameMemoryQueue(dma_mem* memory, void* pixels, size_t bytes, void* tag) {
    const auto frames = virtualboard::queuedFrames(memory);
    if (frames == nullptr) return virtualboard::kUnknownMemory;
    try {
        return frames->queue(static_cast<std::uint8_t*>(pixels), bytes, tag);
    } catch (const std::exception&) {
        return virtualboard::kInternalFailure;
    }
}

int FrameMemoryTakeBack(dma_mem* memory, void* tag) {
    const auto frames = virtualboard::queuedFrames(memory);
    return frames != nullptr ? frames->takeBack(tag) : virtualboard::kUnknownMemory;
}

}  // extern "C"
