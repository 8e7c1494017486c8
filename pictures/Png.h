#pragma once

#include <filesystem>

#include "marovine/Image.h"

namespace virtualboard::imaging {

/// Reads any PNG file as 24-bit colour; transparent parts are shown on white. Throws `std::runtime_error`
/// that names the file and the reason; pictures of more than 2^28 pixels are refused.
Image readPng(const std::filesystem::path& file);

/// Writes a PNG file as `writeSafely` does. Throws `std::runtime_error` that names the file and the reason.
void writePng(const std::filesystem::path& file, const ImageView& picture);

}  // namespace virtualboard::imaging
