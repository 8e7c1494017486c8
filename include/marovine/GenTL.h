/**
 * GenTL 1.5: the C interface between an image source (a producer, a shared library `.cti`) and the program
 * that uses it (the consumer). Marovine.cti exports these functions. All records are packed.
 *
 * Functions with a text or an information are asked twice: with a null buffer they only say the size, of
 * texts with the end. docs/GENTL.md says what this producer answers.
 */
#ifndef MAROVINE_GENTL_H
#define MAROVINE_GENTL_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What a call answers. */
typedef int32_t GC_ERROR;
enum {
    GC_ERR_SUCCESS = 0,
    GC_ERR_ERROR = -1001,
    GC_ERR_NOT_INITIALIZED = -1002,
    GC_ERR_NOT_IMPLEMENTED = -1003,
    GC_ERR_RESOURCE_IN_USE = -1004,
    GC_ERR_ACCESS_DENIED = -1005,
    GC_ERR_INVALID_HANDLE = -1006,
    GC_ERR_INVALID_ID = -1007,
    GC_ERR_NO_DATA = -1008,
    GC_ERR_INVALID_PARAMETER = -1009,
    GC_ERR_IO = -1010,
    GC_ERR_TIMEOUT = -1011,
    GC_ERR_ABORT = -1012,
    GC_ERR_INVALID_BUFFER = -1013,
    GC_ERR_NOT_AVAILABLE = -1014,
    GC_ERR_INVALID_ADDRESS = -1015,
    GC_ERR_BUFFER_TOO_SMALL = -1016,
    GC_ERR_INVALID_INDEX = -1017,
    GC_ERR_PARSING_CHUNK_DATA = -1018,
    GC_ERR_INVALID_VALUE = -1019,
    GC_ERR_RESOURCE_EXHAUSTED = -1020,
    GC_ERR_OUT_OF_MEMORY = -1021,
    GC_ERR_BUSY = -1022,
    GC_ERR_AMBIGUOUS = -1023
};

/** Type of an information. */
typedef int32_t INFO_DATATYPE;
enum {
    INFO_DATATYPE_UNKNOWN = 0,
    INFO_DATATYPE_STRING = 1,
    INFO_DATATYPE_STRINGLIST = 2,
    INFO_DATATYPE_INT16 = 3,
    INFO_DATATYPE_UINT16 = 4,
    INFO_DATATYPE_INT32 = 5,
    INFO_DATATYPE_UINT32 = 6,
    INFO_DATATYPE_INT64 = 7,
    INFO_DATATYPE_UINT64 = 8,
    INFO_DATATYPE_FLOAT64 = 9,
    INFO_DATATYPE_PTR = 10,
    INFO_DATATYPE_BOOL8 = 11,
    INFO_DATATYPE_SIZET = 12,
    INFO_DATATYPE_BUFFER = 13,
    INFO_DATATYPE_PTRDIFF = 14
};

/** Encoding of texts. */
typedef int32_t TL_CHAR_ENCODING;
enum { TL_CHAR_ENCODING_ASCII = 0, TL_CHAR_ENCODING_UTF8 = 1 };

/** Informations about the producer. The comment names the type of the answer. */
typedef int32_t TL_INFO_CMD;
enum {
    TL_INFO_ID = 0,              /* STRING */
    TL_INFO_VENDOR = 1,          /* STRING */
    TL_INFO_MODEL = 2,           /* STRING */
    TL_INFO_VERSION = 3,         /* STRING */
    TL_INFO_TLTYPE = 4,          /* STRING */
    TL_INFO_NAME = 5,            /* STRING */
    TL_INFO_PATHNAME = 6,        /* STRING */
    TL_INFO_DISPLAYNAME = 7,     /* STRING */
    TL_INFO_CHAR_ENCODING = 8,   /* INT32 */
    TL_INFO_GENTL_VER_MAJOR = 9, /* UINT32 */
    TL_INFO_GENTL_VER_MINOR = 10 /* UINT32 */
};

