/// Fills the description registry: the catalogue, then the groups of direct access when they are switched on.

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "parameters/DesignTree.h"
#include "parameters/FgGxWrapperImpl.h"
#include "tables/Catalogue.h"

using marovine::kDesignIdBase;
using marovine::SdkParameter;

namespace {

/// The groups of a description tree by their path, created when first asked for.
class Groups {
 public:
    explicit Groups(Fg_ParameterInfo& registry) : registry_(registry) {}

    /// The group of a path such as "Digital I/O > GPO".
    RegisterInfo* at(std::string_view path) {
        // Parameters of one group come in a row.
        if (path != last_.first) last_ = {path, find(path)};
        return last_.second;
    }

 private:
    RegisterInfo* find(std::string_view path) {
        const auto known = groups_.find(path);
        if (known != groups_.end()) return known->second;
        constexpr std::string_view separator = " > ";
        const auto split = path.rfind(separator);
        const bool below = split != std::string_view::npos;
        RegisterInfo* parent = below ? find(path.substr(0, split)) : nullptr;
        const std::string name(below ? path.substr(split + separator.size()) : path);
        return groups_[path] = registry_.addGroupInfo(0, parent, name.c_str());
    }

    Fg_ParameterInfo& registry_;
    std::pair<std::string_view, RegisterInfo*> last_{};
    std::unordered_map<std::string_view, RegisterInfo*> groups_;
};

/// The registry's operation for a range of a type.
template <class T>
constexpr auto addInfo = nullptr;
template <>
constexpr auto addInfo<std::uint32_t> = &Fg_ParameterInfo::addInfoUInt;
template <>
constexpr auto addInfo<std::int32_t> = &Fg_ParameterInfo::addInfoInt;
template <>
constexpr auto addInfo<std::uint64_t> = &Fg_ParameterInfo::addInfoUInt64;
template <>
constexpr auto addInfo<std::int64_t> = &Fg_ParameterInfo::addInfoInt64;
template <>
constexpr auto addInfo<double> = &Fg_ParameterInfo::addInfoDouble;

/// Adds the node of a parameter; the alternative of its range decides the kind.
struct AddNode {
    Fg_ParameterInfo& registry;
    RegisterInfo* group;
    const SdkParameter& row;

    RegisterInfo* operator()(std::monostate) const { return nullptr; }
    template <class T>
    RegisterInfo* operator()(const marovine::Limits<T>& limits) const {
        return (registry.*addInfo<T>)(group, row.displayName, row.name, limits.minimum, limits.maximum,
                                      limits.increment, row.flags.access, row.flags.second, row.flags.publish,
                                      row.unit, row.id, 0);
    }
    RegisterInfo* operator()(marovine::EntryList entries) const {
        RegisterInfo* node =
            registry.addInfoEnum(group, row.displayName, row.name, static_cast<int>(entries.size()),
                                 row.flags.access, row.flags.second, row.flags.publish, row.unit, row.id, 0);
        int index = 0;
        for (const auto& entry : entries)
            registry.addEnumNameValue(node, index++, entry.displayName, entry.value, entry.constantName);
        return node;
    }
    RegisterInfo* operator()(const marovine::TextAttribute& text) const {
        return registry.addInfoString(group, row.displayName, row.name, text.attribute, row.flags.access,
                                      row.flags.second, row.flags.publish, row.unit, row.id, 0);
    }
    RegisterInfo* operator()(const marovine::FieldLimits& limits) const {
        return registry.addInfoUIntField(group, row.displayName, row.name, limits.elements, limits.minimum,
                                         limits.maximum, limits.increment, row.flags.access, row.flags.second,
                                         row.flags.publish, row.unit, row.id, 0);
    }
};

}  // namespace

void FgGxWrapperImpl::enterInRegistryMap(RegisterInfo* node) {
    if (node != nullptr) registryMaps_[0].insert(node->address, node);
}

void FgGxWrapperImpl::createUserParameters() {
    Groups groups(parameterInfo());
    std::array<RegisterInfo*, marovine::sdkParameterCount> nodes{};  // in list order
    for (const auto index : marovine::catalogue) {
        const SdkParameter& row = rowOf(index);
        nodes[static_cast<std::size_t>(index)] =
            std::visit(AddNode{parameterInfo(), groups.at(row.group), row}, row.range);
    }
    registryMaps_[0].reserve(marovine::describedCount);
    for (const auto index : marovine::catalogueById)
        enterInRegistryMap(nodes[static_cast<std::size_t>(index)]);
    if (directRegisterAccess) addRegisterGroup();
    if (!names_.designParameters().empty()) addDesignGroup();
    registryMaps_[0].settle();
}

