/// The GenTL producer through its C interface: what consumers rely on, and what they do wrong.

#include "marovine/GenTL.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::HasSubstr;

constexpr std::uint64_t kPatience = 60'000;  // ms, on a busy machine
void* const kForeign = reinterpret_cast<void*>(0x1234);

std::string lastError() {
    char text[4096] = "";
    std::size_t size = sizeof text;
    GC_ERROR code = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetLastError(&code, text, &size));
    return text;
}

/// An information of a known type, asked for in two calls.
template <class T, class Ask>
T answerOf(Ask ask) {
    T value{};
    std::size_t size = 0;
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, ask(&type, nullptr, &size)) << lastError();
    EXPECT_EQ(sizeof value, size);
    EXPECT_EQ(GC_ERR_SUCCESS, ask(&type, &value, &size)) << lastError();
    return value;
}
template <class Ask>
std::string textOf(Ask ask) {
    std::size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, ask(nullptr, &size)) << lastError();
    std::string text(size, '?');
    std::size_t less = size - 1;
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, ask(text.data(), &less));
    EXPECT_EQ(std::string(size, '?'), text) << "a buffer too small by one is left alone";
    EXPECT_EQ(GC_ERR_SUCCESS, ask(text.data(), &size));
    EXPECT_EQ('\0', text.back());
    return text.c_str();
}

/// The system with one interface, its device and stream open.
class GenTL : public testing::Test {
 protected:
    GenTL() {
        EXPECT_EQ(GC_ERR_SUCCESS, GCInitLib());
        EXPECT_EQ(GC_ERR_SUCCESS, TLOpen(&system));
        EXPECT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(system, nullptr, 0));
        open(0, interface, device, remote, stream);
    }
    ~GenTL() override { EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib()); }

    void open(std::uint32_t index, IF_HANDLE& onto, DEV_HANDLE& board, PORT_HANDLE& camera, DS_HANDLE& data) {
        const auto id =
            textOf([&](char* text, auto* size) { return TLGetInterfaceID(system, index, text, size); });
        ASSERT_EQ(GC_ERR_SUCCESS, TLOpenInterface(system, id.c_str(), &onto)) << lastError();
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(onto, nullptr, 0));
        openDevice(onto, board);
        ASSERT_EQ(GC_ERR_SUCCESS, DevGetPort(board, &camera));
        openStream(board, data);
    }
    static std::string deviceId(IF_HANDLE onto) {
        return textOf([&](char* text, auto* size) { return IFGetDeviceID(onto, 0, text, size); });
    }
    static void openDevice(IF_HANDLE onto, DEV_HANDLE& board) {
        ASSERT_EQ(GC_ERR_SUCCESS, IFOpenDevice(onto, deviceId(onto).c_str(), DEVICE_ACCESS_EXCLUSIVE, &board))
            << lastError();
    }
    static void openStream(DEV_HANDLE board, DS_HANDLE& data) {
        const auto id =
            textOf([&](char* text, auto* size) { return DevGetDataStreamID(board, 0, text, size); });
        ASSERT_EQ(GC_ERR_SUCCESS, DevOpenDataStream(board, id.c_str(), &data)) << lastError();
    }

    /// The document of a port, read in pieces.
    static std::string document(PORT_HANDLE port) {
        const auto url = [port](URL_INFO_CMD what) {
            return answerOf<std::uint64_t>([&](auto* type, void* place, auto* size) {
                return GCGetPortURLInfo(port, 0, what, type, place, size);
            });
        };
        const std::uint64_t length = url(URL_INFO_FILE_SIZE);
        std::string text(length, '\0');
        constexpr std::uint64_t kPiece = 777;
        for (std::uint64_t at = 0; at < length; at += kPiece) {
            std::size_t size = std::min(kPiece, length - at);
            EXPECT_EQ(GC_ERR_SUCCESS,
                      GCReadPort(port, url(URL_INFO_FILE_REGISTER_ADDRESS) + at, &text[at], &size));
        }
        return text;
    }
    /// Where the value of a feature lies.
    std::uint64_t address(PORT_HANDLE port, const std::string& feature) {
        auto& text = documents_[port];
        if (text.empty()) text = document(port);
        const auto node = text.find("Reg Name=\"" + feature + "Value\"");
        EXPECT_NE(text.npos, node) << feature;
        const std::string begin = "<Address>";
        return std::stoull(text.substr(text.find(begin, node) + begin.size()), nullptr, 16);
    }
    template <class T>
    GC_ERROR write(const char* feature, T value, PORT_HANDLE port = nullptr) {
        if (port == nullptr) port = remote;
        std::size_t size = sizeof value;
        return GCWritePort(port, address(port, feature), &value, &size);
    }
    template <class T>
    T read(const char* feature) {
        T value{};
        std::size_t size = sizeof value;
        EXPECT_EQ(GC_ERR_SUCCESS, GCReadPort(remote, address(remote, feature), &value, &size)) << lastError();
        return value;
    }
    void asFastAsPossible() { ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("BoardClock", 1, device)); }
    void setWindow(std::uint32_t width, std::uint32_t height) {
        ASSERT_EQ(GC_ERR_SUCCESS, write("FG_WIDTH", width)) << lastError();
        ASSERT_EQ(GC_ERR_SUCCESS, write("FG_HEIGHT", height)) << lastError();
    }

    template <class T>
    T streamInfo(STREAM_INFO_CMD what) {
        return answerOf<T>(
            [&](auto* type, void* place, auto* size) { return DSGetInfo(stream, what, type, place, size); });
    }
    template <class T>
    T bufferInfo(BUFFER_HANDLE buffer, BUFFER_INFO_CMD what) {
        return answerOf<T>([&](auto* type, void* place, auto* size) {
            return DSGetBufferInfo(stream, buffer, what, type, place, size);
        });
    }
    std::vector<BUFFER_HANDLE> announce(std::size_t count, std::size_t bytes) {
        std::vector<BUFFER_HANDLE> buffers(count);
        for (auto& buffer : buffers)
            EXPECT_EQ(GC_ERR_SUCCESS, DSAllocAndAnnounceBuffer(stream, bytes, &buffer, &buffer))
                << lastError();
        return buffers;
    }
    EVENT_HANDLE newBuffers() {
        EVENT_HANDLE event = nullptr;
        EXPECT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event));
        return event;
    }
    static BUFFER_HANDLE next(EVENT_HANDLE event, std::uint64_t timeout = kPatience) {
        EVENT_NEW_BUFFER_DATA data{};
        std::size_t size = sizeof data;
        const GC_ERROR code = EventGetData(event, &data, &size, timeout);
        EXPECT_TRUE(code == GC_ERR_SUCCESS || code == GC_ERR_TIMEOUT) << lastError();
        return data.buffer;
    }

    TL_HANDLE system = nullptr;
    IF_HANDLE interface = nullptr;
    DEV_HANDLE device = nullptr;
    PORT_HANDLE remote = nullptr;
    DS_HANDLE stream = nullptr;

 private:
    std::map<PORT_HANDLE, std::string> documents_;
};

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

