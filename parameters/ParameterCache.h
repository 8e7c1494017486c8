#pragma once

/// The parameter cache: the value of every SDK parameter that its setter last accepted, in a field of the
/// parameter's name.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "tables/SdkParameter.h"

namespace marovine {

/// Entries of one lookup table: 8 bits in, 8 bits out.
inline constexpr std::size_t kLutEntries = 256;
using LookupTable = std::array<std::uint32_t, kLutEntries>;
/// The channels that have a table each, in the order in which the tables are written.
enum class LutChannel : std::uint8_t { Red, Green, Blue };

/// A source or a polarity: what was asked for, and what the design was last given successfully.
struct RoutedValue {
    std::int32_t requested = 0;
    std::int32_t applied = 0;
};

/// In place of a field for what is only read.
struct NoField {};

/// How the values of a type are kept.
template <ValueType>
struct KeptAs {
    using type = std::int32_t;
};
template <>
struct KeptAs<ValueType::UInt32> {
    using type = std::uint32_t;
};
template <>
struct KeptAs<ValueType::Int64> {
    using type = std::int64_t;
};
template <>
struct KeptAs<ValueType::UInt64> {
    using type = std::uint64_t;
};
template <>
struct KeptAs<ValueType::Double> {
    using type = double;
};
template <>
struct KeptAs<ValueType::Text> {
    using type = std::string;
};
template <>
struct KeptAs<ValueType::UInt32Field> {
    using type = LookupTable;
};
template <ValueType type>
using Kept = typename KeptAs<type>::type;

/// The cache field of a parameter.
template <ValueType type, SetBy set>
using Field = std::conditional_t<
    set == SetBy::ReadOnly, NoField,
    std::conditional_t<set == SetBy::Source || set == SetBy::Polarity, RoutedValue, Kept<type>>>;

/// The value as a setter's argument, and as what a getter writes.
template <ValueType type>
using Argument = std::conditional_t<type == ValueType::Text, const char*, Kept<type>>;
template <ValueType type>
using Result = std::conditional_t<type == ValueType::Text, char, Kept<type>>;

/// The cache of one instance. A new one holds the initial values, which stay when the instance attaches to a
/// board that is already configured.
struct ParameterCache {
    ParameterCache();

#define PARAMETER(NAME, ID, TYPE, SET, ...) [[no_unique_address]] Field<ValueType::TYPE, SetBy::SET> NAME{};
#include "tables/SdkParameters.def"
};

/// What the test-pattern generator really does, derived from what was asked of it. Unset (zero) until the
/// initialisation routines have run.
struct SimulatorState {
    std::uint32_t effectiveWidth = 0;     ///< pixels, a multiple of 8
    std::uint32_t effectiveLineGap = 0;   ///< pixels, a multiple of 8
    std::uint32_t effectiveHeight = 0;    ///< lines
    std::uint32_t effectiveFrameGap = 0;  ///< lines
    double maximumPixelRate = 0.0;        ///< pixels per second
    double computedFrameRate = 0.0;       ///< Hz, derived after a speed change
};

/// One debug point of the design.
struct DebugEntry {
    enum class Kind : std::int32_t { Inject = 0, InjectMonitor = 1 };

    std::string name;  ///< at most 127 characters, as the path
    Kind kind = Kind::Inject;
    std::string path;
};

}  // namespace marovine
