/// What follows from the parameters' rows alone: their handlers, the start of the cache, and the setters that
/// leave nothing to decide.

#include "parameters/ParameterHandlers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "tables/RouteTable.h"

namespace marovine {

namespace {

using Impl = FgGxWrapperImpl;

/// The cache field of a parameter, as a configuration load fills it.
template <auto member>
constexpr CacheSlot slotOf() {
    using T = std::remove_cvref_t<decltype(std::declval<ParameterCache&>().*member)>;
    if constexpr (std::is_same_v<T, NoField>)
        return std::monostate{};
    else if constexpr (std::is_same_v<T, RoutedValue>)
        return +[](ParameterCache& cache) -> std::int32_t& { return (cache.*member).requested; };
    else
        return +[](ParameterCache& cache) -> T& { return cache.*member; };
}

/// Reads the design parameter that a row names.
template <SdkIndex parameter>
inline constexpr auto designReader =
    &Impl::readDesign<designParameterOf(rowOf(parameter)), Result<rowOf(parameter).type>>;

/// Where the number lies that a read of a field gives, if the cache answers with one.
template <class T>
constexpr CachedNumber numberIn(std::size_t field, ReadFrom read) {
    const auto at = [](std::size_t place, std::size_t size) {
        return CachedNumber{static_cast<std::uint16_t>(place), static_cast<std::uint16_t>(size)};
    };
    if constexpr (std::is_same_v<T, RoutedValue>) {
        if (read == ReadFrom::Applied)
            return at(field + offsetof(RoutedValue, applied), sizeof(std::int32_t));
        if (read == ReadFrom::Cache)
            return at(field + offsetof(RoutedValue, requested), sizeof(std::int32_t));
    } else if constexpr (std::is_arithmetic_v<T>) {
        static_assert(sizeof(T) == 4 || sizeof(T) == 8);
        if (read == ReadFrom::Cache) return at(field, sizeof(T));
    }
    return {};
}

// clang-format off
#define SET_ReadOnly(NAME) ReadOnly{}
#define SET_Setter(NAME) &Impl::set_sdk_param_##NAME##_P0
#define SET_Unchanged SET_Setter
#define SET_Source SET_Setter
#define SET_Polarity SET_Setter
#define SET_Elements(NAME) FieldSetters{&Impl::set_sdk_param_##NAME##_P0, &Impl::set_sdk_param_##NAME##_P0}
#define READ_Cache(NAME) FromCache{}
#define READ_Applied(NAME) FromCache{}
#define READ_Getter(NAME) &Impl::get_sdk_param_##NAME##_P0
#define READ_Design(NAME) designReader<SdkIndex::NAME>
#define READ_Constant(NAME) Constant{rowOf(SdkIndex::NAME).constant}
#define READ_Forwarded(NAME) Forwarded{}
#define READ_InnerHandle(NAME) InnerHandle{}
// clang-format on

constexpr std::array<ParameterHandlers, sdkParameterCount> rows{{
#define PARAMETER(NAME, ID, TYPE, SET, READ, ...) \
    {.name = #NAME,                               \
     .set = SET_##SET(NAME),                      \
     .get = READ_##READ(NAME),                    \
     .slot = slotOf<&ParameterCache::NAME>()},
#include "tables/SdkParameters.def"
}};

static_assert(sizeof(ParameterCache) <= std::numeric_limits<std::uint16_t>::max());
constexpr auto numbers = std::to_array<CachedNumber>({
#define PARAMETER(NAME, ID, TYPE, SET, READ, ...) \
    numberIn<Field<ValueType::TYPE, SetBy::SET>>(offsetof(ParameterCache, NAME), ReadFrom::READ),
#include "tables/SdkParameters.def"
});

// ---- rows that would be misread ----

/// Whether a default or an initial value reaches its setter or its field as it stands: none, or one of the
/// parameter's kind.
constexpr bool fits(const DefaultValue& value, ValueType type) {
    switch (type) {
        case ValueType::Int32:
        case ValueType::Enumeration:
        case ValueType::UInt32:
            return !isGiven(value) || std::holds_alternative<std::int32_t>(value);
        case ValueType::Double:
            return !isGiven(value) || std::holds_alternative<double>(value);
        case ValueType::Text:
            return !isGiven(value) || std::holds_alternative<const char*>(value);
        default:
            return !isGiven(value);
    }
}
static_assert(std::ranges::all_of(sdkParameters,
                                  [](const auto& row) {
                                      return fits(row.defaultValue, row.type) &&
                                             fits(row.initialValue, row.type);
                                  }),
              "a value of another kind would be skipped or cut");

/// Whether the range is one of the parameter's type.
constexpr bool rangeFits(const SdkParameter& row) {
    switch (row.type) {
        case ValueType::Int32:
            return std::holds_alternative<Limits<std::int32_t>>(row.range);
        case ValueType::Enumeration:
            return std::holds_alternative<EntryList>(row.range);
        case ValueType::UInt32:
            return std::holds_alternative<Limits<std::uint32_t>>(row.range);
        case ValueType::Int64:
            return std::holds_alternative<Limits<std::int64_t>>(row.range);
        case ValueType::UInt64:
            return std::holds_alternative<Limits<std::uint64_t>>(row.range);
        case ValueType::Double:
            return std::holds_alternative<Limits<double>>(row.range);
        case ValueType::Text:
            return std::holds_alternative<TextAttribute>(row.range);
        case ValueType::UInt32Field:
            return std::holds_alternative<FieldLimits>(row.range);
        default:
            return std::holds_alternative<std::monostate>(row.range);
    }
}
static_assert(std::ranges::all_of(sdkParameters, rangeFits));

static_assert(std::ranges::all_of(sdkParameters,
                                  [](const auto& row) {
                                      const bool loaded = row.fileUse == FileUse::Preloaded ||
                                                          row.fileUse == FileUse::Applied;
                                      return !loaded || (row.access == Access::ReadWrite &&
                                                         row.type != ValueType::UInt32Field);
                                  }),
              "a key without a field would be passed over, even when missing");

// ---- start of the cache ----

template <class T>
void start(T& field, const DefaultValue& value) {
    std::visit(
        [&]<class V>(const V& v) {
            if constexpr (std::is_arithmetic_v<T> == std::is_arithmetic_v<V> && std::is_convertible_v<V, T>)
                field = static_cast<T>(v);
        },
        value);
}
void start(RoutedValue& field, const DefaultValue& value) {
    start(field.requested, value);
    field.applied = field.requested;
}

}  // namespace

constinit const std::array<ParameterHandlers, sdkParameterCount> parameterHandlers = rows;
const std::array<CachedNumber, sdkParameterCount> cachedNumbers = numbers;

ParameterCache::ParameterCache() {
#define PARAMETER(NAME, ...) start(NAME, rowOf(SdkIndex::NAME).initialValue);
#include "tables/SdkParameters.def"
}

}  // namespace marovine

