/// Typed access to the parameters: the locked entries, the routes past the SDK parameters, and the dispatch
/// to what serves each parameter.

#include <algorithm>
#include <cstring>

#include "base/LogLine.h"
#include "parameters/FgGxWrapperImpl.h"
#include "parameters/ParameterHandlers.h"
#include "parameters/ParameterNames.h"

namespace error = marovine::error;
using marovine::kDesignIdBase;
using marovine::kRegisterIdBase;

namespace {

/// Reads a parameter's description by name; served by the typed get only.
constexpr int kDescriptionId = 24114;
constexpr const char* kNoDescription = "-";

constexpr int kNumberOfProcessesId = marovine::sdkId("FG_NR_OF_PROCESSES");

/// Calls a function object with several overloads for the alternatives of a variant.
template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

/// A result in the type of `T` behind the caller's untyped pointer, which may point anywhere: the pointer of
/// a text goes where the name of a parameter stood.
template <class T>
void store(void* place, T value) {
    std::memcpy(place, &value, sizeof value);
}

template <class T>
T load(const void* place) {
    T value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

/// The code that an operation throws, 0 when it returns.
template <class Operation>
int codeOf(Operation&& operation) {
    try {
        operation();
        return error::success;
    } catch (int code) {
        return code;
    }
}

const marovine::ParameterHandlers* findHandlers(int id) {
    const auto* row = marovine::findSdkParameter(id);
    return row != nullptr ? &marovine::parameterHandlers[marovine::indexOf(*row)] : nullptr;
}

}  // namespace

// ---- locked entries ----

int FgGxWrapperImpl::Fg_setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) {
    if (value == nullptr) return setError(error::invalidArgument);
    const tavr::templates::platform::CriticalSectionGuard guard(&lock_);
    if (id > kDesignIdBase)
        return setError(setUnwrappedParameterWithType(id - kDesignIdBase, value, dmaIndex, type));
    if (directRegisterAccess && id > kRegisterIdBase)
        return setError(writeRegister(id - kRegisterIdBase, value));
    return setError(codeOf([&] {
        lock_.saidToBeHeld();  // the checker sees no further than this body
        setParameterWithType(id, value, dmaIndex, type);
    }));
}

int FgGxWrapperImpl::Fg_getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) {
    if (value == nullptr) return setError(error::invalidArgument);
    const tavr::templates::platform::CriticalSectionGuard guard(&lock_);
    if (id > kDesignIdBase)
        return setError(getUnwrappedParameterWithType(id - kDesignIdBase, value, dmaIndex, type));
    if (directRegisterAccess && id > kRegisterIdBase)
        return setError(readRegister(id - kRegisterIdBase, value));
    return setError(codeOf([&] {
        lock_.saidToBeHeld();  // the checker sees no further than this body
        getParameterWithType(id, value, dmaIndex, type);
    }));
}

int FgGxWrapperImpl::Fg_freeParameterString(int id, void* value, int dmaIndex, FgParamTypes type) {
    if (id > kDesignIdBase)
        return setError(freeUnwrappedParameterString(id - kDesignIdBase, value, dmaIndex, type));
    if (const int code = codeOf([&] { mapDmaToProcess(dmaIndex); })) return setError(code);
    const auto* handlers = findHandlers(id);
    if (handlers != nullptr &&
        (std::holds_alternative<marovine::Forwarded>(handlers->get) || id == kNumberOfProcessesId))
        return freeUnwrappedParameterString(id, value, dmaIndex, type);
    return handedOutTexts_.giveBack(value) ? error::success : setError(error::invalidArgument);
}

int FgGxWrapperImpl::mapDmaToProcess(int dmaIndex) const {
    // One process, served by one DMA channel.
    if (dmaIndex != 0) throw error::invalidArgument;
    return 0;
}

// ---- registers of the board ----

int FgGxWrapperImpl::writeRegister(int number, const void* value) const {
    const bool wide = HapGetRegisterBitRange(designHandle(), number) > 32;
    return TavrRegisterWrite(boardHandle(), number,
                             wide ? load<std::uint64_t>(value) : load<std::uint32_t>(value));
}

int FgGxWrapperImpl::readRegister(int number, void* value) const {
    std::uint64_t content = 0;
    const int code = TavrRegisterRead(boardHandle(), number, &content);
    if (code != error::success) return code;
    if (HapGetRegisterBitRange(designHandle(), number) > 32)
        store(value, content);
    else
        store(value, static_cast<std::uint32_t>(content));
    return error::success;
}

// ---- dispatch ----

void FgGxWrapperImpl::requireProcess(int dmaIndex, int id, const char* verb) const {
    const int process = mapDmaToProcess(dmaIndex);
    if (process == 0) return;
    marovine::logLine(*getDefaultLogger(), marovine::kLogLookup, "trying to ", verb, " SDK parameter '", id,
                      "' on unknown process ", process, "!");
    throw error::invalidArgument;
}

