#include <cstdint>
#include <stdexcept>

#include "board/design/DescriptionParser.h"
#include "board/design/DesignImage.h"

// Reads any bytes as a design image and, since no checksum may shield the parser, as a description.

namespace {

template <typename Read>
void attempt(Read read) {
    try {
        read();
    } catch (const std::invalid_argument&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    attempt([bytes] { virtualboard::unpackDesign(bytes); });
    attempt([bytes] { virtualboard::parseDescription(bytes, "input"); });
    return 0;
}