// ---- setters without a decision of their own ----

using marovine::Argument;
using marovine::routeOf;
using marovine::SdkIndex;
using marovine::ValueType;

template <SdkIndex parameter, class T>
void FgGxWrapperImpl::setUnchanged(T& cached, T value, marovine::OnError onError) {
    constexpr const auto& row = rowOf(parameter);
    constexpr auto target = marovine::designParameterOf(row);
    const auto verdict = [&] {
        if constexpr (row.type == ValueType::Enumeration) {
            constexpr auto entries = std::get<marovine::EntryList>(row.range);
            return oneOf(value, entries);
        } else {
            constexpr auto range = std::get<marovine::Limits<T>>(row.range);
            return inside(value, range);
        }
    }();
    marovine::applySetting(cached, value, verdict, onError, [&] {
        if constexpr (std::is_same_v<T, double>)
            design().write(target, value);
        else
            design().write(target, static_cast<std::uint32_t>(value));
    });
}

#define DEFINE_ReadOnly(NAME, TYPE)
#define DEFINE_Setter(NAME, TYPE)
#define DEFINE_Elements(NAME, TYPE)
#define DEFINE_Unchanged(NAME, TYPE)                                                 \
    void FgGxWrapperImpl::set_sdk_param_##NAME##_P0(Argument<ValueType::TYPE> value, \
                                                    marovine::OnError onError) {     \
        setUnchanged<SdkIndex::NAME>(cache_.NAME, value, onError);                   \
    }
#define DEFINE_Source(NAME, TYPE)                                                           \
    void FgGxWrapperImpl::set_sdk_param_##NAME##_P0(int value, marovine::OnError onError) { \
        setRouteSource(routeOf(#NAME), value, onError);                                     \
    }
#define DEFINE_Polarity(NAME, TYPE)                                                         \
    void FgGxWrapperImpl::set_sdk_param_##NAME##_P0(int value, marovine::OnError onError) { \
        setRoutePolarity(routeOf(#NAME), value, onError);                                   \
    }
#define PARAMETER(NAME, ID, TYPE, SET, ...) DEFINE_##SET(NAME, TYPE)
#include "tables/SdkParameters.def"
