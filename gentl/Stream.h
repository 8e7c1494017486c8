#pragma once

/// The way of the pictures: buffers in, pictures out.

#include <deque>
#include <vector>

#include "gentl/Buffer.h"
#include "gentl/Device.h"
#include "marovine/FrameMemory.h"

namespace marovine::gentl {

/// The data stream of a device. Pictures are rendered straight into the queued buffers, in their order; one
/// that finds none is lost. They flow while the stream is started and the camera, too. Thread-safe.
class Stream final : public Module {
 public:
    Stream(std::weak_ptr<Device> device, std::shared_ptr<RemoteDevice> remote, std::string id);

    std::shared_ptr<Device> device() const { return device_.lock(); }
    void info(STREAM_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size);

    // ---- buffers ----

    /// With null `memory` the buffer has memory of its own. RESOURCE_IN_USE for memory announced already.
    std::shared_ptr<Buffer> announce(void* memory, std::size_t size, void* userPointer);
    /// BUSY while the buffer is queued, being filled or waits for delivery.
    void revoke(Buffer& buffer);
    /// RESOURCE_IN_USE while it is queued or waits for delivery, BUFFER_TOO_SMALL while pictures flow that it
    /// does not hold.
    void queue(Buffer& buffer);
    void flush(ACQ_QUEUE_TYPE operation);
    std::shared_ptr<Buffer> buffer(std::uint32_t index) const;
    void bufferInfo(const Buffer& buffer, BUFFER_INFO_CMD command, INFO_DATATYPE* type, void* answer,
                    std::size_t* size) const;

    // ---- the acquisition ----

    void start(std::uint64_t pictures);
    /// With `kill` a picture under way is not delivered.
    void stop(bool kill);
    /// The camera was told to send, or to end.
    void cameraStarts();
    void cameraStops();

    void close() override;

 private:
    struct Free {
        void operator()(dma_mem* memory) const { FrameMemoryFree(memory); }
    };

    using Buffers = std::vector<std::shared_ptr<Buffer>>;

    void describe(NodeMap& nodes) override;
    bool fires(EVENT_TYPE type) const override { return type == EVENT_NEW_BUFFER; }
    std::shared_ptr<EventQueue> makeQueue(EVENT_TYPE) override { return output_; }

    static void finished(void* stream, void* tag, const FrameMemoryPicture* picture,
                         const FrameMemoryPictureInfo* info);
    void take(Buffer& buffer, const FrameMemoryPicture& picture, const FrameMemoryPictureInfo& info);
    void deliver(Buffer& buffer);
    void begin();
    void end();
    std::uint64_t lost() const;
    bool isGrabbing() const { return started_ && delivered_ < wanted_; }
    bool waitsForDelivery(const Buffer& buffer) const { return output_->holds(buffer.handle()); }
    Buffers::const_iterator placeOf(const Buffer& buffer) const;
    void enqueue(Buffer& buffer);
    void unqueue(const std::function<void(Buffer&)>& then);
    void mustHold(const Buffer& buffer, std::size_t bytes) const;

    const std::weak_ptr<Device> device_;
    const std::shared_ptr<RemoteDevice> remote_;
    const std::shared_ptr<EventQueue> output_ = std::make_shared<EventQueue>(EVENT_NEW_BUFFER);

    /// Starts and stops come one after the other. Taken before `mutex_`, and held while the board ends, which
    /// the board's thread may have to deliver a picture for.
    std::mutex control_;
    std::uint64_t run_ = 0;  ///< pictures asked of the board in this run

    mutable std::mutex mutex_;
    Buffers announced_;
    std::deque<Buffer*> input_;  ///< queued buffers in order
    std::uint64_t announcements_ = 0;
    bool started_ = false;
    bool killing_ = false;
    bool gone_ = false;
    std::uint64_t wanted_ = 0;
    std::uint64_t delivered_ = 0;  ///< pictures, since the start
    std::uint64_t runDelivered_ = 0;
    std::uint64_t lostBefore_ = 0;           ///< by runs that have ended since the start
    std::unique_ptr<dma_mem, Free> memory_;  ///< while pictures flow
};

}  // namespace marovine::gentl
