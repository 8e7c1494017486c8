/// Typed access to the parameters: the locked entries, the routes past the SDK parameters, and the dispatch
/// to what serves each parameter.

#include <algorithm>
#include <cstring>

#include "base/LogLine.h"
#include "parameters/FgGxWrapperImpl.h"
#include "parameters/ParameterHandlers.h"
#include "parameters/ParameterNames.h"
#include "tables/SdkParameterSearch.h"

namespace error = marovine::error;
using marovine::CachedNumber;
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

/// The code that an operation returns or throws.
template <class Operation>
int codeOf(Operation&& operation) {
    try {
        return operation();
    } catch (int code) {
        return code;
    }
}

/// Throws the code of a failure.
void require(int code) {
    if (code != error::success) throw code;
}

const marovine::ParameterHandlers* findHandlers(int id) {
    if (const auto position = marovine::positionOf(id)) return &marovine::parameterHandlers[*position];
    return nullptr;
}

/// Copies a number of 4 or 8 bytes without asking which: its first and its last four bytes.
void copyNumber(void* to, const void* from, std::size_t size) {
    std::memcpy(to, from, 4);
    std::memcpy(static_cast<std::byte*>(to) + size - 4, static_cast<const std::byte*>(from) + size - 4, 4);
}

bool isDmaChannel(int dmaIndex) {
    return dmaIndex == 0;
}

/// Where the number lies that the cache gives for an id; of size 0 for any other.
CachedNumber cachedNumber(int id) {
    const auto position = marovine::positionOf(id);
    return position ? marovine::cachedNumbers[*position] : CachedNumber{};
}

}  // namespace

inline void FgGxWrapperImpl::giveCachedNumber(CachedNumber number, void* destination) const {
    copyNumber(destination, reinterpret_cast<const std::byte*>(&cache_) + number.offset, number.size);
}

// ---- locked entries ----

// What serves an id is fixed, so that it is looked up before the lock is taken.

int FgGxWrapperImpl::Fg_setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) {
    if (value == nullptr) return setError(error::invalidArgument);
    const auto* handlers = findHandlers(id);
    const tavr::templates::platform::CriticalSectionScope guard(&lock_);
    if (id > kDesignIdBase)
        return setError(setUnwrappedParameterWithType(id - kDesignIdBase, value, dmaIndex, type));
    if (directRegisterAccess && id > kRegisterIdBase)
        return setError(writeRegister(id - kRegisterIdBase, value));
    return setError(codeOf([&] {
        lock_.saidToBeHeld();  // the checker sees no further than this body
        return trySet(id, handlers, value, dmaIndex, type);
    }));
}

int FgGxWrapperImpl::Fg_getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) {
    if (value == nullptr) return setError(error::invalidArgument);
    // The shortest way for what is asked most.
    const auto number = isDmaChannel(dmaIndex) ? cachedNumber(id) : CachedNumber{};
    if (number.size == 0) return getOther(id, value, dmaIndex, type);
    const tavr::templates::platform::CriticalSectionScope guard(&lock_);
    giveCachedNumber(number, value);
    return setError(error::success);
}

int FgGxWrapperImpl::getOther(int id, void* value, int dmaIndex, FgParamTypes type) {
    const tavr::templates::platform::CriticalSectionScope guard(&lock_);
    if (id > kDesignIdBase)
        return setError(getUnwrappedParameterWithType(id - kDesignIdBase, value, dmaIndex, type));
    if (directRegisterAccess && id > kRegisterIdBase)
        return setError(readRegister(id - kRegisterIdBase, value));
    return setError(codeOf([&] {
        lock_.saidToBeHeld();  // the checker sees no further than this body
        return tryGet(id, value, dmaIndex, type);
    }));
}

int FgGxWrapperImpl::Fg_freeParameterString(int id, void* value, int dmaIndex, FgParamTypes type) {
    if (id > kDesignIdBase)
        return setError(freeUnwrappedParameterString(id - kDesignIdBase, value, dmaIndex, type));
    if (!isDmaChannel(dmaIndex)) return setError(error::invalidArgument);
    const auto* handlers = findHandlers(id);
    if (handlers != nullptr &&
        (std::holds_alternative<marovine::Forwarded>(handlers->get) || id == kNumberOfProcessesId))
        return freeUnwrappedParameterString(id, value, dmaIndex, type);
    return handedOutTexts_.giveBack(value) ? error::success : setError(error::invalidArgument);
}

