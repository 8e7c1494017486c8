/// The host's functions: an acquisition begins and ends, the host asks for pictures.

#include <algorithm>
#include <chrono>
#include <utility>

#include "board/machine/Acquisition.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

namespace {

/// Bytes of the largest picture that the settings give.
std::uint64_t pictureBytes(const imaging::DesignSettings& settings) {
    const std::uint64_t rows = std::min<std::uint64_t>(
        std::uint64_t{settings.imageHeight} * rowsPerTrigger(settings), settings.yLength);
    return rows * settings.xLength * imaging::kBytesPerPixel;
}

}  // namespace

int Acquisition::check(const dma_mem* memory) const {
    const auto ring = memory_.lock();
    if (ring == nullptr) return kNotAcquiring;
    if (memory == nullptr) return kNullPointer;
    return memory == reinterpret_cast<const dma_mem*>(ring.get()) ? kOk : kForeignMemory;
}

int Acquisition::acquire(std::int64_t pictures, std::shared_ptr<FrameRing> ring, const void* owner) {
    if (running_) return kAlreadyAcquiring;
    if (pictures == 0 || pictures < -1) return kOutOfRange;
    if (pictureBytes(readSettings_()) > ring->bytes()) return kMemoryTooSmall;
    if (!ring->claim()) return kMemoryInUse;
    memory_ = ring;
    ring_ = std::move(ring);
    owner_ = owner;
    pictures_ = pictures;
    accepted_ = delivered_ = lost_ = told_ = done_ = lostBefore_ = 0;
    stopping_ = failed_ = overflow_ = polled_ = thwarted_ = false;
    due_.clear();
    waiting_ = 0;
    shown_.clear();
    renderer_.reset();
    rendered_.reset();
    ++run_;
    try {
        crew_.emplace(renderThreads_);
        sequencer_ = {};
        if (scene_ == nullptr) scene_ = makeScene();
        // What takes its time is done: the acquisition begins now.
        const BoardTime now = clock_.now();
        settle(now);
        triggers_.clear();
        flashes_.clear();
        lit_.clear();
        frameTold_ = flashOn_ = false;
        base_ = stream_.started();
        origin_.reset();
        signals_.beginAcquisition();
        running_ = true;
        reconfigure(now);
        stream_.beginFrames(now);
        thread_ = std::thread([this] { work(); });
    } catch (...) {
        running_ = false;
        ring_->release();
        ring_.reset();
        throw;
    }
    updateReadOuts(clock_.now());
    return kOk;
}

int Acquisition::stop(Lock& lock, const dma_mem* memory) {
    if (!running_ || stopping_) return kNotAcquiring;
    const int code = check(memory);
    if (code == kOk) end(lock, nullptr);
    return code;
}

void Acquisition::end(Lock& lock, const void* owner) {
    if (!running_ || (owner != nullptr && owner != owner_)) return;
    if (!stopping_) {
        stopping_ = true;
        work_.notify_one();
        wake_.notify_all();
        lock.unlock();
        thread_.join();
        lock.lock();
        wake_.wait(lock, [this] { return !rendering_; });
        running_ = false;
        ring_->release();
        ring_.reset();
        rendered_.reset();
        renderer_.reset();
        crew_.reset();
        updateReadOuts(clock_.now());
        wake_.notify_all();
    } else {
        // Another thread may acquire again before this one gets the lock.
        wake_.wait(lock, [this, run = run_] { return !running_ || run_ != run; });
    }
}

std::int64_t Acquisition::lastPicture(const dma_mem* memory) {
    if (const int code = check(memory); code != kOk) return code;
    done_ = std::max(done_, told_);
    told_ = delivered_;
    polled_ = true;
    work_.notify_one();
    return delivered_;
}

std::int64_t Acquisition::lastPictureBlocking(Lock& lock, std::int64_t picture,
                                              std::chrono::milliseconds timeout, const dma_mem* memory) {
    if (const int code = check(memory); code != kOk) return code;
    if (picture < 1 || timeout.count() < 0) return kOutOfRange;
    if (pictures_ >= 0 && picture > pictures_) return kNoMorePictures;
    done_ = std::max(done_, picture - 1);
    const auto place = awaited_.insert(picture);
    const std::uint64_t run = run_;
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + timeout;
    const auto over = [&] {
        return run_ != run || delivered_ >= picture || !running_ || stopping_ || failed_;
    };
    for (bool told = false; !over();) {
        if (Clock::now() < deadline && renderHere(lock)) continue;
        if (failed_) break;
        if (!std::exchange(told, true)) work_.notify_one();
        if (wake_.wait_until(lock, deadline) == std::cv_status::timeout) break;
    }
    awaited_.erase(place);
    if (run_ == run && (thwarted_ || !due_.empty())) work_.notify_one();
    if (run_ != run) return kStopped;
    if (delivered_ >= picture) {
        told_ = std::max(told_, delivered_);
        return delivered_;
    }
    // The host may now wait for an earlier one, but what other threads still wait for keeps its room.
    const std::int64_t needed = awaited_.empty() ? 0 : *awaited_.rbegin() - 1;
    done_ = std::min(done_, std::max(delivered_, needed));
    if (failed_) return kInternalFailure;
    return !running_ || stopping_ ? kStopped : kTimeout;
}

std::int64_t Acquisition::status(int parameter, std::int64_t data, const dma_mem* memory) {
    if (const int code = check(memory); code != kOk) return code;
    settle(clock_.now());
    switch (parameter) {
        case FRAME_STATUS_PICTURES:
            return delivered_;
        case FRAME_STATUS_LOST:
            return lost_;
        case FRAME_STATUS_UNREAD:
            return unread();
        case FRAME_STATUS_BUFFER: {
            const auto ring = memory_.lock();
            const std::int64_t number = data == 0 ? delivered_ : data;
            FrameMemoryPicture picture{};
            const int code = ring->read(number, picture);
            return code == kOk ? static_cast<std::int64_t>(ring->bufferOf(number)) : code;
        }
        case FRAME_STATUS_RUNNING:
            return running_ ? 1 : 0;
        default:
            return kUnknownStatus;
    }
}

int Acquisition::truth(Lock& lock, std::int64_t number, const dma_mem* memory, PictureTruth& truth) const {
    if (const int code = check(memory); code != kOk) return code;
    const auto before = delivered_ - static_cast<std::int64_t>(shown_.size());
    if (number <= before || number > delivered_) return kPictureGone;
    const ShownPicture shown = shown_[static_cast<std::size_t>(number - before - 1)];
    lock.unlock();
    truth = {};
    if (shown.from.taken->world != nullptr) {
        imaging::FrameRenderer renderer(shown.from.taken->scene);
        renderer.configure(shown.from.taken->settings);
        truth = shown.from.taken->world->parts->truth(
            renderer.geometry(shown.from.position, shown.from.motion, shown.height));
    }
    truth.number = number;
    truth.width = shown.width;
    truth.height = shown.height;
    lock.lock();
    return kOk;
}

}  // namespace virtualboard
