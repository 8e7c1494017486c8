/**
 * The interface of libMarovine.so: the functions it exports, and the records that host and applet share.
 *
 * Usable from C90 and C++11 on. Every function takes the host's `Fg_Struct` record, whose first field is the
 * applet instance that `Std_entry` returned; without one the answer is -2001, null or an event mask of 0.
 * Results: 0 or positive for success, a negative code otherwise; marovine_constants.h names them. Each call
 * on an instance keeps its code for `Fg_getLastErrorNumber` unless its description says otherwise.
 *
 * Threads: any thread may call anything on an open instance, except that nothing else may run on it during
 * `Std_entry` and `Fg_FreeGrabber`. Typed sets and gets, saves and loads of one instance wait for each other;
 * the other calls do not wait. With several threads the last code is that of whoever stored it last. From a
 * callback of the host runtime within a typed set or get, the same thread may save, load and make the calls
 * that do not wait; another typed set or get there is an error and throws `std::logic_error`.
 *
 * Exceptions: when memory runs out, `Std_entry` gives null with the code -2031 and the other calls answer
 * -2031 (null, or a mask of 0, where the result is no code) and keep it. Only the typed set, the typed get
 * and the load pass exceptions on, so that a host in C had better keep memory in hand for them. The lock is
 * then free and the value that was being set is the old one; what a load had taken over stays. The next call
 * works in every case.
 */
#ifndef MAROVINE_H
#define MAROVINE_H

#include <stddef.h>
#include <stdint.h>

#ifndef MAROVINE_NO_CONSTANTS
#include "marovine_constants.h"
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** How a value travels through an untyped pointer. */
#ifdef __cplusplus
enum FgParamTypes : int32_t {
#else
typedef enum FgParamTypes {
#endif
    FG_TYPE_INT32 = 1,  /**< signed 32-bit integer */
    FG_TYPE_UINT32 = 2, /**< unsigned 32-bit integer */
    FG_TYPE_INT64 = 3,  /**< signed 64-bit integer */
    FG_TYPE_UINT64 = 4, /**< unsigned 64-bit integer */
    FG_TYPE_DOUBLE = 5, /**< IEEE double */
    FG_TYPE_TEXT = 6,   /**< NUL-terminated text in a buffer of the caller's */
    FG_TYPE_TEXT_POINTER =
        22, /**< text allocated by the callee, given back with Fg_freeParameterStringWithType */
    FG_TYPE_FIELD_ACCESS = 4096, /**< a `FieldParameterAccess` record: a run of table elements */
    FG_TYPE_FIELD_INT = 4098     /**< a `FieldParameterInt_s` record: one table element */
#ifdef __cplusplus
};
#else
} FgParamTypes;
#endif

/** The host's handle record. The applet reads and writes the first field only. */
typedef struct Fg_Struct_s {
    void* instance; /**< what `Std_entry` returned; null after `Fg_FreeGrabber` */
} Fg_Struct;

typedef struct GXdevice_s GXdevice;           /**< a board, opened by the host */
typedef struct fpga_design_s fpga_design;     /**< a hardware design, loaded by the design runtime */
typedef struct dma_mem_s dma_mem;             /**< the host's picture memory; passed through unread */
typedef struct ShadingMaster_s ShadingMaster; /**< shading state; this applet offers no shading */

/** One 32-bit element of a table with its index. */
typedef struct FieldParameterInt_s {
    uint32_t value;
    uint32_t index;
} FieldParameterInt;

/** One double element of a table with its index. */
typedef struct FieldParameterDouble_s {
    double value;
    uint32_t index;
} FieldParameterDouble;

/** A run of table elements; `values` points to `count` elements of the width that `type` says. */
typedef struct FieldParameterAccess_s {
    int32_t type; /**< an `FgParamTypes` code: 1 and 2 are 32 bits wide, 3 and 4 are 64, 5 is a double */
    uint32_t start;
    uint32_t count;
    void* values;
} FieldParameterAccess;