int FgGxWrapperImpl::mapDmaToProcess(int dmaIndex) const {
    // One process, served by one DMA channel.
    if (!isDmaChannel(dmaIndex)) throw error::invalidArgument;
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

void FgGxWrapperImpl::setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) {
    require(trySet(id, findHandlers(id), value, dmaIndex, type));
}

void FgGxWrapperImpl::getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) {
    require(tryGet(id, value, dmaIndex, type));
}

int FgGxWrapperImpl::unknownParameter(const char* verb, int id) const {
    marovine::logLine(*getDefaultLogger(), marovine::kLogLookup, "trying to ", verb,
                      " unknown SDK parameter '", id, "' on process 0!");
    return error::invalidArgument;
}

/// A part of the locked set: a call more would be felt there.
[[gnu::always_inline]] inline int FgGxWrapperImpl::trySet(int id, const marovine::ParameterHandlers* handlers,
                                                          const void* value, int dmaIndex,
                                                          FgParamTypes type) {
    if (!isDmaChannel(dmaIndex)) return error::invalidArgument;
    if (handlers == nullptr && id != kDescriptionId) return unknownParameter("set", id);
    const auto refuse = [&](const char* name) {
        marovine::logLine(*getDefaultLogger(), marovine::kLogLookup,
                          "trying to set read-only SDK parameter '", name, "' on process 0!");
        return error::notAllowed;
    };
    if (handlers == nullptr) return refuse("FG_PARAM_DESCR");
    int code = error::success;
    const auto onError = marovine::OnError::storedIn(code);
    std::visit(Overloaded{
                   [&](marovine::ReadOnly) { code = refuse(handlers->name); },
                   [&](marovine::Setter<const char*> set) {
                       (this->*set)(static_cast<const char*>(value), onError);
                   },
                   [&]<class T>(marovine::Setter<T> set) { (this->*set)(load<T>(value), onError); },
                   [&](const marovine::FieldSetters& set) {
                       if (type == FG_TYPE_FIELD_ACCESS)
                           (this->*set.block)(static_cast<const FieldParameterAccess*>(value), onError);
                       else
                           (this->*set.element)(static_cast<const FieldParameterInt_s*>(value), onError);
                   },
               },
               handlers->set);
    return code;
}

int FgGxWrapperImpl::tryGet(int id, void* value, int dmaIndex, FgParamTypes type) {
    // How many processes there are can be asked on any DMA channel.
    if (id == kNumberOfProcessesId && value != nullptr) {
        store<std::int32_t>(value, 1);
        return error::success;
    }
    if (!isDmaChannel(dmaIndex)) return error::invalidArgument;
    const auto position = marovine::positionOf(id);
    if (!position && id != kDescriptionId) return unknownParameter("get", id);
    if (value == nullptr) return error::invalidArgument;
    if (!position) {
        giveDescription(value, type);
        return error::success;
    }
    if (const auto number = marovine::cachedNumbers[*position]; number.size != 0) {
        giveCachedNumber(number, value);
        return error::success;
    }

    const auto& handlers = marovine::parameterHandlers[*position];
    const auto fromCache = [&] {
        std::visit(Overloaded{
                       [](const auto&) {},  // numbers are served above
                       [&](marovine::CacheField<std::string> text) {
                           giveText(value, type,
                                    [&](char* destination) { copyText(text(cache_), destination); });
                       },
                       [&](marovine::CacheField<marovine::LookupTable> table) {
                           readLookupTable(table(cache_), value, type);
                       },
                   },
                   handlers.slot);
    };
    int code = error::success;
    std::visit(
        Overloaded{
            [&](marovine::FromCache) { fromCache(); },
            [&](marovine::Constant constant) { store(value, constant.value); },
            [&](marovine::Forwarded) { code = getUnwrappedParameterWithType(id, value, dmaIndex, type); },
            [&](marovine::InnerHandle) {
                code = getUnwrappedParameterWithType(id, value, 0, FG_TYPE_UINT32);
            },
            [&](marovine::Getter<char> get) {
                giveText(value, type, [&](char* destination) { (this->*get)(destination); });
            },
            [&]<class T>(marovine::Getter<T> get) { (this->*get)(static_cast<T*>(value)); },
        },
        handlers.get);
    return code;
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
