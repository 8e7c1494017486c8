#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "description/Fg_ParameterInfo.h"

namespace marovine {

/// The XML description of a registry, kept until the registry says something else: a host that asks for its
/// size and then for the text has it built once. Usable from several threads.
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
    static void see(const RegisterInfo* node, std::vector<Seen>& seen);

    std::mutex mutex_;
    int port_ = -1;
    std::vector<Seen> seen_;  ///< when the document was built
    std::vector<Seen> now_;   ///< kept for its memory
    std::shared_ptr<const std::string> document_;
};

}  // namespace marovine
