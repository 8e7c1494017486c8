#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace marovine::fuzz {

/// Takes values from the front of the input; zeros when it has run out.
class Input {
 public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    bool empty() const { return size_ == 0; }
    template <class T>
    T take() {
        T value{};
        const std::size_t n = std::min(size_, sizeof value);
        if (n != 0) std::memcpy(&value, data_, n);
        data_ += n;
        size_ -= n;
        return value;
    }

 private:
    const std::uint8_t* data_;
    std::size_t size_;
};

}  // namespace marovine::fuzz
