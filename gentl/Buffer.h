#pragma once

/// One buffer of a data stream.

#include "gentl/Module.h"

namespace marovine::gentl {

class Stream;

/// What a buffer holds.
struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;  ///< rows delivered
    std::uint64_t number = 0;  ///< of the run, from 0; lost pictures count
    std::uint64_t time = 0;    ///< ns of the board's clock, when its last line had come
    std::size_t bytes = 0;     ///< 0: nothing
    std::uint32_t xOffset = 0;
    std::uint32_t yOffset = 0;
    bool cut = false;  ///< the buffer was too small for the whole picture
};

/// Announced memory. What changes is guarded by its stream.
class Buffer final : public Module {
 public:
    /// With null `memory` the buffer has memory of its own; throws `std::bad_alloc`.
    Buffer(Stream& stream, std::string id, void* memory, std::size_t size, void* userPointer);

    void* const userPointer;
    std::uint8_t* memory() const { return memory_; }
    std::size_t size() const { return size_; }
    bool isOwn() const { return own_ != nullptr; }
    bool isOf(const Stream& stream) const { return &stream == stream_; }

    bool queued = false;  ///< waits for a picture or is being filled
    Picture picture;      ///< the last one

 private:
    void describe(NodeMap& nodes) override;

    const Stream* stream_;  ///< whose it is, not to be looked into
    const std::unique_ptr<std::uint8_t[]> own_;
    std::uint8_t* const memory_;
    const std::size_t size_;
};

}  // namespace marovine::gentl
