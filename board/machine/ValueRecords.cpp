#include "board/machine/ValueRecords.h"

#include <bit>
#include <cstdlib>
#include <cstring>

#include "board/machine/Guarded.h"

namespace virtualboard {

namespace {

/// Bytes for somebody who frees them with `VirtualBoardFree`.
void* block(std::size_t bytes) {
    void* memory = std::malloc(bytes != 0 ? bytes : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

/// What follows from the C++ type of a number.
template <typename T>
constexpr FgParamTypes typeOf = std::is_same_v<T, double>          ? FG_TYPE_DOUBLE
                                : std::is_same_v<T, std::int32_t>  ? FG_TYPE_INT32
                                : std::is_same_v<T, std::uint32_t> ? FG_TYPE_UINT32
                                : std::is_same_v<T, std::int64_t>  ? FG_TYPE_INT64
                                                                   : FG_TYPE_UINT64;

/// A write's record with room for its value and texts behind it, all in one block.
struct PackedWrite {
    VirtualBoardWrite write;
    VirtualBoardValue value;
};

std::size_t elementBytes(const VirtualBoardValue& value) {
    return value.elements != nullptr ? value.count * sizeof(std::uint32_t) : 0;
}
std::size_t textBytes(const VirtualBoardValue& value) {
    return value.text != nullptr ? value.count + 1 : 0;
}

template <typename T>
const T* copied(const T* from, std::size_t bytes, char*& to) {
    if (from == nullptr) return nullptr;
    std::memcpy(to, from, bytes);
    return reinterpret_cast<const T*>(std::exchange(to, to + bytes));
}

}  // namespace

VirtualBoardValue recordOf(const Value& value) {
    VirtualBoardValue record{.size = sizeof(VirtualBoardValue),
                             .type = FG_TYPE_UINT32,
                             .integer = 0,
                             .real = 0,
                             .text = nullptr,
                             .elements = nullptr,
                             .count = 0};
    std::visit(
        [&record](const auto& held) {
            using T = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<T, std::string>) {
                record.type = FG_TYPE_TEXT;
                record.text = held.c_str();
                record.count = held.size();
            } else if constexpr (std::is_same_v<T, std::vector<std::uint32_t>>) {
                static constexpr std::uint32_t nothing = 0;  // a field is told by its elements
                record.type = FG_TYPE_FIELD_ACCESS;
                record.elements = held.empty() ? &nothing : held.data();
                record.count = held.size();
            } else {
                record.type = typeOf<T>;
                if constexpr (std::is_same_v<T, double>) {
                    record.real = held;
                } else {
                    record.integer = static_cast<std::int64_t>(held);
                }
            }
        },
        value);
    return record;
}

Value fromRecord(const VirtualBoardValue& record) {
    const auto fits = [&record](auto wanted) {
        using T = decltype(wanted);
        if (!std::in_range<T>(record.integer))
            throw std::invalid_argument("the integer is wider than its type");
        return Value(static_cast<T>(record.integer));
    };
    switch (record.type) {
        case FG_TYPE_INT32:
            return fits(std::int32_t{});
        case FG_TYPE_UINT32:
            return fits(std::uint32_t{});
        case FG_TYPE_INT64:
            return record.integer;
        case FG_TYPE_UINT64:
            return static_cast<std::uint64_t>(record.integer);
        case FG_TYPE_DOUBLE:
            return record.real;
        case FG_TYPE_TEXT:
            return std::string(given(record.text), record.count);
        case FG_TYPE_FIELD_ACCESS: {
            const auto elements = run(record.elements, record.count);
            return std::vector(elements.begin(), elements.end());
        }
        default:
            throw std::invalid_argument("a value has no type " + std::to_string(record.type));
    }
}

VirtualBoardWrite recordOf(const Write& write, VirtualBoardValue& value) {
    value = recordOf(write.value);
    return {.size = sizeof(VirtualBoardWrite),
            .id = write.id,
            .type = static_cast<std::uint32_t>(write.type),
            .result = write.result,
            .firstIndex = write.firstIndex,
            .reserved = 0,
            .name = write.name.c_str(),
            .value = &value,
            .next = nullptr};
}

Write fromRecord(const VirtualBoardWrite& record) {
    return {.name = record.name,
            .id = record.id,
            .type = static_cast<FgParamTypes>(record.type),
            .value = fromRecord(*record.value),
            .firstIndex = record.firstIndex,
            .result = record.result};
}

const char* handedOut(std::string_view text) {
    auto* copy = static_cast<char*>(block(text.size() + 1));
    copy[text.copy(copy, text.size())] = '\0';
    return copy;
}

const std::uint32_t* handedOut(std::span<const std::uint32_t> elements) {
    return static_cast<const std::uint32_t*>(
        std::memcpy(block(elements.size_bytes()), elements.data(), elements.size_bytes()));
}

const VirtualBoardWrite* handedOut(const std::vector<Write>& writes) {
    if (writes.empty()) return nullptr;
    std::vector<PackedWrite> packed(writes.size());
    std::size_t elements = 0;
    std::size_t texts = 0;
    for (std::size_t i = 0; i < writes.size(); ++i) {
        packed[i].write = recordOf(writes[i], packed[i].value);
        elements += elementBytes(packed[i].value);
        texts += textBytes(packed[i].value) + writes[i].name.size() + 1;
    }
    // Records, then elements, then texts: each begins where it may.
    auto* records = static_cast<PackedWrite*>(block(packed.size() * sizeof(PackedWrite) + elements + texts));
    auto* nextElements = reinterpret_cast<char*>(records + packed.size());
    char* nextText = nextElements + elements;
    for (std::size_t i = 0; i < writes.size(); ++i) {
        auto& [write, value] = packed[i];
        value.elements = copied(value.elements, elementBytes(value), nextElements);
        value.text = copied(value.text, textBytes(value), nextText);
        write.name = copied(write.name, writes[i].name.size() + 1, nextText);
        write.value = &records[i].value;
        write.next = i + 1 < writes.size() ? &records[i + 1].write : nullptr;
        records[i] = packed[i];
    }
    return &records->write;
}

}  // namespace virtualboard
