#pragma once

/// How a design image is laid out. All numbers are little-endian.
///
///     offset  bytes
///          0      8  "MVDESIGN"
///          8      4  version of the format, 1
///         12      4  design type
///         16      8  size of the whole image
///         24      8  size of the content
///         32      8  checksum of everything but this field
///         40         content: the records that `ImageReader` reads, then zeros up to the size of the image
///
/// Content: the name (text), then groups, parameters, events and registers, each a 32-bit count and that many
/// records. A text is a 16-bit length and its characters.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace virtualboard {

static_assert(std::endian::native == std::endian::little, "images are read and written in place");

inline constexpr std::array<char, 8> kImageMagic{'M', 'V', 'D', 'E', 'S', 'I', 'G', 'N'};
inline constexpr std::uint32_t kImageVersion = 1;
inline constexpr std::size_t kImageHeaderSize = 40;
inline constexpr std::size_t kImageChecksumOffset = 32;

/// Checksum of an image of at least the header's size. Four lanes, since it covers megabytes at every
/// opening.
inline std::uint64_t imageChecksum(std::span<const std::byte> image) {
    std::array<std::uint64_t, 4> lanes{0x9E3779B97F4A7C15U, 0xC2B2AE3D27D4EB4FU, 0x165667B19E3779F9U,
                                       image.size()};
    const auto mixBlock = [&lanes](const std::byte* bytes, std::size_t size) {
        std::array<std::uint64_t, 4> block{};
        std::memcpy(block.data(), bytes, size);
        for (std::size_t i = 0; i < lanes.size(); ++i) {
            lanes[i] = std::rotl((lanes[i] ^ block[i]) * 0x9FB21C651E98DF25U, 31);
        }
    };
    const auto mix = [&mixBlock](std::span<const std::byte> bytes) {
        constexpr std::size_t kBlock = 32;
        for (; bytes.size() >= kBlock; bytes = bytes.subspan(kBlock)) mixBlock(bytes.data(), kBlock);
        if (!bytes.empty()) mixBlock(bytes.data(), bytes.size());
    };
    mix(image.first(kImageChecksumOffset));
    mix(image.subspan(kImageHeaderSize));
    return lanes[0] ^ std::rotl(lanes[1], 17) ^ std::rotl(lanes[2], 34) ^ std::rotl(lanes[3], 51);
}

}  // namespace virtualboard
