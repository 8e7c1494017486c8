#include "command/GentlCheck.h"

#include <dlfcn.h>

#include <array>
#include <chrono>
#include <memory>
#include <utility>

#include "client/Failure.h"
#include "marovine/GenTL.h"

namespace marovine::host {

namespace {

using Clock = std::chrono::steady_clock;

/// All functions of the interface.
constexpr std::array kFunctions{"DSAllocAndAnnounceBuffer",
                                "DSAnnounceBuffer",
                                "DSClose",
                                "DSFlushQueue",
                                "DSGetBufferChunkData",
                                "DSGetBufferID",
                                "DSGetBufferInfo",
                                "DSGetBufferPartInfo",
                                "DSGetInfo",
                                "DSGetNumBufferParts",
                                "DSGetParentDev",
                                "DSQueueBuffer",
                                "DSRevokeBuffer",
                                "DSStartAcquisition",
                                "DSStopAcquisition",
                                "DevClose",
                                "DevGetDataStreamID",
                                "DevGetInfo",
                                "DevGetNumDataStreams",
                                "DevGetParentIF",
                                "DevGetPort",
                                "DevOpenDataStream",
                                "EventFlush",
                                "EventGetData",
                                "EventGetDataInfo",
                                "EventGetInfo",
                                "EventKill",
                                "GCCloseLib",
                                "GCGetInfo",
                                "GCGetLastError",
                                "GCGetNumPortURLs",
                                "GCGetPortInfo",
                                "GCGetPortURL",
                                "GCGetPortURLInfo",
                                "GCInitLib",
                                "GCReadPort",
                                "GCReadPortStacked",
                                "GCRegisterEvent",
                                "GCUnregisterEvent",
                                "GCWritePort",
                                "GCWritePortStacked",
                                "IFClose",
                                "IFGetDeviceID",
                                "IFGetDeviceInfo",
                                "IFGetInfo",
                                "IFGetNumDevices",
                                "IFGetParentTL",
                                "IFOpenDevice",
                                "IFUpdateDeviceList",
                                "TLClose",
                                "TLGetInfo",
                                "TLGetInterfaceID",
                                "TLGetInterfaceInfo",
                                "TLGetNumInterfaces",
                                "TLOpen",
                                "TLOpenInterface",
                                "TLUpdateInterfaceList"};

/// A producer: the functions that the walk calls, found by their names.
class Producer {
 public:
    explicit Producer(const std::filesystem::path& file)
        : library_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr) throw Failure("the producer cannot be loaded: " + std::string(dlerror()));
        for (const auto& [name, place] : functions_) *place = dlsym(library_, name);
    }
    Producer(const Producer&) = delete;
    Producer& operator=(const Producer&) = delete;
    ~Producer() { dlclose(library_); }

    /// The functions of the interface that it does not export.
    std::vector<std::string> missing() const {
        std::vector<std::string> names;
        for (const char* name : kFunctions)
            if (dlsym(library_, name) == nullptr) names.emplace_back(name);
        return names;
    }

    decltype(&::GCInitLib) initialise{};
    decltype(&::GCCloseLib) close{};
    decltype(&::GCGetLastError) lastError{};
    decltype(&::GCReadPort) read{};
    decltype(&::GCWritePort) write{};
    decltype(&::GCGetPortURLInfo) urlInfo{};
    decltype(&::GCRegisterEvent) registerEvent{};
    decltype(&::EventGetData) eventData{};
    decltype(&::TLOpen) openSystem{};
    decltype(&::TLUpdateInterfaceList) updateInterfaces{};
    decltype(&::TLGetNumInterfaces) interfaces{};
    decltype(&::TLGetInterfaceID) interfaceId{};
    decltype(&::TLOpenInterface) openInterface{};
    decltype(&::IFUpdateDeviceList) updateDevices{};
    decltype(&::IFGetNumDevices) devices{};
    decltype(&::IFGetDeviceID) deviceId{};
    decltype(&::IFOpenDevice) openDevice{};
    decltype(&::DevGetPort) remotePort{};
    decltype(&::DevGetDataStreamID) streamId{};
    decltype(&::DevOpenDataStream) openStream{};
    decltype(&::DSGetInfo) streamInfo{};
    decltype(&::DSAllocAndAnnounceBuffer) announce{};
    decltype(&::DSQueueBuffer) queue{};
    decltype(&::DSStartAcquisition) start{};
    decltype(&::DSStopAcquisition) stop{};
    decltype(&::DSGetBufferInfo) bufferInfo{};

 private:
    template <class Function>
    static void** placeOf(Function*& function) {
        return reinterpret_cast<void**>(&function);
    }

