#pragma once

/// The SDK parameters by id and by name, for calls that come often: tables made by the compiler, so that a
/// search is a few loads.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <type_traits>

#include "tables/SdkParameterTable.h"

namespace marovine {

namespace sdk_search {

/// List positions fit a byte; this one says that there is none.
inline constexpr std::uint8_t kNone = 255;
static_assert(sdkParameterCount < kNone);

// ---- by id: the page of an id, then its place there; page 0 is empty ----

inline constexpr std::uint32_t kPageSize = 32;
inline constexpr std::uint32_t kIdEnd = [] {
    std::int32_t last = 0;
    for (const auto& row : sdkParameters) last = std::max(last, row.id);
    return static_cast<std::uint32_t>(last) / kPageSize * kPageSize + kPageSize;
}();

inline constexpr std::size_t kPageCount = [] {
    std::array<bool, kIdEnd / kPageSize> used{};
    for (const auto& row : sdkParameters) used[static_cast<std::uint32_t>(row.id) / kPageSize] = true;
    return 1 + static_cast<std::size_t>(std::count(used.begin(), used.end(), true));
}();
static_assert(kPageCount <= 256, "the number of a page fits a byte");

struct IdTable {
    std::array<std::uint8_t, kIdEnd / kPageSize> pages{};
    std::array<std::array<std::uint8_t, kPageSize>, kPageCount> positions{};
};
inline constexpr IdTable idTable = [] {
    IdTable result;
    for (auto& page : result.positions) page.fill(kNone);
    std::uint8_t lastPage = 0;
    for (std::size_t i = 0; i < sdkParameterCount; ++i) {
        const auto id = static_cast<std::uint32_t>(sdkParameters[i].id);
        std::uint8_t& page = result.pages[id / kPageSize];
        if (page == 0) page = ++lastPage;
        std::uint8_t& position = result.positions[page][id % kPageSize];
        if (position != kNone) throw "two parameters have the same id";
        position = static_cast<std::uint8_t>(i);
    }
    return result;
}();

// ---- by name: open addressing, with steps to the next place ----

constexpr std::uint64_t wordAt(const char* text) {
    std::uint64_t word = 0;
    if (std::is_constant_evaluated())
        for (int i = 7; i >= 0; --i) word = word << 8 | static_cast<unsigned char>(text[i]);
    else
        std::memcpy(&word, text, sizeof word);
    return word;
}

/// Eight bytes at a time; the last eight overlap those before.
constexpr std::size_t hashOf(std::string_view name) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;
    std::uint64_t hash = name.size();
    if (name.size() < 8) {
        for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * factor;
    } else {
        for (std::size_t at = 0; at + 8 < name.size(); at += 8)
            hash = (hash ^ wordAt(name.data() + at)) * factor;
        hash = (hash ^ wordAt(name.data() + name.size() - 8)) * factor;
    }
    return static_cast<std::size_t>(hash >> 32);
}

/// A power of two, with room enough that most names stand where they are sought first.
inline constexpr std::size_t kNamePlaces = 1024;
static_assert(sdkParameterCount * 2 < kNamePlaces);

inline constexpr auto positionsByHash = [] {
    std::array<std::uint8_t, kNamePlaces> result{};
    result.fill(kNone);
    for (std::size_t i = 0; i < sdkParameterCount; ++i) {
        std::size_t place = hashOf(sdkParameters[i].name) % kNamePlaces;
        while (result[place] != kNone) place = (place + 1) % kNamePlaces;
        result[place] = static_cast<std::uint8_t>(i);
    }
    return result;
}();

/// The names with their lengths, close together.
inline constexpr auto names = [] {
    std::array<std::string_view, sdkParameterCount> result{};
    for (std::size_t i = 0; i < sdkParameterCount; ++i) result[i] = sdkParameters[i].name;
    return result;
}();

}  // namespace sdk_search

/// List position of an id, or nothing for an unknown one.
constexpr std::optional<std::size_t> positionOf(std::int32_t id) {
    const auto key = static_cast<std::uint32_t>(id);
    if (key >= sdk_search::kIdEnd) return std::nullopt;
    const auto& table = sdk_search::idTable;
    const std::uint8_t position =
        table.positions[table.pages[key / sdk_search::kPageSize]][key % sdk_search::kPageSize];
    return position != sdk_search::kNone ? std::optional<std::size_t>(position) : std::nullopt;
}

/// List position of a name, exactly as written, or nothing for an unknown one.
constexpr std::optional<std::size_t> positionOf(std::string_view name) {
    for (std::size_t place = sdk_search::hashOf(name);; ++place) {
        const std::uint8_t position = sdk_search::positionsByHash[place % sdk_search::kNamePlaces];
        if (position == sdk_search::kNone) return std::nullopt;
        if (sdk_search::names[position] == name) return position;
    }
}

}  // namespace marovine
