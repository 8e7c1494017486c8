/// The GenTL producer through its C interface: its modules, ports and features, and what consumers do wrong.

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/GenTLFixture.h"

namespace marovine::test {
namespace {

using testing::HasSubstr;

/// Every function with a handle, given any handle and otherwise nothing.
std::vector<std::function<GC_ERROR(void*)>> callsWithHandle() {
    return {
        [](void* h) { return GCReadPort(h, 0, nullptr, nullptr); },
        [](void* h) { return GCWritePort(h, 0, nullptr, nullptr); },
        [](void* h) { return GCReadPortStacked(h, nullptr, nullptr); },
        [](void* h) { return GCWritePortStacked(h, nullptr, nullptr); },
        [](void* h) { return GCGetPortURL(h, nullptr, nullptr); },
        [](void* h) { return GCGetPortInfo(h, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return GCGetNumPortURLs(h, nullptr); },
        [](void* h) { return GCGetPortURLInfo(h, 0, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return GCRegisterEvent(h, 1, nullptr); },
        [](void* h) { return GCUnregisterEvent(h, 1); },
        [](void* h) { return EventGetData(h, nullptr, nullptr, 0); },
        [](void* h) { return EventGetDataInfo(h, nullptr, 0, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return EventGetInfo(h, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return EventFlush(h); },
        [](void* h) { return EventKill(h); },
        [](void* h) { return TLClose(h); },
        [](void* h) { return TLGetInfo(h, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return TLGetNumInterfaces(h, nullptr); },
        [](void* h) { return TLGetInterfaceID(h, 0, nullptr, nullptr); },
        [](void* h) { return TLGetInterfaceInfo(h, nullptr, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return TLOpenInterface(h, nullptr, nullptr); },
        [](void* h) { return TLUpdateInterfaceList(h, nullptr, 0); },
        [](void* h) { return IFClose(h); },
        [](void* h) { return IFGetInfo(h, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return IFGetNumDevices(h, nullptr); },
        [](void* h) { return IFGetDeviceID(h, 0, nullptr, nullptr); },
        [](void* h) { return IFUpdateDeviceList(h, nullptr, 0); },
        [](void* h) { return IFGetDeviceInfo(h, nullptr, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return IFOpenDevice(h, nullptr, 4, nullptr); },
        [](void* h) { return IFGetParentTL(h, nullptr); },
        [](void* h) { return DevGetPort(h, nullptr); },
        [](void* h) { return DevGetNumDataStreams(h, nullptr); },
        [](void* h) { return DevGetDataStreamID(h, 0, nullptr, nullptr); },
        [](void* h) { return DevOpenDataStream(h, nullptr, nullptr); },
        [](void* h) { return DevGetInfo(h, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return DevClose(h); },
        [](void* h) { return DevGetParentIF(h, nullptr); },
        [](void* h) { return DSAnnounceBuffer(h, nullptr, 0, nullptr, nullptr); },
        [](void* h) { return DSAllocAndAnnounceBuffer(h, 0, nullptr, nullptr); },
        [](void* h) { return DSFlushQueue(h, -1); },
        [](void* h) { return DSStartAcquisition(h, 0, 0); },
        [](void* h) { return DSStopAcquisition(h, 7); },
        [](void* h) { return DSGetInfo(h, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return DSGetBufferID(h, 0, nullptr); },
        [](void* h) { return DSClose(h); },
        [](void* h) { return DSRevokeBuffer(h, nullptr, nullptr, nullptr); },
        [](void* h) { return DSQueueBuffer(h, nullptr); },
        [](void* h) { return DSGetBufferInfo(h, nullptr, 0, nullptr, nullptr, nullptr); },
        [](void* h) { return DSGetBufferChunkData(h, nullptr, nullptr, nullptr); },
        [](void* h) { return DSGetParentDev(h, nullptr); },
        [](void* h) { return DSGetNumBufferParts(h, nullptr, nullptr); },
        [](void* h) { return DSGetBufferPartInfo(h, nullptr, 0, 0, nullptr, nullptr, nullptr); },
    };
}

TEST(GenTLLife, NothingWorksBeforeTheLibraryIsInitialisedAndAfterItIsClosed) {
    TL_HANDLE system = nullptr;
    const auto nothingWorks = [&] {
        for (const auto& call : callsWithHandle()) EXPECT_EQ(GC_ERR_NOT_INITIALIZED, call(kForeign));
        EXPECT_EQ(GC_ERR_NOT_INITIALIZED, TLOpen(&system));
        EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GCCloseLib());
        EXPECT_THAT(
            textOf([](char* text, auto* size) { return GCGetInfo(TL_INFO_NAME, nullptr, text, size); }),
            "Marovine.cti");
    };
    nothingWorks();
    EXPECT_EQ(GC_ERR_SUCCESS, GCInitLib());
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, GCInitLib());
    EXPECT_EQ(GC_ERR_SUCCESS, TLOpen(&system));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, TLOpen(&system));
    EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    nothingWorks();
    EXPECT_EQ(GC_ERR_SUCCESS, GCInitLib());
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, TLClose(system)) << "closed with the library";
    EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib());
}

TEST_F(GenTL, RefusesHandlesThatAreNullForeignStaleOrOfAnotherModule) {
    const auto buffer = announce(1, 64).front();
    const EVENT_HANDLE event = newBuffers();
    for (const auto& call : callsWithHandle())
        for (void* handle : {static_cast<void*>(nullptr), kForeign})
            EXPECT_EQ(GC_ERR_INVALID_HANDLE, call(handle));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(stream, stream));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSClose(device));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventKill(buffer));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, TLClose(event));
    EXPECT_THAT(lastError(), HasSubstr("a handle of another sort"));
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(interface));
    for (void* stale : {interface, device, remote, stream, buffer, event})
        for (const auto& call : callsWithHandle()) EXPECT_EQ(GC_ERR_INVALID_HANDLE, call(stale));
    EXPECT_THAT(lastError(), HasSubstr("closed or foreign"));
}

TEST_F(GenTL, ListsOpensOnceAndKnowsTheParents) {
    void* above = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DSGetParentDev(stream, &above));
    EXPECT_EQ(device, above);
    EXPECT_EQ(GC_ERR_SUCCESS, DevGetParentIF(device, &above));
    EXPECT_EQ(interface, above);
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetParentTL(interface, &above));
    EXPECT_EQ(system, above);
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, IFOpenDevice(interface, deviceId(interface).c_str(), 4, &above));
    EXPECT_EQ(GC_ERR_INVALID_ID, IFOpenDevice(interface, "nobody", 4, &above));
    EXPECT_EQ(GC_ERR_INVALID_INDEX, [&] {
        std::size_t size = 0;
        return IFGetDeviceID(interface, 1, nullptr, &size);
    }());
    const auto status = [&] {
        return answerOf<std::int32_t>([&](auto* type, void* place, auto* size) {
            return IFGetDeviceInfo(interface, deviceId(interface).c_str(), DEVICE_INFO_ACCESS_STATUS, type,
                                   place, size);
        });
    };
    EXPECT_EQ(DEVICE_ACCESS_STATUS_OPEN_READWRITE, status());
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(device));
    EXPECT_EQ(DEVICE_ACCESS_STATUS_READWRITE, status());
    ASSERT_EQ(GC_ERR_SUCCESS,
              IFOpenDevice(interface, deviceId(interface).c_str(), DEVICE_ACCESS_READONLY, &device));
    ASSERT_EQ(GC_ERR_SUCCESS, DevGetPort(device, &remote));
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, write("FG_WIDTH", std::uint32_t{512})) << "opened for reading only";
    EXPECT_EQ(1024u, read<std::uint32_t>("FG_WIDTH"));
}

