/// A host runtime that opens no handle and reports the error number in FAKE_RUNTIME_ERROR.

#include <cstdlib>

#include "marovine/marovine.h"

#pragma GCC visibility push(default)
extern "C" Fg_Struct* Fg_InitHandleSlaveAware(const char*, GXdevice*, fpga_design*, int) {
    return nullptr;
}
extern "C" int Fg_getLastErrorNumber(Fg_Struct* handle) {
    return handle == nullptr ? std::atoi(std::getenv("FAKE_RUNTIME_ERROR")) : 0;
}
#pragma GCC visibility pop