void FgGxWrapperImpl::addRegisterGroup() {
    auto& registry = parameterInfo();
    RegisterInfo* group = registry.addGroupInfo(0, nullptr, marovine::kDirectRegisterAccessGroup);
    const int count = HapGetNrOfRegister(designHandle());
    for (int r = 1; r <= count; ++r) {
        const char* const nameInDesign = HapGetRegisterName(designHandle(), r);
        if (nameInDesign == nullptr) continue;
        const std::string name = nameInDesign;
        const int number = HapGetRegisterByName(designHandle(), nameInDesign);
        const int bits = HapGetRegisterBitRange(designHandle(), r);
        const int access = HapGetRegisterDirection(designHandle(), r) != 0 ? 7 : 1;
        const std::string displayName = name + " (" + std::to_string(bits) + ")";
        const std::string fullName = "DRA_" + name;
        const int id = number + marovine::kRegisterIdBase;
        // A design that reports no sensible width gets an empty or a full range.
        const std::uint64_t maximum =
            bits >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << std::max(bits, 0)) - 1;
        enterInRegistryMap(bits <= 32 ? registry.addInfoUInt(group, displayName.c_str(), fullName.c_str(), 0,
                                                             static_cast<std::uint32_t>(maximum), 1, access,
                                                             1, 1, nullptr, id, 0)
                                      : registry.addInfoUInt64(group, displayName.c_str(), fullName.c_str(),
                                                               0, maximum, 1, access, 1, 1, nullptr, id, 0));
    }
}

// ---- direct access to design parameters ----

namespace {

/// A leaf of the inner tree with the groups that lead to it, outermost first.
struct InnerLeaf {
    const RegisterInfo* leaf = nullptr;
    std::vector<const RegisterInfo*> path;
};

/// All scalar leaves of the inner tree by id; the first leaf of an id counts.
std::unordered_map<int, InnerLeaf> leavesOf(const RegisterInfo* root) {
    std::unordered_map<int, InnerLeaf> leaves;
    marovine::forEachScalarLeaf(root, [&](const RegisterInfo& leaf, const auto& path) {
        leaves.try_emplace(leaf.address, InnerLeaf{&leaf, path});
    });
    return leaves;
}

/// Copies a scalar leaf of the inner tree below a group; null for kinds that hold more than one value.
RegisterInfo* copyLeaf(Fg_ParameterInfo& registry, RegisterInfo* group, const RegisterInfo& leaf,
                       const char* name, int id) {
    const auto& v = leaf.value;
    const auto add = [&](auto operation, const auto& range) {
        return (registry.*operation)(group, leaf.displayName, name, range.minimum, range.maximum,
                                     range.increment, leaf.accessFlags, leaf.secondFlags, leaf.publish,
                                     leaf.unit, id, 0);
    };
    switch (leaf.kind) {
        case FG_KIND_UINT32:
            return add(addInfo<std::uint32_t>, v.uint32);
        case FG_KIND_INT32:
            return add(addInfo<std::int32_t>, v.int32);
        case FG_KIND_UINT64:
            return add(addInfo<std::uint64_t>, v.uint64);
        case FG_KIND_INT64:
            return add(addInfo<std::int64_t>, v.int64);
        case FG_KIND_DOUBLE:
            return add(addInfo<double>, v.real);
        case FG_KIND_TEXT:
            // The attribute is the applet's own: a runtime may keep something else in its place.
            return registry.addInfoString(group, leaf.displayName, name, nullptr, leaf.accessFlags,
                                          leaf.secondFlags, leaf.publish, leaf.unit, id, 0);
        case FG_KIND_ENUMERATION: {
            RegisterInfo* node =
                registry.addInfoEnum(group, leaf.displayName, name, v.enumeration.count, leaf.accessFlags,
                                     leaf.secondFlags, leaf.publish, leaf.unit, id, 0);
            for (int i = 0; i < v.enumeration.count; ++i)
                registry.addEnumNameValue(node, i, v.enumeration.displayNames[i], v.enumeration.values[i],
                                          v.enumeration.constantNames[i]);
            return node;
        }
        default:
            return nullptr;
    }
}

}  // namespace

void FgGxWrapperImpl::addDesignGroup() {
    auto& registry = parameterInfo();
    RegisterInfo* top = registry.addGroupInfo(0, nullptr, "Direct GX Access");
    const auto leaves = leavesOf(getUnwrappedParameterInfo());
    std::unordered_map<const RegisterInfo*, RegisterInfo*> copiedGroups;
    for (const auto& [name, id] : names_.designParameters()) {
        const auto found = leaves.find(id - kDesignIdBase);
        if (found == leaves.end()) continue;
        RegisterInfo* group = top;
        for (const RegisterInfo* inner : found->second.path) {
            auto& copy = copiedGroups[inner];
            if (copy == nullptr) copy = registry.addGroupInfo(0, group, inner->displayName);
            group = copy;
        }
        enterInRegistryMap(copyLeaf(registry, group, *found->second.leaf, name.c_str(), id));
    }
}
