/// Debug points of the design: test data is injected there, and at some of them the pipeline is watched.
///
/// Which debug points there are is the design's own list; each access looks up the design parameter of the
/// selected one by name.

#include <cstring>

#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;
using marovine::accepted;
using marovine::applySetting;
using marovine::constant;
using marovine::entriesOf;
using marovine::kAccessReadOnly;
using marovine::kAccessReadWrite;
using marovine::limits;
using marovine::oneOf;
using marovine::sdkId;

namespace {

/// Bits of a debug point's operation mode.
constexpr std::uint32_t kInjecting = 1;
constexpr std::uint32_t kMonitoring = 2;

constexpr const char* kOperationMode = "_OperationMode";
constexpr const char* kFile = "_DebugFile";
constexpr const char* kPixelValue = "_PixelValue";

/// Whatever goes wrong at a debug point is one and the same failure to the caller.
template <class Access>
void asInternalFailure(Access&& access) {
    try {
        access();
    } catch (int) {
        throw error::internalFailure;
    }
}

}  // namespace

// ---- access to the selected debug point ----

const marovine::DebugEntry& FgGxWrapperImpl::debugEntry() const {
    if (cache_.FG_DEBUGSOURCE >= debugEntries_.size()) throw error::internalFailure;
    return debugEntries_[cache_.FG_DEBUGSOURCE];
}

marovine::DesignName FgGxWrapperImpl::debugName(const char* ending) const {
    return {debugEntry().path, ending};
}

int FgGxWrapperImpl::requireId(const marovine::DesignName& name) const {
    const int id = getParameterIdByName(name.c_str());
    if (id <= 0) throw error::internalFailure;
    return id;
}

void FgGxWrapperImpl::readByName(const marovine::DesignName& name, void* value, FgParamTypes type) const {
    asInternalFailure([&] { design().get(requireId(name), value, type); });
}

void FgGxWrapperImpl::writeByName(const marovine::DesignName& name, const void* value,
                                  FgParamTypes type) const {
    asInternalFailure([&] { design().set(requireId(name), value, type); });
}

std::uint32_t FgGxWrapperImpl::readDebug(const char* ending) const {
    std::uint32_t value = 0;
    readByName(debugName(ending), &value, FG_TYPE_UINT32);
    return value;
}

void FgGxWrapperImpl::writeDebug(const char* ending, std::uint32_t value) const {
    writeByName(debugName(ending), &value, FG_TYPE_UINT32);
}

void FgGxWrapperImpl::readMonitor(const char* ending, std::uint32_t* destination) const {
    requireDestination(destination);
    *destination = debugEntryMonitors() ? readDebug(ending) : 0;
}

// ---- choice of the debug point ----

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGSOURCE_P0(unsigned int value, marovine::OnError onError) {
    marovine::leavingErrors(onError, [&] {
        const std::int64_t count = readDebugEntryCount();
        applySetting(cache_.FG_DEBUGSOURCE, value, accepted(value < count), true, [&] {
            setAccessFlags(sdkId("FG_DEBUGOUTENABLE"),
                           debugEntryMonitors() ? kAccessReadWrite : kAccessReadOnly);
            update_dynamic_range_FG_DEBUGOUTPIXEL_P0();
        });
    });
}

void FgGxWrapperImpl::update_dynamic_range_FG_DEBUGOUTPIXEL_P0() {
    constexpr int id = sdkId("FG_DEBUGOUTPIXEL");
    if (!debugEntryMonitors()) return setMaximum(id, std::uint32_t{0});
    // The range is the runtime's to know; what it does not describe keeps the range it has.
    const int designId = getParameterIdByName(debugName(kPixelValue).c_str());
    if (designId <= 0) return;
    const RegisterInfo* node = findRegisterInfoByParamId_P0(getUnwrappedParameterInfo(), designId);
    if (node != nullptr && node->kind == FG_KIND_UINT32) setMaximum(id, node->value.uint32.maximum);
}

void FgGxWrapperImpl::get_sdk_param_FG_DEBUGSOURCENAME_P0(char* destination) {
    requireDestination(destination);
    copyText(debugEntry().name, destination);
}

// ---- injection ----

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGINENABLE_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_DEBUGINENABLE"));
    applySetting(cache_.FG_DEBUGINENABLE, value, verdict, onError, [&] {
        const std::uint32_t monitoring = debugEntryMonitors() ? readDebug(kOperationMode) & kMonitoring : 0;
        writeDebug(kOperationMode, (value == constant("FG_ON") ? kInjecting : 0) | monitoring);
    });
}

