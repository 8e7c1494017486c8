#pragma once

/// The machine that the boards stand in: who is who behind the opaque pointers that hosts hold.

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "board/machine/Board.h"
#include "board/machine/FrameRing.h"

namespace virtualboard {

/// How the next opening behaves, as the control interface wants it.
struct OpeningFaults {
    bool refuseDesign = false;
    bool refuseHandle = false;
    int handleError = 0;
    Names hidden;
};

/// One handle that the host runtime opened on a board.
struct Handle {
    Fg_Struct record{};  ///< what the host holds; its instance is this handle
    std::shared_ptr<Board> board;
    std::shared_ptr<const Design> design;
    std::atomic<int> lastError = 0;
    std::mutex textsMutex;
    std::map<char*, std::unique_ptr<char[]>> texts;  ///< handed out and not yet given back
};

/// The handle behind a record; null for a null record or one without instance.
inline Handle* handleOf(Fg_Struct* record) {
    return record != nullptr ? static_cast<Handle*>(record->instance) : nullptr;
}

/// The boards, designs, handles and picture memories of this process. Thread-safe.
class Machine {
 public:
    static Machine& instance();

    GXdevice* insert();
    /// Ends the board's acquisition and takes it out.
    void remove(GXdevice* device);
    /// Null for a pointer that is not a board of this machine.
    std::shared_ptr<Board> board(GXdevice* device);

    fpga_design* addDesign(std::shared_ptr<const Design> design);
    void removeDesign(fpga_design* design);
    /// Null for a pointer that is not a loaded design.
    std::shared_ptr<const Design> design(fpga_design* design);

    Fg_Struct* addHandle(std::unique_ptr<Handle> handle);
    /// Ends the acquisition that the handle started. False for a record that is no open handle.
    bool removeHandle(Fg_Struct* record);

    dma_mem* addMemory(std::shared_ptr<FrameRing> ring);
    /// Null for a pointer that is no picture memory of this machine.
    std::shared_ptr<FrameRing> memory(dma_mem* memory);
    /// False for a pointer that is no picture memory of this machine.
    bool removeMemory(dma_mem* memory);

    OpeningFaults openingFaults();
    void changeOpeningFaults(const std::function<void(OpeningFaults&)>& change);

    /// The last error of calls that have no handle.
    std::atomic<int> lastError = 0;

 private:
    std::mutex mutex_;
    std::map<GXdevice*, std::shared_ptr<Board>> boards_;
    std::map<fpga_design*, std::shared_ptr<const Design>> designs_;
    std::map<Fg_Struct*, std::unique_ptr<Handle>> handles_;
    std::map<dma_mem*, std::shared_ptr<FrameRing>> memories_;
    OpeningFaults openingFaults_;
};

}  // namespace virtualboard
