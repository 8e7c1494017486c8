/*
 * The smallest host: loads the applet, opens it on a virtual board, sets the width, reads it back.
 *
 *     cc -I. examples/host.c -Lbuild/release -lvirtualboard -ldl -Wl,-rpath,build/release -o host
 *     ./host build/release/libMarovine.so
 */
#include <dlfcn.h>
#include <stdio.h>

#include "marovine/marovine.h"
#include "marovine/VirtualBoard.h"

/* A real host gets the board device from its own driver; here it is a virtual one. */

typedef void* (*EntryFunction)(GXdevice*, int*, int);
typedef int (*IdFunction)(Fg_Struct*, const char*);
typedef int (*SetFunction)(Fg_Struct*, int, const void*, int, enum FgParamTypes);
typedef int (*GetFunction)(Fg_Struct*, int, void*, int, enum FgParamTypes);
typedef int (*FreeFunction)(Fg_Struct*);

static int useApplet(void* library, GXdevice* board) {
    EntryFunction entry;
    IdFunction idByName;
    SetFunction set;
    GetFunction get;
    FreeFunction freeGrabber;
    Fg_Struct record = {NULL};
    uint32_t width = 2048;
    int error = 0;
    int id;
    int result;

    /* ISO C knows no conversion from object to function pointers; POSIX asks for this one. */
    *(void**)&entry = dlsym(library, "Std_entry");
    *(void**)&idByName = dlsym(library, "Fg_getParameterIdByName");
    *(void**)&set = dlsym(library, "Fg_setParameterWithType");
    *(void**)&get = dlsym(library, "Fg_getParameterWithType");
    *(void**)&freeGrabber = dlsym(library, "Fg_FreeGrabber");

    record.instance = entry(board, &error, 0);
    if (record.instance == NULL) {
        fprintf(stderr, "the applet does not open: code %d\n", error);
        return 1;
    }
    id = idByName(&record, "FG_WIDTH");
    result = set(&record, id, &width, 0, FG_TYPE_UINT32);
    if (result == 0) result = get(&record, id, &width, 0, FG_TYPE_UINT32);
    if (result == 0)
        printf("FG_WIDTH is %u\n", width);
    else
        fprintf(stderr, "FG_WIDTH was refused: code %d\n", result);
    freeGrabber(&record);
    return result == 0 ? 0 : 1;
}

int main(int argc, char** argv) {
    void* library = dlopen(argc > 1 ? argv[1] : "libMarovine.so", RTLD_NOW);
    GXdevice* board;
    int status;

    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    board = VirtualBoardInsert();
    status = useApplet(library, board);
    VirtualBoardRemove(board);
    dlclose(library);
    return status;
}
