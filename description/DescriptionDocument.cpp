#include "description/DescriptionDocument.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <utility>

namespace marovine {

namespace {

/// The bits of the maximum, for the kinds that are described by one.
std::uint64_t maximumOf(const RegisterInfo& node) {
    switch (node.kind) {
        case FG_KIND_UINT32:
            return loadField(node.value.uint32.maximum);
        case FG_KIND_INT32:
            return static_cast<std::uint64_t>(std::int64_t{loadField(node.value.int32.maximum)});
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

void DescriptionDocument::build(const Fg_ParameterInfo& registry, const char* modelName, int port) {
    document_ = nullptr;  // until all of it belongs together again
    ParameterInfoBuilderXML builder(registry, modelName, port);
    auto document = std::make_shared<const std::string>(builder.build());
    described_ = builder.described();
    // What the document says counts: another thread may have changed it after `now_` was seen, and back
    // since.
    for (std::size_t i = 0; i < described_.size(); ++i) {
        const auto& places = described_[i].places;
        if (places.access.isGiven()) now_[i].accessFlags = places.accessFlags;
        if (places.maximum.isGiven()) now_[i].maximum = places.maximumBits;
    }
    document_ = std::move(document);
}

/// Puts what is now in the places of what was seen, in a copy: others may still read the present document.
void DescriptionDocument::update() {
    auto document = std::make_shared<std::string>(*document_);
    document_ = nullptr;    // until all of it belongs together again
    std::size_t shift = 0;  // by what the text so far has grown; wraps around where it has become shorter
    const auto put = [&](ParameterInfoGeneratorXML::Place& place, std::string_view text) {
        document->replace(place.at, place.length, text);
        shift += text.size() - place.length;
        place.length = text.size();
    };
    for (std::size_t i = 0; i < described_.size(); ++i) {
        auto& places = described_[i].places;
        const bool changed = now_[i] != seen_[i];
        places.access.at += shift;
        if (changed && places.access.isGiven())
            put(places.access, ParameterInfoGeneratorXML::accessText(now_[i].accessFlags));
        places.maximum.at += shift;
        if (changed && places.maximum.isGiven())
            put(places.maximum, ParameterInfoGeneratorXML::maximumText(*now_[i].node, now_[i].maximum));
    }
    document_ = std::move(document);
}

std::shared_ptr<const std::string> DescriptionDocument::of(const Fg_ParameterInfo& registry,
                                                           const char* modelName, int port) {
    const std::lock_guard lock(mutex_);
    now_.clear();
    see(registry.getRegisterInfo(port), now_);
    const bool sameNodes = std::ranges::equal(now_, seen_, {}, &Seen::node, &Seen::node);
    if (document_ == nullptr || port != port_ || !sameNodes)
        build(registry, modelName, port);
    else if (now_ != seen_)
        update();
    port_ = port;
    seen_.swap(now_);
    return document_;
}

}  // namespace marovine
