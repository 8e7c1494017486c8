/// The producer beside what it stands on: pictures beside the board's own ring, reads of a feature through
/// its port.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "client/Grabber.h"
#include "client/VirtualBoard.h"
#include "marovine/GenTL.h"

namespace {

using namespace marovine::host;

constexpr std::uint32_t kWidth = 2048;
constexpr std::uint32_t kHeight = 1024;
constexpr int kBuffers = 4;

void picturesThroughTheRing(benchmark::State& state) {
    Applet applet(Library::load(), std::make_unique<VirtualBoard>());
    boardOf(applet).setClockMode(virtualboard::ClockMode::AsFastAsPossible);
    applet.set("FG_WIDTH", kWidth);
    applet.set("FG_HEIGHT", kHeight);
    Grabber grabber(applet);
    for (auto _ : state) {
        if (!grabber.comes(60)) return state.SkipWithError("no picture");
        benchmark::DoNotOptimize(grabber.next().bytes.data());
    }
}
BENCHMARK(picturesThroughTheRing)->UseRealTime()->Unit(benchmark::kMillisecond);

/// The producer with everything open.
class Open {
 public:
    Open() {
        GCInitLib();
        TLOpen(&system_);
        TLUpdateInterfaceList(system_, nullptr, 0);
        TLOpenInterface(system_, "virtual board", &interface_);
        IFUpdateDeviceList(interface_, nullptr, 0);
        IFOpenDevice(interface_, "virtual board, Marovine", DEVICE_ACCESS_EXCLUSIVE, &device);
        DevGetPort(device, &remote);
        DevOpenDataStream(device, "virtual board, Marovine, stream", &stream);
    }
    Open(const Open&) = delete;
    Open& operator=(const Open&) = delete;
    ~Open() { GCCloseLib(); }

    static std::uint64_t addressOf(PORT_HANDLE port, const std::string& feature) {
        std::uint64_t length = 0;
        std::size_t size = sizeof length;
        GCGetPortURLInfo(port, 0, URL_INFO_FILE_SIZE, nullptr, &length, &size);
        std::string document(size = length, '\0');
        GCReadPort(port, 0x40000000, document.data(), &size);
        const std::string begin = "<Address>";
        const auto node = document.find("Reg Name=\"" + feature + "Value\"");
        return std::stoull(document.substr(document.find(begin, node) + begin.size()), nullptr, 16);
    }
    template <class T>
    static void write(PORT_HANDLE port, const char* feature, T value) {
        std::size_t size = sizeof value;
        GCWritePort(port, addressOf(port, feature), &value, &size);
    }

    DEV_HANDLE device = nullptr;
    PORT_HANDLE remote = nullptr;
    DS_HANDLE stream = nullptr;

 private:
    TL_HANDLE system_ = nullptr;
    IF_HANDLE interface_ = nullptr;
};

void picturesThroughTheProducer(benchmark::State& state) {
    const Open open;
    Open::write(open.device, "BoardClock", std::int32_t{1});
    Open::write(open.remote, "FG_WIDTH", kWidth);
    Open::write(open.remote, "FG_HEIGHT", kHeight);
    EVENT_HANDLE event = nullptr;
    GCRegisterEvent(open.stream, EVENT_NEW_BUFFER, &event);
    for (int i = 0; i < kBuffers; ++i) {
        BUFFER_HANDLE buffer = nullptr;
        DSAllocAndAnnounceBuffer(open.stream, std::size_t{kWidth} * kHeight * 3, nullptr, &buffer);
        DSQueueBuffer(open.stream, buffer);
    }
    DSStartAcquisition(open.stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE);
    Open::write(open.remote, "AcquisitionStart", std::int32_t{1});
    for (auto _ : state) {
        EVENT_NEW_BUFFER_DATA data{};
        std::size_t size = sizeof data;
        if (EventGetData(event, &data, &size, 60'000) != GC_ERR_SUCCESS)
            return state.SkipWithError("no picture");
        DSQueueBuffer(open.stream, data.buffer);
    }
}
BENCHMARK(picturesThroughTheProducer)->UseRealTime()->Unit(benchmark::kMillisecond);

void readsOfAFeature(benchmark::State& state) {
    const Open open;
    const std::uint64_t address = Open::addressOf(open.remote, "FG_LINEEXPOSURE");
    for (auto _ : state) {
        double value = 0;
        std::size_t size = sizeof value;
        GCReadPort(open.remote, address, &value, &size);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(readsOfAFeature);

}  // namespace
