/// libfglib5.so: the host runtime on the virtual board. Codes are those of BoardCodes.h; FrameMemory.h says
/// what the values of an acquisition mean, whose flags are not used.

#include <cstring>
#include <exception>
#include <fstream>
#include <iomanip>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "board/machine/Machine.h"
#include "marovine/BoardCodes.h"

using namespace virtualboard;

namespace {

/// Runs a call on an open handle and keeps its code. Nothing may leave through the C interface but a code.
template <typename Call>
auto onHandle(Fg_Struct* record, Call call) -> decltype(call(std::declval<Handle&>())) {
    Handle* handle = handleOf(record);
    if (handle == nullptr) return kInvalidHandle;
    decltype(call(*handle)) code = kInternalFailure;
    try {
        code = call(*handle);
    } catch (const std::exception&) {
        code = kInternalFailure;
    }
    handle->lastError.store(code < 0 ? static_cast<int>(code) : kOk, std::memory_order_relaxed);
    return code;
}

/// The same for a call to the one DMA channel, number 0.
template <typename Call>
auto onDma(Fg_Struct* record, unsigned dmaIndex, Call call) -> decltype(call(std::declval<Handle&>())) {
    using Result = decltype(call(std::declval<Handle&>()));
    return onHandle(
        record, [&](Handle& handle) -> Result { return dmaIndex == 0 ? call(handle) : Result{kUnknownDma}; });
}

int notSupported(Fg_Struct* record) {
    return onHandle(record, [](Handle&) -> int { return kNotSupported; });
}

int handOutText(Handle& handle, int id, char** target) {
    std::string text;
    if (const int code = handle.board->getText(handle.design.get(), id, text); code != kOk) return code;
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(copy.get(), text.c_str(), text.size() + 1);
    const std::lock_guard lock(handle.textsMutex);
    *target = copy.get();
    handle.texts.emplace(*target, std::move(copy));
    return kOk;
}

/// Text with quotes, backslashes and line ends made visible.
void writeText(std::ostream& out, const std::string& text) {
    out << '"';
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out << '\\' << c;
        else if (c == '\n')
            out << "\\n";
        else
            out << c;
    }
    out << '"';
}

void writeValue(std::ostream& out, const Value& value) {
    std::visit(
        [&out](const auto& given) {
            using T = std::decay_t<decltype(given)>;
            if constexpr (std::is_same_v<T, std::string>) {
                writeText(out, given);
            } else if constexpr (std::is_same_v<T, std::vector<std::uint32_t>>) {
                const char* separator = "{";
                for (const std::uint32_t element : given) out << std::exchange(separator, ", ") << element;
                out << '}';
            } else {
                out << given;
            }
        },
        value);
}

int set(Fg_Struct* record, int id, const void* value, unsigned dmaIndex, FgParamTypes type) {
    return onDma(record, dmaIndex,
                 [&](Handle& handle) { return handle.board->set(handle.design.get(), id, value, type); });
}

int get(Fg_Struct* record, int id, void* value, unsigned dmaIndex, FgParamTypes type) {
    return onDma(record, dmaIndex, [&](Handle& handle) -> int {
        if (type != FG_TYPE_TEXT_POINTER) return handle.board->get(handle.design.get(), id, value, type);
        return value != nullptr ? handOutText(handle, id, static_cast<char**>(value)) : kNullPointer;
    });
}

/// The type code of an untyped call.
FgParamTypes nativeType(Fg_Struct* record, int id) {
    const Handle* handle = handleOf(record);
    return handle != nullptr ? handle->board->nativeType(handle->design.get(), id) : FgParamTypes{};
}

}  // namespace

