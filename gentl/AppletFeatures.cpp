/// The applet's own parameters as features, below the category "Applet".

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "gentl/RemoteDevice.h"
#include "tables/SdkParameterTable.h"

namespace marovine::gentl {

namespace {

using host::Parameter;

/// The design's debug points are counted from 0.
constexpr std::int64_t kLastDebugPoint = 1;

/// Whether a parameter can be set in any state.
bool isEverWritable(const Parameter& parameter) {
    const auto* row = findSdkParameter(parameter.name);
    return row != nullptr ? row->access == marovine::Access::ReadWrite : parameter.writable;
}

/// Parameters that take less than their description says: the largest value that is accepted.
struct Narrower {
    std::string_view parameter;
    std::int64_t (*maximum)(const RemoteDevice& device);
};
constexpr std::array kNarrower{
    Narrower{"FG_IMG_SELECT",
             [](const RemoteDevice& device) { return device.integer("FG_IMG_SELECT_PERIOD") - 1; }},
    Narrower{"FG_DEBUGSOURCE", [](const RemoteDevice&) { return kLastDebugPoint; }},
};

Visibility visibilityOf(const Parameter& parameter) {
    if (parameter.group.starts_with("Miscellaneous > Debug")) return Visibility::Guru;
    const bool rare = parameter.group.starts_with("Miscellaneous") || parameter.group.starts_with("Legacy");
    return rare ? Visibility::Expert : Visibility::Beginner;
}

Width widthOf(const Parameter& parameter) {
    switch (parameter.kind) {
        case FG_KIND_UINT32:
            return {.bytes = 4, .isSigned = false};
        case FG_KIND_INT32:
            return {.bytes = 4, .isSigned = true};
        case FG_KIND_UINT64:
            return {.bytes = 8, .isSigned = false};
        default:
            return {};
    }
}

}  // namespace

void RemoteDevice::describeApplet(NodeMap& nodes) {
    for (const auto& parameter : applet_.tree()) describeParameter(nodes, parameter);
}

void RemoteDevice::describeParameter(NodeMap& nodes, const Parameter& parameter) {
    const std::string name = parameter.name;
    const bool writable = isEverWritable(parameter);
    Feature feature{.name = name,
                    .category = "Applet > " + parameter.group,
                    .toolTip = applet_.description(name),
                    .displayName = parameter.displayName,
                    .unit = parameter.unit,
                    .visibility = visibilityOf(parameter),
                    .movedBy = moversOf(name),
                    .readOut = !writable,
                    .custom = true};
    if (writable) {
        feature.locked = [this, name] { return isLocked(name); };
        feature.whyLocked = [this, name] { return whyLocked(name); };
    }

    /// One end of the range as it is now.
    const auto end = [this, name](auto zero, host::Value host::Range::*which) {
        using T = decltype(zero);
        return [this, name, which]() -> T {
            const auto range = applet_.range(name);
            return range ? static_cast<T>(host::numberOf((*range).*which).value_or(0)) : T{};
        };
    };
    const auto numbers = [&]<class T>(T zero, std::function<void(T)> write) {
        Access<T> access{
            .read = [this, name] { return static_cast<T>(host::numberOf(applet_.get(name)).value()); }};
        if (!writable) return access;
        access.write = std::move(write);
        if (!parameter.range) return access;
        access.minimum = end(zero, &host::Range::minimum);
        access.maximum = end(zero, &host::Range::maximum);
        if (parameter.hasStep() && std::is_integral_v<T>)
            access.increment = end(zero, &host::Range::increment);
        return access;
    };
    const std::function<void(std::int64_t)> writeInteger = [this, name](std::int64_t value) {
        setInteger(name, value);
    };

    auto integers = numbers(std::int64_t{0}, writeInteger);
    if (const auto narrower = std::ranges::find(kNarrower, name, &Narrower::parameter);
        narrower != kNarrower.end())
        integers.maximum = [this, narrower] { return narrower->maximum(*this); };

    switch (parameter.kind) {
        case FG_KIND_DOUBLE:
            nodes.real(
                feature,
                numbers(0.0, std::function<void(double)>([this, name](double value) { set(name, value); })));
            break;
        case FG_KIND_ENUMERATION: {
            std::vector<EntryNode> entries;
            for (const auto& entry : parameter.entries)
                entries.push_back({entry.constantName, entry.value, entry.displayName});
            nodes.enumeration(feature, entries, integers);
            break;
        }
        case FG_KIND_TEXT: {
            TextAccess access{.read = [this, name] { return std::get<std::string>(applet_.get(name)); }};
            if (writable) access.write = [this, name](const std::string& text) { set(name, text); };
            nodes.text(feature, access);
            break;
        }
        case FG_KIND_UINT32_FIELD: {
            TableAccess access{.elements = parameter.elements,
                               .read = [this, name](std::uint32_t first, std::uint32_t count) {
                                   return applet_.getElements(name, first, count);
                               }};
            if (writable)
                access.write = [this, name](std::uint32_t first, const host::Field& elements) {
                    setElements(name, first, elements);
                };
            nodes.table(feature, access);
            break;
        }
        default:
            nodes.integer(feature, integers, widthOf(parameter));
    }
}

}  // namespace marovine::gentl
