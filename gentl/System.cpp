#include "gentl/System.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

#include "base/AppletIdentity.h"
#include "gentl/Interface.h"
#include "marovine/EnvironmentVariables.h"

namespace marovine::gentl {

namespace {

/// The worlds of the environment: files separated by colons; without any the built-in scene.
std::vector<World> worldsOfEnvironment() {
    std::vector<World> worlds;
    const auto add = [&worlds](const std::string& file) {
        World world{.id = "virtual board", .file = file};
        if (!file.empty()) world.id += ", " + file;
        const auto same = std::ranges::count(worlds, file, &World::file);
        if (same > 0) world.id += " #" + std::to_string(same + 1);
        worlds.push_back(std::move(world));
    };
    const char* variable = std::getenv(environment::kWorlds);
    std::string_view list = variable != nullptr ? variable : "";
    while (!list.empty()) {
        const std::string_view file = list.substr(0, list.find(':'));
        if (!file.empty()) add(std::string(file));
        list.remove_prefix(std::min(list.size(), file.size() + 1));
    }
    if (worlds.empty()) add("");
    return worlds;
}

}  // namespace

void systemInfo(TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) {
    Answer answer(type, buffer, size);
    switch (command) {
        case TL_INFO_ID:
        case TL_INFO_MODEL:
            return answer.text(identity::name);
        case TL_INFO_VENDOR:
            return answer.text(identity::manufacturer);
        case TL_INFO_VERSION:
            return answer.text(identity::version);
        case TL_INFO_TLTYPE:
            return answer.text(kTechnology);
        case TL_INFO_NAME:
            return answer.text(std::filesystem::path(producerFile()).filename().string());
        case TL_INFO_PATHNAME:
            return answer.text(producerFile());
        case TL_INFO_DISPLAYNAME:
            return answer.text("Marovine virtual boards");
        case TL_INFO_CHAR_ENCODING:
            return answer.int32(TL_CHAR_ENCODING_UTF8);
        case TL_INFO_GENTL_VER_MAJOR:
            return answer.uint32(kVersionMajor);
        case TL_INFO_GENTL_VER_MINOR:
            return answer.uint32(kVersionMinor);
        default:
            unknownCommand("the producer", command);
    }
}

void interfaceInfo(const World& world, INTERFACE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                   std::size_t* size) {
    Answer answer(type, buffer, size);
    switch (command) {
        case INTERFACE_INFO_ID:
            return answer.text(world.id);
        case INTERFACE_INFO_DISPLAYNAME:
            return answer.text("virtual board" +
                               (world.file.empty()
                                    ? ""
                                    : " (" + std::filesystem::path(world.file).filename().string() + ")"));
        case INTERFACE_INFO_TLTYPE:
            return answer.text(kTechnology);
        default:
            unknownCommand("an interface", command);
    }
}

void System::info(TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const {
    systemInfo(command, type, buffer, size);
}

bool System::update() {
    auto worlds = worldsOfEnvironment();
    const std::lock_guard lock(mutex_);
    const bool changed = !std::ranges::equal(worlds, worlds_, {}, &World::id, &World::id);
    worlds_ = std::move(worlds);
    return changed;
}

std::uint32_t System::interfaces() const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::uint32_t>(worlds_.size());
}

std::string System::interfaceId(std::uint32_t index) const {
    const std::lock_guard lock(mutex_);
    if (index >= worlds_.size())
        throw Error(GC_ERR_INVALID_INDEX, "the last update saw " + std::to_string(worlds_.size()) +
                                              " interfaces; there is none of index " + std::to_string(index));
    return worlds_[index].id;
}

World System::world(const std::string& id) const {
    const auto found = std::ranges::find(worlds_, id, &World::id);
    if (found == worlds_.end())
        throw Error(GC_ERR_INVALID_ID, "the last update saw no interface '" + id + "'");
    return *found;
}

void System::interfaceInfo(const std::string& id, INTERFACE_INFO_CMD command, INFO_DATATYPE* type,
                           void* buffer, std::size_t* size) const {
    const std::lock_guard lock(mutex_);
    gentl::interfaceInfo(world(id), command, type, buffer, size);
}

std::shared_ptr<Interface> System::openInterface(const std::string& id) {
    const std::lock_guard lock(mutex_);
    if (gone_) throw Error(GC_ERR_INVALID_HANDLE, "the system was closed");
    const World opened = world(id);
    if (open_.contains(id)) throw Error(GC_ERR_RESOURCE_IN_USE, "the interface '" + id + "' is open already");
    auto interface = std::make_shared<Interface>(weak_from_this(), opened);
    Handles::instance().add(interface);
    open_.emplace(id, interface);
    return interface;
}

void System::closed(const std::string& id) {
    const std::lock_guard lock(mutex_);
    open_.erase(id);
}

void System::close() {
    std::map<std::string, std::shared_ptr<Interface>> below;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(gone_, true)) return;
        below.swap(open_);
    }
    for (const auto& [id, interface] : below) interface->close();
    Module::close();
}

