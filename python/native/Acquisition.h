#pragma once

/// Pictures as Python objects: arrays in the board's own buffers.

#include <nanobind/stl/unique_ptr.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "marovine/FrameMemory.h"
#include "python/native/Applet.h"
#include "python/native/Waiting.h"

namespace marovine::python {

/// A picture out of the ring.
struct TakenPicture {
    FrameMemoryPicture picture{};
    FrameMemoryPictureInfo info{};
    std::string truth{};  ///< JSON; empty without a world
};

/// One acquisition, from its construction to its stop. Its functions work without the interpreter's lock.
class AcquisitionState {
 public:
    /// Throws `host::Refused`, or `host::Failure` when there is no memory.
    AcquisitionState(AppletUse used, std::int64_t pictures, std::uint32_t buffers);
    AcquisitionState(const AcquisitionState&) = delete;
    AcquisitionState& operator=(const AcquisitionState&) = delete;
    ~AcquisitionState() { stop(); }

    /// Waits a moment for the next picture and takes it out of the ring; nothing when none came. Threads that
    /// ask at the same time get one picture each. The last picture ends the acquisition.
    std::optional<TakenPicture> next(std::chrono::milliseconds moment);
    void stop();
    /// Whether no more pictures will come: it was stopped, or all that it was to take have been.
    bool isOver() const { return over_; }
    std::int64_t status(int what) const;

    const std::shared_ptr<virtualboard::FrameMemory>& memory() const { return memory_; }
    host::Applet& applet() const { return *used_; }
    virtualboard::imaging::Belt belt() const { return used_.board->belt; }
    bool attached() const { return used_.attached; }
    bool inRealTime() const { return used_.board->clock == virtualboard::ClockMode::RealTime; }

 private:
    AppletUse used_;
    std::shared_ptr<virtualboard::FrameMemory> memory_;
    std::timed_mutex turn_;  ///< of the thread that waits
    std::mutex stopping_;
    std::int64_t pictures_;  ///< to be taken; -1 without end
    std::int64_t taken_ = 0;
    std::atomic<bool> over_ = false;
    bool stopped_ = false;
};

/// The Python object.
class AcquisitionObject {
 public:
    explicit AcquisitionObject(std::shared_ptr<AcquisitionState> state) : state_(std::move(state)) {}
    AcquisitionObject(const AcquisitionObject&) = delete;
    AcquisitionObject& operator=(const AcquisitionObject&) = delete;
    ~AcquisitionObject();

    AcquisitionState& use() const;
    /// (pixels, number, frame, trigger, first line's time, last line's time, trigger's time, first line,
    /// encoder position, lost before): the picture and `FrameMemoryPictureInfo`, or None when no more
    /// pictures come. Raises `TimeoutError`.
    nb::object next(nb::handle timeout, const Interrupt* interrupt);

 private:
    Birthplace born_;
    std::shared_ptr<AcquisitionState> state_;
};

/// `pictures` of -1 are without end.
std::unique_ptr<AcquisitionObject> acquire(AppletObject& applet, std::int64_t pictures,
                                           std::uint32_t buffers);

void bindAcquisition(nb::module_& module);

}  // namespace marovine::python