/** Informations about an interface. The comment names the type of the answer. */
typedef int32_t INTERFACE_INFO_CMD;
enum {
    INTERFACE_INFO_ID = 0,          /* STRING */
    INTERFACE_INFO_DISPLAYNAME = 1, /* STRING */
    INTERFACE_INFO_TLTYPE = 2       /* STRING */
};

/** How a device is opened. */
typedef int32_t DEVICE_ACCESS_FLAGS;
enum {
    DEVICE_ACCESS_UNKNOWN = 0,
    DEVICE_ACCESS_NONE = 1,
    DEVICE_ACCESS_READONLY = 2,
    DEVICE_ACCESS_CONTROL = 3,
    DEVICE_ACCESS_EXCLUSIVE = 4
};

/** How a device can be opened, or is open. */
typedef int32_t DEVICE_ACCESS_STATUS;
enum {
    DEVICE_ACCESS_STATUS_UNKNOWN = 0,
    DEVICE_ACCESS_STATUS_READWRITE = 1,
    DEVICE_ACCESS_STATUS_READONLY = 2,
    DEVICE_ACCESS_STATUS_NOACCESS = 3,
    DEVICE_ACCESS_STATUS_BUSY = 4,
    DEVICE_ACCESS_STATUS_OPEN_READWRITE = 5,
    DEVICE_ACCESS_STATUS_OPEN_READONLY = 6
};

/** Informations about a device. The comment names the type of the answer. */
typedef int32_t DEVICE_INFO_CMD;
enum {
    DEVICE_INFO_ID = 0,                 /* STRING */
    DEVICE_INFO_VENDOR = 1,             /* STRING */
    DEVICE_INFO_MODEL = 2,              /* STRING */
    DEVICE_INFO_TLTYPE = 3,             /* STRING */
    DEVICE_INFO_DISPLAYNAME = 4,        /* STRING */
    DEVICE_INFO_ACCESS_STATUS = 5,      /* INT32 */
    DEVICE_INFO_USER_DEFINED_NAME = 6,  /* STRING */
    DEVICE_INFO_SERIAL_NUMBER = 7,      /* STRING */
    DEVICE_INFO_VERSION = 8,            /* STRING */
    DEVICE_INFO_TIMESTAMP_FREQUENCY = 9 /* UINT64 */
};

/** How an acquisition ends. */
typedef int32_t ACQ_STOP_FLAGS;
enum { ACQ_STOP_FLAGS_DEFAULT = 0, ACQ_STOP_FLAGS_KILL = 1 };

/** How an acquisition starts. */
typedef int32_t ACQ_START_FLAGS;
enum { ACQ_START_FLAGS_DEFAULT = 0 };

/** What DSFlushQueue moves where. */
typedef int32_t ACQ_QUEUE_TYPE;
enum {
    ACQ_QUEUE_INPUT_TO_OUTPUT = 0,
    ACQ_QUEUE_OUTPUT_DISCARD = 1,
    ACQ_QUEUE_ALL_TO_INPUT = 2,
    ACQ_QUEUE_UNQUEUED_TO_INPUT = 3,
    ACQ_QUEUE_ALL_DISCARD = 4
};

/** Informations about a data stream. The comment names the type of the answer. */
typedef int32_t STREAM_INFO_CMD;
enum {
    STREAM_INFO_ID = 0,                        /* STRING */
    STREAM_INFO_NUM_DELIVERED = 1,             /* UINT64 */
    STREAM_INFO_NUM_UNDERRUN = 2,              /* UINT64 */
    STREAM_INFO_NUM_ANNOUNCED = 3,             /* SIZET */
    STREAM_INFO_NUM_QUEUED = 4,                /* SIZET */
    STREAM_INFO_NUM_AWAIT_DELIVERY = 5,        /* SIZET */
    STREAM_INFO_NUM_STARTED = 6,               /* UINT64 */
    STREAM_INFO_PAYLOAD_SIZE = 7,              /* SIZET */
    STREAM_INFO_IS_GRABBING = 8,               /* BOOL8 */
    STREAM_INFO_DEFINES_PAYLOADSIZE = 9,       /* BOOL8 */
    STREAM_INFO_TLTYPE = 10,                   /* STRING */
    STREAM_INFO_NUM_CHUNKS_MAX = 11,           /* SIZET */
    STREAM_INFO_BUF_ANNOUNCE_MIN = 12,         /* SIZET */
    STREAM_INFO_BUF_ALIGNMENT = 13,            /* SIZET */
    STREAM_INFO_FLOW_TABLE = 14,               /* BUFFER */
    STREAM_INFO_GENDC_PREFETCH_DESCRIPTOR = 15 /* BUFFER */
};

