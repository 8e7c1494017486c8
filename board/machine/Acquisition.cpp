#include "board/machine/Acquisition.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "board/imaging/Scene.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

namespace {

using imaging::DesignSettings;
using imaging::SensorScene;

void store(Slot* slot, Number value) {
    if (slot != nullptr && !slot->pinned) slot->value = value;
}

/// Bytes of the largest picture that the settings give.
std::uint64_t pictureBytes(const DesignSettings& settings) {
    const std::uint64_t rows = std::min<std::uint64_t>(
        std::uint64_t{settings.imageHeight} * rowsPerTrigger(settings), settings.yLength);
    return rows * settings.xLength * imaging::kBytesPerPixel;
}

}  // namespace

Acquisition::~Acquisition() {
    Lock lock(mutex_);
    end(lock, nullptr);
}

void Acquisition::attach(const FindSlot& find, ReadSettings readSettings) {
    readSettings_ = std::move(readSettings);
    trigger_.attach([&find](std::string_view name) {
        Slot* slot = find(name);
        if (slot != nullptr) slot->drivesPictures = true;
        return slot;
    });
    const auto live = [&find](std::string_view name) {
        Slot* slot = find(name);
        if (slot != nullptr) slot->live = true;
        return slot;
    };
    busy_ = live("Device1_Process0_Trigger_Trigger_ImgTrgIsBusy");
    overflowed_ = live("Device1_Process0_Overflow_OverflowOccurred");
    fillLevel_ = live("Device1_Process0_Buffer_0_DRAM_A_0_FillLevel");
    dmaStatus_ = live("FG_DMASTATUS");
}

void Acquisition::setScene(std::shared_ptr<const imaging::Image> scene, std::uint32_t fieldWidth) {
    if (scene != nullptr) SensorScene::checkField(*scene, fieldWidth);
    changeSurroundings([&] {
        picture_ = std::move(scene);
        fieldWidth_ = fieldWidth;
        scene_ = nullptr;
    });
}

void Acquisition::setCamera(const imaging::CameraTraits& camera) {
    changeSurroundings([&] {
        camera_ = camera;
        scene_ = nullptr;
    });
}

void Acquisition::setBelt(const imaging::Belt& belt) {
    changeSurroundings([&] { belt_ = belt; });
}

template <typename Change>
void Acquisition::changeSurroundings(Change change) {
    const BoardTime now = clock_.now();
    settle(now);
    change();
    if (running_) reconfigure(now);
}

// ---- the host's functions ----

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
    accepted_ = delivered_ = lost_ = told_ = done_ = 0;
    stopping_ = failed_ = overflow_ = polled_ = thwarted_ = false;
    due_.clear();
    renderer_.reset();
    rendered_.reset();
    ++run_;
    try {
        crew_.emplace(renderThreads_);
        timeline_ = {};
        sequencer_ = {};
        active_ = false;
        reconfigure(clock_.now());
        active_ = trigger_.active();
        if (active_) sequencer_.openGate(0);
        thread_ = std::thread([this] { work(); });
    } catch (...) {
        ring_->release();
        ring_.reset();
        throw;
    }
    running_ = true;
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

