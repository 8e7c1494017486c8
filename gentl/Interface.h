#pragma once

/// One virtual board's place, with the device on it.

#include "gentl/System.h"

namespace marovine::gentl {

class Device;

class Interface final : public Module, public std::enable_shared_from_this<Interface> {
 public:
    Interface(std::weak_ptr<System> system, World world)
        : Module("TLInterface", world.id), system_(std::move(system)), world_(std::move(world)) {}

    const World& world() const { return world_; }
    std::shared_ptr<System> system() const { return system_.lock(); }
    void info(INTERFACE_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const {
        interfaceInfo(world_, command, type, buffer, size);
    }

    /// Returns whether the list changed.
    bool update();
    std::uint32_t devices() const;
    std::string deviceId(std::uint32_t index) const;
    void deviceInfo(const std::string& id, DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                    std::size_t* size) const;
    std::shared_ptr<Device> openDevice(const std::string& id, DEVICE_ACCESS_FLAGS access);
    /// Forgets a device that closes.
    void closed();

    void close() override;

 private:
    void describe(NodeMap& nodes) override;
    void mustKnow(const std::string& id) const;
    std::string idOfDevice() const { return id() + ", Marovine"; }

    const std::weak_ptr<System> system_;
    const World world_;
    mutable std::mutex mutex_;
    bool seen_ = false;  ///< the last update saw the device
    std::shared_ptr<Device> device_;
    bool gone_ = false;
};

}  // namespace marovine::gentl
