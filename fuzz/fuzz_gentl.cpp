/// Any calls of the producer's interface with any arguments: ports, infos, buffers, events. Every answer is
/// an error of the list.

#include <dlfcn.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>

#include "fuzz/Input.h"
#include "marovine/GenTL.h"

namespace {

using marovine::fuzz::Input;

void must(bool condition) {
    if (!condition) std::abort();
}
void known(GC_ERROR code) {
    must(code == GC_ERR_SUCCESS || (code <= GC_ERR_ERROR && code >= GC_ERR_AMBIGUOUS));
}

/// The handles that a call may get: all modules, closed ones too, a buffer, an event and nonsense.
struct Handles {
    std::array<void*, 10> all{};
    void*& system = all[0];
    void*& interface = all[1];
    void*& device = all[2];
    void*& remote = all[3];
    void*& stream = all[4];
    void*& buffer = all[5];
    void*& event = all[6];
};

/// Opened once and opened again where a call closed it.
Handles& opened() {
    static Handles handles;
    static const bool initialised = GCInitLib() == GC_ERR_SUCCESS;
    must(initialised);
    TLOpen(&handles.system);
    TLUpdateInterfaceList(handles.system, nullptr, 0);
    TLOpenInterface(handles.system, "virtual board", &handles.interface);
    IFUpdateDeviceList(handles.interface, nullptr, 0);
    IFOpenDevice(handles.interface, "virtual board, Marovine", DEVICE_ACCESS_EXCLUSIVE, &handles.device);
    // The fuzzer counts what runs in it, also when the last device has closed.
    static void* const runtime = dlopen("libfglib5.so", RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    must(runtime != nullptr);
    DevGetPort(handles.device, &handles.remote);
    DevOpenDataStream(handles.device, "virtual board, Marovine, stream", &handles.stream);
    std::size_t size = 0;
    if (DSGetBufferInfo(handles.stream, handles.buffer, BUFFER_INFO_SIZE, nullptr, nullptr, &size) !=
        GC_ERR_SUCCESS)
        DSAllocAndAnnounceBuffer(handles.stream, 1024 * 1024 * 3, nullptr, &handles.buffer);
    handles.all[7] = reinterpret_cast<void*>(0x10);
    return handles;
}

/// Where texts lie. They name files, so the fuzzer writes none.
const std::set<std::uint64_t>& texts(PORT_HANDLE remote) {
    static const std::set<std::uint64_t> found = [remote] {
        std::uint64_t length = 0;
        std::size_t size = sizeof length;
        must(GCGetPortURLInfo(remote, 0, URL_INFO_FILE_SIZE, nullptr, &length, &size) == GC_ERR_SUCCESS);
        std::string document(length, '\0');
        size = length;
        must(GCReadPort(remote, 0x40000000, document.data(), &size) == GC_ERR_SUCCESS);
        std::set<std::uint64_t> addresses;
        const std::string address = "<Address>";
        for (std::size_t at = 0; (at = document.find("<StringReg", at)) != document.npos;) {
            at = document.find(address, at) + address.size();
            addresses.insert(std::stoull(document.substr(at), nullptr, 16));
        }
        must(!addresses.empty());
        return addresses;
    }();
    return found;
}

/// Addresses in and around the registers and the document.
std::uint64_t addressFrom(Input& input) {
    const auto choice = input.take<std::uint8_t>();
    if (choice < 200) return 0x10000 + (input.take<std::uint16_t>() & ~std::uint64_t{3});
    if (choice < 240) return 0x40000000 + input.take<std::uint32_t>() % 0x100000;
    return input.take<std::uint64_t>();
}

void call(Input& input, Handles& handles) {
    std::array<std::uint8_t, 4096> room{};
    const auto what = input.take<std::uint8_t>() % 18;
    void* handle = handles.all[input.take<std::uint8_t>() % handles.all.size()];
    const auto number = input.take<std::int16_t>() % 40;
    std::size_t size = input.take<std::uint16_t>() % (room.size() + 1);
    INFO_DATATYPE type = 0;
    switch (what) {
        case 0:
        case 1:
            return known(GCReadPort(handle, addressFrom(input), room.data(), &size));
        case 2:
        case 3:
        case 4: {
            size %= 17;
            for (std::size_t i = 0; i < size; ++i) room[i] = input.take<std::uint8_t>();
            const std::uint64_t address = addressFrom(input);
            if (texts(handles.remote).contains(address)) return;
            return known(GCWritePort(handle, address, room.data(), &size));
        }
        case 5:
            return known(GCGetPortInfo(handle, number, &type, room.data(), &size));
        case 6:
            return known(GCGetPortURLInfo(handle, 0, number, &type, room.data(), &size));
        case 7:
            return known(TLGetInfo(handle, number, &type, room.data(), &size));
        case 8:
            return known(DevGetInfo(handle, number, &type, room.data(), &size));
        case 9:
            return known(DSGetInfo(handle, number, &type, room.data(), &size));
        case 10:
            return known(DSGetBufferInfo(handle, handles.buffer, number, &type, room.data(), &size));
        case 11:
            known(DSQueueBuffer(handle, handles.buffer));
            return known(DSFlushQueue(handle, number % 6));
        case 12:
            return known(DSStartAcquisition(handle, 0, input.take<std::uint64_t>()));
        case 13:
            return known(DSStopAcquisition(handle, number % 3));
        case 14:
            return known(GCRegisterEvent(handle, number % 7, &handles.event));
        case 15:
            return known(EventGetData(handle, room.data(), &size, number & 1));
        case 16:
            return known(number % 2 != 0 ? GCUnregisterEvent(handle, number % 7) : EventKill(handle));
        default:
            if (number % 8 != 0) return known(DSRevokeBuffer(handle, handles.buffer, nullptr, nullptr));
            return known(number % 16 != 0 ? DSClose(handle) : DevClose(handle));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Handles& handles = opened();
    while (!input.empty()) call(input, handles);
    return 0;
}
