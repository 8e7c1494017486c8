/**
 * Picture memory: what stands behind the opaque `dma_mem` record that a host hands to the acquisition
 * functions, and how the host gets at its pictures. Usable from C and C++.
 *
 * A memory is a ring of equal buffers. Picture 1 lies in buffer 0, picture n in buffer (n - 1) mod buffers.
 * The board overwrites a picture only when the host has done with it:
 *
 * - Fg_getLastPicNumberBlockingEx(n) says that the host has done with all pictures before n;
 * - Fg_getLastPicNumberEx says that it has done with all pictures up to the number that it was last told.
 *
 * While all buffers hold pictures that the host has not done with, further pictures are lost: the overflow
 * flag is set until the next picture finds room, and the lost count grows. Lost pictures take no number. The
 * fill level is the share of buffers that hold such pictures or wait to be filled. A board whose clock runs
 * as fast as possible takes a picture only when the host asks for it, so it loses none.
 *
 * Fg_AcquireEx takes `pictures` pictures (-1: until stopped); its flags are not used. An acquisition lasts
 * until Fg_stopAcquireEx, also when all its pictures have come; it ends with its handle and its board, too.
 * Pictures and counts stay readable until the next acquisition.
 *
 * Fg_getLastPicNumberBlockingEx returns the number of the last finished picture as soon as that is at least
 * the one asked for. It waits at most `timeout` seconds of the machine's time, whatever the board's clock;
 * -31027 says that the picture did not come in time, and a timeout of 0 does not wait at all.
 * Fg_getLastPicNumberEx returns that number at once, 0 before the first picture.
 */
#ifndef VIRTUALBOARD_FRAMEMEMORY_H
#define VIRTUALBOARD_FRAMEMEMORY_H

#include <stddef.h>
#include <stdint.h>

#include "marovine/marovine.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** A finished picture in the ring. Its pixels stay as they are until the board overwrites the buffer. */
typedef struct FrameMemoryPicture_s {
    const uint8_t* pixels; /**< rows without padding, three bytes per pixel: blue, green, red */
    uint32_t width;        /**< pixels */
    uint32_t height;       /**< rows; fewer than set when the buffer is too small or a gate closed early */
    int64_t number;        /**< from 1 */
} FrameMemoryPicture;

/** Read-outs of Fg_getStatusEx. */
enum FrameMemoryStatus {
    FRAME_STATUS_PICTURES = 1, /**< pictures delivered since the acquisition began */
    FRAME_STATUS_LOST = 2,     /**< pictures lost since then because no buffer was free */
    FRAME_STATUS_UNREAD = 3,   /**< pictures in the ring that the host has not done with */
    FRAME_STATUS_BUFFER = 4,   /**< buffer of picture `data`, of the last one when `data` is 0; from 0 */
    FRAME_STATUS_RUNNING = 5   /**< 1 from Fg_AcquireEx to the stop, else 0 */
};

/** Makes a ring of `buffers` buffers of `bytes` bytes each. Null when either is 0 or there is no memory. */
dma_mem* FrameMemoryCreate(uint32_t buffers, size_t bytes);

/**
 * Finds a picture. 0, or a negative code: -31030 when the ring does not hold it (any more), -31023 for a
 * memory that is not (or no longer) there, -31007 when `picture` is null.
 */
int FrameMemoryRead(dma_mem* memory, int64_t number, FrameMemoryPicture* picture);

/**
 * Frees a memory; null is allowed. While an acquisition still fills it, its pages stay until that has ended.
 * 0, or -31023 for a memory that is not (or no longer) there.
 */
int FrameMemoryFree(dma_mem* memory);

#pragma GCC visibility pop
#ifdef __cplusplus
}

#include <memory>
#include <new>

namespace virtualboard {

/// A picture memory that frees itself.
class FrameMemory {
 public:
    /// Throws `std::bad_alloc` when there is no memory or nothing to be made.
    FrameMemory(std::uint32_t buffers, std::size_t bytes) : memory_(FrameMemoryCreate(buffers, bytes)) {
        if (memory_ == nullptr) throw std::bad_alloc();
    }

    /// What the acquisition functions take.
    dma_mem* get() const { return memory_.get(); }

    /// A picture; without pixels when the ring does not hold it.
    FrameMemoryPicture picture(std::int64_t number) const {
        FrameMemoryPicture result{};
        FrameMemoryRead(memory_.get(), number, &result);
        return result;
    }

 private:
    struct Free {
        void operator()(dma_mem* memory) const { FrameMemoryFree(memory); }
    };
    std::unique_ptr<dma_mem, Free> memory_;
};

}  // namespace virtualboard
#endif

#endif
