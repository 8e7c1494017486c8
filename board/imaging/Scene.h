#pragma once

/// What lies on the belt: the built-in test chart, or any picture.

#include "marovine/Image.h"

namespace virtualboard::imaging {

/// Side of the built-in chart, pixels and rows: as large as the picture that the applet's defaults take.
inline constexpr std::uint32_t kChartSize = 1024;

/// The test chart. Each part makes one fault obvious:
/// - an "F" and an arrow in the belt's direction: mirroring and upside-down scans;
/// - 24 colour patches, the last six grey: Bayer phase, white balance, swapped tables;
/// - a continuous ramp and sixteen grey steps: offset, gain, gamma, clipping;
/// - groups of lines 1 to 8 pixels wide in both directions: window offsets, interpolation, tap order;
/// - a ring and a star of 36 rays: belt speed against line period, interpolation.
Image testChart();

/// Scales a picture by area averaging down and by repetition up; sizes are at least 1.
Image resize(const ImageView& picture, std::uint32_t width, std::uint32_t height);

}  // namespace virtualboard::imaging
