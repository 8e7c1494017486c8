#include "pictures/Png.h"

#include <png.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "pictures/SafeFile.h"

namespace virtualboard::imaging {
namespace {

constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 26;

[[noreturn]] void fail(const char* action, const std::filesystem::path& file, const std::string& reason) {
    throw std::runtime_error(std::string("cannot ") + action + " '" + file.string() + "': " + reason);
}

// libpng's record of one file, freed on every way out.
struct PngFile : png_image {
    PngFile() : png_image{} { version = PNG_IMAGE_VERSION; }
    ~PngFile() { png_image_free(this); }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;
};

std::vector<char> encode(const std::filesystem::path& file, const ImageView& picture) {
    PngFile png;
    png.width = picture.width;
    png.height = picture.height;
    png.format = PNG_FORMAT_BGR;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
    std::vector<char> bytes(size);
    if (!png_image_write_to_memory(&png, bytes.data(), &size, 0, picture.bytes.data(), 0, nullptr)) {
        fail("write", file, png.message);
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace

bool fitsPng(std::uint64_t width, std::uint64_t height) {
    constexpr std::uint64_t mostAcross = 1'000'000;
    constexpr std::uint64_t mostBytes = 0xFFFFFFFF;
    return width <= mostAcross && height <= mostAcross && width * height * kBytesPerPixel <= mostBytes;
}

Image readPng(const std::filesystem::path& file) {
    PngFile png;
    if (!png_image_begin_read_from_file(&png, file.c_str())) fail("read", file, png.message);
    // A small file can hold a picture that fills the memory.
    if (std::uint64_t{png.width} * png.height > kMostPixels) {
        fail("read", file,
             "it has " + std::to_string(png.width) + " x " + std::to_string(png.height) +
                 " pixels; at most " + std::to_string(kMostPixels) + " are taken, as in 8192 x 8192");
    }
    png.format = PNG_FORMAT_BGR;
    png.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // else 16 bits without a colour chunk count as linear light
    Image picture(png.width, png.height);
    const png_color white{255, 255, 255};
    if (!png_image_finish_read(&png, &white, picture.pixels.data(), 0, nullptr))
        fail("read", file, png.message);
    return picture;
}

void writePng(const std::filesystem::path& file, const ImageView& picture) {
    if (picture.width == 0 || picture.height == 0) fail("write", file, "the picture is empty");
    const std::vector<char> bytes = encode(file, picture);
    writeSafely(file, {bytes.data(), bytes.size()});
}

}  // namespace virtualboard::imaging
