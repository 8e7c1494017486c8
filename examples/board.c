/*
 * A host that controls its virtual board: slows the belt, makes a write fail, looks at what the applet writes
 * and waits for the event of an input.
 *
 *     cc -Iinclude examples/board.c -Lbuild/release -lvirtualboard -ldl -Wl,-rpath,$PWD/build/release -o
 * board
 *     ./board build/release/libMarovine.so
 */
#include <dlfcn.h>
#include <stdio.h>

#include "marovine/VirtualBoard.h"
#include "marovine/marovine.h"

typedef void* (*EntryFunction)(GXdevice*, int*, int);
typedef int (*IdFunction)(Fg_Struct*, const char*);
typedef int (*SetFunction)(Fg_Struct*, int, const void*, int, enum FgParamTypes);
typedef uint64_t (*MaskFunction)(Fg_Struct*, const char*);
typedef int (*FreeFunction)(Fg_Struct*);

/* ISO C knows no conversion from object to function pointers; POSIX asks for this one. */
#define FIND(function, library, name) (*(void**)&(function) = dlsym(library, name))

/* Says what a function of the board answers. */
static int told(const char* what, int code) {
    if (code != 0) fprintf(stderr, "%s: code %d, %s\n", what, code, VirtualBoardLastError());
    return code;
}

static int slowBelt(GXdevice* board) {
    VirtualBoardBelt belt;

    belt.size = sizeof(belt);
    if (told("the belt", VirtualBoardDefaultBelt(&belt)) != 0) return 1;
    belt.speed /= 2;
    return told("the belt", VirtualBoardSetBelt(board, &belt));
}

/* What the applet writes to the design when a host sets a width. */
static int watchWidth(GXdevice* board, void* library, Fg_Struct* record) {
    const char* const refused = "Device1_Process0_Buffer_0_DRAM_A_0_XLength";
    const VirtualBoardWrite* writes = NULL;
    const VirtualBoardWrite* write;
    uint32_t width = 2048;
    IdFunction idByName;
    SetFunction set;
    int result;

    FIND(idByName, library, "Fg_getParameterIdByName");
    FIND(set, library, "Fg_setParameterWithType");
    if (told("the fault", VirtualBoardRefuseWrites(board, refused, -42)) != 0) return 1;
    if (told("the journal", VirtualBoardRecordWrites(board, 1)) != 0) return 1;
    result = set(record, idByName(record, "FG_WIDTH"), &width, 0, FG_TYPE_UINT32);
    printf("FG_WIDTH answers %d\n", result);
    if (told("the journal", VirtualBoardTakeWrites(board, &writes)) != 0) return 1;
    for (write = writes; write != NULL; write = write->next)
        printf("%s = %ld: %d\n", write->name, (long)write->value->integer, (int)write->result);
    VirtualBoardFree(writes);
    return told("the fault", VirtualBoardClearFaults(board));
}

static int waitForInput(GXdevice* board, void* library, Fg_Struct* record) {
    VirtualBoardSubscription* subscription = NULL;
    VirtualBoardEvent event;
    MaskFunction eventMask;
    int result;

    FIND(eventMask, library, "Fg_getEventMask");
    result =
        told("the subscription",
             VirtualBoardSubscribe(board, eventMask(record, "FG_TRIGGER_INPUT3_RISING"), 8, &subscription));
    if (result == 0) result = told("the clock", VirtualBoardSetClockMode(board, VIRTUAL_BOARD_MANUAL));
    if (result == 0) result = told("the clock", VirtualBoardAdvanceClock(board, 0.25));
    if (result == 0) result = told("the input", VirtualBoardSetInput(board, 3, 1));
    if (result == 0) result = told("the clock", VirtualBoardAdvanceClock(board, 0.25));
    event.size = sizeof(event);
    if (result == 0) result = told("the event", VirtualBoardWaitEvent(subscription, 1, &event));
    if (result == 0) printf("input 3 rose, event %ld\n", (long)event.count);
    if (result == 0 && VirtualBoardWaitEvent(subscription, 0, &event) == kTimeout)
        printf("no other: %s\n", VirtualBoardLastError());
    return VirtualBoardUnsubscribe(subscription) | result;
}

int main(int argc, char** argv) {
    void* library = dlopen(argc > 1 ? argv[1] : "libMarovine.so", RTLD_NOW);
    Fg_Struct record = {NULL};
    EntryFunction entry;
    FreeFunction freeGrabber;
    GXdevice* board;
    int failed = 1;
    int error = 0;

    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    FIND(entry, library, "Std_entry");
    FIND(freeGrabber, library, "Fg_FreeGrabber");
    board = VirtualBoardInsert();
    record.instance = entry(board, &error, 0);
    if (record.instance == NULL) {
        fprintf(stderr, "the applet does not open: code %d\n", error);
    } else {
        failed =
            slowBelt(board) || watchWidth(board, library, &record) || waitForInput(board, library, &record);
        freeGrabber(&record);
    }
    VirtualBoardRemove(board);
    dlclose(library);
    return failed;
}
