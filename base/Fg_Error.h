#pragma once

#include <atomic>
#include <cstdint>

/// The last code that an operation of an instance stored; 0 at first. Several threads may store it.
class Fg_Error {
 public:
    /// Stores `code` and returns it.
    int setErr(int code) {
        number_.store(code, std::memory_order_relaxed);
        return code;
    }
    int getErrorNumberBuffer() const { return number_.load(std::memory_order_relaxed); }

 private:
    std::atomic<std::int32_t> number_ = 0;
};
