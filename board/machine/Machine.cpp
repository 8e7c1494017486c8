#include "board/machine/Machine.h"

#include <cstddef>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "board/design/DesignImage.h"

namespace virtualboard {

Machine& Machine::instance() {
    // Never destroyed: a host may close its applet from a destructor that runs after all of ours.
    alignas(Machine) static std::byte storage[sizeof(Machine)];
    static Machine& machine = *new (storage) Machine;
    return machine;
}

fpga_design* Machine::loadDesign(std::string_view image, int requiredType) {
    OpeningFaults faults = openingFaults();
    if (faults.refuseDesign) return nullptr;
    const std::string_view description = unpackDesign(image);
    std::unique_lock lock(mutex_);
    auto design = loaded_;
    lock.unlock();
    if (design == nullptr || !design->isOf(description, faults.hidden))
        design = std::make_shared<const Design>(description, std::move(faults.hidden));
    if (const auto type = design->data().type; requiredType != 0 && static_cast<int>(type) != requiredType) {
        throw std::invalid_argument("the design is of type " + std::to_string(type) + ", not " +
                                    std::to_string(requiredType));
    }
    lock.lock();
    loaded_ = design;
    lock.unlock();
    // Every loading has a handle of its own, which must be unloaded for itself.
    auto loading = std::make_shared<std::shared_ptr<const Design>>(design);
    auto* handle = reinterpret_cast<fpga_design*>(loading.get());
    return designs.add(handle, std::shared_ptr<const Design>(std::move(loading), design.get()));
}

OpeningFaults Machine::openingFaults() {
    const std::lock_guard lock(mutex_);
    return openingFaults_;
}

void Machine::changeOpeningFaults(const std::function<void(OpeningFaults&)>& change) {
    const std::lock_guard lock(mutex_);
    change(openingFaults_);
}

}  // namespace virtualboard
