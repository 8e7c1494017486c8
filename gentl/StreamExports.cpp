/// The functions of the interface about data streams and buffers. No logic here.

#include "gentl/Producer.h"

using namespace marovine::gentl;

extern "C" {

GC_ERROR DSAnnounceBuffer(DS_HANDLE dataStream, void* buffer, size_t size, void* userPointer,
                          BUFFER_HANDLE* handle) {
    return call("DSAnnounceBuffer", [&] {
        const auto stream = streamOf(dataStream);
        mustBeGiven(buffer, "the buffer");
        mustBeGiven(handle, "the place for the handle");
        *handle = stream->announce(buffer, size, userPointer)->handle();
    });
}

GC_ERROR DSAllocAndAnnounceBuffer(DS_HANDLE dataStream, size_t size, void* userPointer,
                                  BUFFER_HANDLE* handle) {
    return call("DSAllocAndAnnounceBuffer", [&] {
        const auto stream = streamOf(dataStream);
        mustBeGiven(handle, "the place for the handle");
        *handle = stream->announce(nullptr, size, userPointer)->handle();
    });
}

GC_ERROR DSRevokeBuffer(DS_HANDLE dataStream, BUFFER_HANDLE handle, void** memory, void** userPointer) {
    return call("DSRevokeBuffer", [&] {
        const auto stream = streamOf(dataStream);
        const auto buffer = bufferOf(*stream, handle);
        stream->revoke(*buffer);
        // Memory of the producer's own is gone with the buffer.
        if (memory != nullptr) *memory = buffer->isOwn() ? nullptr : buffer->memory();
        if (userPointer != nullptr) *userPointer = buffer->userPointer;
    });
}

GC_ERROR DSQueueBuffer(DS_HANDLE dataStream, BUFFER_HANDLE handle) {
    return call("DSQueueBuffer", [&] {
        const auto stream = streamOf(dataStream);
        stream->queue(*bufferOf(*stream, handle));
    });
}

GC_ERROR DSFlushQueue(DS_HANDLE dataStream, ACQ_QUEUE_TYPE operation) {
    return call("DSFlushQueue", [&] { streamOf(dataStream)->flush(operation); });
}

GC_ERROR DSStartAcquisition(DS_HANDLE dataStream, ACQ_START_FLAGS startFlags, uint64_t numToAcquire) {
    return call("DSStartAcquisition", [&] {
        const auto stream = streamOf(dataStream);
        if (startFlags != ACQ_START_FLAGS_DEFAULT)
            throw Error(GC_ERR_INVALID_PARAMETER, "an acquisition is started with the default flags");
        stream->start(numToAcquire);
    });
}

GC_ERROR DSStopAcquisition(DS_HANDLE dataStream, ACQ_STOP_FLAGS stopFlags) {
    return call("DSStopAcquisition", [&] {
        const auto stream = streamOf(dataStream);
        if (stopFlags != ACQ_STOP_FLAGS_DEFAULT && stopFlags != ACQ_STOP_FLAGS_KILL)
            throw Error(GC_ERR_INVALID_PARAMETER,
                        "an acquisition is stopped with the default flags or by kill");
        stream->stop(stopFlags == ACQ_STOP_FLAGS_KILL);
    });
}

GC_ERROR DSGetInfo(DS_HANDLE dataStream, STREAM_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                   size_t* size) {
    return call("DSGetInfo", [&] { streamOf(dataStream)->info(command, type, buffer, size); });
}

GC_ERROR DSGetBufferID(DS_HANDLE dataStream, uint32_t index, BUFFER_HANDLE* buffer) {
    return call("DSGetBufferID", [&] {
        const auto stream = streamOf(dataStream);
        mustBeGiven(buffer, "the place for the handle");
        *buffer = stream->buffer(index)->handle();
    });
}

GC_ERROR DSGetBufferInfo(DS_HANDLE dataStream, BUFFER_HANDLE handle, BUFFER_INFO_CMD command,
                         INFO_DATATYPE* type, void* buffer, size_t* size) {
    return call("DSGetBufferInfo", [&] {
        const auto stream = streamOf(dataStream);
        stream->bufferInfo(*bufferOf(*stream, handle), command, type, buffer, size);
    });
}

GC_ERROR DSClose(DS_HANDLE dataStream) {
    return call("DSClose", [&] { streamOf(dataStream)->close(); });
}

GC_ERROR DSGetParentDev(DS_HANDLE dataStream, DEV_HANDLE* device) {
    return call("DSGetParentDev", [&] {
        const auto above = streamOf(dataStream)->device();
        mustBeGiven(device, "the place for the handle");
        *device = above != nullptr ? above->handle() : nullptr;
    });
}

// ---- what pictures do not have ----

GC_ERROR DSGetBufferChunkData(DS_HANDLE dataStream, BUFFER_HANDLE handle, SINGLE_CHUNK_DATA*,
                              size_t* numChunks) {
    return call("DSGetBufferChunkData", [&] {
        bufferOf(*streamOf(dataStream), handle);
        mustBeGiven(numChunks, "the number of chunks");
        throw Error(GC_ERR_NO_DATA, "pictures have no chunks");
    });
}

GC_ERROR DSGetNumBufferParts(DS_HANDLE dataStream, BUFFER_HANDLE handle, uint32_t* numParts) {
    return call("DSGetNumBufferParts", [&] {
        bufferOf(*streamOf(dataStream), handle);
        mustBeGiven(numParts, "the place for the number");
        *numParts = 0;
    });
}

GC_ERROR DSGetBufferPartInfo(DS_HANDLE dataStream, BUFFER_HANDLE handle, uint32_t, BUFFER_PART_INFO_CMD,
                             INFO_DATATYPE*, void*, size_t* size) {
    return call("DSGetBufferPartInfo", [&] {
        bufferOf(*streamOf(dataStream), handle);
        mustBeGiven(size, "the size");
        throw Error(GC_ERR_INVALID_INDEX, "pictures have no parts");
    });
}

}  // extern "C"
