/// The C interface, without what concerns events. Everything happens in `Board`; here stand the conversions.

#include "marovine/VirtualBoard.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

#include "board/machine/Guarded.h"
#include "board/machine/ValueRecords.h"
#include "board/machine/WorldRecords.h"

using namespace virtualboard;

namespace {

/// Why a thread's last call failed. The main thread's ends before the static objects of a host do, and those
/// may still have a board to take out: from then on nothing is told.
thread_local bool hasErrorText = true;
struct ErrorText {
    std::string text;
    ErrorText() = default;
    ErrorText(const ErrorText&) = delete;
    ErrorText& operator=(const ErrorText&) = delete;
    ~ErrorText() { hasErrorText = false; }
};
thread_local ErrorText lastError;

int changeOpening(const std::function<void(OpeningFaults&)>& change) {
    return guarded([&] { Machine::instance().changeOpeningFaults(change); });
}

/// The record of a thing as it is by itself.
GXdevice* insert(ClockMode mode) {
    GXdevice* board = nullptr;
    guarded([&] { board = Machine::instance().boards.add(std::make_shared<Board>(mode)); });
    return board;
}

template <typename Packed, typename Thing, typename Record>
int answerDefault(Record* record) {
    return guarded([&] { check(answerRecord(Packed(Thing{}).record, given(record))); });
}

}  // namespace

int virtualboard::told(int code, const char* why) noexcept {
    if (!hasErrorText) return code;
    try {
        lastError.text = why;
    } catch (const std::exception&) {
        lastError.text.clear();  // no memory for the reason
    }
    return code;
}