/** Informations about a buffer. The comment names the type of the answer. */
typedef int32_t BUFFER_INFO_CMD;
enum {
    BUFFER_INFO_BASE = 0,                        /* PTR */
    BUFFER_INFO_SIZE = 1,                        /* SIZET */
    BUFFER_INFO_USER_PTR = 2,                    /* PTR */
    BUFFER_INFO_TIMESTAMP = 3,                   /* UINT64 */
    BUFFER_INFO_NEW_DATA = 4,                    /* BOOL8 */
    BUFFER_INFO_IS_QUEUED = 5,                   /* BOOL8 */
    BUFFER_INFO_IS_ACQUIRING = 6,                /* BOOL8 */
    BUFFER_INFO_IS_INCOMPLETE = 7,               /* BOOL8 */
    BUFFER_INFO_TLTYPE = 8,                      /* STRING */
    BUFFER_INFO_SIZE_FILLED = 9,                 /* SIZET */
    BUFFER_INFO_WIDTH = 10,                      /* SIZET */
    BUFFER_INFO_HEIGHT = 11,                     /* SIZET */
    BUFFER_INFO_XOFFSET = 12,                    /* SIZET */
    BUFFER_INFO_YOFFSET = 13,                    /* SIZET */
    BUFFER_INFO_XPADDING = 14,                   /* SIZET */
    BUFFER_INFO_YPADDING = 15,                   /* SIZET */
    BUFFER_INFO_FRAMEID = 16,                    /* UINT64 */
    BUFFER_INFO_IMAGEPRESENT = 17,               /* BOOL8 */
    BUFFER_INFO_IMAGEOFFSET = 18,                /* SIZET */
    BUFFER_INFO_PAYLOADTYPE = 19,                /* SIZET */
    BUFFER_INFO_PIXELFORMAT = 20,                /* UINT64 */
    BUFFER_INFO_PIXELFORMAT_NAMESPACE = 21,      /* UINT64 */
    BUFFER_INFO_DELIVERED_IMAGEHEIGHT = 22,      /* SIZET */
    BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE = 23, /* SIZET */
    BUFFER_INFO_CHUNKLAYOUTID = 24,              /* UINT64 */
    BUFFER_INFO_FILENAME = 25,                   /* STRING */
    BUFFER_INFO_PIXEL_ENDIANNESS = 26,           /* INT32 */
    BUFFER_INFO_DATA_SIZE = 27,                  /* SIZET */
    BUFFER_INFO_TIMESTAMP_NS = 28,               /* UINT64 */
    BUFFER_INFO_DATA_LARGER_THAN_BUFFER = 29,    /* BOOL8 */
    BUFFER_INFO_CONTAINS_CHUNKDATA = 30,         /* BOOL8 */
    BUFFER_INFO_IS_COMPOSITE = 31                /* BOOL8 */
};

/** What a buffer holds. */
typedef int32_t PAYLOADTYPE_INFO_ID;
enum {
    PAYLOAD_TYPE_UNKNOWN = 0,
    PAYLOAD_TYPE_IMAGE = 1,
    PAYLOAD_TYPE_RAW_DATA = 2,
    PAYLOAD_TYPE_FILE = 3,
    PAYLOAD_TYPE_CHUNK_DATA = 4,
    PAYLOAD_TYPE_JPEG = 5,
    PAYLOAD_TYPE_JPEG2000 = 6,
    PAYLOAD_TYPE_H264 = 7,
    PAYLOAD_TYPE_CHUNK_ONLY = 8,
    PAYLOAD_TYPE_DEVICE_SPECIFIC = 9,
    PAYLOAD_TYPE_MULTI_PART = 10,
    PAYLOAD_TYPE_GENDC = 11
};

