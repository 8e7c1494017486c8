/// What every applet of the family answers alike: shading, which none offers, and the event lookups straight
/// from the design's event list.

#include <cstring>
#include <string>

#include "entry/ErrorCodes.h"
#include "wrapper/FgGxWrapper.h"
#include "xml/ParameterInfoBuilderXML.h"

namespace error = marovine::error;

namespace {
/// Events have one bit of a 64-bit mask each.
constexpr int kEventLimit = 64;
}  // namespace

const char* FgGxWrapper::Fg_getEventName(unsigned long mask) {
    for (int number = 0; number < kEventLimit; ++number) {
        if ((1UL << number) != mask) continue;
        const HapEvent* event = HapGetEvent(designHandle(), number);
        return event != nullptr ? event->name : nullptr;
    }
    return nullptr;
}

std::uint64_t FgGxWrapper::Fg_getEventMask(const char* name) {
    if (name == nullptr) return 0;
    for (int number = 0; number < kEventLimit; ++number) {
        const HapEvent* event = HapGetEvent(designHandle(), number);
        if (event != nullptr && std::strcmp(event->name, name) == 0) return std::uint64_t{1} << number;
    }
    return 0;
}

int FgGxWrapper::Fg_getParameterInfoXML(Fg_Struct* /*record*/, int port, char* buffer, std::size_t* size) {
    if (size == nullptr) return setError(error::invalidArgument);
    if (*size == 0 && buffer != nullptr) return setError(error::bufferTooSmall);
    if (parameterInfo().getRegisterInfo(port) == nullptr) return setError(error::noDefinition);
    const std::string document = ParameterInfoBuilderXML(parameterInfo(), getCameraType(), port).build();
    if (buffer != nullptr) {
        if (*size <= document.size()) return setError(error::bufferTooSmall);
        std::memcpy(buffer, document.c_str(), document.size() + 1);
    }
    *size = document.size() + 1;
    return setError(error::success);
}

ShadingMaster* FgGxWrapper::Fg_AllocShading(int /*set*/, int /*port*/) {
    return nullptr;
}
int FgGxWrapper::Fg_FreeShading(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_SetSubValueLine(ShadingMaster* /*shading*/, int /*x*/, int /*channel*/,
                                      float /*value*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_SetMultValueLine(ShadingMaster* /*shading*/, int /*x*/, int /*channel*/,
                                       float /*value*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_SetFixedPatternNoiseLine(ShadingMaster* /*shading*/, int /*on*/, int /*x*/,
                                               int /*channel*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_GetMaxLine(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_GetAccess(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_FreeAccess(ShadingMaster* /*shading*/) {
    return error::notSupported;
}
int FgGxWrapper::Shad_WriteActLine(ShadingMaster* /*shading*/, int /*line*/) {
    return error::notSupported;
}
