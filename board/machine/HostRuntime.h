#pragma once

/// The host runtime's functions, as the shim libfglib5.so forwards them. Codes are those of Codes.h.

#include <cstdint>

#include "marovine/marovine.h"

#pragma GCC visibility push(default)

namespace virtualboard {

/// Opens a handle on a design that is put onto a board. Bit 0 of `flags` attaches: a board that already
/// carries the same design keeps its values; else every value starts anew. Null on failure, with the
/// process-wide last error set.
Fg_Struct* openHandle(const char* designName, GXdevice* device, fpga_design* design, int flags);
/// Frees a handle and the texts it still has out; ends the acquisition that it started.
int freeHandle(Fg_Struct* record);
/// The last code of a handle; with a null record that of the last opening.
int lastError(Fg_Struct* record);

int parameterId(Fg_Struct* record, const char* name);
int setParameter(Fg_Struct* record, int id, const void* value, unsigned dmaIndex, FgParamTypes type);
int getParameter(Fg_Struct* record, int id, void* value, unsigned dmaIndex, FgParamTypes type);
/// The type code by which an untyped call reaches a parameter; 0 when there is no such parameter.
FgParamTypes nativeType(Fg_Struct* record, int id);
/// Gives back a text that a get with FG_TYPE_TEXT_POINTER handed out.
int freeText(Fg_Struct* record, void* text);
/// The description tree of the design; ports other than 0 have none.
RegisterInfo* parameterTree(Fg_Struct* record, int port);
/// Writes every parameter of the design as "NAME = VALUE" lines.
int saveConfiguration(Fg_Struct* record, const char* fileName);
/// Identifier of the design; positive.
int designType(Fg_Struct* record);

// Taking pictures; FrameMemory.h says what the values mean. Flags are not used.

int acquire(Fg_Struct* record, unsigned dmaIndex, std::int64_t pictures, int flags, dma_mem* memory);
int stopAcquire(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory, int flags);
std::int64_t lastPicture(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory);
std::int64_t lastPictureBlocking(Fg_Struct* record, std::int64_t picture, unsigned dmaIndex, int timeout,
                                 dma_mem* memory);
std::int64_t acquisitionStatus(Fg_Struct* record, int parameter, std::int64_t data, unsigned dmaIndex,
                               dma_mem* memory);

/// Keeps `code` as the handle's last error and returns it.
int answer(Fg_Struct* record, int code);

}  // namespace virtualboard

#pragma GCC visibility pop