/** Who numbers the pixel formats. */
typedef int32_t PIXELFORMAT_NAMESPACE_ID;
enum {
    PIXELFORMAT_NAMESPACE_UNKNOWN = 0,
    PIXELFORMAT_NAMESPACE_GEV = 1,
    PIXELFORMAT_NAMESPACE_IIDC = 2,
    PIXELFORMAT_NAMESPACE_PFNC_16BIT = 3,
    PIXELFORMAT_NAMESPACE_PFNC_32BIT = 4
};

/** Byte order of pixels. */
typedef int32_t PIXELENDIANNESS_ID;
enum { PIXELENDIANNESS_UNKNOWN = 0, PIXELENDIANNESS_LITTLE = 1, PIXELENDIANNESS_BIG = 2 };

/** Informations about a port. The comment names the type of the answer. */
typedef int32_t PORT_INFO_CMD;
enum {
    PORT_INFO_ID = 0,            /* STRING */
    PORT_INFO_VENDOR = 1,        /* STRING */
    PORT_INFO_MODEL = 2,         /* STRING */
    PORT_INFO_TLTYPE = 3,        /* STRING */
    PORT_INFO_MODULE = 4,        /* STRING */
    PORT_INFO_LITTLE_ENDIAN = 5, /* BOOL8 */
    PORT_INFO_BIG_ENDIAN = 6,    /* BOOL8 */
    PORT_INFO_ACCESS_READ = 7,   /* BOOL8 */
    PORT_INFO_ACCESS_WRITE = 8,  /* BOOL8 */
    PORT_INFO_ACCESS_NA = 9,     /* BOOL8 */
    PORT_INFO_ACCESS_NI = 10,    /* BOOL8 */
    PORT_INFO_VERSION = 11,      /* STRING */
    PORT_INFO_PORTNAME = 12      /* STRING */
};

/** Where an XML document lies. */
typedef int32_t URL_SCHEME_ID;
enum { URL_SCHEME_LOCAL = 0, URL_SCHEME_HTTP = 1, URL_SCHEME_FILE = 2 };

/** Informations about an XML document. The comment names the type of the answer. */
typedef int32_t URL_INFO_CMD;
enum {
    URL_INFO_URL = 0,                   /* STRING */
    URL_INFO_SCHEMA_VER_MAJOR = 1,      /* INT32 */
    URL_INFO_SCHEMA_VER_MINOR = 2,      /* INT32 */
    URL_INFO_FILE_VER_MAJOR = 3,        /* INT32 */
    URL_INFO_FILE_VER_MINOR = 4,        /* INT32 */
    URL_INFO_FILE_VER_SUBMINOR = 5,     /* INT32 */
    URL_INFO_FILE_SHA1_HASH = 6,        /* BUFFER */
    URL_INFO_FILE_REGISTER_ADDRESS = 7, /* UINT64 */
    URL_INFO_FILE_SIZE = 8,             /* UINT64 */
    URL_INFO_SCHEME = 9,                /* INT32 */
    URL_INFO_FILENAME = 10              /* STRING */
};

/** Events to register for. */
typedef int32_t EVENT_TYPE;
enum {
    EVENT_ERROR = 0,
    EVENT_NEW_BUFFER = 1,
    EVENT_FEATURE_INVALIDATE = 2,
    EVENT_FEATURE_CHANGE = 3,
    EVENT_REMOTE_DEVICE = 4,
    EVENT_MODULE = 5
};

/** Informations about a registered event. The comment names the type of the answer. */
typedef int32_t EVENT_INFO_CMD;
enum {
    EVENT_EVENT_TYPE = 0,        /* INT32 */
    EVENT_NUM_IN_QUEUE = 1,      /* SIZET */
    EVENT_NUM_FIRED = 2,         /* UINT64 */
    EVENT_SIZE_MAX = 3,          /* SIZET */
    EVENT_INFO_DATA_SIZE_MAX = 4 /* SIZET */
};

/** Parts of an event. The comment names the type of the answer. */
typedef int32_t EVENT_DATA_INFO_CMD;
enum {
    EVENT_DATA_ID = 0,
    EVENT_DATA_VALUE = 1,
    EVENT_DATA_NUMID = 2 /* UINT64 */
};

