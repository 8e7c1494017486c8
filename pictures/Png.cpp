#include "pictures/Png.h"

#include <png.h>

#include <stdexcept>
#include <string>

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

/// Reads a file's header.
void begin(PngFile& png, const std::filesystem::path& file) {
    if (!png_image_begin_read_from_file(&png, file.c_str())) fail("read", file, png.message);
    // A small file can hold a picture that fills the memory.
    if (std::uint64_t{png.width} * png.height > kMostPixels) {
        fail("read", file,
             "it has " + std::to_string(png.width) + " x " + std::to_string(png.height) +
                 " pixels; at most " + std::to_string(kMostPixels) + " are taken, as in 8192 x 8192");
    }
    png.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // else 16 bits without a colour chunk count as linear light
}

}  // namespace

bool fitsPng(std::uint64_t width, std::uint64_t height) {
    constexpr std::uint64_t mostAcross = 1'000'000;
    constexpr std::uint64_t mostBytes = 0xFFFFFFFF;
    return width <= mostAcross && height <= mostAcross && width * height * kBytesPerPixel <= mostBytes;
}

Image readPng(const std::filesystem::path& file) {
    PngFile png;
    begin(png, file);
    png.format = PNG_FORMAT_BGR;
    Image picture(png.width, png.height);
    const png_color white{255, 255, 255};
    if (!png_image_finish_read(&png, &white, picture.pixels.data(), 0, nullptr))
        fail("read", file, png.message);
    return picture;
}

CutOut readCutOut(const std::filesystem::path& file) {
    PngFile png;
    begin(png, file);
    png.format = PNG_FORMAT_BGRA;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, bytes.data(), 0, nullptr)) fail("read", file, png.message);
    CutOut result{Image(png.width, png.height)};
    result.cover.reserve(result.picture.pixels.size());
    for (std::size_t i = 0; i < result.picture.pixels.size(); ++i) {
        const std::uint8_t* pixel = &bytes[4 * i];
        result.picture.pixels[i] = {pixel[0], pixel[1], pixel[2]};
        result.cover.push_back(pixel[3]);
    }
    return result;
}

void writePng(const std::filesystem::path& file, const ImageView& picture) {
    std::vector<char> bytes;
    try {
        bytes = encodePng(picture);
    } catch (const std::runtime_error& error) {
        fail("write", file, error.what());
    }
    writeSafely(file, {bytes.data(), bytes.size()});
}

}  // namespace virtualboard::imaging
