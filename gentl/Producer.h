#pragma once

/// The producer between GCInitLib and GCCloseLib, and how a call reaches what it is about.

#include <mutex>

#include "gentl/Buffer.h"
#include "gentl/Device.h"
#include "gentl/RemoteDevice.h"
#include "gentl/Stream.h"

namespace marovine::gentl {

/// Thread-safe.
class Producer {
 public:
    static Producer& instance();

    /// Throws RESOURCE_IN_USE when it is in use already.
    void initialise();
    /// Closes whatever is open.
    void close();
    /// Throws NOT_INITIALIZED before `initialise` and after `close`.
    void mustBeInitialised() const;

    /// The one system; RESOURCE_IN_USE while it is open.
    std::shared_ptr<System> openSystem();
    void closed(const System& system);

 private:
    mutable std::mutex mutex_;
    bool initialised_ = false;
    std::shared_ptr<System> system_;
};

/// Runs a call of the interface: what it throws becomes its answer.
template <class Work>
GC_ERROR always(const char* function, Work&& work) {
    try {
        work();
        return GC_ERR_SUCCESS;
    } catch (...) {
        return answerForException(function);
    }
}

/// The same for a call that needs GCInitLib first.
template <class Work>
GC_ERROR call(const char* function, Work&& work) {
    return always(function, [&] {
        Producer::instance().mustBeInitialised();
        work();
    });
}

// ---- what handles stand for ----

inline std::shared_ptr<System> systemOf(TL_HANDLE handle) {
    return Handles::instance().find<System>(handle, "a system");
}
inline std::shared_ptr<Interface> interfaceOf(IF_HANDLE handle) {
    return Handles::instance().find<Interface>(handle, "an interface");
}
inline std::shared_ptr<Device> deviceOf(DEV_HANDLE handle) {
    return Handles::instance().find<Device>(handle, "a device");
}
inline std::shared_ptr<Stream> streamOf(DS_HANDLE handle) {
    return Handles::instance().find<Stream>(handle, "a data stream");
}
inline std::shared_ptr<Module> moduleOf(PORT_HANDLE handle) {
    return Handles::instance().find<Module>(handle, "a module");
}
inline std::shared_ptr<EventQueue> eventOf(EVENT_HANDLE handle) {
    return Handles::instance().find<EventQueue>(handle, "an event");
}
/// A buffer of this stream; INVALID_BUFFER for one of another stream.
inline std::shared_ptr<Buffer> bufferOf(const Stream& stream, BUFFER_HANDLE handle) {
    auto buffer = Handles::instance().find<Buffer>(handle, "a buffer");
    if (!buffer->isOf(stream))
        throw Error(GC_ERR_INVALID_BUFFER, "the buffer belongs to another data stream");
    return buffer;
}

}  // namespace marovine::gentl
