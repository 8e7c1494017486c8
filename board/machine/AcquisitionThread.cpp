/// The board's thread, and the host's threads that render for it.

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "board/machine/Acquisition.h"

namespace virtualboard {

void Acquisition::work() {
    Lock lock(mutex_);
    try {
        while (!stopping_ && !failed_) {
            queueDue(clock_.now());
            thwarted_ = rendering_;
            if (rendering_) {
                work_.wait(lock);
            } else if (!due_.empty()) {
                renderNext(lock);
            } else if (!skipToNext()) {
                waitForWork(lock);
            }
        }
    } catch (const std::exception&) {  // no memory
        failed_ = true;
        wake_.notify_all();
    }
}

/// Brings the first picture of the queue into its buffer.
void Acquisition::renderNext(Lock& lock) {
    const DuePicture picture = due_.front();
    const std::int64_t number = delivered_ + 1;
    const std::span<std::uint8_t> buffer = ring_->begin(number);
    const std::shared_ptr<FrameRing> ring = ring_;
    rendering_ = true;
    lock.unlock();
    std::optional<std::uint32_t> rows;
    try {
        if (rendered_ != picture.taken) {
            rendered_.reset();
            renderer_.emplace(picture.taken->scene, &*crew_);
            renderer_->configure(picture.taken->settings);
            rendered_ = picture.taken;
        }
        rows = renderer_->render(picture.position, picture.motion, buffer);
    } catch (const std::exception&) {  // no memory
    }
    if (rows.value_or(0) != 0) {
        ring->finish(
            {.pixels = buffer.data(), .width = renderer_->width(), .height = *rows, .number = number},
            picture.info);
    }
    lock.lock();
    rendering_ = false;
    if (!rows.has_value()) failed_ = true;
    waiting_ -= due_.front().bytes;
    due_.pop_front();
    polled_ = false;
    if (rows.value_or(0) != 0) {
        delivered_ = number;
        shown_.push_back({picture, renderer_->width(), *rows});
        if (shown_.size() > kMostShown) shown_.pop_front();
        if (ring->isQueued()) done_ = told_ = number;  // the host has it
    } else {                                           // settings under way made a row longer than a buffer
        ++lost_;
        --accepted_;
    }
    wake_.notify_all();
}

/// Renders the next picture in the thread that waits for it; false when there is none, when it is so large
/// that a waiting time could not be kept or when another thread is at it.
bool Acquisition::renderHere(Lock& lock) {
    constexpr std::uint64_t kMost = 1 << 24;  // pixels; some hundredths of a second
    if (rendering_) return false;
    try {
        queueDue(clock_.now());
        if (due_.empty() && skipToNext()) queueDue(clock_.now());
    } catch (const std::exception&) {  // no memory
        failed_ = true;
        wake_.notify_all();
    }
    if (due_.empty() || failed_) return false;
    const DuePicture& picture = due_.front();
    if (std::uint64_t{picture.position.rows} * picture.taken->settings.xLength > kMost) {
        work_.notify_one();
        return false;
    }
    renderNext(lock);
    return true;
}

/// As fast as possible: moves the clock to the next picture that the host asks for. False when it asks for
/// none, when there is no room or when none will come by itself.
bool Acquisition::skipToNext() {
    if (clock_.mode() != ClockMode::AsFastAsPossible || unread() >= ring_->buffers()) return false;
    const bool awaited = !awaited_.empty() && *awaited_.rbegin() > delivered_;
    if (!awaited && !polled_ && !ring_->isQueued()) return false;
    const auto time = nextDue();
    if (!time.has_value() || *time > BoardClock::kLatest) return false;
    clock_.moveTo(*time);
    return true;
}

void Acquisition::waitForWork(Lock& lock) {
    const BoardTime now = clock_.now();
    const auto time = nextDue();
    if (time.has_value() && (*time <= now || clock_.mode() == ClockMode::RealTime)) {
        // A far future is slept through in parts, so that no addition of times overflows.
        constexpr BoardTime kHour = BoardTime{3600} * 1'000'000'000;
        work_.wait_for(lock, std::chrono::nanoseconds(std::clamp<BoardTime>(*time - now, 0, kHour)));
    } else {
        work_.wait(lock);
    }
}

}  // namespace virtualboard