void FgGxWrapperImpl::setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) {
    requireProcess(dmaIndex, id, "set");
    const auto* handlers = findHandlers(id);
    if (handlers == nullptr && id != kDescriptionId) {
        marovine::logLine(*getDefaultLogger(), marovine::kLogLookup, "trying to set unknown SDK parameter '",
                          id, "' on process 0!");
        throw error::invalidArgument;
    }
    const auto refuse = [&](const char* name) {
        marovine::logLine(*getDefaultLogger(), marovine::kLogLookup,
                          "trying to set read-only SDK parameter '", name, "' on process 0!");
        throw error::notAllowed;
    };
    if (handlers == nullptr) return refuse("FG_PARAM_DESCR");
    std::visit(
        Overloaded{
            [&](marovine::ReadOnly) { refuse(handlers->name); },
            [&](marovine::Setter<const char*> set) { (this->*set)(static_cast<const char*>(value), true); },
            [&]<class T>(marovine::Setter<T> set) { (this->*set)(load<T>(value), true); },
            [&](const marovine::FieldSetters& set) {
                if (type == FG_TYPE_FIELD_ACCESS)
                    (this->*set.block)(static_cast<const FieldParameterAccess*>(value), true);
                else
                    (this->*set.element)(static_cast<const FieldParameterInt_s*>(value), true);
            },
        },
        handlers->set);
}

void FgGxWrapperImpl::getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) {
    // How many processes there are can be asked on any DMA channel.
    if (id == kNumberOfProcessesId && value != nullptr) return store<std::int32_t>(value, 1);
    requireProcess(dmaIndex, id, "get");
    const auto* handlers = findHandlers(id);
    if (handlers == nullptr && id != kDescriptionId) {
        marovine::logLine(*getDefaultLogger(), marovine::kLogLookup, "trying to get unknown SDK parameter '",
                          id, "' on process 0!");
        throw error::invalidArgument;
    }
    requireDestination(value);
    if (handlers == nullptr) return giveDescription(value, type);

    const auto fromCache = [&] {
        std::visit(Overloaded{
                       [](std::monostate) {},
                       [&](marovine::CacheField<std::string> text) {
                           giveText(value, type,
                                    [&](char* destination) { copyText(text(cache_), destination); });
                       },
                       [&](marovine::CacheField<marovine::LookupTable> table) {
                           readLookupTable(table(cache_), value, type);
                       },
                       [&]<class T>(marovine::CacheField<T> field) { store(value, field(cache_)); },
                   },
                   handlers->slot);
    };
    const auto fromInnerHandle = [&](int innerDmaIndex, FgParamTypes innerType) {
        if (const int code = getUnwrappedParameterWithType(id, value, innerDmaIndex, innerType)) throw code;
    };
    std::visit(Overloaded{
                   [&](marovine::FromCache) { fromCache(); },
                   [&](marovine::FromApplied applied) { store(value, applied.field(cache_)); },
                   [&](marovine::Constant constant) { store(value, constant.value); },
                   [&](marovine::Forwarded) { fromInnerHandle(dmaIndex, type); },
                   [&](marovine::InnerHandle) { fromInnerHandle(0, FG_TYPE_UINT32); },
                   [&](marovine::Getter<char> get) {
                       giveText(value, type, [&](char* destination) { (this->*get)(destination); });
                   },
                   [&]<class T>(marovine::Getter<T> get) { (this->*get)(static_cast<T*>(value)); },
               },
               handlers->get);
}

// ---- texts ----

template <class WriteText>
void FgGxWrapperImpl::giveText(void* value, FgParamTypes type, WriteText&& writeText) {
    if (type != FG_TYPE_TEXT_POINTER) return writeText(static_cast<char*>(value));
    char* buffer = textBuffer_.get();
    buffer[0] = '\0';
    writeText(buffer);
    buffer[marovine::kTextRoom] = '\0';
    store(value, handedOutTexts_.handOut(buffer));
}

void FgGxWrapperImpl::giveDescription(void* value, FgParamTypes type) {
    // The caller's buffer holds the name on input.
    const char* description = marovine::descriptionOf(static_cast<const char*>(value));
    giveText(value, type, [&](char* destination) {
        std::strcpy(destination, description != nullptr ? description : kNoDescription);
    });
}

// ---- lookup tables ----

void FgGxWrapperImpl::readLookupTable(const marovine::LookupTable& table, void* value,
                                      FgParamTypes type) const {
    constexpr auto entries = static_cast<std::uint32_t>(marovine::kLutEntries);
    if (type == FG_TYPE_FIELD_ACCESS) {
        auto* block = static_cast<FieldParameterAccess*>(value);
        if (block->start >= entries || block->count > entries || block->start > entries - block->count)
            throw error::invalidArgument;
        if (!marovine::isLookupTableType(block->type)) throw error::invalidArgument;
        if (block->count != 0 && block->values == nullptr) throw error::invalidArgument;
        std::copy_n(table.data() + block->start, block->count, static_cast<std::uint32_t*>(block->values));
    } else {
        auto* element = static_cast<FieldParameterInt_s*>(value);
        if (element->index >= entries) throw error::invalidArgument;
        getFieldCache(table.data(), element);
    }
}
