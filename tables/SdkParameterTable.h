#pragma once

/// The SDK parameters as data, in list order, with their lookups by id and by name. What a row says:
/// tables/SdkParameter.h.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "tables/SdkParameter.h"

namespace marovine {

/// Position of a parameter in the list, by its name.
enum class SdkIndex : std::uint16_t {
#define PARAMETER(NAME, ...) NAME,
#include "tables/SdkParameters.def"
};

namespace sdk_rows {

using enum FileUse;

inline constexpr auto sdkParameterRows = std::to_array<SdkParameter>({
#define PARAMETER(NAME, ID, TYPE, SET, READ, ...) \
    {.name = #NAME,                               \
     .id = ID,                                    \
     .type = ValueType::TYPE,                     \
     .set = SetBy::SET,                           \
     .read = ReadFrom::READ,                      \
     __VA_ARGS__},
#include "tables/SdkParameters.def"
});

}  // namespace sdk_rows

/// All SDK parameters in list order.
inline constexpr auto& sdkParameters = sdk_rows::sdkParameterRows;
inline constexpr std::size_t sdkParameterCount = sdkParameters.size();

constexpr const SdkParameter& rowOf(SdkIndex index) {
    return sdkParameters[static_cast<std::size_t>(index)];
}

/// The row of a name, searched one by one: for compile time and for tools; null for an unknown name.
constexpr const SdkParameter* findSdkParameter(std::string_view name) {
    for (const auto& row : sdkParameters)
        if (row.name == name) return &row;
    return nullptr;
}

/// The row of a parameter named in the code; an unknown name does not compile.
consteval const SdkParameter& sdkParameter(std::string_view name) {
    // Not by `findSdkParameter`: under the sanitizers g++ compares no address with null at compile time.
    for (const auto& row : sdkParameters)
        if (row.name == name) return row;
    throw "no SDK parameter of this name";
}

/// The id of a parameter: `sdkId("FG_WIDTH")`.
consteval std::int32_t sdkId(std::string_view name) {
    return sdkParameter(name).id;
}

/// The registered range of a parameter, as its setter checks it:
/// `limits<std::uint32_t>("FG_LINE_DOWNSCALE")`.
template <class T>
consteval Limits<T> limits(std::string_view name) {
    return std::get<Limits<T>>(sdkParameter(name).range);
}

/// The entries that a parameter accepts: `entriesOf("FG_EXSYNCON")`.
consteval EntryList entriesOf(std::string_view name) {
    return std::get<EntryList>(sdkParameter(name).range);
}

/// Position of a row in the list.
constexpr std::size_t indexOf(const SdkParameter& row) {
    return static_cast<std::size_t>(&row - sdkParameters.data());
}

}  // namespace marovine
