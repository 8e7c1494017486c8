#include "gentl/Stream.h"

#include <algorithm>
#include <utility>

#include "gentl/RemoteDevice.h"
#include "marovine/BoardCodes.h"
#include "marovine/Image.h"

namespace marovine::gentl {

namespace {

/// A refusal of the board about a stream or a buffer.
[[noreturn]] void refusedByBoard(GC_ERROR code, const char* what, std::int64_t answer) {
    throw Error(code, std::string(what) + ": " + host::meaningOf(static_cast<int>(answer)));
}

}  // namespace

Stream::Stream(std::weak_ptr<Device> device, std::shared_ptr<RemoteDevice> remote, std::string id)
    : Module("TLDataStream", std::move(id)), device_(std::move(device)), remote_(std::move(remote)) {}

// ---- buffers ----

std::shared_ptr<Buffer> Stream::announce(void* memory, std::size_t size, void* userPointer) {
    if (size == 0) throw Error(GC_ERR_INVALID_PARAMETER, "a buffer has at least one byte");
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    if (address + size < address) throw Error(GC_ERR_INVALID_PARAMETER, "no memory is that large");
    const std::lock_guard lock(mutex_);
    if (gone_) throw Error(GC_ERR_INVALID_HANDLE, "the data stream was closed");
    if (memory != nullptr &&
        std::ranges::any_of(announced_, [memory](const auto& other) { return other->memory() == memory; }))
        throw Error(GC_ERR_RESOURCE_IN_USE, "this memory is announced already");
    auto buffer = std::make_shared<Buffer>(*this, id() + ", buffer " + std::to_string(announcements_), memory,
                                           size, userPointer);
    announced_.push_back(buffer);
    Handles::instance().add(buffer);
    ++announcements_;
    return buffer;
}

/// Where a buffer is announced; throws INVALID_HANDLE for one that was revoked. With the lock.
Stream::Buffers::const_iterator Stream::placeOf(const Buffer& buffer) const {
    const auto place = std::ranges::find(announced_, &buffer, &std::shared_ptr<Buffer>::get);
    if (place == announced_.end()) throw Error(GC_ERR_INVALID_HANDLE, "the buffer was revoked");
    return place;
}

void Stream::revoke(Buffer& buffer) {
    std::shared_ptr<Buffer> revoked;
    const std::lock_guard lock(mutex_);
    if (buffer.queued)
        throw Error(GC_ERR_BUSY, "the buffer is queued or being filled; flush the queue first");
    if (waitsForDelivery(buffer))
        throw Error(GC_ERR_BUSY, "the buffer waits for delivery; flush the queue first");
    const auto place = placeOf(buffer);
    revoked = *place;
    announced_.erase(place);
    revoked->close();
}

void Stream::mustHold(const Buffer& buffer, std::size_t bytes) const {
    if (buffer.size() >= bytes) return;
    throw Error(GC_ERR_BUFFER_TOO_SMALL, "the buffer has " + std::to_string(buffer.size()) +
                                             " bytes, a picture " + std::to_string(bytes) +
                                             ": announce buffers of the payload size");
}

void Stream::queue(Buffer& buffer) {
    const std::lock_guard lock(mutex_);
    if (gone_) throw Error(GC_ERR_INVALID_HANDLE, "the data stream was closed");
    placeOf(buffer);  // another thread may have revoked it meanwhile
    if (buffer.queued) throw Error(GC_ERR_RESOURCE_IN_USE, "the buffer is queued already");
    if (waitsForDelivery(buffer))
        throw Error(GC_ERR_RESOURCE_IN_USE, "the buffer waits for delivery: take it from the event first");
    enqueue(buffer);
}

/// Hands a buffer to the board where pictures flow; with the lock.
void Stream::enqueue(Buffer& buffer) {
    if (started_) mustHold(buffer, remote_->payloadSize());
    if (memory_ != nullptr) {
        if (const int code = FrameMemoryQueue(memory_.get(), buffer.memory(), buffer.size(), &buffer))
            refusedByBoard(code == virtualboard::kMemoryTooSmall ? GC_ERR_BUFFER_TOO_SMALL : GC_ERR_ERROR,
                           "queueing a buffer", code);
    }
    buffer.queued = true;
    buffer.picture = {};
    input_.push_back(&buffer);
    // Where its clock waits for buffers the board goes on.
    if (memory_ != nullptr)
        remote_->applet().library().lastPicture(remote_->applet().record(), 0, memory_.get());
}

/// Takes out every queued buffer that is not being filled; with the lock.
void Stream::unqueue(const std::function<void(Buffer&)>& then) {
    std::deque<Buffer*> kept;
    for (Buffer* buffer : std::exchange(input_, {})) {
        if (memory_ != nullptr && FrameMemoryTakeBack(memory_.get(), buffer) != 0) {
            kept.push_back(buffer);
            continue;
        }
        buffer->queued = false;
        then(*buffer);
    }
    input_.swap(kept);
}

void Stream::flush(ACQ_QUEUE_TYPE operation) {
    const std::lock_guard lock(mutex_);
    switch (operation) {
        case ACQ_QUEUE_INPUT_TO_OUTPUT:
            return unqueue([this](Buffer& buffer) { deliver(buffer); });
        case ACQ_QUEUE_OUTPUT_DISCARD:
            output_->takeBuffers();
            return;
        case ACQ_QUEUE_ALL_TO_INPUT:
        case ACQ_QUEUE_UNQUEUED_TO_INPUT: {
            const bool all = operation == ACQ_QUEUE_ALL_TO_INPUT;
            std::vector<Buffer*> moved;
            for (const auto& buffer : announced_)
                if (!buffer->queued && (all || !waitsForDelivery(*buffer))) moved.push_back(buffer.get());
            // All or none: one that is too small is found before the first moves.
            if (started_)
                for (const Buffer* buffer : moved) mustHold(*buffer, remote_->payloadSize());
            if (all) output_->takeBuffers();
            for (Buffer* buffer : moved) enqueue(*buffer);
            return;
        }
        case ACQ_QUEUE_ALL_DISCARD:
            unqueue([](Buffer&) {});
            output_->takeBuffers();
            return;
        default:
            throw Error(GC_ERR_INVALID_PARAMETER, "there is no flush operation " + std::to_string(operation));
    }
}

std::shared_ptr<Buffer> Stream::buffer(std::uint32_t index) const {
    const std::lock_guard lock(mutex_);
    if (index >= announced_.size())
        throw Error(GC_ERR_INVALID_INDEX, std::to_string(announced_.size()) + " buffers are announced");
    return announced_[index];
}

// ---- the acquisition ----

void Stream::start(std::uint64_t pictures) {
    if (pictures == 0) throw Error(GC_ERR_INVALID_PARAMETER, "an acquisition takes at least one picture");
    const std::lock_guard control(control_);
    {
        const std::lock_guard lock(mutex_);
        if (gone_) throw Error(GC_ERR_INVALID_HANDLE, "the data stream was closed");
        if (started_) throw Error(GC_ERR_RESOURCE_IN_USE, "the acquisition is started already");
        const std::size_t bytes = remote_->payloadSize();
        for (const Buffer* buffer : input_) mustHold(*buffer, bytes);
        started_ = true;
        wanted_ = pictures;
        delivered_ = lostBefore_ = 0;
    }
    try {
        if (remote_->acquiring()) begin();
    } catch (...) {
        const std::lock_guard lock(mutex_);
        started_ = false;
        throw;
    }
}

void Stream::stop(bool kill) {
    const std::lock_guard control(control_);
    {
        const std::lock_guard lock(mutex_);
        if (!started_) throw Error(GC_ERR_RESOURCE_IN_USE, "no acquisition was started");
        started_ = false;
        killing_ = kill;
    }
    end();
}

void Stream::cameraStarts() {
    const std::lock_guard control(control_);
    {
        const std::lock_guard lock(mutex_);
        if (!started_ || (memory_ != nullptr && runDelivered_ < run_)) return;
    }
    end();  // a run of as many pictures as were asked for may be over
    begin();
}

void Stream::cameraStops() {
    const std::lock_guard control(control_);
    end();
}

/// Lets pictures flow; with the lock of control.
void Stream::begin() {
    auto& applet = remote_->applet();
    const std::lock_guard lock(mutex_);
    run_ = std::min(wanted_ - delivered_, remote_->picturesLeft());
    if (run_ == 0) return;
    const std::size_t bytes = remote_->payloadSize();
    for (const Buffer* buffer : input_) mustHold(*buffer, bytes);
    std::unique_ptr<dma_mem, Free> memory(FrameMemoryCreateQueued(bytes, &Stream::finished, this));
    if (memory == nullptr) throw Error(GC_ERR_OUT_OF_MEMORY, "no memory for the acquisition");
    for (Buffer* buffer : input_)
        if (const int code = FrameMemoryQueue(memory.get(), buffer->memory(), buffer->size(), buffer))
            refusedByBoard(GC_ERR_ERROR, "queueing a buffer", code);
    runDelivered_ = 0;
    constexpr std::uint64_t kMost = std::uint64_t{1} << 62;
    const std::int64_t pictures = run_ < kMost ? static_cast<std::int64_t>(run_) : -1;
    const int code = applet.library().acquire(applet.record(), 0, pictures, 0, memory.get());
    if (code < 0) refusedByBoard(GC_ERR_IO, "starting the acquisition", code);
    memory_ = std::move(memory);
}

/// Ends the flow of pictures; with the lock of control.
void Stream::end() {
    dma_mem* memory = nullptr;
    {
        const std::lock_guard lock(mutex_);
        memory = memory_.get();
    }
    if (memory != nullptr) {
        auto& applet = remote_->applet();
        applet.library().stopAcquire(applet.record(), 0, memory, 0);
    }
    const std::lock_guard lock(mutex_);
    lostBefore_ += lost();
    memory_.reset();
    killing_ = false;
}

std::uint64_t Stream::lost() const {
    if (memory_ == nullptr) return 0;
    auto& applet = remote_->applet();
    const std::int64_t count =
        applet.library().status(applet.record(), FRAME_STATUS_LOST, 0, 0, memory_.get());
    return count > 0 ? static_cast<std::uint64_t>(count) : 0;
}

void Stream::finished(void* stream, void* tag, const FrameMemoryPicture* picture,
                      const FrameMemoryPictureInfo* info) {
    static_cast<Stream*>(stream)->take(*static_cast<Buffer*>(tag), *picture, *info);
}

/// A picture is in its buffer. Called by the board's thread, which holds no lock.
void Stream::take(Buffer& buffer, const FrameMemoryPicture& picture, const FrameMemoryPictureInfo& info) {
    const std::lock_guard lock(mutex_);
    const auto place = std::ranges::find(input_, &buffer);
    if (place != input_.end()) input_.erase(place);
    buffer.queued = false;
    if (killing_) {
        input_.push_front(&buffer);
        buffer.queued = true;
        return;
    }
    const std::size_t row = std::size_t{picture.width} * virtualboard::imaging::kBytesPerPixel;
    const auto window = remote_->window();
    const bool noRowFits = buffer.size() - row * picture.height < row;
    buffer.picture = {.width = picture.width,
                      .height = picture.height,
                      .number = static_cast<std::uint64_t>(info.frame),
                      .time = static_cast<std::uint64_t>(info.lastLineTime),
                      .bytes = row * picture.height,
                      .xOffset = window.xOffset,
                      .yOffset = window.yOffset,
                      .cut = picture.height < window.height && noRowFits};
    ++delivered_;
    ++runDelivered_;
    remote_->pictureTaken();
    deliver(buffer);
}

/// With the lock.
void Stream::deliver(Buffer& buffer) {
    output_->push({.buffer = buffer.handle(), .userPointer = buffer.userPointer});
}

void Stream::close() {
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(gone_, true)) return;
    }
    {
        const std::lock_guard control(control_);
        {
            const std::lock_guard lock(mutex_);
            started_ = false;
            killing_ = true;
        }
        end();
    }
    Buffers buffers;
    {
        const std::lock_guard lock(mutex_);
        input_.clear();
        buffers.swap(announced_);
    }
    output_->takeBuffers();
    for (const auto& buffer : buffers) buffer->close();
    Module::close();
    if (const auto above = device()) above->closed();
}

}  // namespace marovine::gentl
