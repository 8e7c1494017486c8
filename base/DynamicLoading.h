#pragma once

/// How this library opens other libraries at run time.

#include <dlfcn.h>

namespace marovine {

/// Flags of every `dlopen`: an opened library sees its own symbols before those of the host process. A
/// sanitizer must see its interceptors first, so its builds do without.
#ifdef MAROVINE_NO_DEEPBIND
inline constexpr int kLibraryOpenFlags = RTLD_NOW;
#else
inline constexpr int kLibraryOpenFlags = RTLD_NOW | RTLD_DEEPBIND;
static_assert(kLibraryOpenFlags == 10);
#endif

/// The symbol `name` of an opened library as a `Pointer` (to a function or an object); null when the library
/// has none.
template <typename Pointer>
Pointer resolve(void* library, const char* name) {
    return reinterpret_cast<Pointer>(dlsym(library, name));
}

}  // namespace marovine