typedef uint8_t bool8_t;
typedef int32_t BUFFER_PART_INFO_CMD;

typedef void* TL_HANDLE;
typedef void* IF_HANDLE;
typedef void* DEV_HANDLE;
typedef void* DS_HANDLE;
typedef void* PORT_HANDLE;
typedef void* BUFFER_HANDLE;
typedef void* EVENTSRC_HANDLE;
typedef void* EVENT_HANDLE;

#define GENTL_INVALID_HANDLE NULL
#define GENTL_INFINITE UINT64_C(0xFFFFFFFFFFFFFFFF) /**< ms, and pictures */

#pragma pack(push, 1)
/** What EventGetData gives for EVENT_NEW_BUFFER. */
typedef struct EVENT_NEW_BUFFER_DATA_s {
    BUFFER_HANDLE buffer;
    void* userPointer;
} EVENT_NEW_BUFFER_DATA;

/** One access of a stacked read or write. */
typedef struct PORT_REGISTER_STACK_ENTRY_s {
    uint64_t address;
    void* buffer;
    size_t size;
} PORT_REGISTER_STACK_ENTRY;

/** One chunk in a buffer. */
typedef struct SINGLE_CHUNK_DATA_s {
    uint64_t id;
    ptrdiff_t offset;
    size_t length;
} SINGLE_CHUNK_DATA;
#pragma pack(pop)

/** Pixel formats of PIXELFORMAT_NAMESPACE_PFNC_32BIT. */
enum { PFNC_BGR8 = 0x02180015 };

#pragma GCC visibility push(default)

GC_ERROR GCGetInfo(TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size);
GC_ERROR GCGetLastError(GC_ERROR* errorCode, char* text, size_t* size);
GC_ERROR GCInitLib(void);
GC_ERROR GCCloseLib(void);
GC_ERROR GCReadPort(PORT_HANDLE port, uint64_t address, void* buffer, size_t* size);
GC_ERROR GCWritePort(PORT_HANDLE port, uint64_t address, const void* buffer, size_t* size);
GC_ERROR GCGetPortURL(PORT_HANDLE port, char* text, size_t* size);
GC_ERROR GCGetPortInfo(PORT_HANDLE port, PORT_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                       size_t* size);
GC_ERROR GCRegisterEvent(EVENTSRC_HANDLE eventSrc, EVENT_TYPE eventID, EVENT_HANDLE* event);
GC_ERROR GCUnregisterEvent(EVENTSRC_HANDLE eventSrc, EVENT_TYPE eventID);
GC_ERROR EventGetData(EVENT_HANDLE event, void* buffer, size_t* size, uint64_t timeout);
GC_ERROR EventGetDataInfo(EVENT_HANDLE event, const void* inBuffer, size_t inSize,
                          EVENT_DATA_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size);
GC_ERROR EventGetInfo(EVENT_HANDLE event, EVENT_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                      size_t* size);
GC_ERROR EventFlush(EVENT_HANDLE event);
GC_ERROR EventKill(EVENT_HANDLE event);
GC_ERROR TLOpen(TL_HANDLE* tL);
GC_ERROR TLClose(TL_HANDLE tL);
GC_ERROR TLGetInfo(TL_HANDLE tL, TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size);
GC_ERROR TLGetNumInterfaces(TL_HANDLE tL, uint32_t* numIfaces);
GC_ERROR TLGetInterfaceID(TL_HANDLE tL, uint32_t index, char* text, size_t* size);
GC_ERROR TLGetInterfaceInfo(TL_HANDLE tL, const char* ifaceID, INTERFACE_INFO_CMD command,
                            INFO_DATATYPE* type, void* buffer, size_t* size);
