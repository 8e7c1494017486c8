/**
 * The virtual board's result codes. 0 is success; every refusal has its own negative number, so that a host's
 * log tells them apart. Usable from C and C++.
 */
#ifndef VIRTUALBOARD_BOARDCODES_H
#define VIRTUALBOARD_BOARDCODES_H

#ifdef __cplusplus
#include <array>

namespace virtualboard {

enum Code : int {
#else
enum VirtualBoardCode {
#endif
    kOk = 0,
    kInvalidHandle = -31001,
    kUnknownParameter = -31002,
    kTypeMismatch = -31003,
    kOutOfRange = -31004,
    kReadOnly = -31005,
    kIndexOutOfRange = -31006,
    kNullPointer = -31007,
    kTextTooLong = -31008,
    kUnknownDma = -31009,
    kReconfigured = -31010,
    kUnknownBoard = -31011,
    kUnknownDesign = -31012,
    kUnknownRegister = -31013,
    kRegisterReadOnly = -31014,
    kRegisterOutOfRange = -31015,
    kFileError = -31016,
    kNotSupported = -31017,
    kNoPictureSource = -31018,
    kNotHandedOut = -31019,
    kInternalFailure = -31020,
    kNotAcquiring = -31021,
    kAlreadyAcquiring = -31022,
    kUnknownMemory = -31023,
    kForeignMemory = -31024,
    kMemoryInUse = -31025,
    kMemoryTooSmall = -31026,
    kTimeout = -31027,
    kStopped = -31028,
    kNoMorePictures = -31029,
    kPictureGone = -31030,
    kUnknownStatus = -31031,
    kWrongArgument = -31032,
    kWrongRecord = -31033,
    kWrongWorld = -31034,
    kUnknownEvent = -31035,
    kUnknownSubscription = -31036,
    kBufferInUse = -31037,
    kNoBuffer = -31038
};
#ifdef __cplusplus

struct CodeMeaning {
    int code;
    const char* meaning;
};

inline constexpr std::array kCodeMeanings{
    CodeMeaning{kOk, "success"},
    CodeMeaning{kInvalidHandle, "the handle is null or was freed"},
    CodeMeaning{kUnknownParameter, "the design has no parameter of this id"},
    CodeMeaning{kTypeMismatch, "the type code does not fit the parameter"},
    CodeMeaning{kOutOfRange, "the value lies outside the design's range"},
    CodeMeaning{kReadOnly, "the parameter can only be read"},
    CodeMeaning{kIndexOutOfRange, "the element index lies outside the field"},
    CodeMeaning{kNullPointer, "a pointer that must be given is null"},
    CodeMeaning{kTextTooLong, "the text is longer than the design stores"},
    CodeMeaning{kUnknownDma, "the board has no DMA channel of this index"},
    CodeMeaning{kReconfigured, "another design was loaded onto the board since this handle was opened"},
    CodeMeaning{kUnknownBoard, "the device is not a board of this machine"},
    CodeMeaning{kUnknownDesign, "the design was not loaded or was unloaded"},
    CodeMeaning{kUnknownRegister, "the board has no register of this number"},
    CodeMeaning{kRegisterReadOnly, "the register can only be read"},
    CodeMeaning{kRegisterOutOfRange, "the value is wider than the register"},
    CodeMeaning{kFileError, "the file cannot be written"},
    CodeMeaning{kNotSupported, "the board does not offer this function"},
    CodeMeaning{kNoPictureSource, "the design lacks a parameter that taking pictures needs"},
    CodeMeaning{kNotHandedOut, "the text was not handed out by this handle"},
    CodeMeaning{kInternalFailure, "the board ran out of memory or a watcher of it failed"},
    CodeMeaning{kNotAcquiring, "no acquisition was started"},
    CodeMeaning{kAlreadyAcquiring, "an acquisition runs already; stop it first"},
    CodeMeaning{kUnknownMemory, "the picture memory was not created here or was freed"},
    CodeMeaning{kForeignMemory, "the acquisition takes its pictures into another memory"},
    CodeMeaning{kMemoryInUse, "another acquisition takes its pictures into this memory"},
    CodeMeaning{kMemoryTooSmall, "the memory's buffers are smaller than a picture"},
    CodeMeaning{kTimeout, "the picture or event did not come in time"},
    CodeMeaning{kStopped, "the acquisition was stopped before the picture came"},
    CodeMeaning{kNoMorePictures, "the acquisition ends before this picture"},
    CodeMeaning{kPictureGone, "the memory does not hold this picture, or no longer"},
    CodeMeaning{kUnknownStatus, "the board has no status read-out of this number"},
    CodeMeaning{kWrongArgument, "an argument lies outside what the function takes"},
    CodeMeaning{kWrongRecord,
                "the record's size is not that of any version, or a field of it is unknown here"},
    CodeMeaning{kWrongWorld, "the world makes no sense; the board keeps the one it has"},
    CodeMeaning{kUnknownEvent, "the design has no event of this number or name"},
    CodeMeaning{kUnknownSubscription, "nobody is subscribed under this handle, or no longer"},
    CodeMeaning{kBufferInUse, "the buffer is queued already or being filled"},
    CodeMeaning{kNoBuffer, "there is no memory for another picture"},
};

/// The meaning of one of the board's codes; null for a code that is not the board's.
constexpr const char* codeMeaning(int code) {
    for (const CodeMeaning& entry : kCodeMeanings) {
        if (entry.code == code) return entry.meaning;
    }
    return nullptr;
}

}  // namespace virtualboard
#endif

#endif
