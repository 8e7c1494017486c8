/// Members of the wrapper that other applets of the family call: access without a type code, field caches of
/// other values than 32-bit numbers, temporary files.

#include <cstring>

#include "base/ErrorCodes.h"
#include "family/TempFile.h"
#include "runtime/FgGxWrapper.h"

namespace error = marovine::error;
using marovine::RuntimeSlot;

int FgGxWrapper::setUnwrappedParameter(int id, const void* value, int dmaIndex) {
    const auto set = wrapperFg().get<RuntimeSlot::SetParameter>();
    return set != nullptr ? set(fglibFg(), id, value, static_cast<unsigned>(dmaIndex)) : error::notAllowed;
}

int FgGxWrapper::getUnwrappedParameter(int id, void* value, int dmaIndex) {
    const auto get = wrapperFg().get<RuntimeSlot::GetParameter>();
    return get != nullptr ? get(fglibFg(), id, value, static_cast<unsigned>(dmaIndex)) : error::notAllowed;
}

void FgGxWrapper::setFieldCache(void* cache, const FieldParameterDouble_s* record) {
    if (record != nullptr) static_cast<double*>(cache)[record->index] = record->value;
}

void FgGxWrapper::getFieldCache(const void* cache, FieldParameterDouble_s* record) {
    if (record != nullptr) record->value = static_cast<const double*>(cache)[record->index];
}

void FgGxWrapper::getFieldCache(const void* cache, FieldParameterAccess* record) {
    if (record == nullptr) return;
    const std::size_t size = elementSize(record->type);
    if (size * record->count == 0) return;
    std::memcpy(record->values, static_cast<const char*>(cache) + size * record->start, size * record->count);
}

char* FgGxWrapper::createTempFile() {
    return marovine::createTempFile();
}

void FgGxWrapper::deleteTempFile(char* name) {
    marovine::deleteTempFile(name);
}
