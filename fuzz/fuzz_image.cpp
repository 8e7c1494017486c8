#include <cstdint>
#include <stdexcept>

#include "board/design/DesignImage.h"

// Reads any bytes as a design image, as they are and once more as the description in an image that is right:
// no checksum may shield the parser.

namespace {

void read(std::string_view image) {
    try {
        virtualboard::readDesignImage(image);
    } catch (const std::invalid_argument&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    read(bytes);
    read(virtualboard::packDesign(bytes, size + 100));
    return 0;
}
