#pragma once

/// Where exceptions end: the exports have C callers.

#include <cxxabi.h>

namespace marovine {

/// Runs an export's work. An exception that leaves it, failing memory above all, becomes what `failed`
/// answers.
template <class Work, class Failed>
auto atBoundary(Work&& work, Failed&& failed) -> decltype(work()) {
    try {
        return work();
    } catch (const abi::__forced_unwind&) {
        throw;  // the end of a cancelled thread is no failure and cannot be held up
    } catch (...) {
        return failed();
    }
}

}  // namespace marovine