/** What a node of the parameter description tree describes. */
enum {
    FG_KIND_GROUP = 0,
    FG_KIND_UINT32 = 1,
    FG_KIND_ENUMERATION = 3,
    FG_KIND_TEXT = 5,
    FG_KIND_DOUBLE = 6,
    FG_KIND_UINT32_FIELD = 7,
    FG_KIND_DOUBLE_FIELD = 8,
    FG_KIND_UINT64 = 9,
    FG_KIND_INT32 = 11,
    FG_KIND_INT64 = 12,
    FG_KIND_INT32_FIELD = 13
};

/** The part of a node that depends on its kind. */
typedef union RegisterInfoValue_u {
    struct {
        int32_t childCount;
        struct RegisterInfo_s** children;
        uint32_t nextChildIndex;
    } group;
    struct {
        uint32_t minimum, maximum, increment;
    } uint32;
    struct {
        int32_t minimum, maximum, increment;
    } int32;
    struct {
        uint64_t minimum, maximum, increment;
    } uint64;
    struct {
        int64_t minimum, maximum, increment;
    } int64;
    struct {
        double minimum, maximum, increment;
    } real;
    struct {
        int32_t count;
        char** displayNames;
        int32_t* values;
        void* unused;
        char** constantNames;
    } enumeration;
    struct {
        char* attribute; /**< a file name pattern such as "*.lut", or an empty text */
    } text;
    struct {
        uint32_t elements, minimum, maximum, increment;
    } uint32Field;
    struct {
        uint32_t elements;
        int32_t minimum, maximum, increment;
    } int32Field;
    struct {
        uint32_t elements;
        double minimum, maximum, increment;
    } realField;
} RegisterInfoValue;

/**
 * One node of the parameter description tree: a group or a parameter. 128 bytes, read in place by the host.
 *
 * Sets change the maximum (and nothing else of the range) and the access flags of some parameters, each in
 * one aligned atomic store. Read these fields with atomic loads of the same width (`__atomic_load_n` in C,
 * `std::atomic_ref` in C++) while another thread may set: plain loads would be a data race.
 */
typedef struct RegisterInfo_s {
    uint32_t kind;  /**< an FG_KIND_ value */
    uint32_t index; /**< position among the parent's children */
    char* displayName;
    char* name;          /**< the parameter's SDK name; null for groups */
    int32_t accessFlags; /**< bit 0 readable, bit 1 writable */
    int32_t secondFlags;
    int32_t publish; /**< 0 keeps the parameter out of the XML description */
    int32_t address; /**< the parameter's id */
    RegisterInfoValue value;
    struct RegisterInfo_s* next;     /**< next top-level group; the list starts with the newest */
    struct RegisterInfo_s* previous; /**< previous top-level group */
    uint32_t depth;                  /**< of a group: 0 at the top */
    char* parentName;                /**< of a group below the top: its parent's display name */
    char* unit;                      /**< ISO-8859-1 text; null or empty when the value has no unit */
    int32_t process;
} RegisterInfo;

#pragma GCC visibility push(default)

/* ---- life of an instance ---- */

/**
 * Opens the applet on a board: loads the hardware design, opens it through the host runtime and, unless bit
 * 0 of `flags` is set, writes every default. `error` may be null; it receives 0, -2031 (host runtime cannot
 * be used, or memory ran out), -100 (design cannot be loaded) or the runtime's own code. Returns the instance
 * or null.
 */
void* Std_entry(GXdevice* device, int* error, int flags);

/** Ends the instance and clears the record's field. Returns the runtime's result, or -2001 without instance.
 */
int Fg_FreeGrabber(Fg_Struct* record);

/**
 * Answers questions about the applet library itself; needs no instance. `selector` is a MAROVINE_INFO_ value,
 * which says what `p` and `q` receive; either may be null. 0 or the asked number; -2130 for an unknown
 * selector, -2070 for an index or a name that does not exist.
 */
int Info(int selector, unsigned int a, unsigned int b, void* p, void** q);

/* ---- parameters ---- */

