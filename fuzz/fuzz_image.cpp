#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <stdexcept>
#include <vector>

#include "board/design/ImageFormat.h"
#include "board/design/ImageReader.h"

// Reads any bytes as a design image, as they are and once more as the content behind a header that is right:
// no checksum may shield the reader of the records.

namespace {

void read(std::span<const std::byte> image) {
    try {
        virtualboard::readImage(image);
    } catch (const std::invalid_argument&) {
    }
}

template <typename T>
void put(std::vector<std::byte>& image, std::size_t offset, T value) {
    std::memcpy(image.data() + offset, &value, sizeof(value));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(reinterpret_cast<const std::byte*>(data), size);
    read(bytes);

    std::vector<std::byte> image(virtualboard::kImageHeaderSize);
    image.insert(image.end(), bytes.begin(), bytes.end());
    put(image, 0, virtualboard::kImageMagic);
    put(image, 8, virtualboard::kImageVersion);
    put(image, 12, std::uint32_t{1});
    put(image, 16, std::uint64_t{image.size()});
    put(image, 24, std::uint64_t{size});
    put(image, virtualboard::kImageChecksumOffset, virtualboard::imageChecksum(image));
    read(image);
    return 0;
}
