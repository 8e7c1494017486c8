#pragma once

/// What a call is answered with, and where exceptions end.

#include <stdexcept>
#include <string>

#include "marovine/GenTL.h"

namespace marovine::gentl {

/// A call that is refused, with the code and the text that say why.
class Error : public std::runtime_error {
 public:
    Error(GC_ERROR refusal, const std::string& text) : std::runtime_error(text), code(refusal) {}
    GC_ERROR code;
};

/// Throws when a pointer that must be given is null.
inline void mustBeGiven(const void* pointer, const char* name) {
    if (pointer == nullptr) throw Error(GC_ERR_INVALID_PARAMETER, std::string(name) + " must be given");
}

/// The last refusal of the calling thread; success and an empty text when there was none.
struct LastError {
    GC_ERROR code = GC_ERR_SUCCESS;
    std::string text;
};
const LastError& lastError();

/// Answers for the exception in flight: its code, remembered with its text as this thread's last error.
GC_ERROR answerForException(const char* function);

}  // namespace marovine::gentl
