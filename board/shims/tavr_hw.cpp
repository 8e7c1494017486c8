/// libtavr_hw.so: the board register library on the virtual board.

#include "board/machine/Machine.h"
#include "marovine/BoardCodes.h"

using namespace virtualboard;

extern "C" {

int TavrRegisterRead(GXdevice* device, int number, std::uint64_t* value) {
    const auto board = Machine::instance().boards.find(device);
    if (board == nullptr) return kUnknownBoard;
    return value != nullptr ? board->readRegister(number, *value) : kNullPointer;
}

int TavrRegisterWrite(GXdevice* device, int number, std::uint64_t value) {
    const auto board = Machine::instance().boards.find(device);
    return board != nullptr ? board->writeRegister(number, value) : kUnknownBoard;
}

}  // extern "C"
