/// Sequences of typed sets and gets, with any id, type code and value. Every answer is a code; after a
/// refused set the parameter reads as before.

#include <array>
#include <cstdint>
#include <string>

#include "base/ErrorCodes.h"
#include "fuzz/Input.h"
#include "fuzz/OpenOnce.h"
#include "tables/SdkParameterSearch.h"

namespace {

using marovine::SdkParameter;
using marovine::ValueType;
using marovine::fuzz::Input;

constexpr auto typeCodes = std::to_array<FgParamTypes>(
    {FG_TYPE_UINT32, FG_TYPE_DOUBLE, FG_TYPE_UINT64, FG_TYPE_TEXT, FG_TYPE_FIELD_ACCESS, FG_TYPE_FIELD_INT});

/// Room for whatever a get may write without handing out a text.
std::array<char, 700000>& room() {
    static std::array<char, 700000> buffer{};
    return buffer;
}

void access(Fg_Struct* record, const SdkParameter& row, bool set, FgParamTypes type, Input& input) {
    if (row.type == ValueType::UInt32Field) {
        // Records must be what the type code says they are; what they say is any value.
        std::array<std::uint32_t, 512> values{};
        for (auto& value : values) value = input.take<std::uint16_t>();
        FieldParameterAccess block{input.take<std::int16_t>(), input.take<std::uint16_t>(),
                                   input.take<std::uint16_t>() % 400u, values.data()};
        FieldParameterInt_s element{input.take<std::uint32_t>(), input.take<std::uint32_t>()};
        void* place = type == FG_TYPE_FIELD_ACCESS ? static_cast<void*>(&block) : &element;
        if (set)
            Fg_setParameterWithType(record, row.id, place, 0, type);
        else
            Fg_getParameterWithType(record, row.id, place, 0, type);
        return;
    }
    if (!set) {
        Fg_getParameterWithType(record, row.id, room().data(), 0, type);
        return;
    }
    if (row.type == ValueType::Text) {
        // Texts name files; the fuzzer keeps to names that nobody has.
        const std::string text(input.take<std::uint8_t>() % 4 == 0 ? "" : "/nonexistent/fuzz");
        Fg_setParameterWithType(record, row.id, text.c_str(), 0, type);
        return;
    }
    const auto value = input.take<std::uint64_t>();
    std::uint64_t before = 0;
    std::uint64_t after = 0;
    Fg_getParameterWithType(record, row.id, &before, 0, FG_TYPE_UINT64);
    const int code = Fg_setParameterWithType(record, row.id, &value, 0, type);
    if (code == marovine::error::success) return;
    Fg_getParameterWithType(record, row.id, &after, 0, FG_TYPE_UINT64);
    // What is read from the design may have moved; what the cache answers must not.
    if (before != after && row.fileUse == marovine::FileUse::Applied) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fg_Struct* record = marovine::fuzz::openApplet();
    Input input(data, size);
    while (!input.empty()) {
        const auto choice = input.take<std::uint8_t>();
        const auto type = typeCodes[input.take<std::uint8_t>() % typeCodes.size()];
        const auto index = input.take<std::uint8_t>();
        if (index >= marovine::sdkParameterCount) {
            // Ids that may be anything, the routes past the SDK parameters among them.
            const auto id = input.take<std::int32_t>();
            if (!marovine::positionOf(id) && id <= 2000000)
                Fg_getParameterWithType(record, id, room().data(), choice, type);
            continue;
        }
        access(record, marovine::sdkParameters[index], choice % 2 == 0, type, input);
    }
    return 0;
}