TEST_F(GenTL, FillsBuffersInTheirOrderAndCountsWhatFindsNone) {
    setWindow(64, 64);
    const std::size_t bytes = streamInfo<std::size_t>(STREAM_INFO_PAYLOAD_SIZE);
    ASSERT_EQ(64u * 64 * 3, bytes);
    auto buffers = announce(3, bytes);
    const EVENT_HANDLE event = newBuffers();
    std::vector<std::uint8_t> own(bytes, 0xAB);
    BUFFER_HANDLE small = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, DSAnnounceBuffer(stream, own.data(), bytes - 1, nullptr, &small));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSAnnounceBuffer(stream, own.data(), bytes, nullptr, &small));
    ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, small));
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD));

    for (const int i : {2, 0, 1}) ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, buffers[i]));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSQueueBuffer(stream, buffers[0]));
    EXPECT_EQ(GC_ERR_BUSY, DSRevokeBuffer(stream, buffers[0], nullptr, nullptr));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, DSQueueBuffer(stream, small));
    EXPECT_EQ(nullptr, next(event, 0)) << "the camera has not been started";
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1)) << lastError();
    std::uint64_t before = 0;
    for (const int i : {2, 0, 1}) {
        ASSERT_EQ(buffers[i], next(event));
        const auto time = bufferInfo<std::uint64_t>(buffers[i], BUFFER_INFO_TIMESTAMP_NS);
        EXPECT_GT(time, before);
        before = time;
        EXPECT_EQ(64u, bufferInfo<std::size_t>(buffers[i], BUFFER_INFO_DELIVERED_IMAGEHEIGHT));
        EXPECT_EQ(bytes, bufferInfo<std::size_t>(buffers[i], BUFFER_INFO_SIZE_FILLED));
        EXPECT_EQ(PFNC_BGR8,
                  static_cast<int>(bufferInfo<std::uint64_t>(buffers[i], BUFFER_INFO_PIXELFORMAT)));
        EXPECT_EQ(&buffers[i], bufferInfo<void*>(buffers[i], BUFFER_INFO_USER_PTR));
    }
    for (int i = 0; i < 6000 && streamInfo<std::uint64_t>(STREAM_INFO_NUM_UNDERRUN) < 2; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_GE(streamInfo<std::uint64_t>(STREAM_INFO_NUM_UNDERRUN), 2u);
    ASSERT_EQ(GC_ERR_SUCCESS, DSQueueBuffer(stream, buffers[0]));
    ASSERT_EQ(buffers[0], next(event));
    EXPECT_GE(bufferInfo<std::uint64_t>(buffers[0], BUFFER_INFO_FRAMEID), 5u)
        << "lost pictures have their numbers";
    ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT));
    EXPECT_EQ(4u, streamInfo<std::uint64_t>(STREAM_INFO_NUM_DELIVERED));
    for (BUFFER_HANDLE buffer : buffers)
        EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(stream, buffer, nullptr, nullptr));
    void* memory = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(stream, small, &memory, nullptr));
    EXPECT_EQ(own.data(), memory);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, 0xAB), own) << "never filled";
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSQueueBuffer(stream, small));
}