/** How many parameters can be listed; more when direct access is switched on. Keeps no code. */
int Fg_getNrOfParameter(Fg_Struct* record);
/** The name under a list index from 0 on, owned by the instance; null, with the code -2070, past the list. */
const char* Fg_getParameterName(Fg_Struct* record, int index);
/** The id under a list index; -2070 past the list and for names that cannot be looked up. */
int Fg_getParameterId(Fg_Struct* record, int index);
/** The id of exactly this name; -2070 for a name that is unknown, empty or null. */
int Fg_getParameterIdByName(Fg_Struct* record, const char* name);
/**
 * Sets a parameter; `value` points to a value of the parameter's own type (a text: the text itself). `type`
 * counts for lookup tables and for ids above 2000000. `dmaIndex` is 0. Results: 0, or -2070 (unknown id,
 * wrong DMA index, null value), -12 (read-only), -6000 (out of range), -7080 (wrong step), another code of
 * the parameter's or the host runtime's. A refused value leaves the parameter as it was. When it is the
 * design that refuses one of several writes, those before it stay, and so may sizes and gaps in effect and
 * access flags that followed from the value: set the parameter again, to a value that is accepted.
 */
int Fg_setParameterWithType(Fg_Struct* record, int id, const void* value, int dmaIndex,
                            enum FgParamTypes type);
/**
 * Reads a parameter into `value`, in the parameter's own type. A text goes into the caller's buffer, which
 * must be large enough; with FG_TYPE_TEXT_POINTER `value` receives the address of a copy. FG_TYPE_INT64
 * and FG_TYPE_UINT64 clear 8 bytes at `value` first, whatever the parameter and even if it is then refused;
 * they are not for texts, nor for locations of 4 bytes. Results: 0, or -2070 (unknown id, wrong DMA index,
 * null value), another code of the parameter's or the host runtime's.
 */
int Fg_getParameterWithType(Fg_Struct* record, int id, void* value, int dmaIndex, enum FgParamTypes type);
/**
 * Gives back a text that a get with FG_TYPE_TEXT_POINTER handed out; `value` is the text's address. 0, -2070
 * for a text that is not out, or -2078 for another type. Of these only -2070 is kept as the last code: 0 and
 * -2078 leave it alone. For ids above 2000000 the runtime's result is returned and kept; for parameters
 * whose texts the runtime hands out itself it is returned and not kept. Texts never given back are freed
 * with the instance.
 */
int Fg_freeParameterStringWithType(Fg_Struct* record, int id, void* value, int dmaIndex,
                                   enum FgParamTypes type);
/** The first node of the description tree of a port; null when there is none. Keeps no code. */
RegisterInfo* Fg_getParameterInfo(Fg_Struct* record, int port);
/**
 * Copies the XML description of a port into a buffer of `*size` bytes and stores the size it needs, with its
 * terminating zero, in `*size`; with a null buffer only stores the size. 0, -500 for a buffer that is too
 * small (the size then stays), -2075 for a port without description, -2070 for a null size. The document
 * shows the ranges of the moment: after a set in between, the size just asked for can be too small. Ask for
 * it again after -500.
 */
int Fg_getParameterInfoXML(Fg_Struct* record, int port, char* buffer, size_t* size);
/**
 * Writes the configuration to a file whose name holds ".mcf", in place of what it held. 0, or -5001 when the
 * file cannot be created. A parameter that cannot be read is left out, and a full disk goes unnoticed. The
 * format is a line "key=value;" or "key='text';" for each: a text with an apostrophe, '=', ';' or a line end
 * does not come back whole, nor does a line of more than 255 characters with its end. Tables set entry by
 * entry have no place in it.
 */
int Fg_saveConfig(Fg_Struct* record, const char* fileName);
/**
 * Reads a configuration and sets what it holds; a value that a parameter refuses is skipped. 0, -2076 (with
 * the last code -5000) when there is no file of that name or its name does not hold ".mcf", or -5000 when it
 * is none of this applet's or a key is missing; keys before a missing one are then already taken over. A
 * value that is skipped reads back as the file's, while the design keeps the old one. Lines are read in
 * pieces of 255 characters.
 */
int Fg_loadConfig(Fg_Struct* record, const char* fileName);
/** The code that the last call kept. */
int Fg_getLastErrorNumber(Fg_Struct* record);
/** The mask, one bit, of the event of exactly this name; 0, with the code -2070, when there is none. */
uint64_t Fg_getEventMask(Fg_Struct* record, const char* name);
/** The name of the event of exactly this mask, owned by the instance; null, with the code -2070, for none. */
const char* Fg_getEventName(Fg_Struct* record, uint64_t mask);

