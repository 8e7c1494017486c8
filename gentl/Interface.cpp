#include "gentl/Interface.h"

#include <utility>

#include "gentl/Device.h"

namespace marovine::gentl {

bool Interface::update() {
    const std::lock_guard lock(mutex_);
    return !std::exchange(seen_, true);
}

std::uint32_t Interface::devices() const {
    const std::lock_guard lock(mutex_);
    return seen_ ? 1 : 0;
}

std::string Interface::deviceId(std::uint32_t index) const {
    if (index >= devices())
        throw Error(GC_ERR_INVALID_INDEX, "the last update saw no device of index " + std::to_string(index));
    return idOfDevice();
}

void Interface::mustKnow(const std::string& id) const {
    if (!seen_ || id != idOfDevice())
        throw Error(GC_ERR_INVALID_ID, "the last update saw no device '" + id + "'");
}

void Interface::deviceInfo(const std::string& id, DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                           std::size_t* size) const {
    const std::lock_guard lock(mutex_);
    mustKnow(id);
    gentl::deviceInfo(*this, id, device_.get(), command, type, buffer, size);
}

std::shared_ptr<Device> Interface::openDevice(const std::string& id, DEVICE_ACCESS_FLAGS access) {
    const std::lock_guard lock(mutex_);
    if (gone_) throw Error(GC_ERR_INVALID_HANDLE, "the interface was closed");
    mustKnow(id);
    if (access < DEVICE_ACCESS_READONLY || access > DEVICE_ACCESS_EXCLUSIVE)
        throw Error(GC_ERR_INVALID_PARAMETER,
                    "a device is opened for reading only, for control or exclusively");
    if (device_ != nullptr) throw Error(GC_ERR_RESOURCE_IN_USE, "the device '" + id + "' is open already");
    auto device = std::make_shared<Device>(shared_from_this(), id, access);
    Handles::instance().add(device);
    device_ = device;
    return device;
}

void Interface::closed() {
    const std::lock_guard lock(mutex_);
    device_.reset();
}

void Interface::close() {
    std::shared_ptr<Device> below;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(gone_, true)) return;
        below = std::exchange(device_, nullptr);
    }
    if (below != nullptr) below->close();
    Module::close();
    if (const auto above = system()) above->closed(id());
}

void Interface::describe(NodeMap& nodes) {
    const std::string category = "InterfaceInformation";
    nodes.text({.name = "InterfaceID", .category = category, .toolTip = "Id of the interface"},
               {.read = [this] { return id(); }});
    nodes.onlyChoice({.name = "InterfaceType", .category = category, .toolTip = "Transport layer"},
                     {.name = kTechnologyName, .value = 0});
    nodes.text({.name = "WorldFile",
                .category = category,
                .toolTip = "The file that says what stands around the board; empty for the built-in scene",
                .custom = true},
               {.read = [this] { return world_.file; }});

    const std::string list = "DeviceEnumeration";
    nodes.command(
        {.name = "DeviceUpdateList", .category = list, .toolTip = "Looks for the interface's device again"},
        [this] { update(); });
    nodes.onlyIndex({.name = "DeviceSelector",
                     .category = list,
                     .toolTip = "Which device the features below are about",
                     .movedBy = {"DeviceUpdateList"},
                     .selects = {"DeviceID", "DeviceVendorName", "DeviceModelName", "DeviceSerialNumber",
                                 "DeviceVersion", "DeviceAccessStatus"}},
                    "an interface has one device, 0");
    const auto answer = [this](DEVICE_INFO_CMD command, void* buffer, std::size_t* size) {
        const std::lock_guard lock(mutex_);
        gentl::deviceInfo(*this, idOfDevice(), device_.get(), command, nullptr, buffer, size);
    };
    const auto text = [&](const char* name, DEVICE_INFO_CMD command, const char* toolTip) {
        nodes.text({.name = name, .category = list, .toolTip = toolTip}, {.read = [answer, command] {
                       return answeredText([&](char* out, std::size_t* size) { answer(command, out, size); });
                   }});
    };
    text("DeviceID", DEVICE_INFO_ID, "Id of the device");
    text("DeviceVendorName", DEVICE_INFO_VENDOR, "Maker of the device");
    text("DeviceModelName", DEVICE_INFO_MODEL, "Name of the device");
    text("DeviceSerialNumber", DEVICE_INFO_SERIAL_NUMBER, "Serial number of the device");
    text("DeviceVersion", DEVICE_INFO_VERSION, "Version of the device");
    nodes.enumeration({.name = "DeviceAccessStatus",
                       .category = list,
                       .toolTip = "Whether the device can be opened",
                       .readOut = true},
                      {{.name = "ReadWrite", .value = DEVICE_ACCESS_STATUS_READWRITE},
                       {.name = "OpenReadWrite", .value = DEVICE_ACCESS_STATUS_OPEN_READWRITE},
                       {.name = "OpenReadOnly", .value = DEVICE_ACCESS_STATUS_OPEN_READONLY}},
                      {.read = [answer] {
                          std::int32_t status = 0;
                          std::size_t size = sizeof status;
                          answer(DEVICE_INFO_ACCESS_STATUS, &status, &size);
                          return std::int64_t{status};
                      }});
}

}  // namespace marovine::gentl