    void* library_;
    const std::vector<std::pair<const char*, void**>> functions_{
        {"GCInitLib", placeOf(initialise)},
        {"GCCloseLib", placeOf(close)},
        {"GCGetLastError", placeOf(lastError)},
        {"GCReadPort", placeOf(read)},
        {"GCWritePort", placeOf(write)},
        {"GCGetPortURLInfo", placeOf(urlInfo)},
        {"GCRegisterEvent", placeOf(registerEvent)},
        {"EventGetData", placeOf(eventData)},
        {"TLOpen", placeOf(openSystem)},
        {"TLUpdateInterfaceList", placeOf(updateInterfaces)},
        {"TLGetNumInterfaces", placeOf(interfaces)},
        {"TLGetInterfaceID", placeOf(interfaceId)},
        {"TLOpenInterface", placeOf(openInterface)},
        {"IFUpdateDeviceList", placeOf(updateDevices)},
        {"IFGetNumDevices", placeOf(devices)},
        {"IFGetDeviceID", placeOf(deviceId)},
        {"IFOpenDevice", placeOf(openDevice)},
        {"DevGetPort", placeOf(remotePort)},
        {"DevGetDataStreamID", placeOf(streamId)},
        {"DevOpenDataStream", placeOf(openStream)},
        {"DSGetInfo", placeOf(streamInfo)},
        {"DSAllocAndAnnounceBuffer", placeOf(announce)},
        {"DSQueueBuffer", placeOf(queue)},
        {"DSStartAcquisition", placeOf(start)},
        {"DSStopAcquisition", placeOf(stop)},
        {"DSGetBufferInfo", placeOf(bufferInfo)},
    };
};

/// The consumer: what a call refuses ends the walk through the module that it was about.
class Walk {
 public:
    explicit Walk(const std::filesystem::path& producer) : producer_(producer) {}

    std::vector<GentlFinding> findings;

    void run() {
        for (const auto& name : producer_.missing())
            findings.push_back({"functions", name + " is not exported", false});
        if (!findings.empty()) return;
        findings.push_back({"functions", "all " + std::to_string(kFunctions.size()) + " are exported"});
        try {
            must(producer_.initialise());
            TL_HANDLE system = nullptr;
            must(producer_.openSystem(&system));
            must(producer_.updateInterfaces(system, nullptr, 0));
            std::uint32_t count = 0;
            must(producer_.interfaces(system, &count));
            port("system", system);
            findings.push_back({"interfaces", std::to_string(count), count > 0});
            for (std::uint32_t i = 0; i < count; ++i) interface(system, i);
            must(producer_.close());
        } catch (const Failure& failure) {
            findings.push_back({"the walk", failure.what(), false});
            producer_.close();
        }
    }

 private:
    /// Throws with the producer's own text.
    void must(GC_ERROR code) {
        if (code == GC_ERR_SUCCESS) return;
        std::size_t size = 0;
        std::string text;
        if (producer_.lastError(nullptr, nullptr, &size) == GC_ERR_SUCCESS) {
            text.resize(size);
            producer_.lastError(nullptr, text.data(), &size);
        }
        throw Failure(std::string(text.c_str()) + " (" + std::to_string(code) + ")");
    }
    static void mustBeTooSmall(GC_ERROR code) {
        if (code != GC_ERR_BUFFER_TOO_SMALL)
            throw Failure("a buffer one byte short is answered with " + std::to_string(code));
    }
    template <class Ask>
    std::string text(Ask ask) {
        std::size_t size = 0;
        must(ask(nullptr, &size));
        std::string result(size, '\0');
        std::size_t less = size - 1;
        mustBeTooSmall(ask(result.data(), &less));
        must(ask(result.data(), &size));
        return result.c_str();
    }
    template <class T, class Ask>
    T number(Ask ask) {
        T value{};
        std::size_t size = 0;
        must(ask(nullptr, &size));
        if (size != sizeof value)
            throw Failure("an information has " + std::to_string(size) + " bytes, not " +
                          std::to_string(sizeof value));
        std::size_t less = size - 1;
        mustBeTooSmall(ask(&value, &less));
        must(ask(&value, &size));
        return value;
    }

    std::string document(PORT_HANDLE port) {
        const auto url = [&](URL_INFO_CMD what) {
            return number<std::uint64_t>([&](void* place, std::size_t* size) {
                return producer_.urlInfo(port, 0, what, nullptr, place, size);
            });
        };
        std::string result(url(URL_INFO_FILE_SIZE), '\0');
        std::size_t size = result.size();
        must(producer_.read(port, url(URL_INFO_FILE_REGISTER_ADDRESS), result.data(), &size));
        return result;
    }
    /// The text of an element behind a place in a document; the place moves behind it.
    static std::string element(const std::string& document, const char* name, std::size_t& at) {
        const std::string begin = std::string("<") + name + ">";
        at = document.find(begin, at);
        if (at == document.npos) return {};
        const std::size_t end = document.find('<', at + 1);
        std::string value = document.substr(at + begin.size(), end - at - begin.size());
        at = end;
        return value;
    }