/*
 * ---- acquisition, passed through to the host runtime ----
 *
 * Arguments and results are the runtime's own. -12 when the runtime lacks the function; after a negative
 * result the last code is the runtime's last error number.
 */

int Fg_getAppletId(Fg_Struct* record, void* reserved);
int64_t Fg_getStatusEx(Fg_Struct* record, int parameter, int64_t data, unsigned int dmaIndex,
                       dma_mem* memory);
int Fg_AcquireEx(Fg_Struct* record, unsigned int dmaIndex, int64_t pictures, int flags, dma_mem* memory);
int Fg_stopAcquireEx(Fg_Struct* record, unsigned int dmaIndex, dma_mem* memory, int flags);
int64_t Fg_getLastPicNumberEx(Fg_Struct* record, unsigned int dmaIndex, dma_mem* memory);
int64_t Fg_getLastPicNumberBlockingEx(Fg_Struct* record, int64_t picture, unsigned int dmaIndex, int timeout,
                                      dma_mem* memory);

/*
 * ---- shading, which this applet does not offer ----
 *
 * `Fg_AllocShading` gives null with the code -1, all others -2130.
 */

ShadingMaster* Fg_AllocShading(Fg_Struct* record, int set, int port);
int Fg_FreeShading(Fg_Struct* record, ShadingMaster* shading);
int Shad_SetSubValueLine(Fg_Struct* record, ShadingMaster* shading, int x, int channel, float value);
int Shad_SetMultValueLine(Fg_Struct* record, ShadingMaster* shading, int x, int channel, float value);
int Shad_SetFixedPatternNoiseLine(Fg_Struct* record, ShadingMaster* shading, int on, int x, int channel);
int Shad_GetMaxLine(Fg_Struct* record, ShadingMaster* shading);
int Shad_GetAccess(Fg_Struct* record, ShadingMaster* shading);
int Shad_FreeAccess(Fg_Struct* record, ShadingMaster* shading);
int Shad_WriteActLine(Fg_Struct* record, ShadingMaster* shading, int line);

#pragma GCC visibility pop

#ifdef __cplusplus
}  // extern "C"

static_assert(sizeof(RegisterInfo) == 128, "read in place by the host");
static_assert(offsetof(RegisterInfo, displayName) == 8 && offsetof(RegisterInfo, name) == 16,
              "read in place by the host");
static_assert(offsetof(RegisterInfo, accessFlags) == 24 && offsetof(RegisterInfo, secondFlags) == 28,
              "read in place by the host");
static_assert(offsetof(RegisterInfo, publish) == 32 && offsetof(RegisterInfo, address) == 36,
              "read in place by the host");
static_assert(offsetof(RegisterInfo, value) == 40 && offsetof(RegisterInfo, next) == 80,
              "read in place by the host");
static_assert(offsetof(RegisterInfo, value.group.children) == 48, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.group.nextChildIndex) == 56, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.uint32.maximum) == 44, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.uint32.increment) == 48, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.real.maximum) == 48, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.real.increment) == 56, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.enumeration.displayNames) == 48, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.enumeration.values) == 56, "read in place by the host");
static_assert(offsetof(RegisterInfo, value.enumeration.constantNames) == 72, "read in place by the host");
static_assert(offsetof(RegisterInfo, previous) == 88 && offsetof(RegisterInfo, depth) == 96,
              "read in place by the host");
static_assert(offsetof(RegisterInfo, parentName) == 104 && offsetof(RegisterInfo, unit) == 112,
              "read in place by the host");
static_assert(offsetof(RegisterInfo, process) == 120, "read in place by the host");
static_assert(sizeof(FieldParameterInt_s) == 8 && offsetof(FieldParameterInt_s, index) == 4,
              "read in place by the host");
static_assert(sizeof(FieldParameterDouble_s) == 16 && offsetof(FieldParameterDouble_s, index) == 8,
              "read in place by the host");
static_assert(sizeof(FieldParameterAccess) == 24 && offsetof(FieldParameterAccess, values) == 16,
              "read in place by the host");
#endif

#endif
