/*
 * A host that takes pictures: opens the applet on a virtual board, takes three pictures of a moving belt and
 * writes the last one as PPM. It needs an installation only:
 *
 *     cc grab.c $(pkg-config --cflags --libs marovine) -o grab
 *     ./grab $(pkg-config --variable=applet marovine) belt.ppm
 */
#include <dlfcn.h>
#include <stdio.h>

#include "marovine/marovine.h"
#include "marovine/FrameMemory.h"
#include "marovine/VirtualBoard.h"

enum { WIDTH = 1024, HEIGHT = 256, BUFFERS = 4, PICTURES = 3, PATIENCE = 60 /* s */ };

typedef void* (*EntryFunction)(GXdevice*, int*, int);
typedef int (*IdFunction)(Fg_Struct*, const char*);
typedef int (*SetFunction)(Fg_Struct*, int, const void*, int, enum FgParamTypes);
typedef int (*AcquireFunction)(Fg_Struct*, unsigned int, int64_t, int, dma_mem*);
typedef int64_t (*WaitFunction)(Fg_Struct*, int64_t, unsigned int, int, dma_mem*);
typedef int (*StopFunction)(Fg_Struct*, unsigned int, dma_mem*, int);
typedef int (*FreeFunction)(Fg_Struct*);

/* ISO C knows no conversion from object to function pointers; POSIX asks for this one. */
#define FIND(function, library, name) (*(void**)&(function) = dlsym(library, name))

/* The board's rows are blue, green, red; the file's are red, green, blue. */
static int writePpm(const char* name, const FrameMemoryPicture* picture) {
    const size_t pixels = (size_t)picture->width * picture->height;
    size_t i;
    FILE* file = fopen(name, "wb");

    if (file == NULL) return -1;
    fprintf(file, "P6 %u %u 255\n", (unsigned)picture->width, (unsigned)picture->height);
    for (i = 0; i < pixels; ++i) {
        putc(picture->pixels[3 * i + 2], file);
        putc(picture->pixels[3 * i + 1], file);
        putc(picture->pixels[3 * i], file);
    }
    return ferror(file) | fclose(file);
}

/* Takes the pictures into a ring of buffers. Returns 0, or the code of what failed. */
static int grab(void* library, Fg_Struct* record, dma_mem* memory, const char* fileName) {
    AcquireFunction acquire;
    WaitFunction wait;
    StopFunction stop;
    FrameMemoryPicture picture;
    int64_t number;
    int result;

    FIND(acquire, library, "Fg_AcquireEx");
    FIND(wait, library, "Fg_getLastPicNumberBlockingEx");
    FIND(stop, library, "Fg_stopAcquireEx");

    result = acquire(record, 0, PICTURES, 0, memory);
    if (result < 0) return result;
    for (number = 1; number <= PICTURES && result >= 0; ++number) {
        /* Asking for a picture says that those before it are done with: the board may overwrite them. */
        const int64_t last = wait(record, number, 0, PATIENCE, memory);
        result = last < 0 ? (int)last : FrameMemoryRead(memory, number, &picture);
        if (result == 0)
            printf("picture %d: %u x %u\n", (int)number, (unsigned)picture.width, (unsigned)picture.height);
    }
    if (result == 0 && writePpm(fileName, &picture) != 0) perror(fileName);
    stop(record, 0, memory, 0);
    return result;
}

static int useApplet(void* library, GXdevice* board, const char* fileName) {
    const uint32_t width = WIDTH;
    const uint32_t height = HEIGHT;
    EntryFunction entry;
    IdFunction idByName;
    SetFunction set;
    FreeFunction freeGrabber;
    Fg_Struct record = {NULL};
    dma_mem* memory = FrameMemoryCreate(BUFFERS, (size_t)WIDTH * HEIGHT * 3);
    int result = 0;

    FIND(entry, library, "Std_entry");
    FIND(idByName, library, "Fg_getParameterIdByName");
    FIND(set, library, "Fg_setParameterWithType");
    FIND(freeGrabber, library, "Fg_FreeGrabber");

    record.instance = entry(board, &result, 0);
    if (record.instance != NULL) {
        result = set(&record, idByName(&record, "FG_WIDTH"), &width, 0, FG_TYPE_UINT32);
        if (result == 0) result = set(&record, idByName(&record, "FG_HEIGHT"), &height, 0, FG_TYPE_UINT32);
        if (result == 0) result = grab(library, &record, memory, fileName);
        freeGrabber(&record);
    }
    FrameMemoryFree(memory);
    return result;
}

int main(int argc, char** argv) {
    void* library = dlopen(argc > 1 ? argv[1] : "libMarovine.so", RTLD_NOW);
    GXdevice* board;
    int result;

    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    board = VirtualBoardInsert();
    result = useApplet(library, board, argc > 2 ? argv[2] : "belt.ppm");
    if (result != 0) fprintf(stderr, "no pictures: code %d\n", result);
    VirtualBoardRemove(board);
    dlclose(library);
    return result == 0 ? 0 : 1;
}
