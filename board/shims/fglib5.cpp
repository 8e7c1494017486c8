/// libfglib5.so: the host runtime on the virtual board. Every function forwards to the library that holds the
/// boards.

#include "board/machine/HostRuntime.h"
#include "marovine/BoardCodes.h"

using namespace virtualboard;

extern "C" {
#pragma GCC visibility push(default)

Fg_Struct* Fg_InitHandleSlaveAware(const char* designName, GXdevice* device, fpga_design* design, int flags) {
    return openHandle(designName, device, design, flags);
}

Fg_Struct* Fg_InitHandle(const char* designName, GXdevice* device, fpga_design* design) {
    return openHandle(designName, device, design, 0);
}

int Fg_FreeGrabber(Fg_Struct* record) {
    return freeHandle(record);
}
int Fg_getLastErrorNumber(Fg_Struct* record) {
    return lastError(record);
}
int Fg_getAppletId(Fg_Struct* record, void*) {
    return designType(record);
}

int Fg_getParameterIdByName(Fg_Struct* record, const char* name) {
    return parameterId(record, name);
}

int Fg_setParameterWithType(Fg_Struct* record, int id, const void* value, int dmaIndex, FgParamTypes type) {
    return setParameter(record, id, value, static_cast<unsigned>(dmaIndex), type);
}

int Fg_getParameterWithType(Fg_Struct* record, int id, void* value, int dmaIndex, FgParamTypes type) {
    return getParameter(record, id, value, static_cast<unsigned>(dmaIndex), type);
}

int Fg_freeParameterStringWithType(Fg_Struct* record, int, void* value, int, FgParamTypes type) {
    return type == FG_TYPE_TEXT_POINTER ? freeText(record, value) : answer(record, kTypeMismatch);
}

int Fg_setParameter(Fg_Struct* record, int id, const void* value, unsigned dmaIndex) {
    return setParameter(record, id, value, dmaIndex, nativeType(record, id));
}

int Fg_getParameter(Fg_Struct* record, int id, void* value, unsigned dmaIndex) {
    return getParameter(record, id, value, dmaIndex, nativeType(record, id));
}

RegisterInfo* Fg_getParameterInfo(Fg_Struct* record, int port) {
    return parameterTree(record, port);
}

int Fg_saveConfig(Fg_Struct* record, const char* fileName) {
    return saveConfiguration(record, fileName);
}
int Fg_loadConfig(Fg_Struct* record, const char*) {
    return answer(record, kNotSupported);
}

int Fg_AcquireEx(Fg_Struct* record, unsigned dmaIndex, int64_t pictures, int flags, dma_mem* memory) {
    return acquire(record, dmaIndex, pictures, flags, memory);
}

int Fg_stopAcquireEx(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory, int flags) {
    return stopAcquire(record, dmaIndex, memory, flags);
}

int Fg_Acquire(Fg_Struct* record, unsigned dmaIndex, int64_t pictures) {
    return acquire(record, dmaIndex, pictures, 0, nullptr);
}

int Fg_stopAcquire(Fg_Struct* record, unsigned dmaIndex) {
    return stopAcquire(record, dmaIndex, nullptr, 0);
}

int64_t Fg_getLastPicNumberEx(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory) {
    return lastPicture(record, dmaIndex, memory);
}

int64_t Fg_getLastPicNumberBlockingEx(Fg_Struct* record, int64_t picture, unsigned dmaIndex, int timeout,
                                      dma_mem* memory) {
    return lastPictureBlocking(record, picture, dmaIndex, timeout, memory);
}

int64_t Fg_getStatusEx(Fg_Struct* record, int parameter, int64_t data, unsigned dmaIndex, dma_mem* memory) {
    return acquisitionStatus(record, parameter, data, dmaIndex, memory);
}

// The virtual board has no shading memory.

ShadingMaster* Fg_AllocShading(Fg_Struct* record, int, int) {
    answer(record, kNotSupported);
    return nullptr;
}

int Fg_FreeShading(Fg_Struct* record, ShadingMaster*) {
    return answer(record, kNotSupported);
}
int Shad_GetMaxLine(Fg_Struct* record, ShadingMaster*) {
    return answer(record, kNotSupported);
}
int Shad_SetSubValueLine(Fg_Struct* record, ShadingMaster*, int, int, float) {
    return answer(record, kNotSupported);
}
int Shad_SetMultValueLine(Fg_Struct* record, ShadingMaster*, int, int, float) {
    return answer(record, kNotSupported);
}
int Shad_SetFixedPatternNoiseLine(Fg_Struct* record, ShadingMaster*, int, int, int) {
    return answer(record, kNotSupported);
}
int Shad_GetAccess(Fg_Struct* record, ShadingMaster*) {
    return answer(record, kNotSupported);
}
int Shad_FreeAccess(Fg_Struct* record, ShadingMaster*) {
    return answer(record, kNotSupported);
}
int Shad_WriteActLine(Fg_Struct* record, ShadingMaster*, int) {
    return answer(record, kNotSupported);
}

#pragma GCC visibility pop
}  // extern "C"