TEST_F(GenTL, EveryPortHasItsDocumentAndKeepsToItsAddresses) {
    const auto buffer = announce(1, 64).front();
    for (PORT_HANDLE port : {system, interface, device, remote, stream, buffer}) {
        const std::string text = document(port);
        EXPECT_TRUE(text.starts_with("<?xml") && text.ends_with("</RegisterDescription>\n"));
        const std::string url =
            textOf([&](char* place, auto* size) { return GCGetPortURL(port, place, size); });
        char length[32];
        std::snprintf(length, sizeof length, ";%zx?SchemaVersion=1.1.0", text.size());
        EXPECT_TRUE(url.starts_with("Local:Marovine_") && url.ends_with(length)) << url;
        std::uint8_t byte = 0;
        for (const std::uint64_t nowhere :
             {std::uint64_t{0}, std::uint64_t{0xFFFF}, 0x40000000 + text.size(), ~std::uint64_t{0}}) {
            std::size_t size = 1;
            EXPECT_EQ(GC_ERR_INVALID_ADDRESS, GCReadPort(port, nowhere, &byte, &size));
            EXPECT_EQ(GC_ERR_INVALID_ADDRESS, GCWritePort(port, nowhere, &byte, &size));
        }
        for (std::size_t size : {std::size_t{0}, std::size_t{1} << 63, ~std::size_t{0}}) {
            EXPECT_NE(GC_ERR_SUCCESS, GCReadPort(port, 0x10000, &byte, &size));
            EXPECT_NE(GC_ERR_SUCCESS, GCWritePort(port, 0x10000, &byte, &size));
            EXPECT_NE(GC_ERR_SUCCESS, GCReadPort(port, 0x40000000, &byte, &size));
        }
        std::size_t size = 1;
        EXPECT_EQ(GC_ERR_ACCESS_DENIED, GCWritePort(port, 0x40000000, &byte, &size));
    }
}

