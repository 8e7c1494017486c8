#pragma once

/// Records of the C interface that may grow: each begins with its size in bytes, as its caller knows it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "marovine/BoardCodes.h"

namespace virtualboard {

/// Whether a record can be of this size: those of the first version are whole, and no later one is huge.
template <typename Record>
bool isRecordSize(std::uint32_t size) {
    static_assert(std::is_trivially_copyable_v<Record> && offsetof(Record, size) == 0);
    constexpr std::uint32_t kMost = 4096;
    return size >= sizeof(Record) && size <= kMost;
}

/// 0, or `kWrongRecord` for a record of an impossible size.
template <typename Record>
int checkRecord(const Record* asked) {
    return isRecordSize<Record>(asked->size) ? kOk : kWrongRecord;
}

/// Fills a caller's record, and with zeros what it has beyond the fields known here. 0 or `kWrongRecord`.
template <typename Record>
int answerRecord(Record known, Record* asked) {
    const std::uint32_t size = asked->size;
    if (!isRecordSize<Record>(size)) return kWrongRecord;
    known.size = static_cast<std::uint32_t>(std::min<std::size_t>(size, sizeof(Record)));
    auto* bytes = reinterpret_cast<std::byte*>(asked);
    std::memset(bytes, 0, size);
    std::memcpy(bytes, &known, known.size);
    return kOk;
}

/// Takes a caller's record. A later version's further fields must be 0, since nobody here knows them. 0 or
/// `kWrongRecord`.
template <typename Record>
int takeRecord(const Record* given, Record& known) {
    const std::uint32_t size = given->size;
    if (!isRecordSize<Record>(size)) return kWrongRecord;
    const auto* bytes = reinterpret_cast<const std::byte*>(given);
    if (std::any_of(bytes + sizeof(Record), bytes + size, [](std::byte b) { return b != std::byte{0}; }))
        return kWrongRecord;
    std::memcpy(&known, bytes, sizeof(Record));
    return kOk;
}

}  // namespace virtualboard
