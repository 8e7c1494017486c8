/// libtavr_hw.so: the board register library on the virtual board.

#include "board/machine/DesignRuntime.h"

extern "C" {

int TavrRegisterRead(GXdevice* board, int number, std::uint64_t* value) {
    return virtualboard::readRegister(board, number, value);
}

int TavrRegisterWrite(GXdevice* board, int number, std::uint64_t value) {
    return virtualboard::writeRegister(board, number, value);
}

}  // extern "C"
