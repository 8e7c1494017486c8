#pragma once

/// The producer as a consumer opens it, and its interfaces.

#include <map>
#include <vector>

#include "gentl/Module.h"

namespace marovine::gentl {

class Interface;

/// What stands around the board of an interface.
struct World {
    std::string id;    ///< of the interface
    std::string file;  ///< empty: the built-in scene
};

class System final : public Module, public std::enable_shared_from_this<System> {
 public:
    System() : Module("TLSystem", "Marovine") {}

    void info(TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const;

    /// Looks at MAROVINE_WORLD again. Returns whether the list changed.
    bool update();
    std::uint32_t interfaces() const;
    std::string interfaceId(std::uint32_t index) const;
    void interfaceInfo(const std::string& id, INTERFACE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                       std::size_t* size) const;
    std::shared_ptr<Interface> openInterface(const std::string& id);
    /// Forgets an interface that closes.
    void closed(const std::string& id);

    void close() override;

 private:
    void describe(NodeMap& nodes) override;
    World world(const std::string& id) const;

    mutable std::mutex mutex_;
    std::vector<World> worlds_;
    std::map<std::string, std::shared_ptr<Interface>> open_;
    std::int64_t selected_ = 0;
    bool gone_ = false;
};

/// Answers about the producer, which need no module.
void systemInfo(TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size);
/// Answers about an interface, open or not.
void interfaceInfo(const World& world, INTERFACE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                   std::size_t* size);

}  // namespace marovine::gentl
