#pragma once

/// The codes that the applet raises, with their meaning. Inside the applet a failure is one of these (or a
/// code of the host runtime, passed on unchanged), thrown as an `int`.

#include <array>

#include "marovine/marovine_constants.h"

namespace marovine::error {

inline constexpr int success = MAROVINE_SUCCESS;
inline constexpr int outOfMemory = MAROVINE_OUT_OF_MEMORY;
inline constexpr int notAllowed = MAROVINE_NOT_ALLOWED;
inline constexpr int designNotLoaded = MAROVINE_DESIGN_NOT_LOADED;
inline constexpr int bufferTooSmall = MAROVINE_BUFFER_TOO_SMALL;
inline constexpr int invalidHandle = MAROVINE_INVALID_HANDLE;
inline constexpr int internalFailure = MAROVINE_INTERNAL_FAILURE;
inline constexpr int invalidArgument = MAROVINE_INVALID_ARGUMENT;
inline constexpr int noDefinition = MAROVINE_NO_DEFINITION;
inline constexpr int fileNotFound = MAROVINE_FILE_NOT_FOUND;
inline constexpr int wrongTypeCode = MAROVINE_WRONG_TYPE_CODE;
inline constexpr int notSupported = MAROVINE_NOT_SUPPORTED;
inline constexpr int configurationRejected = MAROVINE_CONFIGURATION_REJECTED;
inline constexpr int fileNotAccessible = MAROVINE_FILE_NOT_ACCESSIBLE;
inline constexpr int outOfRange = MAROVINE_OUT_OF_RANGE;
inline constexpr int wrongStep = MAROVINE_WRONG_STEP;
inline constexpr int keyMissing = MAROVINE_KEY_MISSING;

/// A code and what it tells a user.
struct Meaning {
    int code;
    const char* text;
};

inline constexpr auto meanings = std::to_array<Meaning>({
    {success, "success"},
    {outOfMemory, "shading memory could not be allocated"},
    {notAllowed, "the parameter is read-only, or the host runtime lacks the function or its handle"},
    {designNotLoaded, "the hardware design cannot be loaded or opened"},
    {bufferTooSmall, "the result does not fit the buffer"},
    {invalidHandle, "the handle refers to no open applet"},
    {internalFailure, "the host runtime or the design does not answer as it must, or memory ran out"},
    {invalidArgument, "unknown parameter, index, DMA channel or text, or a null value"},
    {noDefinition, "the requested item has no definition"},
    {fileNotFound, "the file does not exist"},
    {wrongTypeCode, "only texts handed out by pointer can be given back"},
    {notSupported, "this applet does not support the operation"},
    {configurationRejected, "the configuration file is not one of this applet, or its content is rejected"},
    {fileNotAccessible, "the file could not be written, or not read in the expected format"},
    {outOfRange, "the value is out of range or not one of the allowed entries"},
    {wrongStep, "the value is not a multiple of the required step"},
    {keyMissing, "a key or section is missing in the configuration file"},
});

/// The meaning of a code; null for codes that come from elsewhere.
constexpr const char* meaningOf(int code) {
    for (const auto& meaning : meanings)
        if (meaning.code == code) return meaning.text;
    return nullptr;
}

}  // namespace marovine::error