extern "C" {
#pragma GCC visibility push(default)

/// Opens a handle on a design that is put onto a board. Bit 0 of `flags` attaches: a board that already
/// carries the same design keeps its values; else every value starts anew. Null on failure, with the
/// process-wide last error set.
Fg_Struct* Fg_InitHandleSlaveAware(const char* designName, GXdevice* device, fpga_design* design, int flags) {
    Machine& machine = Machine::instance();
    const auto fail = [&machine](int code) -> Fg_Struct* {
        machine.lastError = code;
        return nullptr;
    };
    try {
        const OpeningFaults faults = machine.openingFaults();
        if (faults.refuseHandle) return fail(faults.handleError);
        if (designName == nullptr) return fail(kNullPointer);
        auto handle = std::make_unique<Handle>();
        handle->board = machine.boards.find(device);
        if (handle->board == nullptr) return fail(kUnknownBoard);
        auto loaded = machine.designs.find(design);
        if (loaded == nullptr) return fail(kUnknownDesign);
        handle->design = handle->board->configure(std::move(loaded), (flags & 1) != 0);
        Fg_Struct* record = &handle->record;
        record->instance = handle.get();
        machine.handles.add(record, std::move(handle));
        machine.lastError = kOk;
        return record;
    } catch (const std::exception&) {
        return fail(kInternalFailure);
    }
}

Fg_Struct* Fg_InitHandle(const char* designName, GXdevice* device, fpga_design* design) {
    return Fg_InitHandleSlaveAware(designName, device, design, 0);
}

/// Gives back the texts that the handle still has out, too, and ends the acquisition that it started.
int Fg_FreeGrabber(Fg_Struct* record) {
    const auto handle = Machine::instance().handles.take(record);
    if (handle == nullptr) return kInvalidHandle;
    handle->board->endAcquisition(handle.get());
    return kOk;
}

/// With a null record the code of the last opening.
int Fg_getLastErrorNumber(Fg_Struct* record) {
    if (record == nullptr) return Machine::instance().lastError;
    const Handle* handle = handleOf(record);
    return handle != nullptr ? handle->lastError.load(std::memory_order_relaxed) : kInvalidHandle;
}

int Fg_getAppletId(Fg_Struct* record, void*) {
    return onHandle(record, [](Handle& handle) { return static_cast<int>(handle.design->data().type); });
}

int Fg_getParameterIdByName(Fg_Struct* record, const char* name) {
    return onHandle(record, [&](Handle& handle) -> int {
        if (name == nullptr) return kNullPointer;
        const auto index = handle.design->indexOf(std::string_view(name));
        return index.has_value() ? handle.design->data().parameters[*index].id : kUnknownParameter;
    });
}

int Fg_setParameterWithType(Fg_Struct* record, int id, const void* value, int dmaIndex, FgParamTypes type) {
    return set(record, id, value, static_cast<unsigned>(dmaIndex), type);
}

int Fg_getParameterWithType(Fg_Struct* record, int id, void* value, int dmaIndex, FgParamTypes type) {
    return get(record, id, value, static_cast<unsigned>(dmaIndex), type);
}

int Fg_freeParameterStringWithType(Fg_Struct* record, int, void* value, int, FgParamTypes type) {
    return onHandle(record, [&](Handle& handle) -> int {
        if (type != FG_TYPE_TEXT_POINTER) return kTypeMismatch;
        const std::lock_guard lock(handle.textsMutex);
        return handle.texts.erase(static_cast<char*>(value)) != 0 ? kOk : kNotHandedOut;
    });
}

int Fg_setParameter(Fg_Struct* record, int id, const void* value, unsigned dmaIndex) {
    return set(record, id, value, dmaIndex, nativeType(record, id));
}

int Fg_getParameter(Fg_Struct* record, int id, void* value, unsigned dmaIndex) {
    return get(record, id, value, dmaIndex, nativeType(record, id));
}

/// Ports other than 0 have no tree.
RegisterInfo* Fg_getParameterInfo(Fg_Struct* record, int port) {
    const Handle* handle = handleOf(record);
    return handle != nullptr && port == 0 ? handle->design->tree() : nullptr;
}

/// Writes every parameter of the design as "NAME = VALUE" lines.
int Fg_saveConfig(Fg_Struct* record, const char* fileName) {
    return onHandle(record, [&](Handle& handle) -> int {
        if (fileName == nullptr) return kNullPointer;
        std::ofstream file(fileName, std::ios::trunc);
        file << "# configuration of the virtual board\n"
             << std::setprecision(std::numeric_limits<double>::max_digits10);
        for (const std::string& name : handle.board->parameterNames()) {
            file << name << " = ";
            writeValue(file, handle.board->value(name));
            file << '\n';
        }
        file.close();
        return file ? kOk : kFileError;
    });
}

int Fg_loadConfig(Fg_Struct* record, const char*) {
    return notSupported(record);
}

int Fg_AcquireEx(Fg_Struct* record, unsigned dmaIndex, int64_t pictures, int, dma_mem* memory) {
    return onDma(record, dmaIndex, [&](Handle& handle) -> int {
        if (memory == nullptr) return kNullPointer;
        auto ring = Machine::instance().memories.find(memory);
        if (ring == nullptr) return kUnknownMemory;
        return handle.board->acquire(handle.design.get(), pictures, std::move(ring), &handle);
    });
}

int Fg_stopAcquireEx(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory, int) {
    return onDma(record, dmaIndex, [&](Handle& handle) { return handle.board->stopAcquisition(memory); });
}

int Fg_Acquire(Fg_Struct* record, unsigned dmaIndex, int64_t pictures) {
    return Fg_AcquireEx(record, dmaIndex, pictures, 0, nullptr);
}

int Fg_stopAcquire(Fg_Struct* record, unsigned dmaIndex) {
    return Fg_stopAcquireEx(record, dmaIndex, nullptr, 0);
}

int64_t Fg_getLastPicNumberEx(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory) {
    return onDma(record, dmaIndex, [&](Handle& handle) { return handle.board->lastPicture(memory); });
}

int64_t Fg_getLastPicNumberBlockingEx(Fg_Struct* record, int64_t picture, unsigned dmaIndex, int timeout,
                                      dma_mem* memory) {
    return onDma(record, dmaIndex, [&](Handle& handle) {
        return handle.board->lastPictureBlocking(picture, std::chrono::seconds(timeout), memory);
    });
}

int64_t Fg_getStatusEx(Fg_Struct* record, int parameter, int64_t data, unsigned dmaIndex, dma_mem* memory) {
    return onDma(record, dmaIndex,
                 [&](Handle& handle) { return handle.board->acquisitionStatus(parameter, data, memory); });
}

// The virtual board has no shading memory.

ShadingMaster* Fg_AllocShading(Fg_Struct* record, int, int) {
    notSupported(record);
    return nullptr;
}

int Fg_FreeShading(Fg_Struct* record, ShadingMaster*) {
    return notSupported(record);
}
int Shad_GetMaxLine(Fg_Struct* record, ShadingMaster*) {
    return notSupported(record);
}
int Shad_SetSubValueLine(Fg_Struct* record, ShadingMaster*, int, int, float) {
    return notSupported(record);
}
int Shad_SetMultValueLine(Fg_Struct* record, ShadingMaster*, int, int, float) {
    return notSupported(record);
}
int Shad_SetFixedPatternNoiseLine(Fg_Struct* record, ShadingMaster*, int, int, int) {
    return notSupported(record);
}
int Shad_GetAccess(Fg_Struct* record, ShadingMaster*) {
    return notSupported(record);
}
int Shad_FreeAccess(Fg_Struct* record, ShadingMaster*) {
    return notSupported(record);
}
int Shad_WriteActLine(Fg_Struct* record, ShadingMaster*, int) {
    return notSupported(record);
}

#pragma GCC visibility pop
}  // extern "C"