extern "C" {

GXdevice* VirtualBoardInsert(void) {
    return insert(ClockMode::RealTime);
}

GXdevice* VirtualBoardInsertStanding(void) {
    return insert(ClockMode::Manual);
}

void VirtualBoardRemove(GXdevice* board) {
    guarded([&] {
        const auto removed = Machine::instance().boards.take(board);
        if (removed == nullptr) return;
        removed->endAcquisition(nullptr);  // handles may still be open
        removed->endEvents();
    });
}

const char* VirtualBoardLastError(void) {
    return hasErrorText ? lastError.text.c_str() : "";
}

void VirtualBoardFree(const void* block) {
    std::free(const_cast<void*>(block));
}

int VirtualBoardSetClockMode(GXdevice* board, int mode) {
    return onBoard(board, [&](Board& b) {
        if (mode < VIRTUAL_BOARD_REAL_TIME || mode > VIRTUAL_BOARD_AS_FAST_AS_POSSIBLE)
            throw std::invalid_argument("the clock has no mode " + std::to_string(mode));
        b.setClockMode(static_cast<ClockMode>(mode));
    });
}

int VirtualBoardAdvanceClock(GXdevice* board, double seconds) {
    return onBoard(board, [&](Board& b) { b.advanceClock(seconds); });
}

int VirtualBoardTime(GXdevice* board, int64_t* time) {
    return onBoard(board, [&](Board& b) { *given(time) = b.time(); });
}

int VirtualBoardWaitForPicture(GXdevice* board, dma_mem* memory, int64_t number, uint32_t milliseconds,
                               int64_t* last) {
    return onBoard(board, [&](Board& b) {
        const std::int64_t answer =
            b.lastPictureBlocking(number, std::chrono::milliseconds(milliseconds), memory);
        if (answer < 0) throw Refusal(static_cast<int>(answer));
        *given(last) = answer;
    });
}

int VirtualBoardSetScene(GXdevice* board, const uint8_t* pixels, uint32_t width, uint32_t height,
                         uint32_t fieldWidth) {
    return onBoard(board, [&](Board& b) {
        constexpr std::uint64_t kMost = 1 << 28;  // pixels
        if (width == 0 || height == 0) throw std::invalid_argument("the scene is empty");
        if (std::uint64_t{width} * height > kMost)
            throw std::invalid_argument("a scene has at most " + std::to_string(kMost) + " pixels");
        imaging::Image scene(width, height);
        const auto from = run(pixels, scene.bytes().size());
        std::copy(from.begin(), from.end(), scene.bytes().begin());
        b.setScene(std::make_shared<const imaging::Image>(std::move(scene)), fieldWidth);
    });
}

int VirtualBoardShowTestChart(GXdevice* board) {
    return onBoard(board, [](Board& b) { b.setScene(nullptr, 0); });
}

int VirtualBoardDefaultBelt(VirtualBoardBelt* belt) {
    return answerDefault<BeltRecord, imaging::Belt>(belt);
}

int VirtualBoardSetBelt(GXdevice* board, const VirtualBoardBelt* belt) {
    return onBoard(board, [&](Board& b) { b.setBelt(fromRecord(taken(belt))); });
}

int VirtualBoardDefaultCamera(VirtualBoardCamera* camera) {
    return answerDefault<CameraRecord, imaging::CameraTraits>(camera);
}

int VirtualBoardSetCamera(GXdevice* board, const VirtualBoardCamera* camera) {
    return onBoard(board, [&](Board& b) { b.setCamera(fromRecord(taken(camera))); });
}

int VirtualBoardDefaultLight(VirtualBoardLight* light) {
    return answerDefault<LightRecord, imaging::Light>(light);
}

int VirtualBoardSetLight(GXdevice* board, const VirtualBoardLight* light) {
    return onBoard(board, [&](Board& b) { b.setLight(fromRecord(taken(light))); });
}

int VirtualBoardSetRenderThreads(GXdevice* board, uint32_t threads) {
    return onBoard(board, [&](Board& b) { b.setRenderThreads(threads); });
}

int VirtualBoardDefaultEncoder(VirtualBoardEncoder* encoder) {
    return answerDefault<EncoderRecord, imaging::Encoder>(encoder);
}

int VirtualBoardSetEncoder(GXdevice* board, const VirtualBoardEncoder* encoder) {
    return onBoard(board, [&](Board& b) { b.setEncoder(fromRecord(taken(encoder))); });
}

int VirtualBoardPlayInput(GXdevice* board, uint32_t input, const VirtualBoardSignal* signal) {
    return onBoard(board, [&](Board& b) { b.playInput(input, fromRecord(taken(signal))); });
}

int VirtualBoardSetInput(GXdevice* board, uint32_t input, int high) {
    return onBoard(board, [&](Board& b) { b.setInput(input, high != 0); });
}

// ---- values ----

int VirtualBoardReadValue(GXdevice* board, const char* name, VirtualBoardValue* value) {
    return onBoard(board, [&](Board& b) {
        const Value read = b.value(given(name));
        VirtualBoardValue record = recordOf(read);
        check(checkRecord(given(value)));
        if (record.text != nullptr) record.text = handedOut(std::string_view(record.text, record.count));
        if (record.elements != nullptr) record.elements = handedOut(std::span(record.elements, record.count));
        check(answerRecord(record, value));
    });
}

int VirtualBoardForceValue(GXdevice* board, const char* name, const VirtualBoardValue* value) {
    return onBoard(board, [&](Board& b) { b.force(given(name), fromRecord(taken(value))); });
}

int VirtualBoardParameterNames(GXdevice* board, const char** names) {
    return onBoard(board, [&](Board& b) {
        std::string lines;
        for (const std::string& name : b.parameterNames()) lines += name + '\n';
        *given(names) = handedOut(lines);
    });
}

// ---- journal of writes ----

int VirtualBoardRecordWrites(GXdevice* board, int on) {
    return onBoard(board, [&](Board& b) { b.recordWrites(on != 0); });
}

int VirtualBoardTakeWrites(GXdevice* board, const VirtualBoardWrite** writes) {
    return onBoard(board, [&](Board& b) { *given(writes) = handedOut(b.takeWrites()); });
}

int VirtualBoardWatchWrites(GXdevice* board, VirtualBoardWriteWatcher watcher, void* context,
                            VirtualBoardRelease release) {
    return guarded([&] {
        const auto kept = contextOf(context, release);
        const auto b = boardOf(board);
        if (watcher == nullptr) return b->watchWrites({});
        b->watchWrites([watcher, kept](const Write& write) {
            VirtualBoardValue value;
            const VirtualBoardWrite record = recordOf(write, value);
            watcher(&record, kept.get());
        });
    });
}

// ---- faults ----

int VirtualBoardRefuseWrites(GXdevice* board, const char* name, int code) {
    return onBoard(board, [&](Board& b) { b.refuseWrites(given(name), code); });
}
int VirtualBoardRefuseReads(GXdevice* board, const char* name, int code) {
    return onBoard(board, [&](Board& b) { b.refuseReads(given(name), code); });
}
int VirtualBoardRefuseNthWrite(GXdevice* board, uint32_t n, int code) {
    return onBoard(board, [&](Board& b) { b.refuseNthWrite(n, code); });
}
int VirtualBoardRefuseNthRead(GXdevice* board, uint32_t n, int code) {
    return onBoard(board, [&](Board& b) { b.refuseNthRead(n, code); });
}
int VirtualBoardClearFaults(GXdevice* board) {
    return onBoard(board, [](Board& b) { b.clearFaults(); });
}

int VirtualBoardRefuseDesign(int on) {
    return changeOpening([on](OpeningFaults& faults) { faults.refuseDesign = on != 0; });
}

int VirtualBoardRefuseHandle(int on, int code) {
    return changeOpening([on, code](OpeningFaults& faults) {
        faults.refuseHandle = on != 0;
        faults.handleError = code;
    });
}

int VirtualBoardHide(const char* name) {
    return changeOpening([name](OpeningFaults& faults) { faults.hidden.insert(given(name)); });
}

int VirtualBoardClearOpeningFaults(void) {
    return changeOpening([](OpeningFaults& faults) { faults = {}; });
}

}  // extern "C"
