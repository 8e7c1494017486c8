#include "board/machine/HostRuntime.h"

#include <cstdio>
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

namespace virtualboard {

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

/// Runs a call on the board of an open handle, whose one DMA channel is number 0.
template <typename Call>
auto onDma(Fg_Struct* record, unsigned dmaIndex, Call call) -> decltype(call(std::declval<Board&>())) {
    using Result = decltype(call(std::declval<Board&>()));
    return onHandle(record, [&](Handle& handle) -> Result {
        return dmaIndex == 0 ? call(*handle.board) : Result{kUnknownDma};
    });
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

}  // namespace

Fg_Struct* openHandle(const char* designName, GXdevice* device, fpga_design* design, int flags) {
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
        handle->board = machine.board(device);
        if (handle->board == nullptr) return fail(kUnknownBoard);
        auto loaded = machine.design(design);
        if (loaded == nullptr) return fail(kUnknownDesign);
        handle->design = handle->board->configure(std::move(loaded), (flags & 1) != 0);
        Fg_Struct* record = machine.addHandle(std::move(handle));
        machine.lastError = kOk;
        return record;
    } catch (const std::exception&) {
        return fail(kInternalFailure);
    }
}

int freeHandle(Fg_Struct* record) {
    return Machine::instance().removeHandle(record) ? kOk : kInvalidHandle;
}

int lastError(Fg_Struct* record) {
    if (record == nullptr) return Machine::instance().lastError;
    const Handle* handle = handleOf(record);
    return handle != nullptr ? handle->lastError.load(std::memory_order_relaxed) : kInvalidHandle;
}

int answer(Fg_Struct* record, int code) {
    return onHandle(record, [code](Handle&) { return code; });
}

int parameterId(Fg_Struct* record, const char* name) {
    return onHandle(record, [&](Handle& handle) -> int {
        if (name == nullptr) return kNullPointer;
        const auto index = handle.design->indexOf(std::string_view(name));
        return index.has_value() ? handle.design->data().parameters[*index].id : kUnknownParameter;
    });
}

int setParameter(Fg_Struct* record, int id, const void* value, unsigned dmaIndex, FgParamTypes type) {
    return onHandle(record, [&](Handle& handle) -> int {
        if (dmaIndex != 0) return kUnknownDma;
        return handle.board->set(handle.design.get(), id, value, type);
    });
}

int getParameter(Fg_Struct* record, int id, void* value, unsigned dmaIndex, FgParamTypes type) {
    return onHandle(record, [&](Handle& handle) -> int {
        if (dmaIndex != 0) return kUnknownDma;
        if (type != FG_TYPE_TEXT_POINTER) return handle.board->get(handle.design.get(), id, value, type);
        return value != nullptr ? handOutText(handle, id, static_cast<char**>(value)) : kNullPointer;
    });
}

FgParamTypes nativeType(Fg_Struct* record, int id) {
    Handle* handle = handleOf(record);
    return handle != nullptr ? handle->board->nativeType(handle->design.get(), id) : FgParamTypes{};
}

int freeText(Fg_Struct* record, void* text) {
    return onHandle(record, [&](Handle& handle) -> int {
        const std::lock_guard lock(handle.textsMutex);
        return handle.texts.erase(static_cast<char*>(text)) != 0 ? kOk : kNotHandedOut;
    });
}

RegisterInfo* parameterTree(Fg_Struct* record, int port) {
    const Handle* handle = handleOf(record);
    return handle != nullptr && port == 0 ? handle->design->tree() : nullptr;
}

int saveConfiguration(Fg_Struct* record, const char* fileName) {
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

int designType(Fg_Struct* record) {
    return onHandle(record, [](Handle& handle) { return static_cast<int>(handle.design->data().type); });
}

int acquire(Fg_Struct* record, unsigned dmaIndex, std::int64_t pictures, int, dma_mem* memory) {
    return onHandle(record, [&](Handle& handle) -> int {
        if (dmaIndex != 0) return kUnknownDma;
        if (memory == nullptr) return kNullPointer;
        auto ring = Machine::instance().memory(memory);
        if (ring == nullptr) return kUnknownMemory;
        return handle.board->acquire(handle.design.get(), pictures, std::move(ring), &handle);
    });
}

int stopAcquire(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory, int) {
    return onDma(record, dmaIndex, [&](Board& board) { return board.stopAcquisition(memory); });
}

std::int64_t lastPicture(Fg_Struct* record, unsigned dmaIndex, dma_mem* memory) {
    return onDma(record, dmaIndex, [&](Board& board) { return board.lastPicture(memory); });
}

std::int64_t lastPictureBlocking(Fg_Struct* record, std::int64_t picture, unsigned dmaIndex, int timeout,
                                 dma_mem* memory) {
    return onDma(record, dmaIndex,
                 [&](Board& board) { return board.lastPictureBlocking(picture, timeout, memory); });
}

std::int64_t acquisitionStatus(Fg_Struct* record, int parameter, std::int64_t data, unsigned dmaIndex,
                               dma_mem* memory) {
    return onDma(record, dmaIndex,
                 [&](Board& board) { return board.acquisitionStatus(parameter, data, memory); });
}

}  // namespace virtualboard
