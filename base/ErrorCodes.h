#pragma once

/// The codes that the applet raises, with their meaning. Inside the applet a failure is one of these (or a
/// code of the host runtime, passed on unchanged), thrown as an `int`.

#include <array>

namespace marovine::error {

inline constexpr int success = 0;
inline constexpr int outOfMemory = -1;
inline constexpr int notAllowed = -12;
inline constexpr int designNotLoaded = -100;
inline constexpr int bufferTooSmall = -500;
inline constexpr int invalidHandle = -2001;
inline constexpr int internalFailure = -2031;
inline constexpr int invalidArgument = -2070;
inline constexpr int noDefinition = -2075;
inline constexpr int fileNotFound = -2076;
inline constexpr int wrongTypeCode = -2078;
inline constexpr int notSupported = -2130;
inline constexpr int configurationRejected = -5000;
inline constexpr int fileNotAccessible = -5001;
inline constexpr int outOfRange = -6000;
inline constexpr int wrongStep = -7080;
inline constexpr int keyMissing = -8000;

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
    {internalFailure, "the host runtime or the design does not answer as it must"},
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
