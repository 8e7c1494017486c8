#pragma once

/// The image in which a design travels: the line "MVDESIGN 2 SIZE LENGTH CHECKSUM", then the description,
/// then zeros up to the size of the image. SIZE is that of the image and LENGTH that of the description, in
/// bytes and ten digits; CHECKSUM is the description's, in sixteen hexadecimal digits.

#include <cstddef>
#include <string>
#include <string_view>

namespace virtualboard {

/// The image of a description, exactly `size` bytes. Throws `std::length_error` saying how much is missing
/// when it does not fit.
std::string packDesign(std::string_view description, std::size_t size);

/// The description in an image; what follows it is not looked at. Throws `std::invalid_argument` for anything
/// but a whole image; any bytes may be given.
std::string_view unpackDesign(std::string_view image);

}  // namespace virtualboard
