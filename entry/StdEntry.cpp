/// Opening and ending an applet instance.

#include <cstdlib>
#include <memory>

#include "base/ErrorCodes.h"
#include "base/TrueWord.h"
#include "entry/DesignImage.h"
#include "marovine/marovine.h"
#include "parameters/FgGxWrapperImpl.h"
#include "parameters/ParameterHandlers.h"

namespace error = marovine::error;

namespace {

/// Unloads a design that no instance owns yet.
struct UnloadDesign {
    void operator()(fpga_design* design) const { HapUnloadHapFile(design); }
};
using LoadedDesign = std::unique_ptr<fpga_design, UnloadDesign>;

LoadedDesign loadDesign() {
    // The external file is for trying another design without building the library anew.
    if (std::getenv("__TAVR_FORCE_EXTERNAL_HAP") != nullptr)
        return LoadedDesign(HapLoadHapFileWithType(marovine::kHapFile, kDesignType, 1));
    return LoadedDesign(HapLoadDesignFromBuffer(rawHapData, rawHapSize, 1));
}

}  // namespace

void* Std_entry(GXdevice* device, int* error, int flags) {
    int unused = 0;
    int& result = error != nullptr ? *error : unused;

    auto instance = std::make_unique<FgGxWrapperImpl>();
    instance->directRegisterAccess = marovine::isSwitchedOnByEnvironment("TAVR_ENABLE_DRA");
    result = instance->initializeDllFunctions("libfglib5.so");
    if (result != error::success) return nullptr;

    LoadedDesign design = loadDesign();
    if (!design) {
        result = error::designNotLoaded;
        return nullptr;
    }
    result = instance->runFgInit(marovine::kHapFile, device, design.get(), flags);
    if (result != error::success) return nullptr;

    instance->initHandles(device, design.release());
    instance->initInternalMaps();
    instance->retrieveIds();
    instance->createUserParameters();
    instance->executeInitRoutines();
    if ((flags & 1) == 0) instance->setDefaultValues();
    return static_cast<FgGxWrapper*>(instance.release());
}

int Fg_FreeGrabber(Fg_Struct* record) {
    if (record == nullptr || record->instance == nullptr) return error::invalidHandle;
    const std::unique_ptr<FgGxWrapper> instance(static_cast<FgGxWrapper*>(record->instance));
    record->instance = nullptr;
    const auto freeInner = instance->wrapperFg().get<marovine::RuntimeSlot::FreeGrabber>();
    return freeInner != nullptr ? freeInner(instance->fglibFg()) : error::success;
}
