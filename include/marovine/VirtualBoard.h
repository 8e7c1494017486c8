/**
 * The control of virtual boards for programs in C, and for all that can call C: what a host gets from its
 * machine, and what a developer can see and do that a real board does not offer. Control.h is the same for
 * C++.
 *
 * Every function that answers an int answers 0, or a negative code of BoardCodes.h; VirtualBoardLastError
 * then says in words what was wrong. Any thread may call any function. The codes that all may answer: -31011
 * for a board that is not (or no longer) in the machine, -31007 for a pointer that must not be null, -31020
 * when there is no memory. What a refused call was to change stays as it was.
 *
 * Records begin with their size: set it to the sizeof of the record before the call. Where the board fills a
 * record it writes no further, and the size says afterwards how much of it this version knows. Where it reads
 * one, fields that this version does not know must be 0 (-31033).
 *
 * Texts and arrays that leave the library are the caller's until VirtualBoardFree; those in a record that a
 * callback is given are there for the call. What the caller hands in is copied.
 *
 * Names of parameters are full names: "Device1_Process0_Trigger_Trigger_ExsyncPeriod" for one of the design,
 * "FG_TIMEOUT" and so on for the runtime's own.
 */
#ifndef VIRTUALBOARD_VIRTUALBOARD_H
#define VIRTUALBOARD_VIRTUALBOARD_H

#include <stddef.h>
#include <stdint.h>

#include "marovine/BoardCodes.h"
#include "marovine/marovine.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** Puts a new board into the machine; it holds no design yet. Null when there is no memory for it. */
GXdevice* VirtualBoardInsert(void);
/** The same with a clock that stands at 0, so that every run on it is like the other. */
GXdevice* VirtualBoardInsertStanding(void);
/**
 * Takes a board out again and ends its acquisition and subscriptions; null and boards already taken out are
 * ignored. No applet may still be open on it.
 */
void VirtualBoardRemove(GXdevice* board);

/** What was wrong with this thread's last call of a function here; empty when nothing was. Never null. */
const char* VirtualBoardLastError(void);
/** Frees a text, an array or a list of writes that was handed out; null is allowed. */
void VirtualBoardFree(const void* block);

/* ---- the board's clock ---- */

enum VirtualBoardClockMode {
    VIRTUAL_BOARD_REAL_TIME = 0,          /**< with the machine's time */
    VIRTUAL_BOARD_MANUAL = 1,             /**< only by VirtualBoardAdvanceClock */
    VIRTUAL_BOARD_AS_FAST_AS_POSSIBLE = 2 /**< from picture to picture as the host asks for them */
};

/** How the clock runs; in real time at first. -31032 for another mode. */
int VirtualBoardSetClockMode(GXdevice* board, int mode);
/** Moves the clock forward by 0 to 1e9 seconds; -31032 for anything else. It stops after 4e9 seconds in all.
 */
int VirtualBoardAdvanceClock(GXdevice* board, double seconds);
/** Board time: nanoseconds since the board was inserted. */
int VirtualBoardTime(GXdevice* board, int64_t* time);

/**
 * What Fg_getLastPicNumberBlockingEx does, with a finer timeout: waits until picture `number` of the
 * acquisition into `memory` is there and gives the number of the last one. -31027 when it did not come in
 * time, and the other codes of that function.
 */
int VirtualBoardWaitForPicture(GXdevice* board, dma_mem* memory, int64_t number, uint32_t milliseconds,
                               int64_t* last);

/* ---- what stands around the board; a running acquisition follows from its next picture on ---- */

/**
 * What lies on the belt, endlessly repeated: `height` rows of `width` pixels without padding, each blue,
 * green, red. `fieldWidth` is the number of sensor pixels over which the optics spread it; 0 shows one scene
 * pixel per sensor pixel. -31032 for an empty scene, and for a field of more than 65536 pixels in width or
 * 2^28 in all.
 */
int VirtualBoardSetScene(GXdevice* board, const uint8_t* pixels, uint32_t width, uint32_t height,
                         uint32_t fieldWidth);
/** Lays the built-in chart on the belt, as at first. */
int VirtualBoardShowTestChart(GXdevice* board);