TEST_F(GenTL, RegistersReachTheAppletAndRefusalsSayWhy) {
    EXPECT_EQ(GC_ERR_SUCCESS, write("FG_XOFFSET", std::uint32_t{12288}));
    EXPECT_EQ(GC_ERR_INVALID_VALUE, write("FG_WIDTH", std::uint32_t{4104}));
    EXPECT_THAT(lastError(), HasSubstr("above 4096, because FG_XOFFSET is 12288; nearest accepted: 4096"));
    EXPECT_EQ(1024u, read<std::uint32_t>("FG_WIDTH"));
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, write("FG_WIDTH", std::uint64_t{2048}))
        << "the register has four bytes";
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, write("FG_CAMSTATUS", std::uint32_t{1}));
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, write("FG_IMGTRIGGERINSRC", std::int32_t{3}));
    EXPECT_THAT(lastError(), HasSubstr("because FG_IMGTRIGGERMODE is FREE_RUN"));
    EXPECT_EQ(GC_ERR_SUCCESS, write("FG_LINEEXPOSURE", 33.5));
    EXPECT_EQ(33.5, read<double>("FG_LINEEXPOSURE"));
    EXPECT_EQ(GC_ERR_INVALID_VALUE, write("FG_PROCESSING_GAMMA", std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(1.0, read<double>("FG_PROCESSING_GAMMA"));
    EXPECT_EQ(GC_ERR_INVALID_VALUE, write("AcquisitionStart", std::int32_t{2})) << "a command takes 1";
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, write("AcquisitionFrameCount", std::int64_t{2})) << "not in this mode";
    EXPECT_EQ(GC_ERR_INVALID_VALUE, write("TriggerMode", std::int32_t{2}));
    EXPECT_EQ(GC_ERR_SUCCESS, write("TLParamsLocked", std::int64_t{1}));
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, write("FG_WIDTH", std::uint32_t{512}));
    EXPECT_THAT(lastError(), HasSubstr("TLParamsLocked is 1"));

    // Stacked: what stands before the one that fails is done, and counted.
    std::uint32_t period[2] = {8, 16};
    double exposure = 1e9;
    PORT_REGISTER_STACK_ENTRY entries[] = {{address(remote, "FG_XOFFSET"), &period[0], 4},
                                           {address(remote, "FG_LINEEXPOSURE"), &exposure, 8},
                                           {address(remote, "FG_XOFFSET"), &period[1], 4}};
    std::size_t count = 3;
    EXPECT_EQ(GC_ERR_INVALID_VALUE, GCWritePortStacked(remote, entries, &count));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(8u, read<std::uint32_t>("FG_XOFFSET"));
}

