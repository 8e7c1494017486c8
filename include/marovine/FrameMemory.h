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
 * A memory of queued buffers (`FrameMemoryCreateQueued`) has none of its own: the host queues buffers of any
 * place one by one, and each goes back to it with its picture. A picture that finds no buffer queued is lost.
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

/** What made a picture begin. */
enum FramePictureTrigger {
    FRAME_TRIGGER_NONE = 0,     /**< free run */
    FRAME_TRIGGER_CAMERA = 1,   /**< the source's own frame (FVAL) */
    FRAME_TRIGGER_INPUT = 2,    /**< an edge of the image trigger's input */
    FRAME_TRIGGER_GATE = 3,     /**< its level */
    FRAME_TRIGGER_SOFTWARE = 4, /**< a software trigger */
    FRAME_TRIGGER_BEFORE = 5    /**< a further picture of the window that the picture before began */
};

/** What is known of a finished picture beside its pixels. Later versions may add fields at the end. */
typedef struct FrameMemoryPictureInfo_s {
    uint32_t size;           /**< bytes of this record as the caller knows it: set it before the call */
    uint32_t trigger;        /**< a FramePictureTrigger */
    int64_t number;          /**< from 1 */
    int64_t frame;           /**< of the picture since the start, lost and unselected ones counted; from 0 */
    int64_t firstLineTime;   /**< ns of the board's clock at which its first line began */
    int64_t lastLineTime;    /**< ns at which its last line was complete */
    int64_t triggerTime;     /**< ns of its trigger; as `firstLineTime` without one */
    int64_t firstLine;       /**< lines of the acquisition before its first one */
    int64_t encoderPosition; /**< encoder pulses at its first line, backward ones taken off, since the belt
                                was given to the board */
    int64_t lostBefore;      /**< pictures lost between the one before and this one */
} FrameMemoryPictureInfo;

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
 * What is known of a picture beside its pixels. Set `info->size` to sizeof *info before; afterwards it says
 * how many bytes of the record this version of the board knows, and the others are 0. The codes of
 * FrameMemoryRead, and -31033 for a record smaller than its first version.
 */
int FrameMemoryDescribe(dma_mem* memory, int64_t number, FrameMemoryPictureInfo* info);

/**
 * A buffer of a queued memory has its picture and is the host's again. Called by a thread of the board that
 * holds no lock; the acquisition goes on when it returns. Other than `FrameMemoryQueue` it may call nothing
 * that concerns this board. After Fg_stopAcquireEx it is called no more.
 */
typedef void (*FrameMemoryFinished)(void* context, void* tag, const FrameMemoryPicture* picture,
                                    const FrameMemoryPictureInfo* info);

/**
 * Makes a memory of queued buffers of at least `bytes` bytes each, none at first. Null when `bytes` is 0,
 * `finished` is null or there is no memory.
 */
dma_mem* FrameMemoryCreateQueued(size_t bytes, FrameMemoryFinished finished, void* context);

/**
 * Queues a buffer; it must last until it is finished or taken back, or the memory is freed. `tag` tells it
 * from the others queued. While the board's clock runs as fast as possible, pictures are taken for as long as
 * there are buffers: a host that queues one when none was left says so with Fg_getLastPicNumberEx. 0, or a
 * negative code: -31023 for a memory that is not one of queued buffers, -31026 for a buffer that is too
 * small, -31037 for a tag that is queued already, -31007 when `pixels` is null, -31020 when memory ran out.
 */
int FrameMemoryQueue(dma_mem* memory, void* pixels, size_t bytes, void* tag);

/**
 * Takes a buffer out of the queue. 0, or a negative code: -31037 when it is being filled, -31023 for a memory
 * or a tag that is not there.
 */
int FrameMemoryTakeBack(dma_mem* memory, void* tag);

/**
 * Takes a finished picture out of the ring together with its buffer; the ring goes on with another one. The
 * pixels stay as they are until the buffer is given back or the memory is freed. Codes of `FrameMemoryRead`,
 * or -31038 when there is no memory for another buffer; the picture then stays in the ring.
 */
int FrameMemoryTake(dma_mem* memory, int64_t number, FrameMemoryPicture* picture);

/**
 * Gives the buffer of a taken picture back; the ring keeps a few for the pictures to come. 0, -31023 for a
 * memory that is not (or no longer) there, -31030 for pixels that were not taken from it.
 */
int FrameMemoryGiveBack(dma_mem* memory, const uint8_t* pixels);

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

    /// What is known of a picture; its number is 0 when the ring does not hold it.
    FrameMemoryPictureInfo info(std::int64_t number) const {
        FrameMemoryPictureInfo result{};
        result.size = sizeof(result);
        FrameMemoryDescribe(memory_.get(), number, &result);
        return result;
    }

    /// Takes a picture out of the ring, see `FrameMemoryTake`; without pixels when that fails.
    FrameMemoryPicture take(std::int64_t number) {
        FrameMemoryPicture result{};
        FrameMemoryTake(memory_.get(), number, &result);
        return result;
    }
    void giveBack(const std::uint8_t* pixels) { FrameMemoryGiveBack(memory_.get(), pixels); }

 private:
    struct Free {
        void operator()(dma_mem* memory) const { FrameMemoryFree(memory); }
    };
    std::unique_ptr<dma_mem, Free> memory_;
};

}  // namespace virtualboard
#endif

#endif
