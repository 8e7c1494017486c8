#include "runtime/FgGxWrapper.h"

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>

#include "base/DynamicLoading.h"
#include "base/ErrorCodes.h"
#include "base/LogLine.h"
#include "base/Logging.h"

namespace error = marovine::error;
using marovine::RuntimeSlot;

namespace marovine {

void RuntimeFunctions::bind(void* library) {
    for (const auto& [slot, name] : runtimeSlotNames) slots_[slot] = dlsym(library, name);
}

void RegistryMap::settle() {
    // What comes in order costs no sorting.
    const auto lower = [](const auto& a, const auto& b) { return a.first < b.first; };
    if (!std::is_sorted(nodes_.begin(), nodes_.end(), lower)) std::sort(nodes_.begin(), nodes_.end(), lower);
}

RegisterInfo* RegistryMap::find(int id) const {
    const auto found = std::lower_bound(nodes_.begin(), nodes_.end(), id,
                                        [](const auto& entry, int key) { return entry.first < key; });
    return found != nodes_.end() && found->first == id ? found->second : nullptr;
}

}  // namespace marovine

FgGxWrapper::FgGxWrapper(int processCount) : private_(std::make_unique<Private>()) {
    private_->registry = std::make_unique<Fg_ParameterInfo>(processCount);
}

FgGxWrapper::~FgGxWrapper() {
    if (private_->runtimeLibrary != nullptr) dlclose(private_->runtimeLibrary);
    if (private_->design != nullptr) HapUnloadHapFile(private_->design);
}

tavr::tools::logging::Logger* FgGxWrapper::getDefaultLogger() const {
    if (logger_ == nullptr) logger_ = tavr::tools::logging::Logging::getLogger("tavr.wrapper.FgGxWrapper");
    return logger_;
}

int FgGxWrapper::initializeDllFunctions(const char* fileName) {
    private_->runtimeLibrary = dlopen(fileName, marovine::kLibraryOpenFlags);
    if (private_->runtimeLibrary == nullptr) {
        marovine::logLine(*getDefaultLogger(), marovine::kLogRuntimeLibrary, "error opening dll '", fileName,
                          "'");
        return setError(error::internalFailure);
    }
    private_->functions.bind(private_->runtimeLibrary);
    private_->parameterIdByName = marovine::resolve<decltype(private_->parameterIdByName)>(
        private_->runtimeLibrary, "Fg_getParameterIdByName");
    return 0;
}

int FgGxWrapper::runFgInit(const char* hapName, GXdevice* device, fpga_design* design, int flags) {
    auto& p = *private_;
    p.initHandleSlaveAware =
        marovine::resolve<decltype(p.initHandleSlaveAware)>(p.runtimeLibrary, "Fg_InitHandleSlaveAware");
    p.initHandle = marovine::resolve<decltype(p.initHandle)>(p.runtimeLibrary, "Fg_InitHandle");
    p.lastErrorNumber =
        marovine::resolve<decltype(p.lastErrorNumber)>(p.runtimeLibrary, "Fg_getLastErrorNumber");

    const char* used = "Fg_InitHandleSlaveAware";
    if (p.initHandleSlaveAware != nullptr) {
        p.innerHandle = p.initHandleSlaveAware(hapName, device, design, flags);
    } else if (p.initHandle != nullptr) {
        used = "Fg_InitHandle";
        p.innerHandle = p.initHandle(hapName, device, design);
    } else {
        marovine::logLine(*getDefaultLogger(), marovine::kLogRuntimeLibrary,
                          "cannot resolve function 'Fg_InitHandle' and/or 'Fg_InitHandleSlaveAware'");
        return setError(error::internalFailure);
    }
    if (p.innerHandle != nullptr) {
        accessDeviceHandle(device);
        accessDesignHandle(design);
        return 0;
    }
    marovine::logLine(*getDefaultLogger(), marovine::kLogOpenFailed, "error calling '", used,
                      "' (hapName = '", hapName, "')");
    const int code = p.lastErrorNumber != nullptr ? p.lastErrorNumber(nullptr) : error::designNotLoaded;
    // A runtime that opens nothing and reports no error must not look like success.
    return setError(code != 0 ? code : error::designNotLoaded);
}

