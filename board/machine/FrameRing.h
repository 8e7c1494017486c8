#pragma once

/// The ring of buffers behind a host's picture memory.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "marovine/FrameMemory.h"

namespace virtualboard {

/// Knows which picture lies in which buffer. Thread-safe; a buffer being filled belongs to its filler alone.
class FrameRing {
 public:
    FrameRing(std::uint32_t buffers, std::size_t bytes);

    std::uint32_t buffers() const { return static_cast<std::uint32_t>(slots_.size()); }
    std::size_t bytes() const { return bytes_; }
    std::uint32_t bufferOf(std::int64_t number) const {
        return static_cast<std::uint32_t>((number - 1) % static_cast<std::int64_t>(slots_.size()));
    }

    /// Takes the ring for an acquisition and forgets its pictures; false when another one has it.
    bool claim();
    void release();

    /// The buffer for a picture, which is then not there until it is finished.
    std::span<std::uint8_t> begin(std::int64_t number);
    void finish(const FrameMemoryPicture& picture);

    /// The code of Codes.h.
    int read(std::int64_t number, FrameMemoryPicture& picture) const;

 private:
    struct Slot {
        std::unique_ptr<std::uint8_t[]> pixels;
        FrameMemoryPicture picture{};  ///< number 0: none
    };

    std::size_t bytes_;
    mutable std::mutex mutex_;
    std::vector<Slot> slots_;
    bool claimed_ = false;
};

}  // namespace virtualboard