TEST_F(GenTL, WhatIsRefusedSaysItsTypeAndTheErrorStaysToBeTold) {
    char text[4096] = "";
    std::size_t size = 1;
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, DevGetInfo(device, DEVICE_INFO_VENDOR, &type, text, &size));
    EXPECT_EQ(INFO_DATATYPE_STRING, type);
    const auto buffer = announce(1, 64).front();
    EXPECT_EQ(GC_ERR_NO_DATA, DSGetBufferInfo(stream, buffer, BUFFER_INFO_WIDTH, &type, text, &size));
    EXPECT_EQ(INFO_DATATYPE_SIZET, type);

    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSClose(kForeign));
    GC_ERROR told = GC_ERR_SUCCESS;
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, GCGetLastError(&told, text, &(size = 1)));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, told);
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GCGetLastError(&(told = 0), text, nullptr));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, told);
    EXPECT_THAT(lastError(), HasSubstr("closed or foreign"));
}

TEST(GenTLLife, AnInterfaceOfAStrangeNameHasAProperDocument) {
    struct Reader : GenTL {
        using GenTL::document;
    };
    setenv("MAROVINE_WORLD", "w\x01\xC0\xAF\xED\xA0\x80\xC3\xA4\xE2\x82.json", 1);
    TL_HANDLE system = nullptr;
    IF_HANDLE interface = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, GCInitLib());
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&system));
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(system, nullptr, 0));
    const auto id = textOf([&](char* text, auto* size) { return TLGetInterfaceID(system, 0, text, size); });
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpenInterface(system, id.c_str(), &interface));
    const std::string r = "\xEF\xBF\xBD";
    EXPECT_THAT(Reader::document(interface),
                HasSubstr("w" + r + r + r + r + r + r + "\xC3\xA4" + r + r + ".json"));
    EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    unsetenv("MAROVINE_WORLD");
}

/// A sanitizer keeps what was freed for a while.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeepsFreedMemory = true;
#elif defined(__has_feature)
constexpr bool kKeepsFreedMemory = __has_feature(address_sanitizer);
#else
constexpr bool kKeepsFreedMemory = false;
#endif

/// Pages that the process holds.
std::size_t residentPages() {
    std::size_t all = 0, resident = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (file != nullptr && std::fscanf(file, "%zu %zu", &all, &resident) != 2) resident = 0;
    if (file != nullptr) std::fclose(file);
    return resident;
}

TEST_F(GenTL, OpeningAndClosingLeavesNothing) {
    ASSERT_EQ(GC_ERR_SUCCESS, TLClose(system));
    const auto interfaces = [&](int cycles) {
        for (int i = 0; i < cycles; ++i) {
            ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&system));
            ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(system, nullptr, 0));
            ASSERT_EQ(GC_ERR_SUCCESS, TLOpenInterface(system, "virtual board", &interface));
            ASSERT_EQ(GC_ERR_SUCCESS, TLClose(system));
        }
    };
    interfaces(1000);
    const std::size_t before = residentPages();
    interfaces(100'000);
    EXPECT_TRUE(kKeepsFreedMemory || residentPages() < before + 256);
    ASSERT_EQ(GC_ERR_SUCCESS, TLOpen(&system));
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(system, nullptr, 0));
    open(0, interface, device, remote, stream);
    for (int i = 0; i < 30; ++i) {
        ASSERT_EQ(GC_ERR_SUCCESS, DevClose(device));
        openDevice(interface, device);
        openStream(device, stream);
        announce(2, 1 << 20);
    }
}

}  // namespace
}  // namespace marovine::test
