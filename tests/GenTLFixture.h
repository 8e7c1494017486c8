#pragma once

/// The GenTL producer as a consumer opens it.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "marovine/GenTL.h"

namespace marovine::test {

inline constexpr std::uint64_t kPatience = 60'000;  // ms, on a busy machine
inline void* const kForeign = reinterpret_cast<void*>(0x1234);

inline std::string lastError() {
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

}  // namespace marovine::test
