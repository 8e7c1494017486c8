#include "board/machine/Machine.h"

#include <cstddef>
#include <new>
#include <utility>

namespace virtualboard {

Machine& Machine::instance() {
    // Never destroyed: a host may close its applet from a destructor that runs after all of ours.
    alignas(Machine) static std::byte storage[sizeof(Machine)];
    static Machine& machine = *new (storage) Machine;
    return machine;
}

GXdevice* Machine::insert() {
    auto board = std::make_shared<Board>();
    auto* device = reinterpret_cast<GXdevice*>(board.get());
    const std::lock_guard lock(mutex_);
    boards_.emplace(device, std::move(board));
    return device;
}

void Machine::remove(GXdevice* device) {
    std::shared_ptr<Board> board;
    {
        const std::lock_guard lock(mutex_);
        const auto found = boards_.find(device);
        if (found == boards_.end()) return;
        board = std::move(found->second);
        boards_.erase(found);
    }
    board->endAcquisition(nullptr);  // handles may still be open
}

std::shared_ptr<Board> Machine::board(GXdevice* device) {
    const std::lock_guard lock(mutex_);
    const auto found = boards_.find(device);
    return found == boards_.end() ? nullptr : found->second;
}

fpga_design* Machine::addDesign(std::shared_ptr<const Design> design) {
    auto* key = reinterpret_cast<fpga_design*>(const_cast<Design*>(design.get()));
    const std::lock_guard lock(mutex_);
    designs_.emplace(key, std::move(design));
    return key;
}

void Machine::removeDesign(fpga_design* design) {
    const std::lock_guard lock(mutex_);
    designs_.erase(design);
}

std::shared_ptr<const Design> Machine::design(fpga_design* design) {
    const std::lock_guard lock(mutex_);
    const auto found = designs_.find(design);
    return found == designs_.end() ? nullptr : found->second;
}

Fg_Struct* Machine::addHandle(std::unique_ptr<Handle> handle) {
    handle->record.instance = handle.get();
    Fg_Struct* record = &handle->record;
    const std::lock_guard lock(mutex_);
    handles_.emplace(record, std::move(handle));
    return record;
}

bool Machine::removeHandle(Fg_Struct* record) {
    std::unique_ptr<Handle> handle;
    {
        const std::lock_guard lock(mutex_);
        const auto found = handles_.find(record);
        if (found == handles_.end()) return false;
        handle = std::move(found->second);
        handles_.erase(found);
    }
    handle->board->endAcquisition(handle.get());
    return true;
}

dma_mem* Machine::addMemory(std::shared_ptr<FrameRing> ring) {
    auto* key = reinterpret_cast<dma_mem*>(ring.get());
    const std::lock_guard lock(mutex_);
    memories_.emplace(key, std::move(ring));
    return key;
}

std::shared_ptr<FrameRing> Machine::memory(dma_mem* memory) {
    const std::lock_guard lock(mutex_);
    const auto found = memories_.find(memory);
    return found == memories_.end() ? nullptr : found->second;
}

bool Machine::removeMemory(dma_mem* memory) {
    std::shared_ptr<FrameRing> ring;  // freed after the lock is
    const std::lock_guard lock(mutex_);
    const auto found = memories_.find(memory);
    if (found == memories_.end()) return false;
    ring = std::move(found->second);
    memories_.erase(found);
    return true;
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
