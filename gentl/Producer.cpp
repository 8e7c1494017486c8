#include "gentl/Producer.h"

#include <utility>

namespace marovine::gentl {

Producer& Producer::instance() {
    // Never destroyed, like the handles.
    static Producer* const producer = std::make_unique<Producer>().release();
    return *producer;
}

void Producer::initialise() {
    const std::lock_guard lock(mutex_);
    if (initialised_) throw Error(GC_ERR_RESOURCE_IN_USE, "GCInitLib was called already");
    initialised_ = true;
}

void Producer::close() {
    std::shared_ptr<System> system;
    {
        const std::lock_guard lock(mutex_);
        if (!initialised_) throw Error(GC_ERR_NOT_INITIALIZED, "call GCInitLib first");
        initialised_ = false;
        system = std::exchange(system_, nullptr);
    }
    if (system != nullptr) system->close();
}

void Producer::mustBeInitialised() const {
    const std::lock_guard lock(mutex_);
    if (!initialised_) throw Error(GC_ERR_NOT_INITIALIZED, "call GCInitLib first");
}

std::shared_ptr<System> Producer::openSystem() {
    const std::lock_guard lock(mutex_);
    if (!initialised_) throw Error(GC_ERR_NOT_INITIALIZED, "call GCInitLib first");
    if (system_ != nullptr) throw Error(GC_ERR_RESOURCE_IN_USE, "the system is open already");
    auto system = std::make_shared<System>();
    Handles::instance().add(system);
    system_ = system;
    return system;
}

void Producer::closed(const System& system) {
    const std::lock_guard lock(mutex_);
    if (system_.get() == &system) system_.reset();
}

}  // namespace marovine::gentl
