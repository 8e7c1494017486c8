/// Which signal drives which output, control line, analyzer and custom event, and the two legacy views on
/// that.

#include <algorithm>
#include <array>
#include <string_view>

#include "parameters/FgGxWrapperImpl.h"
#include "tables/RouteTable.h"
#include "tables/SignalTable.h"

namespace error = marovine::error;
using marovine::applySetting;
using marovine::constant;
using marovine::entriesOf;
using marovine::inside;
using marovine::kRouteCount;
using marovine::limits;
using marovine::LowOnZero;
using marovine::oneOf;
using marovine::ParameterCache;
using marovine::Route;
using marovine::RoutedValue;
using marovine::routeOf;
using marovine::routeTable;

namespace {

/// Where the cache keeps the two values of a route.
struct RouteFields {
    RoutedValue ParameterCache::*source;
    RoutedValue ParameterCache::*polarity;
};

/// Enters a parameter's field at its route, if it has one.
template <class T>
constexpr void enter(std::array<RouteFields, kRouteCount>&, std::string_view, T ParameterCache::*) {}
constexpr void enter(std::array<RouteFields, kRouteCount>& fields, std::string_view name,
                     RoutedValue ParameterCache::*field) {
    for (std::size_t route = 0; route < kRouteCount; ++route) {
        if (name == routeTable[route].source) fields[route].source = field;
        if (name == routeTable[route].polarity) fields[route].polarity = field;
    }
}

/// In the order of `Route`.
constexpr auto routeFields = [] {
    std::array<RouteFields, kRouteCount> result{};
#define PARAMETER(NAME, ...) enter(result, #NAME, &ParameterCache::NAME);
#include "tables/SdkParameters.def"
    return result;
}();

constexpr const RouteFields& fieldsOf(Route route) {
    return routeFields[static_cast<std::size_t>(route)];
}

/// Value in force of a source or polarity. The control lines keep one value only: what is requested (which a
/// configuration load may have filled) counts. For the others it is what the design was last given.
std::int32_t inForce(Route route, const RoutedValue& value) {
    return rowOf(route).readsApplied ? value.applied : value.requested;
}

/// A source of a control line under the names of the legacy selection. Ground and supply know no polarity.
struct LegacySource {
    std::int32_t source;
    std::int32_t plain;     ///< selection for high-active
    std::int32_t inverted;  ///< selection for low-active
};
constexpr auto legacySources = std::to_array<LegacySource>({
    {constant("FG_SIGNAL_CAM0_EXSYNC"), constant("CC_EXSYNC"), constant("CC_NOT_EXSYNC")},
    {constant("FG_SIGNAL_CAM0_EXSYNC2"), constant("CC_PRESCALER"), constant("CC_NOT_PRESCALER")},
    {constant("FG_SIGNAL_CAM0_FLASH"), constant("CC_STROBEPULSE"), constant("CC_NOT_STROBEPULSE")},
    {constant("GND"), constant("CC_GND"), constant("CC_GND")},
    {constant("VCC"), constant("CC_VCC"), constant("CC_VCC")},
    {constant("FG_SIGNAL_GPI_0"), constant("CC_GPI_0"), constant("CC_NOT_GPI_0")},
    {constant("FG_SIGNAL_GPI_1"), constant("CC_GPI_1"), constant("CC_NOT_GPI_1")},
    {constant("FG_SIGNAL_GPI_2"), constant("CC_GPI_2"), constant("CC_NOT_GPI_2")},
    {constant("FG_SIGNAL_GPI_3"), constant("CC_GPI_3"), constant("CC_NOT_GPI_3")},
    {constant("FG_SIGNAL_GPI_4"), constant("CC_GPI_4"), constant("CC_NOT_GPI_4")},
    {constant("FG_SIGNAL_GPI_5"), constant("CC_GPI_5"), constant("CC_NOT_GPI_5")},
    {constant("FG_SIGNAL_GPI_6"), constant("CC_GPI_6"), constant("CC_NOT_GPI_6")},
    {constant("FG_SIGNAL_GPI_7"), constant("CC_GPI_7"), constant("CC_NOT_GPI_7")},
    {constant("FG_SIGNAL_FRONT_GPI_0"), constant("CC_FRONT_GPI_0"), constant("CC_NOT_FRONT_GPI_0")},
    {constant("FG_SIGNAL_FRONT_GPI_1"), constant("CC_FRONT_GPI_1"), constant("CC_NOT_FRONT_GPI_1")},
    {constant("FG_SIGNAL_FRONT_GPI_2"), constant("CC_FRONT_GPI_2"), constant("CC_NOT_FRONT_GPI_2")},
    {constant("FG_SIGNAL_FRONT_GPI_3"), constant("CC_FRONT_GPI_3"), constant("CC_NOT_FRONT_GPI_3")},
});

constexpr bool selects(const LegacySource& row, std::int32_t selection) {
    return row.plain == selection || row.inverted == selection;
}

/// The row that has a legacy selection; null for one that names no source.
constexpr const LegacySource* findLegacy(std::int32_t selection) {
    for (const auto& row : legacySources)
        if (selects(row, selection)) return &row;
    return nullptr;
}
static_assert(std::ranges::all_of(marovine::CcSignalMappingLineExtended, [](const auto& entry) {
    return entry.value == constant("FG_OTHER") ||
           std::ranges::any_of(legacySources, [&](const auto& row) { return selects(row, entry.value); });
}));

/// The legacy selection that a source and a polarity amount to.
constexpr std::int32_t legacySelection(std::int32_t source, std::int32_t polarity) {
    const auto* row = std::ranges::find(legacySources, source, &LegacySource::source);
    if (row == legacySources.end()) return constant("FG_OTHER");
    if (polarity == constant("FG_HIGH") || row->plain == row->inverted) return row->plain;
    return polarity == constant("FG_LOW") ? row->inverted : constant("FG_OTHER");
}

/// Legacy digital output when one of its two outputs is driven by a signal; setting it changes nothing.
constexpr std::int32_t kOtherLevels = -1;

/// The source that gives an output a static level.
constexpr std::int32_t staticLevel(bool high) {
    return high ? constant("VCC") : constant("GND");
}

}  // namespace