void System::describe(NodeMap& nodes) {
    const std::string category = "SystemInformation";
    const auto text = [&](const char* name, TL_INFO_CMD command, const char* toolTip) {
        nodes.text({.name = name, .category = category, .toolTip = toolTip}, {.read = [command] {
                       return answeredText(
                           [&](char* out, std::size_t* size) { systemInfo(command, nullptr, out, size); });
                   }});
    };
    text("TLID", TL_INFO_ID, "Id of the producer");
    text("TLVendorName", TL_INFO_VENDOR, "Maker of the producer");
    text("TLModelName", TL_INFO_MODEL, "Name of the producer");
    text("TLVersion", TL_INFO_VERSION, "Version of the producer");
    text("TLFileName", TL_INFO_NAME, "File name of the producer");
    text("TLPath", TL_INFO_PATHNAME, "The producer's file");
    text("TLDisplayName", TL_INFO_DISPLAYNAME, "Name to show");
    nodes.onlyChoice({.name = "TLType", .category = category, .toolTip = "Transport layer"},
                     {.name = kTechnologyName, .value = 0});
    const auto number = [&](const char* name, std::int64_t value, const char* toolTip) {
        nodes.integer(
            {.name = name, .category = category, .toolTip = toolTip, .visibility = Visibility::Expert},
            {.read = [value] { return value; }});
    };
    number("GenTLVersionMajor", kVersionMajor, "Version of the GenTL interface, major part");
    number("GenTLVersionMinor", kVersionMinor, "Version of the GenTL interface, minor part");

    const std::string list = "InterfaceEnumeration";
    nodes.command({.name = "InterfaceUpdateList",
                   .category = list,
                   .toolTip = "Looks for interfaces again: one for each world in MAROVINE_WORLD"},
                  [this] { update(); });
    const auto selected = [this] {
        const std::lock_guard lock(mutex_);
        return std::min(selected_, static_cast<std::int64_t>(worlds_.size()) - 1);
    };
    nodes.integer({.name = "InterfaceSelector",
                   .category = list,
                   .toolTip = "Which interface the features below are about",
                   .movedBy = {"InterfaceUpdateList"},
                   .selects = {"InterfaceID", "InterfaceDisplayName"}},
                  {.read = [selected] { return std::max<std::int64_t>(selected(), 0); },
                   .write =
                       [this](std::int64_t index) {
                           const std::lock_guard lock(mutex_);
                           // Before the first update there is none, and 0 is what the range claims.
                           const auto count = static_cast<std::int64_t>(worlds_.size());
                           if (index < 0 || index >= std::max<std::int64_t>(count, 1))
                               throw Error(GC_ERR_INVALID_VALUE,
                                           "there is no interface " + std::to_string(index));
                           selected_ = index;
                       },
                   .minimum = [] { return 0; },
                   .maximum = [this] { return std::max<std::int64_t>(std::int64_t{interfaces()} - 1, 0); },
                   .increment = [] { return 1; }});
    const auto ofSelected = [&](const char* name, INTERFACE_INFO_CMD command, const char* toolTip) {
        nodes.text({.name = name, .category = list, .toolTip = toolTip, .movedBy = {"InterfaceSelector"}},
                   {.read = [this, selected, command] {
                       if (selected() < 0) return std::string();
                       const auto id = interfaceId(static_cast<std::uint32_t>(selected()));
                       return answeredText([&](char* out, std::size_t* size) {
                           interfaceInfo(id, command, nullptr, out, size);
                       });
                   }});
    };
    ofSelected("InterfaceID", INTERFACE_INFO_ID, "Id of the selected interface");
    ofSelected("InterfaceDisplayName", INTERFACE_INFO_DISPLAYNAME, "Name of the selected interface");
}

}  // namespace marovine::gentl