/** A moment of a speed profile. Two at one time make the speed jump. */
typedef struct VirtualBoardSpeedPoint_s {
    double at;    /**< s of board time since the belt was given to the board; ascending in a profile */
    double speed; /**< mm/s; negative: backwards */
} VirtualBoardSpeedPoint;

/** The belt below the camera. */
typedef struct VirtualBoardBelt_s {
    uint32_t size;        /**< of this record */
    uint32_t points;      /**< in the profile */
    double speed;         /**< mm/s, where there is no profile */
    double objectPixel;   /**< mm of belt that one sensor pixel sees */
    double encoderPitch;  /**< mm of belt per encoder pulse */
    double profilePeriod; /**< s after which the profile begins anew; 0: its last speed stays */
    const VirtualBoardSpeedPoint* profile; /**< speed over time, even between two points; may be null */
} VirtualBoardBelt;

/** The belt that a board has at first. */
int VirtualBoardDefaultBelt(VirtualBoardBelt* belt);
/** Puts the camera above another belt. -31032 for a belt that cannot be. */
int VirtualBoardSetBelt(GXdevice* board, const VirtualBoardBelt* belt);

/** A point of a camera's answer to light. */
typedef struct VirtualBoardResponsePoint_s {
    double light;  /**< share of the light that makes a pixel white; ascending in a response */
    double output; /**< share of white that the camera gives for it, 0 to 1 */
} VirtualBoardResponsePoint;

/** A pixel of the sensor that always gives the same value. */
typedef struct VirtualBoardStuckPixel_s {
    uint32_t column;
    uint32_t value; /**< 0 to 255 */
} VirtualBoardStuckPixel;

/** The line-scan camera, with what keeps it from showing the light as it is. World.h says more. */
typedef struct VirtualBoardCamera_s {
    uint32_t size;        /**< of this record */
    uint32_t sensorWidth; /**< pixels, 1 to 16384; beyond them a line is black */
    uint32_t phase;       /**< Bayer phase of sensor pixel 0 in even rows, as FG_BAYERINIT has it */
    uint32_t hasReadout;  /**< 0: it reads out as the tap geometry sorter expects; the next three: unused */
    uint32_t taps;        /**< equal parts of the line, 1 to 10 */
    uint32_t pixelsPerClock; /**< neighbouring pixels of a tap at a time, 1 to 10 */
    uint32_t fromFarEnd;     /**< bit t: tap t begins at the far end of its part */
    uint32_t motionBlur;     /**< not 0: a pixel sees all of the belt that passes during its exposure */
    double neutralExposure;  /**< microseconds that show the scene's colours as they are */
    double darkLevel;        /**< grey values without any light, 0 to 255 */
    double readNoise;        /**< standard deviation in grey values, 0 to 255 */
    double fullWell;         /**< electrons that make a pixel white; 0: no shot noise */
    double fixedPattern;     /**< standard deviation of the pixels' sensitivities, as a share; 0 to 1 */
    double vignetting;       /**< share of the light that is lost at both ends of the sensor, 0 to 1 */
    uint64_t seed;           /**< all that is random follows from it */
    uint32_t responsePoints;
    uint32_t stuckPixels;
    const VirtualBoardResponsePoint* response; /**< may be null: output is light */
    const VirtualBoardStuckPixel* stuck;       /**< may be null */
} VirtualBoardCamera;

/** The camera that a board has at first. */
int VirtualBoardDefaultCamera(VirtualBoardCamera* camera);
/** Puts another camera before the board. -31032 for a camera that cannot be. */
int VirtualBoardSetCamera(GXdevice* board, const VirtualBoardCamera* camera);

/** The light on the belt. */
typedef struct VirtualBoardLight_s {
    uint32_t size;     /**< of this record */
    uint32_t reserved; /**< 0 */
    double level;      /**< 1 shows the scene's colours as they are */
    double red;        /**< share of red in it, 0 to 1 */
    double green;
    double blue;
    double flashShare; /**< share of it that only the flash gives, 0 to 1 */
} VirtualBoardLight;

/** The light that a board has at first. */
int VirtualBoardDefaultLight(VirtualBoardLight* light);
/** Changes the light. -31032 for a light that cannot be. */
int VirtualBoardSetLight(GXdevice* board, const VirtualBoardLight* light);