// ---- routes ----

void FgGxWrapperImpl::getOutputMapping_P0(std::uint32_t* select, std::uint32_t* invert, std::int32_t signal,
                                          std::int32_t polarity) {
    const auto* row = marovine::findSignal(signal);
    if (row == nullptr) throw error::internalFailure;
    *select = row->multiplexerIndex;
    if (signal == constant("GND") || signal == constant("VCC"))
        *invert = signal == constant("VCC") ? 1 : 0;
    else
        *invert = polarity == constant("FG_LOW") ? 1 : 0;
}

void FgGxWrapperImpl::writeRoute(Route route, std::int32_t source, std::int32_t polarity) const {
    std::uint32_t select = 0;
    std::uint32_t invert = 0;
    getOutputMapping_P0(&select, &invert, source, polarity);
    design().write(rowOf(route).select, select);
    design().write(rowOf(route).invert, invert);
}

void FgGxWrapperImpl::setRouteSource(Route route, std::int32_t source, marovine::OnError onError) {
    auto& cached = cache_.*fieldsOf(route).source;
    applySetting(cached.requested, source, oneOf(source, rowOf(route).signals), onError, [&] {
        writeRoute(route, source, inForce(route, cache_.*fieldsOf(route).polarity));
        cached.applied = source;
    });
}

void FgGxWrapperImpl::setRoutePolarity(Route route, std::int32_t polarity, marovine::OnError onError) {
    auto& cached = cache_.*fieldsOf(route).polarity;
    applySetting(cached.requested, polarity, oneOf(polarity, LowOnZero), onError, [&] {
        writeRoute(route, inForce(route, cache_.*fieldsOf(route).source), polarity);
        cached.applied = polarity;
    });
}

