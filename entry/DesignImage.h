#pragma once

/// The blocks of data that the applet library carries: the design image and its icon. The assembler embeds
/// them; each array has one more byte, zero, that its size does not count.

#include <cstddef>

/// Size of the design image, `rawHapData`, in bytes.
inline constexpr std::size_t rawHapSize = 4781671;
/// Size of the icon, `appletIconData`, in bytes: a PNG picture of 32 by 32 pixels, 8 bits of red, green, blue
/// and alpha.
inline constexpr std::size_t appletIconSize = 2551;

extern "C" {
#pragma GCC visibility push(hidden)
extern const unsigned char rawHapData[rawHapSize + 1];
extern const unsigned char appletIconData[appletIconSize + 1];
#pragma GCC visibility pop
}
