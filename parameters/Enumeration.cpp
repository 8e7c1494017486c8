/// How a host lists the parameters and finds one by name, and how it finds an event.

#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;

int FgGxWrapperImpl::Fg_getParameterCount() {
    return names_.count();
}

const char* FgGxWrapperImpl::Fg_getParameterName(int index) {
    const char* name = names_.nameAt(index);
    setError(name != nullptr ? error::success : error::invalidArgument);
    return name;
}

int FgGxWrapperImpl::Fg_getParameterId(int index) {
    const char* name = names_.nameAt(index);
    return Fg_getParameterIdByName(name);
}

int FgGxWrapperImpl::Fg_getParameterIdByName(const char* name) {
    if (name == nullptr || *name == '\0') return setError(error::invalidArgument);
    const auto id = names_.idOf(name);
    if (!id) return setError(error::invalidArgument);
    setError(error::success);
    return *id;
}

std::uint64_t FgGxWrapperImpl::Fg_getEventMask(const char* name) {
    const auto mask = name != nullptr ? events_.maskOf(name) : std::nullopt;
    setError(mask ? error::success : error::invalidArgument);
    return mask.value_or(0);
}

const char* FgGxWrapperImpl::Fg_getEventName(unsigned long mask) {
    const char* name = events_.nameOf(mask);
    setError(name != nullptr ? error::success : error::invalidArgument);
    return name;
}