void FgGxWrapper::initHandles(GXdevice* device, fpga_design* design) {
    private_->board = device;
    private_->design = design;
}

// Each is atomic for itself: boards may be opened on several threads while others ask.
GXdevice* FgGxWrapper::accessDeviceHandle(GXdevice* device) {
    static std::atomic<GXdevice*> handle = nullptr;
    return device != nullptr ? handle = device : handle.load();
}

fpga_design* FgGxWrapper::accessDesignHandle(fpga_design* design) {
    static std::atomic<fpga_design*> handle = nullptr;
    return design != nullptr ? handle = design : handle.load();
}

int FgGxWrapper::Fg_getLastErrorNumberGx() const {
    const auto ask = wrapperFg().get<RuntimeSlot::GetLastErrorNumber>();
    return ask != nullptr && fglibFg() != nullptr ? ask(fglibFg()) : error::notAllowed;
}

int FgGxWrapper::setUnwrappedParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) {
    const auto set = wrapperFg().get<RuntimeSlot::SetParameterWithType>();
    return set != nullptr ? set(fglibFg(), id, value, static_cast<unsigned>(dmaIndex), type)
                          : error::notAllowed;
}

int FgGxWrapper::getUnwrappedParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) const {
    const auto get = wrapperFg().get<RuntimeSlot::GetParameterWithType>();
    return get != nullptr ? get(fglibFg(), id, value, static_cast<unsigned>(dmaIndex), type)
                          : error::notAllowed;
}

int FgGxWrapper::freeUnwrappedParameterString(int id, void* value, int dmaIndex, FgParamTypes type) {
    const auto give = wrapperFg().get<RuntimeSlot::FreeParameterStringWithType>();
    return give != nullptr ? give(fglibFg(), id, value, static_cast<unsigned>(dmaIndex), type)
                           : error::notAllowed;
}

RegisterInfo* FgGxWrapper::getUnwrappedParameterInfo() const {
    const auto info = wrapperFg().get<RuntimeSlot::GetParameterInfo>();
    return info != nullptr ? info(fglibFg(), 0) : nullptr;
}

int FgGxWrapper::getParameterIdByName(const char* name) const {
    return private_->parameterIdByName != nullptr ? private_->parameterIdByName(fglibFg(), name) : 0;
}

RegisterInfo* FgGxWrapper::findRegisterInfo(int process, int id) const {
    const auto map = registryMaps_.find(process);
    return map != registryMaps_.end() ? map->second.find(id) : nullptr;
}

// ---- field caches ----

void FgGxWrapper::setFieldCache(void* cache, const FieldParameterInt_s* record) {
    if (record != nullptr) static_cast<std::uint32_t*>(cache)[record->index] = record->value;
}

void FgGxWrapper::getFieldCache(const void* cache, FieldParameterInt_s* record) {
    if (record != nullptr) record->value = static_cast<const std::uint32_t*>(cache)[record->index];
}

std::size_t FgGxWrapper::elementSize(std::int32_t type) {
    switch (type) {
        case FG_TYPE_INT32:
        case FG_TYPE_UINT32:
            return sizeof(std::uint32_t);
        case FG_TYPE_INT64:
        case FG_TYPE_UINT64:
            return sizeof(std::uint64_t);
        case FG_TYPE_DOUBLE:
            return sizeof(double);
        default:
            return 0;
    }
}

void FgGxWrapper::setFieldCache(void* cache, const FieldParameterAccess* record) {
    if (record == nullptr) return;
    const std::size_t size = elementSize(record->type);
    if (size * record->count == 0) return;
    std::memcpy(static_cast<char*>(cache) + size * record->start, record->values, size * record->count);
}
