#pragma once

/// The virtual board's result codes. 0 is success; every refusal has its own negative number, so that a
/// host's log tells them apart.

#include <array>

namespace virtualboard {

enum Code : int {
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
};

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
    CodeMeaning{kNoPictureSource, "the board has no source of pictures"},
    CodeMeaning{kNotHandedOut, "the text was not handed out by this handle"},
    CodeMeaning{kInternalFailure, "the board ran out of memory or a watcher of it failed"},
};

/// The meaning of one of the board's codes; null for a code that is not the board's.
constexpr const char* codeMeaning(int code) {
    for (const CodeMeaning& entry : kCodeMeanings) {
        if (entry.code == code) return entry.meaning;
    }
    return nullptr;
}

}  // namespace virtualboard
