#include "board/design/DesignImage.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace virtualboard {

namespace {

constexpr std::string_view kMagic = "MVDESIGN 2 ";
constexpr std::size_t kSizeDigits = 10;
constexpr std::size_t kLengthOffset = kMagic.size() + kSizeDigits + 1;
constexpr std::size_t kHeaderSize = kLengthOffset + kSizeDigits + 1 + 16 + 1;

/// FNV-1a.
std::uint64_t checksum(std::string_view text) {
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return sum;
}

std::string header(std::size_t imageSize, std::string_view description) {
    std::array<char, 80> line{};
    std::snprintf(line.data(), line.size(), "%s%010zu %010zu %016llx\n", kMagic.data(), imageSize,
                  description.size(), static_cast<unsigned long long>(checksum(description)));
    return line.data();
}

}  // namespace

std::string packDesign(std::string_view description, std::size_t size) {
    std::string image = header(size, description).append(description);
    if (image.size() > size) {
        throw std::length_error("the design takes " + std::to_string(image.size()) +
                                " bytes, but the image has only " + std::to_string(size));
    }
    image.resize(size);
    return image;
}

std::string_view unpackDesign(std::string_view image) {
    if (image.size() < kHeaderSize || !image.starts_with(kMagic))
        throw std::invalid_argument("not a design image of this version of the format");
    std::size_t length = 0;  // where it is no number or too large, the header is not what it should be
    std::from_chars(image.data() + kLengthOffset, image.data() + kLengthOffset + kSizeDigits, length);
    const std::string_view description = image.substr(kHeaderSize, length);
    if (!image.starts_with(header(image.size(), description))) {
        throw std::invalid_argument("the image is damaged: its size, length or checksum does not match");
    }
    return description;
}

}  // namespace virtualboard