TEST_F(GenTL, TakesAsManyPicturesAsAskedAndFlushesAsTold) {
    setWindow(64, 64);
    asFastAsPossible();
    const auto buffers = announce(4, 64 * 64 * 3);
    const EVENT_HANDLE event = newBuffers();
    const auto counts = [&] {
        return std::pair(streamInfo<std::size_t>(STREAM_INFO_NUM_QUEUED),
                         streamInfo<std::size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY));
    };
    using Counts = std::pair<std::size_t, std::size_t>;
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_UNQUEUED_TO_INPUT));
    EXPECT_EQ(Counts(4, 0), counts());
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, 2));
    for (int i = 0; i < 6000 && streamInfo<bool8_t>(STREAM_INFO_IS_GRABBING) != 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(Counts(2, 2), counts());
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSQueueBuffer(stream, buffers[0])) << "it waits for delivery";
    ASSERT_EQ(GC_ERR_SUCCESS, DSStopAcquisition(stream, ACQ_STOP_FLAGS_KILL));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_OUTPUT_DISCARD));
    EXPECT_EQ(Counts(2, 0), counts());
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(Counts(0, 2), counts());
    EXPECT_EQ(buffers[2], next(event));
    EXPECT_EQ(0u, bufferInfo<bool8_t>(buffers[2], BUFFER_INFO_NEW_DATA)) << "moved without a picture";
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_TO_INPUT));
    EXPECT_EQ(Counts(4, 0), counts());
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD));
    EXPECT_EQ(Counts(0, 0), counts());
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, DSFlushQueue(stream, 5));
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, DSStartAcquisition(stream, 0, 0));

    // Single pictures, one for each start of the camera.
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStop", 1));
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionMode", 1));
    ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_UNQUEUED_TO_INPUT));
    ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
        EXPECT_NE(nullptr, next(event));
        EXPECT_EQ(nullptr, next(event, 20));
    }
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(stream)) << "while it grabs";
}

TEST_F(GenTL, EventsOfFeaturesAndOfTheDesignArrive) {
    EVENT_HANDLE moved = nullptr;
    EVENT_HANDLE happened = nullptr;
    EVENT_HANDLE again = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(device, EVENT_FEATURE_INVALIDATE, &moved));
    ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(remote, EVENT_REMOTE_DEVICE, &happened));
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, GCRegisterEvent(device, EVENT_REMOTE_DEVICE, &again));
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GCRegisterEvent(system, EVENT_MODULE, &again));
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GCRegisterEvent(system, 99, &again));
    ASSERT_EQ(GC_ERR_SUCCESS, write("FG_WIDTH", std::uint32_t{512}));
    std::vector<std::string> names;
    for (char name[128] = "";;) {
        std::size_t size = sizeof name;
        if (EventGetData(moved, name, &size, 0) != GC_ERR_SUCCESS) break;
        names.push_back(textOf([&](char* text, auto* length) {
            return EventGetDataInfo(moved, name, size, EVENT_DATA_ID, nullptr, text, length);
        }));
    }
    for (const char* name : {"FG_WIDTH", "Width", "FG_XOFFSET", "OffsetX"})
        EXPECT_THAT(names, testing::Contains(name));

    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("EventSelector", 1)) << "input 0 rises";
    ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("EventNotification", 1));
    for (const std::int32_t level : {1, 0, 1})
        ASSERT_EQ(GC_ERR_SUCCESS, write("BoardInputLevel", level, device));
    for (int i = 0; i < 2; ++i) {
        std::uint8_t data[64];
        std::size_t size = sizeof data;
        std::size_t less = 8;
        if (i == 0) {
            EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, EventGetData(happened, data, &less, kPatience));
        }
        ASSERT_EQ(GC_ERR_SUCCESS, EventGetData(happened, data, &size, kPatience));
        EXPECT_EQ(0x9001u, answerOf<std::uint64_t>([&](auto* type, void* place, auto* length) {
                      return EventGetDataInfo(happened, data, size, EVENT_DATA_NUMID, type, place, length);
                  }));
    }
    EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(device, EVENT_REMOTE_DEVICE));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, EventFlush(happened));
}

