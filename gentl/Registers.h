#pragma once

/// What lies behind the addresses of a port.

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace marovine::gentl {

using Bytes = std::span<std::uint8_t>;
using ConstBytes = std::span<const std::uint8_t>;

/// The value at one address, little endian.
struct Register {
    std::string name;        ///< of its node
    std::size_t length = 0;  ///< bytes
    bool inParts = false;    ///< whether a part of it may be read and written
    std::function<void(std::size_t offset, Bytes out)> read{};         ///< none: it cannot be read
    std::function<void(std::size_t offset, ConstBytes data)> write{};  ///< none: it cannot be written
};

/// The registers of one module, found by address.
class Registers {
 public:
    /// Lays a register behind the last one. Returns its address.
    std::uint64_t add(Register added);

    /// Reads or writes at an address. Throws INVALID_ADDRESS where no register lies, INVALID_PARAMETER for a
    /// size that does not fit it, ACCESS_DENIED where it cannot be read or written.
    void read(std::uint64_t address, Bytes out) const;
    void write(std::uint64_t address, ConstBytes data) const;

 private:
    struct Place {
        std::uint64_t address;
        Register content;
    };
    const Place& at(std::uint64_t address, std::size_t size) const;

    static constexpr std::uint64_t kFirst = 0x10000;

    std::vector<Place> places_;  ///< by address
    std::uint64_t next_ = kFirst;
};

}  // namespace marovine::gentl
