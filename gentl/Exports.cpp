/// The functions of the interface, but for those of data streams. No logic here.

#include <new>

#include "gentl/Producer.h"

using namespace marovine::gentl;

namespace {

/// A port whose data has this size.
void mustBeRead(const void* buffer, const std::size_t* size) {
    mustBeGiven(buffer, "the buffer");
    mustBeGiven(size, "the size");
}

/// Accesses one after the other, until one fails; says how many did not.
template <class One>
void stacked(PORT_REGISTER_STACK_ENTRY* entries, std::size_t* count, One one) {
    mustBeGiven(entries, "the entries");
    mustBeGiven(count, "their number");
    const std::size_t asked = *count;
    for (*count = 0; *count < asked; ++*count) {
        PORT_REGISTER_STACK_ENTRY entry{};
        std::memcpy(&entry, reinterpret_cast<const char*>(entries) + *count * sizeof entry, sizeof entry);
        mustBeGiven(entry.buffer, "an entry's buffer");
        one(entry.address, static_cast<std::uint8_t*>(entry.buffer), entry.size);
    }
}

/// Where the events of a module come from: those of a device from the camera behind it.
std::shared_ptr<EventSource> sourceOf(EVENTSRC_HANDLE handle) {
    auto module = moduleOf(handle);
    if (const auto device = std::dynamic_pointer_cast<Device>(module)) return device->remote();
    return module;
}

}  // namespace

