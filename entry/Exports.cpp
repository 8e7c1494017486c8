/// The exported functions that act on an open instance. Each checks its handle and calls; none holds logic.
/// The typed set and get and the load pass exceptions on, with the lock released; no other lets one out.

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/ErrorCodes.h"
#include "entry/Boundary.h"
#include "marovine/marovine.h"
#include "runtime/FgGxWrapper.h"

namespace error = marovine::error;
using marovine::RuntimeSlot;

namespace {

/// The instance of a record, null for a record without a live one.
FgGxWrapper* instanceOf(const Fg_Struct* record) {
    return record != nullptr ? static_cast<FgGxWrapper*>(record->instance) : nullptr;
}

/// Calls an operation of the record's instance, or answers `invalid` when there is none. Exceptions pass.
template <class Result, class Operation>
Result callThrough(const Fg_Struct* record, Result invalid, Operation&& operation) {
    FgGxWrapper* instance = instanceOf(record);
    return instance != nullptr ? operation(*instance) : invalid;
}

/// The same without exceptions: they become -2031, which is kept as the last error. Where no result is a code
/// the answer is `invalid`.
template <class Result, class Operation>
Result call(const Fg_Struct* record, Result invalid, Operation&& operation) {
    return marovine::atBoundary([&] { return callThrough(record, invalid, operation); },
                                [&]() -> Result {
                                    const int code = instanceOf(record)->setError(error::internalFailure);
                                    if constexpr (std::is_signed_v<Result>)
                                        return code;
                                    else
                                        return invalid;
                                });
}

/// Passes a call on to the host runtime with the inner handle in place of the record, and keeps the outcome
/// as the instance's last error.
template <RuntimeSlot slot, class Result, class... Arguments>
Result forward(const Fg_Struct* record, Arguments... arguments) {
    return call<Result>(record, error::invalidHandle, [&](FgGxWrapper& instance) -> Result {
        const auto function = instance.wrapperFg().get<slot>();
        if (function == nullptr || instance.fglibFg() == nullptr) return instance.setError(error::notAllowed);
        const Result result = function(instance.fglibFg(), arguments...);
        instance.setError(result >= 0 ? error::success : instance.Fg_getLastErrorNumberGx());
        return result;
    });
}

/// A shading operation; its result is also the instance's last error.
template <class Operation>
int shading(const Fg_Struct* record, Operation&& operation) {
    return call(record, error::invalidHandle,
                [&](FgGxWrapper& instance) { return instance.setError(operation(instance)); });
}

}  // namespace

// ---- passed on to the host runtime ----

int Fg_getAppletId(Fg_Struct* record, void* reserved) {
    return forward<RuntimeSlot::GetAppletId, int>(record, reserved);
}

int64_t Fg_getStatusEx(Fg_Struct* record, int parameter, int64_t data, unsigned int dmaIndex,
                       dma_mem* memory) {
    return forward<RuntimeSlot::GetStatusEx, int64_t>(record, parameter, data, dmaIndex, memory);
}

int Fg_AcquireEx(Fg_Struct* record, unsigned int dmaIndex, int64_t pictures, int flags, dma_mem* memory) {
    return forward<RuntimeSlot::AcquireEx, int>(record, dmaIndex, pictures, flags, memory);
}

int Fg_stopAcquireEx(Fg_Struct* record, unsigned int dmaIndex, dma_mem* memory, int flags) {
    return forward<RuntimeSlot::StopAcquireEx, int>(record, dmaIndex, memory, flags);
}

int64_t Fg_getLastPicNumberEx(Fg_Struct* record, unsigned int dmaIndex, dma_mem* memory) {
    return forward<RuntimeSlot::GetLastPicNumberEx, int64_t>(record, dmaIndex, memory);
}

int64_t Fg_getLastPicNumberBlockingEx(Fg_Struct* record, int64_t picture, unsigned int dmaIndex, int timeout,
                                      dma_mem* memory) {
    return forward<RuntimeSlot::GetLastPicNumberBlockingEx, int64_t>(record, picture, dmaIndex, timeout,
                                                                     memory);
}

// ---- parameters ----

int Fg_setParameterWithType(Fg_Struct* record, int id, const void* value, int dmaIndex, FgParamTypes type) {
    return callThrough(record, error::invalidHandle, [&](FgGxWrapper& instance) {
        return instance.Fg_setParameterWithType(id, value, dmaIndex, type);
    });
}

int Fg_getParameterWithType(Fg_Struct* record, int id, void* value, int dmaIndex, FgParamTypes type) {
    return callThrough(record, error::invalidHandle, [&](FgGxWrapper& instance) {
        // A 32-bit answer must leave no stale upper half in a 64-bit location.
        if ((type == FG_TYPE_INT64 || type == FG_TYPE_UINT64) && value != nullptr)
            std::memset(value, 0, sizeof(std::uint64_t));
        return instance.Fg_getParameterWithType(id, value, dmaIndex, type);
    });
}

int Fg_freeParameterStringWithType(Fg_Struct* record, int id, void* value, int dmaIndex, FgParamTypes type) {
    return call(record, error::invalidHandle, [&](FgGxWrapper& instance) {
        return type == FG_TYPE_TEXT_POINTER ? instance.Fg_freeParameterString(id, value, dmaIndex, type)
                                            : error::wrongTypeCode;
    });
}

