#pragma once

/// What the applet calls in the libraries that are not part of it: the design runtime and the board register
/// library. The virtual board brings stand-ins for both.

#include <cstddef>
#include <cstdint>

#include "marovine/marovine.h"

/// An event of a design, owned by the design runtime.
struct HapEvent {
    std::uint64_t reserved;
    const char* name;
    std::uint32_t number;
    std::int32_t kind;  ///< 1: published under its own name
};
static_assert(offsetof(HapEvent, name) == 8 && offsetof(HapEvent, kind) == 20);

/// The type code under which the design is built and loaded.
inline constexpr int kDesignType = 30017;

extern "C" {
#pragma GCC visibility push(default)

/// Loads a design from memory; null when it cannot be loaded.
fpga_design* HapLoadDesignFromBuffer(const void* image, std::size_t size, int option);
/// Loads a design from a file; null when it cannot be loaded.
fpga_design* HapLoadHapFileWithType(const char* fileName, int type, int option);
void HapUnloadHapFile(fpga_design* design);
/// Event `number`, counted from 0 without gaps; null past the last one.
HapEvent* HapGetEvent(fpga_design* design, int number);
/// Registers are numbered from 1 to this number.
int HapGetNrOfRegister(fpga_design* design);
const char* HapGetRegisterName(fpga_design* design, int number);
int HapGetRegisterByName(fpga_design* design, const char* name);
/// Width of a register in bits.
int HapGetRegisterBitRange(fpga_design* design, int number);
/// Non-zero when the register can be written.
int HapGetRegisterDirection(fpga_design* design, int number);

/// Reads a register of the board; 0 on success.
int TavrRegisterRead(GXdevice* board, int number, std::uint64_t* value);
/// Writes a register of the board; 0 on success.
int TavrRegisterWrite(GXdevice* board, int number, std::uint64_t value);

#pragma GCC visibility pop
}
