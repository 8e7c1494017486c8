#pragma once

/// The design runtime's and the register library's functions, as the shims libhaprt.so and libtavr_hw.so
/// forward them. Records and texts they hand out live as long as the design is loaded.

#include <cstddef>
#include <cstdint>

#include "marovine/OutsideRuntimes.h"

#pragma GCC visibility push(default)

namespace virtualboard {

/// Null when the image is damaged or not a design image; standard error says why when MAROVINE_LOG_LEVEL is
/// 5 or less.
fpga_design* loadDesign(const void* image, std::size_t size);
/// The same for a file, whose design must be of the given type.
fpga_design* loadDesignFile(const char* fileName, int type);
void unloadDesign(fpga_design* design);

HapEvent* designEvent(fpga_design* design, int number);
int registerCount(fpga_design* design);
/// Null when there is no such register.
const char* registerName(fpga_design* design, int number);
/// A negative code when there is no such register.
int registerByName(fpga_design* design, const char* name);
/// 0 when there is no such register.
int registerBits(fpga_design* design, int number);
/// 1 when the register can be written, else 0.
int registerWritable(fpga_design* design, int number);

int readRegister(GXdevice* device, int number, std::uint64_t* value);
int writeRegister(GXdevice* device, int number, std::uint64_t value);

}  // namespace virtualboard

#pragma GCC visibility pop
