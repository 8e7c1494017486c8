#include "gentl/Device.h"

#include <utility>

#include "base/AppletIdentity.h"
#include "gentl/RemoteDevice.h"
#include "gentl/Stream.h"

namespace marovine::gentl {

void deviceInfo(const Interface& interface, const std::string& id, const Device* device,
                DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) {
    constexpr std::uint64_t kNanoseconds = 1'000'000'000;
    Answer answer(type, buffer, size);
    switch (command) {
        case DEVICE_INFO_ID:
            return answer.text(id);
        case DEVICE_INFO_VENDOR:
            return answer.text(identity::manufacturer);
        case DEVICE_INFO_MODEL:
            return answer.text(identity::name);
        case DEVICE_INFO_TLTYPE:
            return answer.text(kTechnology);
        case DEVICE_INFO_DISPLAYNAME:
            return answer.text("Marovine on " + interface.id());
        case DEVICE_INFO_ACCESS_STATUS:
            if (device == nullptr) return answer.int32(DEVICE_ACCESS_STATUS_READWRITE);
            return answer.int32(device->access() == DEVICE_ACCESS_READONLY
                                    ? DEVICE_ACCESS_STATUS_OPEN_READONLY
                                    : DEVICE_ACCESS_STATUS_OPEN_READWRITE);
        case DEVICE_INFO_USER_DEFINED_NAME:
            return answer.text("");
        case DEVICE_INFO_SERIAL_NUMBER:
            return answer.text(interface.id());
        case DEVICE_INFO_VERSION:
            return answer.text(identity::version);
        case DEVICE_INFO_TIMESTAMP_FREQUENCY:
            return answer.uint64(kNanoseconds);
        default:
            unknownCommand("a device", command);
    }
}

Device::Device(const std::shared_ptr<Interface>& interface, std::string id, DEVICE_ACCESS_FLAGS access)
    : Module("TLDevice", id),
      interface_(interface),
      access_(access),
      remote_(std::make_shared<RemoteDevice>(std::move(id), interface->id(), interface->world().file,
                                             access == DEVICE_ACCESS_READONLY)) {
    Handles::instance().add(remote_);
}

void Device::info(DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const {
    const auto above = interface();
    if (above == nullptr) throw Error(GC_ERR_INVALID_HANDLE, "the interface was closed");
    deviceInfo(*above, id(), this, command, type, buffer, size);
}

std::string Device::streamId(std::uint32_t index) const {
    if (index != 0) throw Error(GC_ERR_INVALID_INDEX, "a device has one data stream, 0");
    return id() + ", stream";
}

std::shared_ptr<Stream> Device::openStream(const std::string& wanted) {
    const std::lock_guard lock(mutex_);
    if (gone_) throw Error(GC_ERR_INVALID_HANDLE, "the device was closed");
    if (wanted != streamId(0))
        throw Error(GC_ERR_INVALID_ID, "the device has no data stream '" + wanted + "'");
    if (!mayWrite()) throw Error(GC_ERR_ACCESS_DENIED, "the device was opened for reading only");
    if (stream_ != nullptr) throw Error(GC_ERR_RESOURCE_IN_USE, "the data stream is open already");
    auto stream = std::make_shared<Stream>(weak_from_this(), remote_, wanted);
    Handles::instance().add(stream);
    remote_->setStream(stream);
    stream_ = stream;
    return stream;
}

void Device::closed() {
    const std::lock_guard lock(mutex_);
    stream_.reset();
}

void Device::close() {
    std::shared_ptr<Stream> below;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(gone_, true)) return;
        below = std::exchange(stream_, nullptr);
    }
    if (below != nullptr) below->close();
    remote_->close();
    Module::close();
    if (const auto above = interface()) above->closed();
}

void Device::describe(NodeMap& nodes) {
    const std::string category = "DeviceInformation";
    const auto text = [&](const char* name, DEVICE_INFO_CMD command, const char* toolTip) {
        nodes.text(
            {.name = name, .category = category, .toolTip = toolTip}, {.read = [this, command] {
                return answeredText([&](char* out, std::size_t* size) { info(command, nullptr, out, size); });
            }});
    };
    text("DeviceID", DEVICE_INFO_ID, "Id of the device");
    text("DeviceVendorName", DEVICE_INFO_VENDOR, "Maker of the device");
    text("DeviceModelName", DEVICE_INFO_MODEL, "Name of the device");
    text("DeviceDisplayName", DEVICE_INFO_DISPLAYNAME, "Name to show");
    text("DeviceSerialNumber", DEVICE_INFO_SERIAL_NUMBER, "Serial number of the device");
    nodes.onlyChoice({.name = "DeviceType", .category = category, .toolTip = "Transport layer"},
                     {.name = kTechnologyName, .value = 0});
    nodes.enumeration(
        {.name = "DeviceAccessStatus", .category = category, .toolTip = "How the device is open"},
        {{.name = "OpenReadWrite", .value = DEVICE_ACCESS_STATUS_OPEN_READWRITE},
         {.name = "OpenReadOnly", .value = DEVICE_ACCESS_STATUS_OPEN_READONLY}},
        {.read = [this] {
            return std::int64_t{mayWrite() ? DEVICE_ACCESS_STATUS_OPEN_READWRITE
                                           : DEVICE_ACCESS_STATUS_OPEN_READONLY};
        }});

    const std::string list = "StreamEnumeration";
    nodes.onlyIndex({.name = "StreamSelector",
                     .category = list,
                     .toolTip = "Which data stream the features below are about",
                     .selects = {"StreamID"}},
                    "a device has one data stream, 0");
    nodes.text({.name = "StreamID", .category = list, .toolTip = "Id of the data stream"},
               {.read = [this] { return streamId(0); }});
    remote_->describeBoard(nodes);
}

}  // namespace marovine::gentl
