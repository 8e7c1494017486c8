/**
 * Boards for programs in C: what a host gets from its machine, the virtual board gives out here.
 * C++ programs find more in Control.h.
 */
#ifndef VIRTUALBOARD_VIRTUALBOARD_H
#define VIRTUALBOARD_VIRTUALBOARD_H

#include "marovine/marovine.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** Puts a new board into the machine. Null when there is no memory for it. */
GXdevice* VirtualBoardInsert(void);
/** Takes a board out again; null and boards already taken out are ignored. */
void VirtualBoardRemove(GXdevice* board);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
