/// What a data stream and its buffers say about themselves.

#include <utility>

#include "gentl/RemoteDevice.h"
#include "gentl/Stream.h"

namespace marovine::gentl {

void Stream::info(STREAM_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) {
    Answer answer(type, buffer, size);
    const std::lock_guard lock(mutex_);
    switch (command) {
        case STREAM_INFO_ID:
            return answer.text(id());
        case STREAM_INFO_NUM_DELIVERED:
            return answer.uint64(delivered_);
        case STREAM_INFO_NUM_UNDERRUN:
            return answer.uint64(lostBefore_ + lost());
        case STREAM_INFO_NUM_ANNOUNCED:
            return answer.size(announced_.size());
        case STREAM_INFO_NUM_QUEUED:
            return answer.size(input_.size());
        case STREAM_INFO_NUM_AWAIT_DELIVERY:
            return answer.size(output_->waiting());
        case STREAM_INFO_NUM_STARTED:
            return answer.uint64(delivered_ + lostBefore_ + lost());
        case STREAM_INFO_PAYLOAD_SIZE:
            return answer.size(remote_->payloadSize());
        case STREAM_INFO_IS_GRABBING:
            return answer.boolean(isGrabbing());
        case STREAM_INFO_DEFINES_PAYLOADSIZE:
            return answer.boolean(true);
        case STREAM_INFO_TLTYPE:
            return answer.text(kTechnology);
        case STREAM_INFO_NUM_CHUNKS_MAX:
            return answer.size(0);
        case STREAM_INFO_BUF_ANNOUNCE_MIN:
        case STREAM_INFO_BUF_ALIGNMENT:
            return answer.size(1);
        case STREAM_INFO_FLOW_TABLE:
        case STREAM_INFO_GENDC_PREFETCH_DESCRIPTOR:
            answer.none(INFO_DATATYPE_BUFFER, GC_ERR_NOT_AVAILABLE, "the data stream has no flows");
        default:
            unknownCommand("a data stream", command);
    }
}

void Stream::bufferInfo(const Buffer& buffer, BUFFER_INFO_CMD command, INFO_DATATYPE* type, void* place,
                        std::size_t* size) const {
    Answer answer(type, place, size);
    const std::lock_guard lock(mutex_);
    const Picture& picture = buffer.picture;
    const auto ofPicture = [&](INFO_DATATYPE answered, auto value) {
        if (picture.bytes == 0) answer.none(answered, GC_ERR_NO_DATA, "the buffer holds no picture");
        return value;
    };
    switch (command) {
        case BUFFER_INFO_BASE:
            return answer.pointer(buffer.memory());
        case BUFFER_INFO_SIZE:
            return answer.size(buffer.size());
        case BUFFER_INFO_USER_PTR:
            return answer.pointer(buffer.userPointer);
        case BUFFER_INFO_TIMESTAMP:
        case BUFFER_INFO_TIMESTAMP_NS:
            return answer.uint64(ofPicture(INFO_DATATYPE_UINT64, picture.time));
        case BUFFER_INFO_NEW_DATA:
            return answer.boolean(picture.bytes != 0 && !buffer.queued);
        case BUFFER_INFO_IS_QUEUED:
            return answer.boolean(buffer.queued);
        case BUFFER_INFO_IS_ACQUIRING:
            return answer.boolean(isGrabbing() && memory_ != nullptr && runDelivered_ < run_ &&
                                  !input_.empty() && input_.front() == &buffer);
        case BUFFER_INFO_IS_INCOMPLETE:
            return answer.boolean(picture.cut || (picture.bytes == 0 && !buffer.queued));
        case BUFFER_INFO_TLTYPE:
            return answer.text(kTechnology);
        case BUFFER_INFO_SIZE_FILLED:
        case BUFFER_INFO_DATA_SIZE:
            return answer.size(picture.bytes);
        case BUFFER_INFO_WIDTH:
            return answer.size(ofPicture(INFO_DATATYPE_SIZET, picture.width));
        case BUFFER_INFO_HEIGHT:
        case BUFFER_INFO_DELIVERED_IMAGEHEIGHT:
            return answer.size(ofPicture(INFO_DATATYPE_SIZET, picture.height));
        case BUFFER_INFO_XOFFSET:
            return answer.size(ofPicture(INFO_DATATYPE_SIZET, picture.xOffset));
        case BUFFER_INFO_YOFFSET:
            return answer.size(ofPicture(INFO_DATATYPE_SIZET, picture.yOffset));
        case BUFFER_INFO_XPADDING:
        case BUFFER_INFO_YPADDING:
        case BUFFER_INFO_IMAGEOFFSET:
            return answer.size(ofPicture(INFO_DATATYPE_SIZET, 0));
        case BUFFER_INFO_FRAMEID:
            return answer.uint64(ofPicture(INFO_DATATYPE_UINT64, picture.number));
        case BUFFER_INFO_IMAGEPRESENT:
            return answer.boolean(picture.bytes != 0);
        case BUFFER_INFO_PAYLOADTYPE:
            return answer.size(PAYLOAD_TYPE_IMAGE);
        case BUFFER_INFO_PIXELFORMAT:
            return answer.uint64(PFNC_BGR8);
        case BUFFER_INFO_PIXELFORMAT_NAMESPACE:
            return answer.uint64(PIXELFORMAT_NAMESPACE_PFNC_32BIT);
        case BUFFER_INFO_PIXEL_ENDIANNESS:
            return answer.int32(PIXELENDIANNESS_LITTLE);
        case BUFFER_INFO_DATA_LARGER_THAN_BUFFER:
            return answer.boolean(picture.cut);
        case BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE:
            return answer.size(0);
        case BUFFER_INFO_CONTAINS_CHUNKDATA:
        case BUFFER_INFO_IS_COMPOSITE:
            return answer.boolean(false);
        case BUFFER_INFO_CHUNKLAYOUTID:
            answer.none(INFO_DATATYPE_UINT64, GC_ERR_NOT_AVAILABLE, "pictures have no chunks");
        case BUFFER_INFO_FILENAME:
            answer.none(INFO_DATATYPE_STRING, GC_ERR_NOT_AVAILABLE, "pictures have no file name");
        default:
            unknownCommand("a buffer", command);
    }
}

void Stream::describe(NodeMap& nodes) {
    const std::string category = "StreamInformation";
    nodes.text({.name = "StreamID", .category = category, .toolTip = "Id of the data stream"},
               {.read = [this] { return id(); }});
    nodes.onlyChoice({.name = "StreamType", .category = category, .toolTip = "Transport layer"},
                     {.name = kTechnologyName, .value = 0});
    const auto number = [&](const char* name, STREAM_INFO_CMD command, const char* toolTip) {
        nodes.integer({.name = name, .category = category, .toolTip = toolTip, .readOut = true},
                      {.read = [this, command] {
                          std::uint64_t value = 0;
                          std::size_t size = sizeof value;
                          info(command, nullptr, &value, &size);
                          return static_cast<std::int64_t>(value);
                      }});
    };
    number("StreamAnnouncedBufferCount", STREAM_INFO_NUM_ANNOUNCED, "Buffers announced");
    number("StreamAnnounceBufferMinimum", STREAM_INFO_BUF_ANNOUNCE_MIN, "Buffers that an acquisition needs");
    number("StreamInputBufferCount", STREAM_INFO_NUM_QUEUED, "Buffers that wait for a picture");
    number("StreamOutputBufferCount", STREAM_INFO_NUM_AWAIT_DELIVERY, "Pictures that wait for delivery");
    number("StreamDeliveredFrameCount", STREAM_INFO_NUM_DELIVERED, "Pictures delivered since the start");
    number("StreamLostFrameCount", STREAM_INFO_NUM_UNDERRUN, "Pictures that found no buffer since the start");
    number("StreamStartedFrameCount", STREAM_INFO_NUM_STARTED, "Pictures delivered and lost since the start");
    number("StreamBufferAlignment", STREAM_INFO_BUF_ALIGNMENT,
           "What addresses of buffers must be multiples of");
    number("PayloadSize", STREAM_INFO_PAYLOAD_SIZE, "Bytes of a picture");
    nodes.boolean({.name = "StreamIsGrabbing",
                   .category = category,
                   .toolTip = "Whether an acquisition is started and not yet complete",
                   .readOut = true},
                  {.read = [this] {
                      const std::lock_guard lock(mutex_);
                      return isGrabbing() ? 1 : 0;
                  }});
    nodes.onlyChoice({.name = "StreamBufferHandlingMode",
                      .category = category,
                      .toolTip = "Pictures are delivered in their order"},
                     {.name = "OldestFirst", .value = 1});
}

// ---- a buffer ----

Buffer::Buffer(Stream& stream, std::string id, void* memory, std::size_t size, void* pointer)
    : Module("TLBuffer", std::move(id)),
      userPointer(pointer),
      stream_(&stream),
      own_(memory == nullptr ? std::make_unique_for_overwrite<std::uint8_t[]>(size) : nullptr),
      memory_(memory == nullptr ? own_.get() : static_cast<std::uint8_t*>(memory)),
      size_(size) {}

void Buffer::describe(NodeMap& nodes) {
    const std::string category = "BufferInformation";
    nodes.text({.name = "BufferID", .category = category, .toolTip = "Id of the buffer", .custom = true},
               {.read = [this] { return id(); }});
    const auto number = [&](const char* name, std::int64_t value, const char* toolTip) {
        nodes.integer({.name = name, .category = category, .toolTip = toolTip, .custom = true},
                      {.read = [value] { return value; }});
    };
    number("BufferSize", static_cast<std::int64_t>(size_), "Bytes of the buffer");
    number("BufferUserData", static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(userPointer)),
           "The consumer's pointer");
}

}  // namespace marovine::gentl
