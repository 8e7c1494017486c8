#pragma once

/// Picture memory made of buffers that the host queues one by one.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>

#include "board/machine/FrameRing.h"

namespace virtualboard {

/// Pictures go into the host's buffers in the order in which they were queued; with its picture a buffer
/// goes back to the host. Thread-safe.
class QueuedFrames final : public FrameRing {
 public:
    /// `bytes` is the least that a buffer must hold.
    QueuedFrames(std::size_t bytes, FrameMemoryFinished finished, void* context)
        : FrameRing(0, bytes), finished_(finished), context_(context) {}

    /// The codes of Codes.h.
    int queue(std::uint8_t* pixels, std::size_t bytes, void* tag);
    int takeBack(void* tag);

    bool isQueued() const override { return true; }
    /// Buffers queued, with the one being filled.
    std::uint32_t buffers() const override;
    /// The first buffer of the queue; empty when there is none. A buffer that was begun and not finished is
    /// given out again.
    std::span<std::uint8_t> begin(std::int64_t number) override;
    void finish(const FrameMemoryPicture& picture, const FrameMemoryPictureInfo& info) override;

 protected:
    void released() override;

 private:
    struct Buffer {
        std::span<std::uint8_t> pixels;
        void* tag;
    };

    const FrameMemoryFinished finished_;
    void* const context_;
    std::deque<Buffer> queue_;
    std::optional<Buffer> filling_;
};

}  // namespace virtualboard
