#include "marovine/Control.h"

#include <stdexcept>
#include <utility>

#include "board/machine/Machine.h"
#include "marovine/VirtualBoard.h"

namespace virtualboard {

namespace {

std::shared_ptr<Board> boardOf(GXdevice* device) {
    auto board = Machine::instance().boards.find(device);
    if (board == nullptr) throw std::invalid_argument("this device is no board of this machine");
    return board;
}

void changeOpening(const std::function<void(OpeningFaults&)>& change) {
    Machine::instance().changeOpeningFaults(change);
}

}  // namespace

GXdevice* insertBoard() {
    return Machine::instance().boards.add(std::make_shared<Board>());
}
void removeBoard(GXdevice* board) {
    const auto removed = Machine::instance().boards.take(board);
    if (removed != nullptr) removed->endAcquisition(nullptr);  // handles may still be open
}

Control::Control(GXdevice* board) : board_(board) {
    boardOf(board);
}

void Control::recordWrites(bool on) {
    boardOf(board_)->recordWrites(on);
}
std::vector<Write> Control::takeWrites() {
    return boardOf(board_)->takeWrites();
}
void Control::watchWrites(std::function<void(const Write&)> watcher) {
    boardOf(board_)->watchWrites(std::move(watcher));
}

Value Control::value(std::string_view name) const {
    return boardOf(board_)->value(name);
}
void Control::force(std::string_view name, const Value& value) {
    boardOf(board_)->force(name, value);
}
std::vector<std::string> Control::parameterNames() const {
    return boardOf(board_)->parameterNames();
}

void Control::refuseWrites(std::string_view name, int code) {
    boardOf(board_)->refuseWrites(name, code);
}
void Control::refuseReads(std::string_view name, int code) {
    boardOf(board_)->refuseReads(name, code);
}
void Control::refuseNthWrite(unsigned n, int code) {
    boardOf(board_)->refuseNthWrite(n, code);
}
void Control::refuseNthRead(unsigned n, int code) {
    boardOf(board_)->refuseNthRead(n, code);
}
void Control::clearFaults() {
    boardOf(board_)->clearFaults();
}

void Control::setClockMode(ClockMode mode) {
    boardOf(board_)->setClockMode(mode);
}
void Control::advanceClock(double seconds) {
    boardOf(board_)->advanceClock(seconds);
}

void Control::setScene(imaging::Image scene, std::uint32_t fieldWidth) {
    boardOf(board_)->setScene(std::make_shared<const imaging::Image>(std::move(scene)), fieldWidth);
}
void Control::showTestChart() {
    boardOf(board_)->setScene(nullptr, 0);
}
void Control::setCamera(const imaging::CameraTraits& camera) {
    boardOf(board_)->setCamera(camera);
}
void Control::setBelt(const imaging::Belt& belt) {
    boardOf(board_)->setBelt(belt);
}
void Control::setRenderThreads(unsigned threads) {
    boardOf(board_)->setRenderThreads(threads);
}
void Control::setInput(unsigned input, bool high) {
    boardOf(board_)->setInput(input, high);
}

void Control::refuseDesign(bool on) {
    changeOpening([on](OpeningFaults& faults) { faults.refuseDesign = on; });
}

void Control::refuseHandle(bool on, int code) {
    changeOpening([on, code](OpeningFaults& faults) {
        faults.refuseHandle = on;
        faults.handleError = code;
    });
}

void Control::hide(std::string_view name) {
    changeOpening([name](OpeningFaults& faults) { faults.hidden.insert(std::string(name)); });
}

void Control::clearOpeningFaults() {
    changeOpening([](OpeningFaults& faults) { faults = {}; });
}

}  // namespace virtualboard

extern "C" {

GXdevice* VirtualBoardInsert(void) {
    try {
        return virtualboard::insertBoard();
    } catch (const std::exception&) {
        return nullptr;
    }
}

void VirtualBoardRemove(GXdevice* board) {
    virtualboard::removeBoard(board);
}

}  // extern "C"