// ---- legacy: two outputs as static levels ----

void FgGxWrapperImpl::set_sdk_param_FG_DIGIO_OUTPUT_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_DIGIO_OUTPUT, value, inside(value, limits<std::int32_t>("FG_DIGIO_OUTPUT")),
                 onError, [&] {
                     if (value == kOtherLevels) return;
                     set_sdk_param_FG_TRIGGEROUT_GPO_3_SOURCE_P0(staticLevel((value & 1) != 0), true);
                     set_sdk_param_FG_TRIGGEROUT_GPO_7_SOURCE_P0(staticLevel((value & 2) != 0), true);
                 });
}

void FgGxWrapperImpl::get_sdk_param_FG_DIGIO_OUTPUT_P0(std::int32_t* destination) {
    requireDestination(destination);
    const std::int32_t low = cache_.FG_TRIGGEROUT_GPO_3_SOURCE.applied;
    const std::int32_t high = cache_.FG_TRIGGEROUT_GPO_7_SOURCE.applied;
    *destination = kOtherLevels;
    for (const int value : {0, 1, 2, 3})
        if (low == staticLevel((value & 1) != 0) && high == staticLevel((value & 2) != 0))
            *destination = value;
}

// ---- legacy: a control line's source and polarity in one selection ----

void FgGxWrapperImpl::setLegacyCc(Route line, std::int32_t& cached, std::int32_t value,
                                  marovine::OnError onError) {
    applySetting(cached, value, oneOf(value, entriesOf("FG_CCSEL0")), onError, [&] {
        if (value == constant("FG_OTHER")) return;
        const LegacySource* row = findLegacy(value);
        if (row == nullptr) throw error::internalFailure;
        // Two settings one after the other: when the second fails, the first stays.
        setRouteSource(line, row->source, true);
        setRoutePolarity(line, value == row->plain ? constant("FG_HIGH") : constant("FG_LOW"), true);
    });
}

void FgGxWrapperImpl::getLegacyCc(Route line, std::int32_t* destination) const {
    requireDestination(destination);
    const auto& [source, polarity] = fieldsOf(line);
    *destination = legacySelection((cache_.*source).requested, (cache_.*polarity).requested);
}

void FgGxWrapperImpl::set_sdk_param_FG_CCSEL0_P0(int value, marovine::OnError onError) {
    setLegacyCc(routeOf("FG_CC1_SOURCE"), cache_.FG_CCSEL0, value, onError);
}
void FgGxWrapperImpl::get_sdk_param_FG_CCSEL0_P0(std::int32_t* destination) {
    getLegacyCc(routeOf("FG_CC1_SOURCE"), destination);
}

void FgGxWrapperImpl::set_sdk_param_FG_CCSEL1_P0(int value, marovine::OnError onError) {
    setLegacyCc(routeOf("FG_CC2_SOURCE"), cache_.FG_CCSEL1, value, onError);
}
void FgGxWrapperImpl::get_sdk_param_FG_CCSEL1_P0(std::int32_t* destination) {
    getLegacyCc(routeOf("FG_CC2_SOURCE"), destination);
}

void FgGxWrapperImpl::set_sdk_param_FG_CCSEL2_P0(int value, marovine::OnError onError) {
    setLegacyCc(routeOf("FG_CC3_SOURCE"), cache_.FG_CCSEL2, value, onError);
}
void FgGxWrapperImpl::get_sdk_param_FG_CCSEL2_P0(std::int32_t* destination) {
    getLegacyCc(routeOf("FG_CC3_SOURCE"), destination);
}

void FgGxWrapperImpl::set_sdk_param_FG_CCSEL3_P0(int value, marovine::OnError onError) {
    setLegacyCc(routeOf("FG_CC4_SOURCE"), cache_.FG_CCSEL3, value, onError);
}
void FgGxWrapperImpl::get_sdk_param_FG_CCSEL3_P0(std::int32_t* destination) {
    getLegacyCc(routeOf("FG_CC4_SOURCE"), destination);
}
