#pragma once

/// The board as the host's side sees it, with its data stream and the remote device behind it.

#include "gentl/Interface.h"

namespace marovine::gentl {

class RemoteDevice;
class Stream;

class Device final : public Module, public std::enable_shared_from_this<Device> {
 public:
    /// Throws what opening the remote device throws.
    Device(const std::shared_ptr<Interface>& interface, std::string id, DEVICE_ACCESS_FLAGS access);

    std::shared_ptr<Interface> interface() const { return interface_.lock(); }
    const std::shared_ptr<RemoteDevice>& remote() const { return remote_; }
    DEVICE_ACCESS_FLAGS access() const { return access_; }
    void info(DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const;

    std::string streamId(std::uint32_t index) const;
    std::shared_ptr<Stream> openStream(const std::string& id);
    /// Forgets a data stream that closes.
    void closed();

    void close() override;

 private:
    void describe(NodeMap& nodes) override;
    bool mayWrite() const override { return access_ != DEVICE_ACCESS_READONLY; }

    const std::weak_ptr<Interface> interface_;
    const DEVICE_ACCESS_FLAGS access_;
    const std::shared_ptr<RemoteDevice> remote_;
    std::mutex mutex_;
    std::shared_ptr<Stream> stream_;
    bool gone_ = false;
};

/// Answers about the device of this id; `device` is null when it is not open.
void deviceInfo(const Interface& interface, const std::string& id, const Device* device,
                DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size);

}  // namespace marovine::gentl