void FgGxWrapperImpl::get_sdk_param_FG_DEBUGINENABLE_P0(std::int32_t* destination) {
    requireDestination(destination);
    *destination = (readDebug(kOperationMode) & kInjecting) != 0 ? constant("FG_ON") : constant("FG_OFF");
}

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGFILE_P0(const char* value, marovine::OnError onError) {
    applySetting(cache_.FG_DEBUGFILE, value, accepted(value != nullptr), onError,
                 [&] { writeByName(debugName(kFile), value, FG_TYPE_TEXT); });
}

void FgGxWrapperImpl::get_sdk_param_FG_DEBUGFILE_P0(char* destination) {
    requireDestination(destination);
    // Read into a buffer that fits any text first, so that a failed read leaves the caller's text alone. The
    // destination may be that buffer. It may still hold another text, which a runtime could leave there.
    char* buffer = textBuffer_.get();
    buffer[0] = '\0';
    readByName(debugName(kFile), buffer, FG_TYPE_TEXT);
    if (destination != buffer) std::strcpy(destination, buffer);
}

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGINSERT_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_DEBUGINSERT"));
    applySetting(cache_.FG_DEBUGINSERT, value, verdict, onError, [&] {
        readDebug(kOperationMode);  // only to see whether the debug point answers
        writeDebug("_Insert", 1);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGWRITEPIXEL_P0(unsigned long value, marovine::OnError onError) {
    const auto verdict = marovine::inside<std::uint64_t>(value, limits<std::uint64_t>("FG_DEBUGWRITEPIXEL"));
    applySetting(cache_.FG_DEBUGWRITEPIXEL, value, verdict, onError,
                 [&] { writeByName(debugName("_Inject_WritePixel"), &value, FG_TYPE_UINT64); });
}

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGWRITEFLAG_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_DEBUGWRITEFLAG"));
    applySetting(cache_.FG_DEBUGWRITEFLAG, value, verdict, onError,
                 [&] { writeDebug("_Inject_WriteFlag", static_cast<std::uint32_t>(value)); });
}

void FgGxWrapperImpl::get_sdk_param_FG_DEBUGREADY_P0(std::int32_t* destination) {
    requireDestination(destination);
    *destination = static_cast<std::int32_t>(readDebug("_Inject_ReadyForInjection"));
}

// ---- monitoring ----

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGOUTENABLE_P0(int value, marovine::OnError onError) {
    const auto verdict = oneOf(value, entriesOf("FG_DEBUGOUTENABLE"));
    applySetting(cache_.FG_DEBUGOUTENABLE, value, verdict, onError, [&] {
        if (!debugEntryMonitors()) return;
        const std::uint32_t injecting = readDebug(kOperationMode) & kInjecting;
        writeDebug(kOperationMode, (value == constant("FG_ON") ? kMonitoring : 0) | injecting);
    });
}

void FgGxWrapperImpl::get_sdk_param_FG_DEBUGOUTENABLE_P0(std::int32_t* destination) {
    requireDestination(destination);
    const bool monitoring = debugEntryMonitors() && (readDebug(kOperationMode) & kMonitoring) != 0;
    *destination = monitoring ? constant("FG_ON") : constant("FG_OFF");
}

void FgGxWrapperImpl::get_sdk_param_FG_DEBUGOUTXPOS_P0(std::uint32_t* destination) {
    readMonitor("_XPosition", destination);
}
void FgGxWrapperImpl::get_sdk_param_FG_DEBUGOUTYPOS_P0(std::uint32_t* destination) {
    readMonitor("_YPosition", destination);
}
void FgGxWrapperImpl::get_sdk_param_FG_DEBUGOUTPIXEL_P0(std::uint32_t* destination) {
    readMonitor(kPixelValue, destination);
}

// ---- the inner handle's own configuration ----

void FgGxWrapperImpl::set_sdk_param_FG_DEBUGSAVECONFIG_P0(const char* value, marovine::OnError onError) {
    applySetting(cache_.FG_DEBUGSAVECONFIG, value, accepted(value != nullptr), onError, [&] {
        // Best effort: the runtime's answer is not ours to judge.
        if (const auto save = wrapperFg().get<marovine::RuntimeSlot::SaveConfig>()) save(fglibFg(), value);
    });
}
