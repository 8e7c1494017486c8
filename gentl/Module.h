#pragma once

/// What every module of the producer has: a port with a document of its own, and events.

#include <memory>
#include <mutex>
#include <string>

#include "gentl/Answer.h"
#include "gentl/Events.h"
#include "gentl/NodeMap.h"

namespace marovine::gentl {

/// Technology type of everything here.
inline constexpr const char* kTechnology = "CL";
/// The same as the entry of a feature.
inline constexpr const char* kTechnologyName = "CameraLink";
/// Version of the interface that the producer speaks.
inline constexpr std::uint32_t kVersionMajor = 1;
inline constexpr std::uint32_t kVersionMinor = 5;

/// A module with its port. Thread-safe.
class Module : public Entity, public EventSource {
 public:
    /// `sort` is the module's name in the interface ("TLSystem"), `id` its id.
    Module(const char* sort, std::string id) : sort_(sort), id_(std::move(id)) {}

    const std::string& id() const { return id_; }

    /// Closes what lies below, then the module: its handle and those of its events are gone.
    virtual void close();

    // ---- the port ----

    void readPort(std::uint64_t address, Bytes out);
    void writePort(std::uint64_t address, ConstBytes data);
    void portInfo(PORT_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const;
    void urlInfo(URL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size);
    /// Where the document lies: "Local:NAME.xml;ADDRESS;LENGTH?SchemaVersion=1.1.0".
    std::string url();

 protected:
    /// Describes the module's features.
    virtual void describe(NodeMap& nodes) = 0;
    virtual bool mayWrite() const { return true; }

 private:
    struct Document {
        explicit Document(const char* port, const std::string& toolTip) : nodes(port, "Marovine", toolTip) {}
        NodeMap nodes;
        std::string text;
    };
    /// Made when it is first asked for.
    const Document& document();
    std::string fileName() const { return std::string("Marovine_") + sort_ + ".xml"; }

    const char* sort_;
    std::string id_;
    std::mutex making_;
    std::unique_ptr<const Document> document_;
};

/// The producer's file.
const std::string& producerFile();

}  // namespace marovine::gentl