/** One thing that is wrong with a world file. */
typedef struct VirtualBoardWorldFault_s {
    uint32_t size;                               /**< of this record */
    uint32_t line;                               /**< of the file, from 1; 0: of the file as a whole */
    const char* path;                            /**< of the value: "parts[0].spacing"; may be empty */
    const char* reason;                          /**< what is wrong */
    const struct VirtualBoardWorldFault_s* next; /**< null at the last */
} VirtualBoardWorldFault;

/**
 * Changes everything that stands around the board at once: belt, encoder, inputs, parts, camera and light, as
 * a world file says them (docs/WORLD.md). -31034 for a file that is none, which changes nothing;
 * VirtualBoardLastError then has a line for each fault. `faults` may be null, else it gets the faults one by
 * one, null without any: give the first to VirtualBoardFree.
 */
int VirtualBoardLoadWorld(GXdevice* board, const char* file, const VirtualBoardWorldFault** faults);
/** The same from the text of a world file; names of files in it are relative to `folder`. */
int VirtualBoardSetWorld(GXdevice* board, const char* json, const char* folder,
                         const VirtualBoardWorldFault** faults);

/** A part of a world, or a defect on it, as far as a picture shows it. The box is never empty. */
typedef struct VirtualBoardTruth_s {
    uint32_t size;                          /**< of this record */
    uint32_t isDefect;                      /**< 1: on the part that comes before it in the list */
    const char* name;                       /**< of the part; of a defect its kind: "spot" */
    int64_t number;                         /**< of the part in its stream, from 0 */
    uint32_t stream;                        /**< which of the file's `parts` it comes from */
    uint32_t complete;                      /**< whether the picture shows all of it */
    uint32_t left, top, width, height;      /**< pixels and rows of the picture */
    double severity;                        /**< of a defect, above 0, at most 1 */
    const struct VirtualBoardTruth_s* next; /**< null at the last */
} VirtualBoardTruth;

/**
 * What one of the last 4096 pictures shows of the world that it was taken in, null when that is nothing: give
 * the first record to VirtualBoardFree. `width` and `height`, of the picture, may be null. -31030 for another
 * picture; -31021, -31024 for a memory that the acquisition does not use.
 */
int VirtualBoardPictureTruth(GXdevice* board, dma_mem* memory, int64_t number, uint32_t* width,
                             uint32_t* height, const VirtualBoardTruth** truth);
/** The same as JSON, for VirtualBoardFree. */
int VirtualBoardPictureTruthJson(GXdevice* board, dma_mem* memory, int64_t number, const char** json);

/**
 * Threads that render a large picture, from the next acquisition on; 0, as at first: one for each core that
 * the process may use. Pictures look the same and come in order, whatever their number.
 */
int VirtualBoardSetRenderThreads(GXdevice* board, uint32_t threads);

/** How the shaft encoder's two tracks reach the board, and what it gets wrong. */
typedef struct VirtualBoardEncoder_s {
    uint32_t size;     /**< of this record */
    int32_t inputA;    /**< that track A is wired to; -1: whatever input the line trigger listens to */
    int32_t inputB;    /**< the same for track B; not the input of track A */
    uint32_t reserved; /**< 0 */
    double jitter;     /**< standard deviation of an edge's place, in pitches; 0 to 0.1 */
    double missing;    /**< share of the pulses that the encoder leaves out; 0 to 1 */
    uint64_t seed;     /**< its faults follow from it alone */
} VirtualBoardEncoder;

/** The encoder that a board has at first: without faults. */
int VirtualBoardDefaultEncoder(VirtualBoardEncoder* encoder);
/** Puts another encoder on the belt's drive. -31032 for one that cannot be. */
int VirtualBoardSetEncoder(GXdevice* board, const VirtualBoardEncoder* encoder);

/** The level at an input: 0 to 7 are the inputs, 8 to 11 the front inputs; -31032 for another. */
int VirtualBoardSetInput(GXdevice* board, uint32_t input, int high);

/** A change of a signal's level. Times count in ns from the moment that the signal is given to the board. */
typedef struct VirtualBoardEdge_s {
    int64_t at;        /**< ns, ascending in a signal */
    uint32_t high;     /**< 1: the level from then on is high */
    uint32_t reserved; /**< 0 */
} VirtualBoardEdge;

