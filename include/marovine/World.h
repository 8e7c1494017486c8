#pragma once

/// What the design's parameters do not say: the camera, the belt and the encoder outside the board.

#include <array>
#include <cstdint>
#include <optional>

#include "marovine/Bayer.h"

namespace virtualboard::imaging {

/// How a camera's taps read its sensor: tap t delivers the t-th of `taps` equal parts of the line,
/// `pixelsPerClock` neighbouring pixels at a time, from the far end of its part where `fromFarEnd` says so.
/// A readout of no tap, more than ten taps or no pixel per clock delivers black lines.
struct TapReadout {
    std::uint32_t taps = 1;
    std::uint32_t pixelsPerClock = 8;
    std::array<bool, 10> fromFarEnd{};
};

/// The line-scan colour camera.
struct CameraTraits {
    std::uint32_t sensorWidth = 16384;          ///< pixels; beyond them a line is black
    std::uint32_t phase = kRedFollowedByGreen;  ///< Bayer phase of sensor pixel 0 in even rows
    double neutralExposure = 19.0;              ///< µs that show the scene's colours as they are
    /// Without a value the camera reads out as the tap geometry sorter expects it; with one a sorter set
    /// up for another geometry gives a scrambled line, as on a real camera.
    std::optional<TapReadout> readout;
};

/// The belt below the camera, with the shaft encoder on its drive. The defaults give square pixels at the
/// default line period of 200 µs.
struct Belt {
    double speed = 500.0;       ///< mm/s
    double objectPixel = 0.1;   ///< mm of belt that one sensor pixel sees
    double encoderPitch = 0.1;  ///< mm of belt per encoder pulse
};

}  // namespace virtualboard::imaging
