#pragma once

/// The columns of an SDK parameter's row. The rows stand in tables/topics/, one file per topic:
///
///     PARAMETER(name, id, type, set, read, .column = value, ...)
///
/// A column that a row leaves out has the value that is given here; columns are named in this order. The
/// host's texts are ISO-8859-1.

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <variant>

#include "tables/EnumerationTables.h"

namespace marovine {

/// The type in which a parameter's value crosses the host's untyped pointer.
enum class ValueType {
    Int32,
    Enumeration,  ///< signed 32-bit; the range names the allowed entries
    UInt32,
    Int64,
    UInt64,
    Double,
    Text,
    UInt32Field,  ///< table of 32-bit values, reached through field records
    Forwarded,    ///< the host runtime's own parameter; the type code of the call says what it is
};

/// What a set does. Whatever can be set has a member `set_sdk_param_<NAME>_P0` and a field of its name in the
/// parameter cache.
enum class SetBy {
    ReadOnly,   ///< refused
    Setter,     ///< a setter of its own
    Unchanged,  ///< checked against the range, kept, and written as it is to the first design parameter
    Source,  ///< chooses the signal of a route (tables/RouteTable.h); the design parameter is its multiplexer
    Polarity,  ///< inverts the signal of a route; the design parameter is its inverter
    Elements,  ///< setters of its own for an element and for a block
};

/// Where a read comes from.
enum class ReadFrom {
    Cache,        ///< the value last accepted
    Applied,      ///< the source or polarity that the design was last given successfully
    Getter,       ///< a member `get_sdk_param_<NAME>_P0`
    Design,       ///< the first design parameter
    Constant,     ///< the constant, signed 32-bit
    Forwarded,    ///< the inner handle, with the caller's own arguments
    InnerHandle,  ///< the inner handle, on DMA channel 0 as unsigned 32-bit
};

/// Whether a host may set the parameter.
enum class Access { ReadOnly, ReadWrite };

/// What the configuration file does with a parameter.
enum class FileUse {
    NotStored,   ///< not in the file
    StoredOnly,  ///< written, never read back: read-outs and selections
    Preloaded,   ///< read back into the parameter cache; reaches the design through other parameters
    Applied,     ///< read back into the cache, then given to the setter; these parameters have the defaults
};

/// A value that a new instance has: none, a whole number, a time or factor, or a text.
using DefaultValue = std::variant<std::monostate, std::int32_t, double, const char*>;

constexpr bool isGiven(const DefaultValue& value) {
    return !std::holds_alternative<std::monostate>(value);
}

/// Range and step of a number.
template <class T>
struct Limits {
    T minimum;
    T maximum;
    T increment;
};

/// A table of 32-bit values: number of elements, and the range of each.
struct FieldLimits {
    std::uint32_t elements;
    std::uint32_t minimum;
    std::uint32_t maximum;
    std::uint32_t increment;
};

/// A text parameter; the attribute is a file name pattern, or empty.
struct TextAttribute {
    const char* attribute;
};

/// What values a parameter takes; the alternative decides the kind of its registry node.
using ValueDescription =
    std::variant<std::monostate, Limits<std::uint32_t>, Limits<std::int32_t>, Limits<std::uint64_t>,
                 Limits<std::int64_t>, Limits<double>, EntryList, TextAttribute, FieldLimits>;

/// Access flags that parameters are given at run time.
inline constexpr std::int32_t kAccessReadOnly = 1;
inline constexpr std::int32_t kAccessReadWrite = 7;

/// The three small numbers that the host reads with a node.
struct NodeFlags {
    std::int32_t access;       ///< 1 read-only, 3 and 7 read and write
    std::int32_t second = 1;   ///< 2 for values whose range depends on others, else 1
    std::int32_t publish = 1;  ///< 0 keeps the parameter out of the XML description
};

/// One SDK parameter.
struct SdkParameter {
    const char* name;
    std::int32_t id;
    ValueType type;
    SetBy set;
    ReadFrom read;
    Access access = set == SetBy::ReadOnly ? Access::ReadOnly : Access::ReadWrite;
    DefaultValue defaultValue{};               ///< given to the setter when an instance is opened
    DefaultValue initialValue = defaultValue;  ///< in the cache before that; zero or empty when not given
    FileUse fileUse = isGiven(defaultValue) ? FileUse::Applied : FileUse::NotStored;
    std::int32_t constant = 0;
    std::array<std::string_view, 4> design{};  ///< full names of the design parameters that are its own

    // How a host sees it; what is forwarded has no description.
    const char* group = "";  ///< path of groups, separated by " > " (tables/Catalogue.h)
    const char* displayName = "";
    ValueDescription range{};
    NodeFlags flags{access == Access::ReadOnly ? kAccessReadOnly : kAccessReadWrite};
    const char* unit = nullptr;  ///< null when the value has no unit
    const char* description = nullptr;
};

/// What rows write ranges with: smallest value, largest value, step.
namespace sdk_rows {

inline constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

constexpr ValueDescription uint32(std::uint32_t minimum, std::uint32_t maximum, std::uint32_t increment) {
    return Limits<std::uint32_t>{minimum, maximum, increment};
}
constexpr ValueDescription int32(std::int32_t minimum, std::int32_t maximum, std::int32_t increment) {
    return Limits<std::int32_t>{minimum, maximum, increment};
}
constexpr ValueDescription uint64(std::uint64_t minimum, std::uint64_t maximum, std::uint64_t increment) {
    return Limits<std::uint64_t>{minimum, maximum, increment};
}
constexpr ValueDescription int64(std::int64_t minimum, std::int64_t maximum, std::int64_t increment) {
    return Limits<std::int64_t>{minimum, maximum, increment};
}
constexpr ValueDescription real(double minimum, double maximum, double increment) {
    return Limits<double>{minimum, maximum, increment};
}
constexpr ValueDescription entries(EntryList list) {
    return list;
}
constexpr ValueDescription text(const char* attribute) {
    return TextAttribute{attribute};
}
constexpr ValueDescription uint32Field(std::uint32_t elements, std::uint32_t minimum, std::uint32_t maximum,
                                       std::uint32_t increment) {
    return FieldLimits{elements, minimum, maximum, increment};
}

}  // namespace sdk_rows

}  // namespace marovine