/** Pulses at a fixed period, above the level that a signal's edges say. */
typedef struct VirtualBoardTrain_s {
    int64_t first;  /**< ns; rising edge of the first pulse */
    int64_t period; /**< ns; more than `width` */
    int64_t width;  /**< ns at high level */
    uint64_t count; /**< of pulses; 0: endless */
} VirtualBoardTrain;

/** What an input sees over time. */
typedef struct VirtualBoardSignal_s {
    uint32_t size;                   /**< of this record */
    uint32_t high;                   /**< 1: the level before the first edge is high */
    uint64_t edgeCount;              /**< edges */
    uint64_t trainCount;             /**< trains */
    const VirtualBoardEdge* edges;   /**< may be null */
    const VirtualBoardTrain* trains; /**< may be null */
} VirtualBoardSignal;

/** Plays a signal to an input. -31032 for another input, and for edges or trains that cannot be. */
int VirtualBoardPlayInput(GXdevice* board, uint32_t input, const VirtualBoardSignal* signal);

/* ---- values; -31002 for a name that the design lacks ---- */

/** A value of a parameter. */
typedef struct VirtualBoardValue_s {
    uint32_t size;            /**< of this record */
    uint32_t type;            /**< FG_TYPE_INT32, _UINT32, _INT64, _UINT64, _DOUBLE, _TEXT or _FIELD_ACCESS */
    int64_t integer;          /**< of the integer types; the bits of an unsigned one */
    double real;              /**< of FG_TYPE_DOUBLE */
    const char* text;         /**< of FG_TYPE_TEXT, else null */
    const uint32_t* elements; /**< of a field, else null */
    uint64_t count;           /**< elements of the field, or characters of the text */
} VirtualBoardValue;

/** Reads a parameter in its own type. Give `text` and `elements` to VirtualBoardFree. */
int VirtualBoardReadValue(GXdevice* board, const char* name, VirtualBoardValue* value);
/**
 * Sets a value past all range checks, the journal and the faults: also how read-outs such as temperature or
 * fill level are set. A forced read-out of an analyzer stays until the analyzers are cleared, one that
 * follows the acquisition until the board is opened anew. -31032 for a text, a field or a number where the
 * parameter is of another sort.
 */
int VirtualBoardForceValue(GXdevice* board, const char* name, const VirtualBoardValue* value);
/** The names of all parameters of the design in its order, a line for each. Give them to VirtualBoardFree. */
int VirtualBoardParameterNames(GXdevice* board, const char** names);

/* ---- journal of writes ---- */

/** A write that reached the runtime, accepted or refused. */
typedef struct VirtualBoardWrite_s {
    uint32_t size;                          /**< of this record */
    int32_t id;                             /**< the runtime's id */
    uint32_t type;                          /**< the type code of the call */
    int32_t result;                         /**< what the runtime answered: 0 or a negative code */
    uint32_t firstIndex;                    /**< first element of a field write, else 0 */
    uint32_t reserved;                      /**< 0 */
    const char* name;                       /**< full name; empty for an id that the design lacks */
    const VirtualBoardValue* value;         /**< what was written; for a field the elements of this write */
    const struct VirtualBoardWrite_s* next; /**< the write after this one; null at the last */
} VirtualBoardWrite;

typedef void (*VirtualBoardWriteWatcher)(const VirtualBoardWrite* write, void* context);
/** Told once when a callback is called no more, or was refused, so that its context can go. */
typedef void (*VirtualBoardRelease)(void* context);

/** Starts (or stops) keeping a journal of writes; a stopped journal costs a write nothing. */
int VirtualBoardRecordWrites(GXdevice* board, int on);
/** The journal so far, oldest first, null when it is empty; empties it. Give the first to VirtualBoardFree.
 */
int VirtualBoardTakeWrites(GXdevice* board, const VirtualBoardWrite** writes);
/**
 * Calls `watcher` at each write after it was carried out, in the thread that writes; null ends that.
 * `release` may be null. Should `watcher` throw, the write answers -31020.
 */
