#pragma once

/// The ring of buffers behind a host's picture memory.

#include <cstddef>
#include <cstdint>
#include <map>
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
    FrameRing(const FrameRing&) = delete;
    FrameRing& operator=(const FrameRing&) = delete;
    virtual ~FrameRing() = default;

    /// Whether each buffer goes back to the host with its picture, to be queued anew.
    virtual bool isQueued() const { return false; }
    virtual std::uint32_t buffers() const { return static_cast<std::uint32_t>(slots_.size()); }
    std::size_t bytes() const { return bytes_; }
    std::uint32_t bufferOf(std::int64_t number) const {
        return static_cast<std::uint32_t>((number - 1) % static_cast<std::int64_t>(slots_.size()));
    }

    /// Takes the ring for an acquisition and forgets its pictures; false when another one has it.
    bool claim();
    void release();

    /// The buffer for a picture, which is then not there until it is finished.
    virtual std::span<std::uint8_t> begin(std::int64_t number);
    virtual void finish(const FrameMemoryPicture& picture, const FrameMemoryPictureInfo& info = {});

    /// Codes of BoardCodes.h. A memory of queued buffers holds no picture.
    int read(std::int64_t number, FrameMemoryPicture& picture) const;
    int describe(std::int64_t number, FrameMemoryPictureInfo& info) const;
    int take(std::int64_t number, FrameMemoryPicture& picture);
    int giveBack(const std::uint8_t* pixels);

 protected:
    /// The acquisition that had the memory is over; with the lock.
    virtual void released() {}

    mutable std::mutex mutex_;

 private:
    using Buffer = std::unique_ptr<std::uint8_t[]>;
    struct Slot {
        Buffer pixels;
        FrameMemoryPicture picture{};  ///< number 0: none
        FrameMemoryPictureInfo info{};
    };

    const Slot* find(std::int64_t number) const;

    std::size_t bytes_;
    std::vector<Slot> slots_;
    std::vector<Buffer> spare_;  ///< given back, their pages at hand; at most as many as the ring has
    std::map<const std::uint8_t*, Buffer> taken_;
    bool claimed_ = false;
};

}  // namespace virtualboard
