/// Opening and ending an applet instance.

#include <cstdlib>
#include <memory>

#include "base/ErrorCodes.h"
#include "base/TrueWord.h"
#include "entry/Boundary.h"
#include "entry/DesignImage.h"
#include "marovine/EnvironmentVariables.h"
#include "marovine/marovine.h"
#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;

namespace {

/// Unloads a design that no instance owns yet.
struct UnloadDesign {
    void operator()(fpga_design* design) const { HapUnloadHapFile(design); }
};
using LoadedDesign = std::unique_ptr<fpga_design, UnloadDesign>;

LoadedDesign loadDesign() {
    // The external file is for trying another design without building the library anew.
    if (std::getenv(marovine::environment::kExternalDesign) != nullptr)
        return LoadedDesign(HapLoadHapFileWithType(marovine::kHapFile, kDesignType, 1));
    return LoadedDesign(HapLoadDesignFromBuffer(rawHapData, rawHapSize, 1));
}

/// Opens an instance in `instance`; the code.
int open(std::unique_ptr<FgGxWrapperImpl>& instance, GXdevice* device, int flags) {
    instance = std::make_unique<FgGxWrapperImpl>();
    instance->directRegisterAccess =
        marovine::isSwitchedOnByEnvironment(marovine::environment::kDirectRegisters);
    if (const int code = instance->initializeDllFunctions("libfglib5.so")) return code;

    LoadedDesign design = loadDesign();
    if (!design) return error::designNotLoaded;
    if (const int code = instance->runFgInit(marovine::kHapFile, device, design.get(), flags)) return code;

    instance->initHandles(device, design.release());
    instance->initInternalMaps();
    instance->retrieveIds();
    instance->createUserParameters();
    instance->executeInitRoutines();
    if ((flags & 1) == 0) instance->setDefaultValues();
    return error::success;
}

/// Frees the inner handle; the runtime's result, or 0 when it has no function for it.
int freeInnerHandle(const FgGxWrapper& instance) {
    const auto free = instance.wrapperFg().get<marovine::RuntimeSlot::FreeGrabber>();
    return free != nullptr ? free(instance.fglibFg()) : error::success;
}

}  // namespace

void* Std_entry(GXdevice* device, int* error, int flags) {
    int unused = 0;
    int& result = error != nullptr ? *error : unused;

    std::unique_ptr<FgGxWrapperImpl> instance;
    result = marovine::atBoundary([&] { return open(instance, device, flags); },
                                  [&] {
                                      if (instance && instance->fglibFg() != nullptr)
                                          freeInnerHandle(*instance);
                                      return marovine::error::internalFailure;
                                  });
    return result == marovine::error::success ? static_cast<FgGxWrapper*>(instance.release()) : nullptr;
}

int Fg_FreeGrabber(Fg_Struct* record) {
    if (record == nullptr || record->instance == nullptr) return error::invalidHandle;
    const std::unique_ptr<FgGxWrapper> instance(static_cast<FgGxWrapper*>(record->instance));
    record->instance = nullptr;
    return marovine::atBoundary([&] { return freeInnerHandle(*instance); },
                                [] { return error::internalFailure; });
}