int VirtualBoardWatchWrites(GXdevice* board, VirtualBoardWriteWatcher watcher, void* context,
                            VirtualBoardRelease release);

/* ---- faults ---- */

/**
 * Makes every write (read) of one parameter fail with `code`; 0 ends that. -31002 for a name that the design
 * lacks; a board without design takes any name and heeds it once it has one.
 */
int VirtualBoardRefuseWrites(GXdevice* board, const char* name, int code);
int VirtualBoardRefuseReads(GXdevice* board, const char* name, int code);
/** Makes the n-th write (read) from now, 1 is the next one, whatever its parameter, fail once with `code`. */
int VirtualBoardRefuseNthWrite(GXdevice* board, uint32_t n, int code);
int VirtualBoardRefuseNthRead(GXdevice* board, uint32_t n, int code);
/** Ends all faults of this board. */
int VirtualBoardClearFaults(GXdevice* board);

/* ---- how the next opening behaves, on whichever board of this process ---- */

/** The design runtime refuses to load any design. */
int VirtualBoardRefuseDesign(int on);
/** The host runtime opens no handle and reports `code` as its last error. */
int VirtualBoardRefuseHandle(int on, int code);
/** Designs loaded from now on lack this parameter, event or register. */
int VirtualBoardHide(const char* name);
/** Ends all of these. */
int VirtualBoardClearOpeningFaults(void);

/* ---- events ---- */

/**
 * An event of the design that happened. The payload, by the sort of event:
 *
 *     an edge at an input          the level after it
 *     start and end of a frame     number of the frame in the acquisition, from 0
 *     start and end of a line      number of the line in the acquisition, from 0
 *     custom signal event          1
 *     overflow                     pictures lost in the acquisition, this one too
 *     raised by hand               what was given there
 */
typedef struct VirtualBoardEvent_s {
    uint32_t size;   /**< of this record */
    uint32_t number; /**< of the event, as HapGetEvent counts them; its mask is 1 shifted left by it */
    int64_t time;    /**< ns of the board's clock at which it happened */
    int64_t count;   /**< how often it has happened since the subscription, lost ones too; from 1 */
    int64_t payload;
    int64_t lost; /**< events of this subscription lost between the one before and this one */
} VirtualBoardEvent;

/** A subscription to events. It lasts until VirtualBoardUnsubscribe, though nothing comes once its board is
 * gone. */
typedef struct VirtualBoardSubscription_s VirtualBoardSubscription;
typedef void (*VirtualBoardEventCallback)(const VirtualBoardEvent* event, void* context);

/** Number of an event by the design's name for it; -31035 when it has none of that name. */
int VirtualBoardEventNumber(GXdevice* board, const char* name, uint32_t* number);
/**
 * Collects from now on the events of a mask, as Fg_getEventMask gives them, several joined by "or". Up to
 * `room` events wait, at least 1; while there is no room further ones are lost and counted.
 */
int VirtualBoardSubscribe(GXdevice* board, uint64_t mask, uint32_t room,
                          VirtualBoardSubscription** subscription);
/**
 * The next event, waited for at most `seconds` of the machine's time, without end where they are infinite. 0;
 * -31027 when none came in time; -31036 when the subscription has ended, has a callback or never was; -31032
 * for a negative time. A board whose clock does not run in real time has events when its clock is moved.
 */
int VirtualBoardWaitEvent(VirtualBoardSubscription* subscription, double seconds, VirtualBoardEvent* event);
/**
 * Calls `callback` with each event instead, from a thread of its own. `release` may be null. Should
 * `callback` throw, it gets no more events.
 */
int VirtualBoardOnEvents(GXdevice* board, uint64_t mask, uint32_t room, VirtualBoardEventCallback callback,
                         void* context, VirtualBoardRelease release, VirtualBoardSubscription** subscription);
/**
 * Ends a subscription. When this returns no callback is under way and none will be, unless it is a callback
 * of this very subscription that calls it. Null is allowed; -31036 when there is none.
 */
int VirtualBoardUnsubscribe(VirtualBoardSubscription* subscription);
/** Lets an event happen now, such as an alarm that nothing on the board brings about. */
int VirtualBoardRaiseEvent(GXdevice* board, uint32_t number, int64_t payload);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
