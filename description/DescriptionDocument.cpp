#include "description/DescriptionDocument.h"

#include <bit>

#include "description/ParameterInfoBuilderXML.h"

namespace marovine {

namespace {

/// The bits of the maximum, for the kinds that are described by one.
std::uint64_t maximumOf(const RegisterInfo& node) {
    switch (node.kind) {
        case FG_KIND_UINT32:
            return loadField(node.value.uint32.maximum);
        case FG_KIND_INT32:
            return static_cast<std::uint32_t>(loadField(node.value.int32.maximum));
        case FG_KIND_DOUBLE:
            return std::bit_cast<std::uint64_t>(loadField(node.value.real.maximum));
        default:
            return 0;
    }
}

}  // namespace

void DescriptionDocument::see(const RegisterInfo* node, std::vector<Seen>& seen) {
    for (; node != nullptr; node = node->next) {
        if (node->kind != FG_KIND_GROUP) {
            seen.push_back({node, maximumOf(*node), loadField(node->accessFlags)});
            continue;
        }
        for (int i = 0; i < node->value.group.childCount; ++i) see(node->value.group.children[i], seen);
    }
}

std::shared_ptr<const std::string> DescriptionDocument::of(const Fg_ParameterInfo& registry,
                                                           const char* modelName, int port) {
    const std::lock_guard lock(mutex_);
    now_.clear();
    see(registry.getRegisterInfo(port), now_);  // before the document: what changes meanwhile is seen next
    if (document_ == nullptr || port != port_ || now_ != seen_) {
        document_ =
            std::make_shared<const std::string>(ParameterInfoBuilderXML(registry, modelName, port).build());
        port_ = port;
        seen_.swap(now_);
    }
    return document_;
}

}  // namespace marovine