int Fg_getNrOfParameter(Fg_Struct* record) {
    return call(record, error::invalidHandle,
                [](FgGxWrapper& instance) { return instance.Fg_getParameterCount(); });
}

const char* Fg_getParameterName(Fg_Struct* record, int index) {
    return call<const char*>(record, nullptr,
                             [&](FgGxWrapper& instance) { return instance.Fg_getParameterName(index); });
}

int Fg_getParameterId(Fg_Struct* record, int index) {
    return call(record, error::invalidHandle,
                [&](FgGxWrapper& instance) { return instance.Fg_getParameterId(index); });
}

int Fg_getParameterIdByName(Fg_Struct* record, const char* name) {
    return call(record, error::invalidHandle,
                [&](FgGxWrapper& instance) { return instance.Fg_getParameterIdByName(name); });
}

int Fg_saveConfig(Fg_Struct* record, const char* fileName) {
    return call(record, error::invalidHandle,
                [&](FgGxWrapper& instance) { return instance.Fg_saveConfig(instance.fglibFg(), fileName); });
}

int Fg_loadConfig(Fg_Struct* record, const char* fileName) {
    return callThrough(record, error::invalidHandle, [&](FgGxWrapper& instance) {
        return instance.Fg_loadConfig(instance.fglibFg(), fileName);
    });
}

int Fg_getParameterInfoXML(Fg_Struct* record, int port, char* buffer, size_t* size) {
    return call(record, error::invalidHandle, [&](FgGxWrapper& instance) {
        return instance.Fg_getParameterInfoXML(record, port, buffer, size);
    });
}

uint64_t Fg_getEventMask(Fg_Struct* record, const char* name) {
    return call<uint64_t>(record, 0, [&](FgGxWrapper& instance) { return instance.Fg_getEventMask(name); });
}

const char* Fg_getEventName(Fg_Struct* record, uint64_t mask) {
    return call<const char*>(record, nullptr,
                             [&](FgGxWrapper& instance) { return instance.Fg_getEventName(mask); });
}

int Fg_getLastErrorNumber(Fg_Struct* record) {
    return call(record, error::invalidHandle,
                [](FgGxWrapper& instance) { return instance.Fg_getLastErrorNumber(); });
}

RegisterInfo* Fg_getParameterInfo(Fg_Struct* record, int port) {
    return call<RegisterInfo*>(record, nullptr, [&](FgGxWrapper& instance) -> RegisterInfo* {
        // Hosts expect the registry only together with a runtime that could serve its own.
        const bool served = instance.wrapperFg().get<RuntimeSlot::GetParameterInfo>() != nullptr &&
                            instance.fglibFg() != nullptr;
        return served ? instance.Fg_getParameterInfo(port) : nullptr;
    });
}

// ---- shading ----

ShadingMaster* Fg_AllocShading(Fg_Struct* record, int set, int port) {
    return call<ShadingMaster*>(record, nullptr, [&](FgGxWrapper& instance) {
        ShadingMaster* memory = instance.Fg_AllocShading(set, port);
        instance.setError(memory != nullptr ? error::success : error::outOfMemory);
        return memory;
    });
}

int Fg_FreeShading(Fg_Struct* record, ShadingMaster* memory) {
    return shading(record, [&](FgGxWrapper& instance) { return instance.Fg_FreeShading(memory); });
}

int Shad_SetSubValueLine(Fg_Struct* record, ShadingMaster* memory, int x, int channel, float value) {
    return shading(record, [&](FgGxWrapper& instance) {
        return instance.Shad_SetSubValueLine(memory, x, channel, value);
    });
}

int Shad_SetMultValueLine(Fg_Struct* record, ShadingMaster* memory, int x, int channel, float value) {
    return shading(record, [&](FgGxWrapper& instance) {
        return instance.Shad_SetMultValueLine(memory, x, channel, value);
    });
}

int Shad_SetFixedPatternNoiseLine(Fg_Struct* record, ShadingMaster* memory, int on, int x, int channel) {
    return shading(record, [&](FgGxWrapper& instance) {
        return instance.Shad_SetFixedPatternNoiseLine(memory, on, x, channel);
    });
}

int Shad_GetMaxLine(Fg_Struct* record, ShadingMaster* memory) {
    return shading(record, [&](FgGxWrapper& instance) { return instance.Shad_GetMaxLine(memory); });
}

int Shad_GetAccess(Fg_Struct* record, ShadingMaster* memory) {
    return shading(record, [&](FgGxWrapper& instance) { return instance.Shad_GetAccess(memory); });
}

int Shad_FreeAccess(Fg_Struct* record, ShadingMaster* memory) {
    return shading(record, [&](FgGxWrapper& instance) { return instance.Shad_FreeAccess(memory); });
}

int Shad_WriteActLine(Fg_Struct* record, ShadingMaster* memory, int line) {
    return shading(record, [&](FgGxWrapper& instance) { return instance.Shad_WriteActLine(memory, line); });
}
