/// The C interface's part about worlds.

#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "board/machine/Guarded.h"
#include "board/machine/ValueRecords.h"
#include "board/world/TruthJson.h"
#include "marovine/VirtualBoard.h"

using namespace virtualboard;

namespace {

/// Records with their texts in one block for `VirtualBoardFree`, linked in their order; null without any.
template <typename Record>
const Record* linked(const std::vector<Record>& records,
                     std::initializer_list<const char * Record::*> texts) {
    if (records.empty()) return nullptr;
    std::size_t bytes = records.size() * sizeof(Record);
    for (const Record& record : records)
        for (const auto text : texts) bytes += std::strlen(record.*text) + 1;
    auto* block = static_cast<Record*>(std::malloc(bytes));
    if (block == nullptr) throw std::bad_alloc();
    std::memcpy(block, records.data(), records.size() * sizeof(Record));
    auto* room = reinterpret_cast<char*>(block + records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        block[i].next = i + 1 < records.size() ? &block[i + 1] : nullptr;
        for (const auto text : texts) {
            const std::size_t size = std::strlen(block[i].*text) + 1;
            std::memcpy(room, block[i].*text, size);
            block[i].*text = std::exchange(room, room + size);
        }
    }
    return block;
}

const VirtualBoardWorldFault* handedOut(const WorldFaults& faults) {
    std::vector<VirtualBoardWorldFault> records;
    for (const WorldFault& fault : faults) {
        records.push_back({.size = sizeof(VirtualBoardWorldFault),
                           .line = static_cast<std::uint32_t>(fault.line),
                           .path = fault.path.c_str(),
                           .reason = fault.reason.c_str(),
                           .next = nullptr});
    }
    return linked(records, {&VirtualBoardWorldFault::path, &VirtualBoardWorldFault::reason});
}

/// Puts a world around a board that `read` makes.
template <typename Read>
int putWorld(GXdevice* device, const VirtualBoardWorldFault** faults, Read read) {
    return onBoard(device, [&](Board& board) {
        if (faults != nullptr) *faults = nullptr;
        try {
            board.setWorld(read());
        } catch (const WorldError& error) {
            if (faults != nullptr) *faults = handedOut(error.faults());
            throw Refusal(kWrongWorld, error.what());
        }
    });
}

VirtualBoardTruth recordOf(const char* name, const TruthPart& part, const TruthBox& box, bool complete) {
    return {.size = sizeof(VirtualBoardTruth),
            .isDefect = 0,
            .name = name,
            .number = part.number,
            .stream = part.stream,
            .complete = complete ? 1u : 0u,
            .left = box.left,
            .top = box.top,
            .width = box.width,
            .height = box.height,
            .severity = 0,
            .next = nullptr};
}

const VirtualBoardTruth* handedOut(const PictureTruth& truth) {
    std::vector<VirtualBoardTruth> records;
    for (const TruthPart& part : truth.parts) {
        records.push_back(recordOf(part.name.c_str(), part, part.box, part.complete));
        for (const TruthDefect& defect : part.defects) {
            records.push_back(recordOf(defect.kind.c_str(), part, defect.box, defect.complete));
            records.back().isDefect = 1;
            records.back().severity = defect.severity;
        }
    }
    return linked(records, {&VirtualBoardTruth::name});
}

}  // namespace

extern "C" {

int VirtualBoardLoadWorld(GXdevice* board, const char* file, const VirtualBoardWorldFault** faults) {
    return putWorld(board, faults, [&] { return world::loadWorld(given(file)); });
}

int VirtualBoardSetWorld(GXdevice* board, const char* json, const char* folder,
                         const VirtualBoardWorldFault** faults) {
    return putWorld(board, faults, [&] { return world::readWorld(given(json), given(folder)); });
}

int VirtualBoardPictureTruth(GXdevice* board, dma_mem* memory, int64_t number, uint32_t* width,
                             uint32_t* height, const VirtualBoardTruth** truth) {
    return onBoard(board, [&](Board& b) {
        given(truth);
        PictureTruth known;
        check(b.truth(memory, number, known));
        *truth = handedOut(known);
        if (width != nullptr) *width = known.width;
        if (height != nullptr) *height = known.height;
    });
}

int VirtualBoardPictureTruthJson(GXdevice* board, dma_mem* memory, int64_t number, const char** json) {
    return onBoard(board, [&](Board& b) {
        given(json);
        PictureTruth known;
        check(b.truth(memory, number, known));
        *json = virtualboard::handedOut(world::truthJson(known));
    });
}

}  // extern "C"
