#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "description/Fg_ParameterInfo.h"
#include "description/ParameterInfoBuilderXML.h"

namespace marovine {

/// The XML description of a registry, kept until the registry says something else, and then brought up to
/// date where it differs: building it costs fifty times a copy of it. Usable from several threads.
class DescriptionDocument {
 public:
    /// The document of a port as `ParameterInfoBuilderXML` builds it.
    std::shared_ptr<const std::string> of(const Fg_ParameterInfo& registry, const char* modelName, int port);

 private:
    /// What can change of a parameter's node: the access flags and the maximum.
    struct Seen {
        const RegisterInfo* node;
        std::uint64_t maximum;
        std::int32_t accessFlags;
        bool operator==(const Seen&) const = default;
    };
    using Described = ParameterInfoBuilderXML::Described;

    static void see(const RegisterInfo* node, std::vector<Seen>& seen);
    void build(const Fg_ParameterInfo& registry, const char* modelName, int port);
    void update();

    std::mutex mutex_;
    int port_ = -1;
    std::vector<Seen> seen_;            ///< when the document was made
    std::vector<Seen> now_;             ///< kept for its memory
    std::vector<Described> described_;  ///< the same nodes in the same order, with their places
    std::shared_ptr<const std::string> document_;
};

}  // namespace marovine
