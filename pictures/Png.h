#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "marovine/Image.h"

namespace virtualboard::imaging {

/// Reads any PNG file as 24-bit sRGB colour, which it is taken for where the file does not say otherwise;
/// transparent parts are shown on white. Throws `std::runtime_error` that names the file and the reason;
/// pictures of more than 2^26 pixels are refused by the file's header, before memory is taken for them.
Image readPng(const std::filesystem::path& file);

/// A picture of a thing that does not fill its rectangle.
struct CutOut {
    Image picture;
    std::vector<std::uint8_t> cover{};  ///< of each pixel: 255 hides what is behind it, 0 shows it
};

/// As `readPng`, with the transparency of the file instead of white.
CutOut readCutOut(const std::filesystem::path& file);

/// Whether `writePng` and a reader can take a picture of this size: libpng stops at a million rows or columns
/// and below 2^32 bytes of pixels.
bool fitsPng(std::uint64_t width, std::uint64_t height);

/// The bytes of a PNG file. Throws `std::runtime_error` with the reason for a picture that is empty or too
/// large.
std::vector<char> encodePng(const ImageView& picture);

/// Writes a PNG file as `writeSafely` does. Throws `std::runtime_error` that names the file and the reason.
void writePng(const std::filesystem::path& file, const ImageView& picture);

}  // namespace virtualboard::imaging