GC_ERROR TLOpenInterface(TL_HANDLE tL, const char* ifaceID, IF_HANDLE* iface);
GC_ERROR TLUpdateInterfaceList(TL_HANDLE tL, bool8_t* changed, uint64_t timeout);
GC_ERROR IFClose(IF_HANDLE iface);
GC_ERROR IFGetInfo(IF_HANDLE iface, INTERFACE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                   size_t* size);
GC_ERROR IFGetNumDevices(IF_HANDLE iface, uint32_t* numDevices);
GC_ERROR IFGetDeviceID(IF_HANDLE iface, uint32_t index, char* text, size_t* size);
GC_ERROR IFUpdateDeviceList(IF_HANDLE iface, bool8_t* changed, uint64_t timeout);
GC_ERROR IFGetDeviceInfo(IF_HANDLE iface, const char* deviceID, DEVICE_INFO_CMD command, INFO_DATATYPE* type,
                         void* buffer, size_t* size);
GC_ERROR IFOpenDevice(IF_HANDLE iface, const char* deviceID, DEVICE_ACCESS_FLAGS openFlag,
                      DEV_HANDLE* device);
GC_ERROR DevGetPort(DEV_HANDLE device, PORT_HANDLE* remoteDevice);
GC_ERROR DevGetNumDataStreams(DEV_HANDLE device, uint32_t* numDataStreams);
GC_ERROR DevGetDataStreamID(DEV_HANDLE device, uint32_t index, char* text, size_t* size);
GC_ERROR DevOpenDataStream(DEV_HANDLE device, const char* dataStreamID, DS_HANDLE* dataStream);
GC_ERROR DevGetInfo(DEV_HANDLE device, DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                    size_t* size);
GC_ERROR DevClose(DEV_HANDLE device);
GC_ERROR DSAnnounceBuffer(DS_HANDLE dataStream, void* buffer, size_t size, void* userPointer,
                          BUFFER_HANDLE* handle);
GC_ERROR DSAllocAndAnnounceBuffer(DS_HANDLE dataStream, size_t size, void* userPointer,
                                  BUFFER_HANDLE* handle);
GC_ERROR DSFlushQueue(DS_HANDLE dataStream, ACQ_QUEUE_TYPE operation);
GC_ERROR DSStartAcquisition(DS_HANDLE dataStream, ACQ_START_FLAGS startFlags, uint64_t numToAcquire);
GC_ERROR DSStopAcquisition(DS_HANDLE dataStream, ACQ_STOP_FLAGS stopFlags);
GC_ERROR DSGetInfo(DS_HANDLE dataStream, STREAM_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                   size_t* size);
GC_ERROR DSGetBufferID(DS_HANDLE dataStream, uint32_t index, BUFFER_HANDLE* buffer);
GC_ERROR DSClose(DS_HANDLE dataStream);
GC_ERROR DSRevokeBuffer(DS_HANDLE dataStream, BUFFER_HANDLE handle, void** memory, void** userPointer);
GC_ERROR DSQueueBuffer(DS_HANDLE dataStream, BUFFER_HANDLE handle);
GC_ERROR DSGetBufferInfo(DS_HANDLE dataStream, BUFFER_HANDLE handle, BUFFER_INFO_CMD command,
                         INFO_DATATYPE* type, void* buffer, size_t* size);
GC_ERROR GCGetNumPortURLs(PORT_HANDLE port, uint32_t* numURLs);
GC_ERROR GCGetPortURLInfo(PORT_HANDLE port, uint32_t index, URL_INFO_CMD command, INFO_DATATYPE* type,
                          void* buffer, size_t* size);
GC_ERROR GCReadPortStacked(PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, size_t* numEntries);
GC_ERROR GCWritePortStacked(PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, size_t* numEntries);
GC_ERROR DSGetBufferChunkData(DS_HANDLE dataStream, BUFFER_HANDLE handle, SINGLE_CHUNK_DATA* chunkData,
                              size_t* numChunks);
GC_ERROR IFGetParentTL(IF_HANDLE iface, TL_HANDLE* system);
GC_ERROR DevGetParentIF(DEV_HANDLE device, IF_HANDLE* iface);
GC_ERROR DSGetParentDev(DS_HANDLE dataStream, DEV_HANDLE* device);
GC_ERROR DSGetNumBufferParts(DS_HANDLE dataStream, BUFFER_HANDLE handle, uint32_t* numParts);
GC_ERROR DSGetBufferPartInfo(DS_HANDLE dataStream, BUFFER_HANDLE handle, uint32_t part,
                             BUFFER_PART_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