TEST_F(GenTL, AWaitEndsWhenItIsKilledOrWhatItWaitsForCloses) {
    EVENT_HANDLE event = newBuffers();
    std::uint8_t data[16];
    std::size_t size = sizeof data;
    EXPECT_EQ(GC_ERR_TIMEOUT, EventGetData(event, data, &size, 10));
    ASSERT_EQ(GC_ERR_SUCCESS, EventKill(event));
    EXPECT_EQ(GC_ERR_ABORT, EventGetData(event, data, &size, kPatience)) << "the kill is remembered once";
    EXPECT_EQ(GC_ERR_TIMEOUT, EventGetData(event, data, &size, 0));
    const std::function<void()> ends[] = {[&] { EventKill(event); },
                                          [&] {
                                              GCUnregisterEvent(stream, EVENT_NEW_BUFFER);
                                              event = newBuffers();
                                          },
                                          [&] {
                                              DSClose(stream);
                                              openStream(device, stream);
                                              event = newBuffers();
                                          },
                                          [&] {
                                              GCCloseLib();
                                              GCInitLib();
                                          }};
    for (const auto& end : ends) {
        std::atomic<GC_ERROR> answer = 1;
        std::thread waiting([&answer, event] {
            std::uint8_t place[16];
            std::size_t length = sizeof place;
            answer = EventGetData(event, place, &length, GENTL_INFINITE);
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        end();
        waiting.join();
        // A thread that comes late finds the handle gone.
        EXPECT_TRUE(answer == GC_ERR_ABORT || answer == GC_ERR_INVALID_HANDLE) << answer;
    }
}

TEST(GenTLSeveral, TwoDevicesStreamAtOnceWhileTheirFeaturesAreRead) {
    class Two : public GenTL {
     public:
        void TestBody() override {
            IF_HANDLE otherInterface = nullptr;
            DEV_HANDLE otherDevice = nullptr;
            PORT_HANDLE otherRemote = nullptr;
            DS_HANDLE otherStream = nullptr;
            open(1, otherInterface, otherDevice, otherRemote, otherStream);
            std::vector<std::thread> threads;
            std::atomic<int> taken = 0;
            struct Board {
                PORT_HANDLE remote;
                DEV_HANDLE device;
                DS_HANDLE stream;
            };
            for (const Board& board :
                 {Board{remote, device, stream}, Board{otherRemote, otherDevice, otherStream}}) {
                remote = board.remote, device = board.device, stream = board.stream;
                setWindow(64, 64);
                asFastAsPossible();
                announce(3, 64 * 64 * 3);
                const EVENT_HANDLE event = newBuffers();
                ASSERT_EQ(GC_ERR_SUCCESS, DSFlushQueue(stream, ACQ_QUEUE_ALL_TO_INPUT));
                ASSERT_EQ(GC_ERR_SUCCESS, DSStartAcquisition(stream, 0, GENTL_INFINITE));
                ASSERT_EQ(GC_ERR_SUCCESS, write<std::int32_t>("AcquisitionStart", 1));
                threads.emplace_back([event, board, &taken] {
                    for (int i = 0; i < 200; ++i)
                        if (BUFFER_HANDLE buffer = next(event);
                            DSQueueBuffer(board.stream, buffer) == GC_ERR_SUCCESS)
                            ++taken;
                });
                threads.emplace_back([place = address(remote, "FG_LINEEXPOSURE"), board] {
                    for (int i = 0; i < 2000; ++i) {
                        double value = 10 + i % 7;
                        std::size_t size = sizeof value;
                        EXPECT_EQ(GC_ERR_SUCCESS,
                                  (i % 2 != 0 ? GCReadPort(board.remote, place, &value, &size)
                                              : GCWritePort(board.remote, place, &value, &size)));
                    }
                });
            }
            for (auto& thread : threads) thread.join();
            EXPECT_EQ(400, taken);
        }
    };
    const std::string world = std::string(WORLD_FILE);
    setenv("MAROVINE_WORLD", (world + ":" + world).c_str(), 1);
    Two two;
    two.TestBody();
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