std::int64_t Acquisition::lastPictureBlocking(Lock& lock, std::int64_t picture, int timeout,
                                              const dma_mem* memory) {
    if (const int code = check(memory); code != kOk) return code;
    if (picture < 1 || timeout < 0) return kOutOfRange;
    if (pictures_ >= 0 && picture > pictures_) return kNoMorePictures;
    done_ = std::max(done_, picture - 1);
    const auto place = awaited_.insert(picture);
    const std::uint64_t run = run_;
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(timeout);
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

// ---- the stream of pictures ----

std::optional<BoardTime> Acquisition::nextDue() const {
    const auto end = isComplete() ? std::nullopt : sequencer_.nextEnd();
    return end.has_value() ? timeline_.timeFor(*end) : std::nullopt;
}

void Acquisition::accept(const imaging::FramePosition& position, std::uint64_t end) {
    const BoardTime done = timeline_.timeFor(end).value_or(clock_.now());
    const BoardTime begun = timeline_.timeFor(position.firstLine).value_or(done);
    analyzers_.pulse(SignalAnalyzers::kFrameStart, begun);
    analyzers_.pulse(SignalAnalyzers::kFrameEnd, done);
    overflow_ = filled() >= ring_->buffers();
    if (overflow_) {
        ++lost_;
        return;
    }
    due_.push_back({position, snapshot_});
    ++accepted_;
}

void Acquisition::settle(BoardTime now) {
    const bool idle = due_.empty();
    queueDue(now);
    if (idle && !due_.empty()) work_.notify_one();
}

void Acquisition::queueDue(BoardTime now) {
    if (!running_ || stopping_) return;
    // A clock moved far ahead leaves the rest to the thread, so that nobody holds the lock for long.
    int left = 100'000;
    for (auto time = nextDue(); time.has_value() && *time <= now && left > 0; time = nextDue(), --left) {
        const std::uint64_t end = *sequencer_.nextEnd();
        if (const auto position = sequencer_.next(end)) accept(*position, end);
    }
    updateReadOuts(now);
}

void Acquisition::updateReadOuts(BoardTime now) {
    const std::int64_t fill = running_ ? filled() * 100 / ring_->buffers() : 0;
    store(busy_, running_ && sequencer_.busy(timeline_.lineAt(now)) ? 1 : 0);
    store(overflowed_, running_ && overflow_ ? 1 : 0);
    store(fillLevel_, static_cast<Number>(std::min<std::int64_t>(fill, 100)));
    store(dmaStatus_, running_ ? 1 : 0);
}

/// Takes over settings and surroundings as they are now.
void Acquisition::reconfigure(BoardTime now) {
    const DesignSettings settings = readSettings_();
    if (scene_ == nullptr) {
        scene_ = picture_ != nullptr
                     ? std::make_shared<const SensorScene>(*picture_, camera_, fieldWidth_)
                     : std::make_shared<const SensorScene>(imaging::testChart(), camera_, fieldWidth_);
    }
    const auto before =
        std::exchange(snapshot_, std::make_shared<const Snapshot>(Snapshot{settings, scene_, belt_}));
    timeline_.setClock(lineClock(settings, belt_, scene_->rows()), now);
    const std::uint64_t line = timeline_.lineAt(now);
    sequencer_.configure(settings, timeline_.linesPerFrame(), line);
    const bool listens =
        before != nullptr && (settings.imageTriggerMode != before->settings.imageTriggerMode ||
                              settings.imageTriggerEnable != before->settings.imageTriggerEnable);
    if (listens && active_) sequencer_.openGate(line);  // an edge is over, an open gate is not
    work_.notify_one();
}

void Acquisition::changed(const Slot& slot, BoardTime now) {
    if (!running_ || stopping_) return;
    const bool wasActive = std::exchange(active_, trigger_.active());
    reconfigure(now);
    const std::uint64_t line = timeline_.lineAt(now);
    if (trigger_.isPulse(slot) || (active_ && !wasActive)) sequencer_.trigger(line);
    if (active_ && !wasActive) sequencer_.openGate(line);
    if (!active_ && wasActive) sequencer_.closeGate(line);
    settle(now);
}

// ---- the thread ----

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
            renderer_.emplace(picture.taken->scene, picture.taken->belt, &*crew_);
            renderer_->configure(picture.taken->settings);
            rendered_ = picture.taken;
        }
        rows = renderer_->render(picture.position, buffer);
    } catch (const std::exception&) {  // no memory
    }
    if (rows.value_or(0) != 0) {
        ring->finish(
            {.pixels = buffer.data(), .width = renderer_->width(), .height = *rows, .number = number});
    }
    lock.lock();
    rendering_ = false;
    if (!rows.has_value()) failed_ = true;
    due_.pop_front();
    polled_ = false;
    if (rows.value_or(0) != 0) {
        delivered_ = number;
    } else {  // settings under way made a row longer than a buffer
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
    if (!awaited && !polled_) return false;
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
