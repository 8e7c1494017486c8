/// Every export with failing memory: its first allocation fails, then its second, until the call succeeds.
/// And what must not allocate at all.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "marovine/BoardCodes.h"
#include "parameters/ParameterCache.h"
#include "tables/SdkParameterTable.h"
#include "tests/AppletFixture.h"
#include "tests/TemporaryFile.h"

namespace {

thread_local int allocationsLeft = -1;  ///< before one fails; below 0: none does
std::atomic<long> livingAllocations = 0;
thread_local long allocations = 0;  ///< ever made

void* allocate(std::size_t size, std::size_t alignment) {
    ++allocations;
    if (allocationsLeft >= 0 && allocationsLeft-- == 0) throw std::bad_alloc();
    void* const memory = std::aligned_alloc(alignment, (size + alignment) / alignment * alignment);
    if (memory == nullptr) throw std::bad_alloc();
    ++livingAllocations;
    return memory;
}

void release(void* memory) {
    if (memory != nullptr) --livingAllocations;
    std::free(memory);
}

}  // namespace

// The libraries of this process take these too.
void* operator new(std::size_t size) {
    return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}

namespace marovine::test {
namespace {

/// Calls with one allocation failing after the other; `afterFailure` sees each result, none when the call
/// threw.
template <class Call, class AfterFailure>
void failEachAllocation(Call call, AfterFailure afterFailure) {
    for (int n = 0;; ++n) {
        ASSERT_LT(n, 10000) << "never succeeds";
        std::optional<int> result;
        allocationsLeft = n;
        try {
            result = call();
        } catch (const std::bad_alloc&) {
        }
        if (std::exchange(allocationsLeft, -1) >= 0) return;
        SCOPED_TRACE("allocation " + std::to_string(n));
        afterFailure(result);
        if (testing::Test::HasFailure()) return;
    }
}

TEST(FailingMemory, OpeningGivesNullAndFreesEverything) {
    GXdevice* board = virtualboard::insertBoard();
    int error = 0;
    Fg_Struct record{};
    long left = 0;
    const auto open = [&] {
        const long before = livingAllocations;
        record.instance = Std_entry(board, &error, 0);
        left = livingAllocations - before;
        return error;
    };
    const auto openAndFree = [&] {
        EXPECT_EQ(0, open());
        EXPECT_EQ(0, Fg_FreeGrabber(&record));
    };
    openAndFree();
    openAndFree();  // whatever stays for the life of the process is there now
    failEachAllocation(open, [&](std::optional<int> result) {
        // The board may do without, as where it only looks what its signals did.
        if (*result == 0) {
            EXPECT_EQ(0, Fg_FreeGrabber(&record));
            return;
        }
        // The board's runtimes catch what fails in them, and keep what they have.
        EXPECT_NE(0, *result);
        EXPECT_EQ(nullptr, record.instance);
        if (*result == error::internalFailure) {
            EXPECT_GE(0, left) << "allocations; fewer when the board let go of what it had kept";
        }
    });
    EXPECT_EQ(0, Fg_FreeGrabber(&record));
    virtualboard::removeBoard(board);
}

TEST(FailingMemory, EveryExportFailsCleanlyAndTheNextCallWorks) {
    OpenApplet applet(0);
    applet.board().recordWrites(false);
    Fg_Struct* record = applet.record();
    const std::string name = "/a/name/that/is/longer/than/any/short/text/could/be.lut";
    const std::string other = name + ".other";
    const TemporaryFile file(".mcf");
    std::vector<char> buffer(1 << 20);
    ASSERT_EQ(0, applet.setText("FG_LUT_CUSTOM_FILE", name.c_str()));
    ASSERT_EQ(0, Fg_saveConfig(record, file.name()));
    struct Export {
        const char* what;
        bool passesOn;  ///< lets the exception out
        std::function<int()> call;
    };
    const int text = OpenApplet::idOf("FG_LUT_CUSTOM_FILE");
    std::int32_t type = constantOf("LUT_TYPE_PROCESSING");
    char* handedOut = nullptr;
    std::string constant = "FG_ON";
    const Export exports[] = {
        {"save", false, [&] { return Fg_saveConfig(record, file.name()); }},
        {"load", true, [&] { return Fg_loadConfig(record, file.name()); }},
        {"XML", false,
         [&] {
             std::size_t size = buffer.size();
             return Fg_getParameterInfoXML(record, 0, buffer.data(), &size);
         }},
        {"Info", false, [&] { return Info(4352, 0, 0, constant.data(), nullptr) - 1; }},
        {"text get", true,
         [&] { return Fg_getParameterWithType(record, text, &handedOut, 0, FG_TYPE_TEXT_POINTER); }},
        {"text given back", false,
         [&] { return Fg_freeParameterStringWithType(record, text, handedOut, 0, FG_TYPE_TEXT_POINTER); }},
        {"tables", true,
         [&] {
             return Fg_setParameterWithType(record, OpenApplet::idOf("FG_LUT_TYPE"), &type, 0, FG_TYPE_INT32);
         }},
        {"debug source name", true,
         [&] {
             return Fg_getParameterWithType(record, OpenApplet::idOf("FG_DEBUGSOURCENAME"), buffer.data(), 0,
                                            FG_TYPE_TEXT);
         }},
        {"status", false, [&] { return static_cast<int>(Fg_getStatusEx(record, 10, 0, 0, nullptr)) * 0; }},
        {"event", false, [&] { return Fg_getEventMask(record, "FG_OVERFLOW_CAM0") == 0; }},
        {"id", false, [&] { return Fg_getParameterIdByName(record, "FG_WIDTH") < 0; }},
        {"text set", true,
         [&] { return Fg_setParameterWithType(record, text, other.c_str(), 0, FG_TYPE_TEXT); }},
    };
    for (const auto& [what, passesOn, call] : exports) {
        SCOPED_TRACE(what);
        failEachAllocation(call, [&, passesOn = passesOn](std::optional<int> result) {
            // A write that the board had no memory for is refused by it; a load keeps such refusals to
            // itself.
            const bool byBoard = result == virtualboard::kInternalFailure || result == 0;
            EXPECT_TRUE(byBoard || passesOn == !result);
            EXPECT_EQ(byBoard  ? *result
                      : result ? error::internalFailure
                               : applet.lastError(),
                      applet.lastError());
            EXPECT_EQ(1024u, applet.get<std::uint32_t>("FG_WIDTH"));
            EXPECT_EQ(name, applet.getText("FG_LUT_CUSTOM_FILE"));
        });
    }
    EXPECT_EQ(0, Fg_saveConfig(record, file.name()));
    EXPECT_EQ(0, Fg_loadConfig(record, file.name()));
}

TEST(FailingMemory, TypedCallsWithoutTextAllocateNothing) {
    OpenApplet applet(0);
    applet.board().recordWrites(false);
    applet.board().setClockManual();  // the board keeps what its signals did meanwhile
    Fg_Struct* record = applet.record();
    const auto check = [&](const SdkParameter& row, std::span<std::byte> value, FgParamTypes type) {
        const auto call = [&](const char* what, auto function, std::span<std::byte> place) {
            // What a board, a logger or a loader makes once stays.
            function(record, row.id, place.data(), 0, type);
            const long before = allocations;
            function(record, row.id, place.data(), 0, type);
            EXPECT_EQ(before, allocations) << what << ' ' << row.name;
        };
        call("get", Fg_getParameterWithType, value);
        if (row.access == Access::ReadOnly) return;
        call("set", Fg_setParameterWithType, value);
        std::array<std::byte, 16> refused{};
        refused.fill(std::byte{0x7E});
        if (type == FG_TYPE_UINT32) call("refused set of", Fg_setParameterWithType, refused);
    };
    for (const auto& row : sdkParameters) {
        if (row.type == ValueType::Text || row.type == ValueType::Forwarded) continue;
        std::array<std::byte, 16> value{};
        if (row.type != ValueType::UInt32Field) {
            check(row, value, FG_TYPE_UINT32);
            continue;
        }
        FieldParameterInt_s element{};
        check(row, std::as_writable_bytes(std::span(&element, 1)), FG_TYPE_FIELD_INT);
        LookupTable table{};
        FieldParameterAccess block{
            .type = FG_TYPE_UINT32, .start = 0, .count = kLutEntries, .values = table.data()};
        check(row, std::as_writable_bytes(std::span(&block, 1)), FG_TYPE_FIELD_ACCESS);
    }
}

}  // namespace
}  // namespace marovine::test