extern "C" {

// ---- the producer ----

GC_ERROR GCGetInfo(TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size) {
    return always("GCGetInfo", [&] { systemInfo(command, type, buffer, size); });
}

GC_ERROR GCGetLastError(GC_ERROR* errorCode, char* text, size_t* size) {
    const LastError& last = lastError();
    if (errorCode != nullptr) *errorCode = last.code;
    try {  // a refusal of this call does not take the place of the one that it tells
        answerText(last.code == GC_ERR_SUCCESS ? "no error" : last.text, text, size);
        return GC_ERR_SUCCESS;
    } catch (const Error& error) {
        return error.code;
    } catch (const std::bad_alloc&) {
        return GC_ERR_OUT_OF_MEMORY;
    }
}

GC_ERROR GCInitLib(void) {
    return always("GCInitLib", [] { Producer::instance().initialise(); });
}

GC_ERROR GCCloseLib(void) {
    return always("GCCloseLib", [] { Producer::instance().close(); });
}

// ---- ports ----

GC_ERROR GCReadPort(PORT_HANDLE port, uint64_t address, void* buffer, size_t* size) {
    return call("GCReadPort", [&] {
        const auto module = moduleOf(port);
        mustBeRead(buffer, size);
        module->readPort(address, {static_cast<std::uint8_t*>(buffer), *size});
    });
}

GC_ERROR GCWritePort(PORT_HANDLE port, uint64_t address, const void* buffer, size_t* size) {
    return call("GCWritePort", [&] {
        const auto module = moduleOf(port);
        mustBeRead(buffer, size);
        module->writePort(address, {static_cast<const std::uint8_t*>(buffer), *size});
    });
}

GC_ERROR GCReadPortStacked(PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, size_t* numEntries) {
    return call("GCReadPortStacked", [&] {
        const auto module = moduleOf(port);
        stacked(entries, numEntries, [&](std::uint64_t address, std::uint8_t* buffer, std::size_t size) {
            module->readPort(address, {buffer, size});
        });
    });
}

GC_ERROR GCWritePortStacked(PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, size_t* numEntries) {
    return call("GCWritePortStacked", [&] {
        const auto module = moduleOf(port);
        stacked(entries, numEntries, [&](std::uint64_t address, std::uint8_t* buffer, std::size_t size) {
            module->writePort(address, {buffer, size});
        });
    });
}

GC_ERROR GCGetPortURL(PORT_HANDLE port, char* text, size_t* size) {
    return call("GCGetPortURL", [&] { answerText(moduleOf(port)->url(), text, size); });
}

GC_ERROR GCGetPortInfo(PORT_HANDLE port, PORT_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                       size_t* size) {
    return call("GCGetPortInfo", [&] { moduleOf(port)->portInfo(command, type, buffer, size); });
}

GC_ERROR GCGetNumPortURLs(PORT_HANDLE port, uint32_t* numURLs) {
    return call("GCGetNumPortURLs", [&] {
        moduleOf(port);
        mustBeGiven(numURLs, "the place for the number");
        *numURLs = 1;
    });
}

GC_ERROR GCGetPortURLInfo(PORT_HANDLE port, uint32_t index, URL_INFO_CMD command, INFO_DATATYPE* type,
                          void* buffer, size_t* size) {
    return call("GCGetPortURLInfo", [&] {
        const auto module = moduleOf(port);
        if (index != 0) throw Error(GC_ERR_INVALID_INDEX, "a port has one document, 0");
        module->urlInfo(command, type, buffer, size);
    });
}

// ---- events ----

GC_ERROR GCRegisterEvent(EVENTSRC_HANDLE eventSrc, EVENT_TYPE eventID, EVENT_HANDLE* event) {
    return call("GCRegisterEvent", [&] {
        const auto source = sourceOf(eventSrc);
        mustBeGiven(event, "the place for the handle");
        *event = source->registerEvent(eventID);
    });
}

GC_ERROR GCUnregisterEvent(EVENTSRC_HANDLE eventSrc, EVENT_TYPE eventID) {
    return call("GCUnregisterEvent", [&] { sourceOf(eventSrc)->unregisterEvent(eventID); });
}

GC_ERROR EventGetData(EVENT_HANDLE event, void* buffer, size_t* size, uint64_t timeout) {
    return call("EventGetData", [&] { eventOf(event)->get(buffer, size, timeout); });
}

GC_ERROR EventGetDataInfo(EVENT_HANDLE event, const void* inBuffer, size_t inSize,
                          EVENT_DATA_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size) {
    return call("EventGetDataInfo",
                [&] { eventOf(event)->partOf(inBuffer, inSize, command, type, buffer, size); });
}

GC_ERROR EventGetInfo(EVENT_HANDLE event, EVENT_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                      size_t* size) {
    return call("EventGetInfo", [&] { eventOf(event)->info(command, type, buffer, size); });
}

GC_ERROR EventFlush(EVENT_HANDLE event) {
    return call("EventFlush", [&] { eventOf(event)->flush(); });
}

GC_ERROR EventKill(EVENT_HANDLE event) {
    return call("EventKill", [&] { eventOf(event)->kill(); });
}

// ---- the system ----

GC_ERROR TLOpen(TL_HANDLE* tL) {
    return call("TLOpen", [&] {
        mustBeGiven(tL, "the place for the handle");
        *tL = Producer::instance().openSystem()->handle();
    });
}

GC_ERROR TLClose(TL_HANDLE tL) {
    return call("TLClose", [&] {
        const auto system = systemOf(tL);
        system->close();
        Producer::instance().closed(*system);
    });
}

GC_ERROR TLGetInfo(TL_HANDLE tL, TL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, size_t* size) {
    return call("TLGetInfo", [&] { systemOf(tL)->info(command, type, buffer, size); });
}

GC_ERROR TLGetNumInterfaces(TL_HANDLE tL, uint32_t* numIfaces) {
    return call("TLGetNumInterfaces", [&] {
        const auto system = systemOf(tL);
        mustBeGiven(numIfaces, "the place for the number");
        *numIfaces = system->interfaces();
    });
}

GC_ERROR TLGetInterfaceID(TL_HANDLE tL, uint32_t index, char* text, size_t* size) {
    return call("TLGetInterfaceID", [&] { answerText(systemOf(tL)->interfaceId(index), text, size); });
}

GC_ERROR TLGetInterfaceInfo(TL_HANDLE tL, const char* ifaceID, INTERFACE_INFO_CMD command,
                            INFO_DATATYPE* type, void* buffer, size_t* size) {
    return call("TLGetInterfaceInfo", [&] {
        const auto system = systemOf(tL);
        mustBeGiven(ifaceID, "the interface's id");
        system->interfaceInfo(ifaceID, command, type, buffer, size);
    });
}

GC_ERROR TLOpenInterface(TL_HANDLE tL, const char* ifaceID, IF_HANDLE* iface) {
    return call("TLOpenInterface", [&] {
        const auto system = systemOf(tL);
        mustBeGiven(ifaceID, "the interface's id");
        mustBeGiven(iface, "the place for the handle");
        *iface = system->openInterface(ifaceID)->handle();
    });
}

GC_ERROR TLUpdateInterfaceList(TL_HANDLE tL, bool8_t* changed, uint64_t) {
    return call("TLUpdateInterfaceList", [&] {
        const bool did = systemOf(tL)->update();
        if (changed != nullptr) *changed = did ? 1 : 0;
    });
}

// ---- an interface ----

GC_ERROR IFClose(IF_HANDLE iface) {
    return call("IFClose", [&] { interfaceOf(iface)->close(); });
}

GC_ERROR IFGetInfo(IF_HANDLE iface, INTERFACE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                   size_t* size) {
    return call("IFGetInfo", [&] { interfaceOf(iface)->info(command, type, buffer, size); });
}

GC_ERROR IFGetNumDevices(IF_HANDLE iface, uint32_t* numDevices) {
    return call("IFGetNumDevices", [&] {
        const auto interface = interfaceOf(iface);
        mustBeGiven(numDevices, "the place for the number");
        *numDevices = interface->devices();
    });
}

GC_ERROR IFGetDeviceID(IF_HANDLE iface, uint32_t index, char* text, size_t* size) {
    return call("IFGetDeviceID", [&] { answerText(interfaceOf(iface)->deviceId(index), text, size); });
}

GC_ERROR IFUpdateDeviceList(IF_HANDLE iface, bool8_t* changed, uint64_t) {
    return call("IFUpdateDeviceList", [&] {
        const bool did = interfaceOf(iface)->update();
        if (changed != nullptr) *changed = did ? 1 : 0;
    });
}

GC_ERROR IFGetDeviceInfo(IF_HANDLE iface, const char* deviceID, DEVICE_INFO_CMD command, INFO_DATATYPE* type,
                         void* buffer, size_t* size) {
    return call("IFGetDeviceInfo", [&] {
        const auto interface = interfaceOf(iface);
        mustBeGiven(deviceID, "the device's id");
        interface->deviceInfo(deviceID, command, type, buffer, size);
    });
}

GC_ERROR IFOpenDevice(IF_HANDLE iface, const char* deviceID, DEVICE_ACCESS_FLAGS openFlag,
                      DEV_HANDLE* device) {
    return call("IFOpenDevice", [&] {
        const auto interface = interfaceOf(iface);
        mustBeGiven(deviceID, "the device's id");
        mustBeGiven(device, "the place for the handle");
        *device = interface->openDevice(deviceID, openFlag)->handle();
    });
}

GC_ERROR IFGetParentTL(IF_HANDLE iface, TL_HANDLE* system) {
    return call("IFGetParentTL", [&] {
        const auto above = interfaceOf(iface)->system();
        mustBeGiven(system, "the place for the handle");
        *system = above != nullptr ? above->handle() : nullptr;
    });
}

// ---- a device ----

GC_ERROR DevGetPort(DEV_HANDLE device, PORT_HANDLE* remoteDevice) {
    return call("DevGetPort", [&] {
        const auto opened = deviceOf(device);
        mustBeGiven(remoteDevice, "the place for the handle");
        *remoteDevice = opened->remote()->handle();
    });
}

GC_ERROR DevGetNumDataStreams(DEV_HANDLE device, uint32_t* numDataStreams) {
    return call("DevGetNumDataStreams", [&] {
        deviceOf(device);
        mustBeGiven(numDataStreams, "the place for the number");
        *numDataStreams = 1;
    });
}

GC_ERROR DevGetDataStreamID(DEV_HANDLE device, uint32_t index, char* text, size_t* size) {
    return call("DevGetDataStreamID", [&] { answerText(deviceOf(device)->streamId(index), text, size); });
}

GC_ERROR DevOpenDataStream(DEV_HANDLE device, const char* dataStreamID, DS_HANDLE* dataStream) {
    return call("DevOpenDataStream", [&] {
        const auto opened = deviceOf(device);
        mustBeGiven(dataStreamID, "the data stream's id");
        mustBeGiven(dataStream, "the place for the handle");
        *dataStream = opened->openStream(dataStreamID)->handle();
    });
}

GC_ERROR DevGetInfo(DEV_HANDLE device, DEVICE_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                    size_t* size) {
    return call("DevGetInfo", [&] { deviceOf(device)->info(command, type, buffer, size); });
}

GC_ERROR DevClose(DEV_HANDLE device) {
    return call("DevClose", [&] { deviceOf(device)->close(); });
}

GC_ERROR DevGetParentIF(DEV_HANDLE device, IF_HANDLE* iface) {
    return call("DevGetParentIF", [&] {
        const auto above = deviceOf(device)->interface();
        mustBeGiven(iface, "the place for the handle");
        *iface = above != nullptr ? above->handle() : nullptr;
    });
}

}  // extern "C"