    /// Reads every register that the document of a port names.
    std::string port(const std::string& what, PORT_HANDLE port) {
        std::string all = document(port);
        std::size_t registers = 0;
        for (std::size_t at = 0;;) {
            const std::string address = element(all, "Address", at);
            if (at == all.npos) break;
            const std::string length = element(all, "Length", at);
            if (!address.starts_with("0x")) continue;  // data of an event
            std::vector<char> value(std::stoul(length));
            std::size_t size = value.size();
            ++registers;
            try {
                must(producer_.read(port, std::stoull(address, nullptr, 16), value.data(), &size));
            } catch (const Failure& failure) {
                findings.push_back({what, failure.what(), false});
            }
        }
        findings.push_back({what,
                            std::to_string(registers) + " registers read, document of " +
                                std::to_string(all.size()) + " bytes",
                            registers > 0 && all.ends_with("</RegisterDescription>\n")});
        return all;
    }

    void set(PORT_HANDLE port, const std::string& document, const std::string& feature, std::int32_t value) {
        std::size_t at = document.find("Name=\"" + feature + "Value\"");
        if (at == document.npos) throw Failure("there is no feature " + feature);
        const std::string address = element(document, "Address", at);
        std::size_t size = sizeof value;
        must(producer_.write(port, std::stoull(address, nullptr, 16), &value, &size));
    }

    void interface(TL_HANDLE system, std::uint32_t index) {
        const std::string id = text([&](char* place, std::size_t* size) {
            return producer_.interfaceId(system, index, place, size);
        });
        IF_HANDLE opened = nullptr;
        DEV_HANDLE device = nullptr;
        PORT_HANDLE remote = nullptr;
        DS_HANDLE stream = nullptr;
        try {
            must(producer_.openInterface(system, id.c_str(), &opened));
            must(producer_.updateDevices(opened, nullptr, 0));
            port(id, opened);
            const std::string deviceId = text(
                [&](char* place, std::size_t* size) { return producer_.deviceId(opened, 0, place, size); });
            must(producer_.openDevice(opened, deviceId.c_str(), DEVICE_ACCESS_EXCLUSIVE, &device));
            must(producer_.remotePort(device, &remote));
            const std::string streamId = text(
                [&](char* place, std::size_t* size) { return producer_.streamId(device, 0, place, size); });
            must(producer_.openStream(device, streamId.c_str(), &stream));
            const std::string board = port(id + ": device", device);
            const std::string camera = port(id + ": remote device", remote);
            port(id + ": data stream", stream);
            set(device, board, "BoardClock", 1);  // as fast as there are buffers
            pictures(id + ": pictures", stream, [&] { set(remote, camera, "AcquisitionStart", 1); });
        } catch (const Failure& failure) {
            findings.push_back({id, failure.what(), false});
        }
    }

    template <class Start>
    void pictures(const std::string& what, DS_HANDLE stream, Start startCamera) {
        constexpr int kBuffers = 4;
        constexpr int kPictures = 20;
        constexpr std::uint64_t kPatience = 10'000;  // ms
        const auto bytes = number<std::size_t>([&](void* place, std::size_t* size) {
            return producer_.streamInfo(stream, STREAM_INFO_PAYLOAD_SIZE, nullptr, place, size);
        });
        EVENT_HANDLE event = nullptr;
        must(producer_.registerEvent(stream, EVENT_NEW_BUFFER, &event));
        for (int i = 0; i < kBuffers; ++i) {
            BUFFER_HANDLE buffer = nullptr;
            must(producer_.announce(stream, bytes, nullptr, &buffer));
            if (i == 0) port(what + ": buffer", buffer);
            must(producer_.queue(stream, buffer));
        }
        must(producer_.start(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE));
        const auto begun = Clock::now();
        startCamera();
        for (int i = 0; i < kPictures; ++i) {
            EVENT_NEW_BUFFER_DATA data{};
            std::size_t size = sizeof data;
            must(producer_.eventData(event, &data, &size, kPatience));
            const auto filled = number<std::size_t>([&](void* place, std::size_t* length) {
                return producer_.bufferInfo(stream, data.buffer, BUFFER_INFO_SIZE_FILLED, nullptr, place,
                                            length);
            });
            if (filled != bytes)
                throw Failure("a picture has " + std::to_string(filled) + " bytes of " +
                              std::to_string(bytes));
            must(producer_.queue(stream, data.buffer));
        }
        const std::chrono::duration<double> took = Clock::now() - begun;
        must(producer_.stop(stream, ACQ_STOP_FLAGS_KILL));
        findings.push_back({what, std::to_string(kPictures) + " of " + std::to_string(bytes) + " bytes, " +
                                      std::to_string(static_cast<int>(kPictures / took.count())) +
                                      " each second"});
    }

    Producer producer_;
};

}  // namespace

std::vector<GentlFinding> checkProducer(const std::filesystem::path& producer) {
    Walk walk(producer);
    walk.run();
    return std::move(walk.findings);
}

}  // namespace marovine::host
