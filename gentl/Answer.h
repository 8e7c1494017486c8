#pragma once

/// How an information reaches the consumer: it is asked for its size first, then for itself.

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "gentl/Error.h"

namespace marovine::gentl {

/// The places that a consumer gives for an answer. With a null buffer only the size is said; a buffer that is
/// too small throws BUFFER_TOO_SMALL and stays as it was. The type is said in every case.
class Answer {
 public:
    /// `type` may be null, `size` may not.
    Answer(INFO_DATATYPE* type, void* buffer, std::size_t* size) : type_(type), buffer_(buffer), size_(size) {
        mustBeGiven(size, "the size");
    }

    void text(std::string_view text) {
        // The view need not end in a zero, the answer must.
        give(INFO_DATATYPE_STRING, text.size() + 1, [text](char* out) {
            std::memcpy(out, text.data(), text.size());
            out[text.size()] = '\0';
        });
    }
    void bytes(std::span<const std::uint8_t> bytes) {
        give(INFO_DATATYPE_BUFFER, bytes.size(),
             [bytes](char* out) { std::memcpy(out, bytes.data(), bytes.size()); });
    }
    void boolean(bool value) { number<bool8_t>(INFO_DATATYPE_BOOL8, value ? 1 : 0); }
    void int32(std::int32_t value) { number(INFO_DATATYPE_INT32, value); }
    void uint32(std::uint32_t value) { number(INFO_DATATYPE_UINT32, value); }
    void uint64(std::uint64_t value) { number(INFO_DATATYPE_UINT64, value); }
    void size(std::size_t value) { number(INFO_DATATYPE_SIZET, value); }
    void pointer(const void* value) { number(INFO_DATATYPE_PTR, value); }
    /// Refuses an information of this type that is not there.
    [[noreturn]] void none(INFO_DATATYPE type, GC_ERROR code, const char* why) {
        if (type_ != nullptr) *type_ = type;
        throw Error(code, why);
    }

 private:
    template <class T>
    void number(INFO_DATATYPE type, const T& value) {
        give(type, sizeof value, [&value](char* out) { std::memcpy(out, &value, sizeof value); });
    }
    template <class Copy>
    void give(INFO_DATATYPE type, std::size_t size, Copy copy) {
        if (type_ != nullptr) *type_ = type;
        if (buffer_ != nullptr && *size_ < size)
            throw Error(GC_ERR_BUFFER_TOO_SMALL, "the answer has " + std::to_string(size) +
                                                     " bytes, the buffer " + std::to_string(*size_));
        if (buffer_ != nullptr) copy(static_cast<char*>(buffer_));
        *size_ = size;
    }

    INFO_DATATYPE* type_;
    void* buffer_;
    std::size_t* size_;
};

/// An id or a name that a call answers.
inline void answerText(std::string_view text, char* buffer, std::size_t* size) {
    Answer(nullptr, buffer, size).text(text);
}

/// The whole text that an information function answers: `ask` is given the buffer and the place of its size.
template <class Ask>
std::string answeredText(Ask ask) {
    std::size_t size = 0;
    ask(nullptr, &size);
    std::string buffer(size, '\0');
    ask(buffer.data(), &size);
    return buffer.c_str();
}

/// A command that an information function does not know.
[[noreturn]] inline void unknownCommand(const char* of, std::int32_t command) {
    throw Error(GC_ERR_INVALID_PARAMETER,
                "there is no information " + std::to_string(command) + " about " + of);
}

}  // namespace marovine::gentl
