#include "gentl/Error.h"

#include <cxxabi.h>

#include <exception>
#include <new>
#include <system_error>

#include "client/Failure.h"

namespace marovine::gentl {

namespace {

thread_local LastError last;

GC_ERROR remember(const char* function, GC_ERROR code, const char* text) {
    last.code = code;
    try {
        last.text = std::string(function) + ": " + text;
    } catch (const std::bad_alloc&) {
        last.text.clear();
    }
    return code;
}

}  // namespace

const LastError& lastError() {
    return last;
}

GC_ERROR answerForException(const char* function) {
    try {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw;  // the end of a cancelled thread is no failure and cannot be held up
    } catch (const Error& error) {
        return remember(function, error.code, error.what());
    } catch (const host::UnreadableValue& error) {
        return remember(function, GC_ERR_INVALID_VALUE, error.what());
    } catch (const host::Failure& error) {
        return remember(function, GC_ERR_IO, error.what());
    } catch (const std::bad_alloc&) {
        return remember(function, GC_ERR_OUT_OF_MEMORY, "no memory");
    } catch (const std::system_error& error) {
        return remember(function, GC_ERR_RESOURCE_EXHAUSTED, error.what());
    } catch (const std::exception& error) {
        return remember(function, GC_ERR_ERROR, error.what());
    } catch (...) {
        return remember(function, GC_ERR_ERROR, "an unknown failure");
    }
}

}  // namespace marovine::gentl
