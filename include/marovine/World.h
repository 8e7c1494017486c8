#pragma once

/// What the design's parameters do not say: the camera, the belt and the encoder outside the board.

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

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

/// A point of a camera's answer to light.
struct ResponsePoint {
    double light = 0;   ///< share of the light that makes a pixel white; ascending in a response
    double output = 0;  ///< share of white that the camera gives for it, 0 to 1
};

/// A pixel of the sensor that always gives the same value.
struct StuckPixel {
    std::uint32_t column = 0;
    std::uint8_t value = 0;
};

/// What keeps a camera from showing the light as it is. The defaults change nothing. What is random follows
/// from the seed, the row and the column alone.
struct SensorFaults {
    /// Output over light, straight between the points and level beyond them. Empty: output is light.
    std::vector<ResponsePoint> response{};
    double darkLevel = 0;     ///< grey values without any light, 0 to 255
    double readNoise = 0;     ///< standard deviation in grey values, 0 to 255
    double fullWell = 0;      ///< electrons that make a pixel white: fewer of them, more shot noise; 0: none
    double fixedPattern = 0;  ///< standard deviation of the pixels' sensitivities, as a share; 0 to 1
    double vignetting = 0;    ///< share of the light that is lost at both ends of the sensor, 0 to 1
    bool motionBlur = false;  ///< a pixel sees all of the belt that passes during its exposure
    std::vector<StuckPixel> stuck{};
    std::uint64_t seed = 0;

    /// Whether the camera shows the light as it is.
    bool none() const {
        return response.empty() && darkLevel == 0 && readNoise == 0 && fullWell == 0 && fixedPattern == 0 &&
               vignetting == 0 && !motionBlur && stuck.empty();
    }
};

/// The light on the belt.
struct Light {
    double level = 1;                     ///< 1 shows the scene's colours as they are
    double red = 1, green = 1, blue = 1;  ///< shares of the colours in it
    double flashShare = 0;                ///< share of it that only the flash gives, 0 to 1

    bool plain() const { return level == 1 && red == 1 && green == 1 && blue == 1 && flashShare == 0; }
};

/// The line-scan colour camera.
struct CameraTraits {
    std::uint32_t sensorWidth = 16384;          ///< pixels, 1 to 16384; beyond them a line is black
    std::uint32_t phase = kRedFollowedByGreen;  ///< Bayer phase of sensor pixel 0 in even rows
    double neutralExposure = 19.0;              ///< µs that show the scene's colours as they are
    /// Without a value the camera reads out as the tap geometry sorter expects it; with one a sorter set
    /// up for another geometry gives a scrambled line, as on a real camera.
    std::optional<TapReadout> readout{};
    SensorFaults faults{};
};

/// A moment of a speed profile. Two at one time make the speed jump.
struct SpeedPoint {
    double at = 0;     ///< s of board time since the belt was given to the board; ascending in a profile
    double speed = 0;  ///< mm/s; negative: backwards
};

/// The belt below the camera, with the shaft encoder on its drive. The defaults give square pixels at the
/// default line period of 200 µs.
struct Belt {
    double speed = 500.0;       ///< mm/s, where there is no profile
    double objectPixel = 0.1;   ///< mm of belt that one sensor pixel sees
    double encoderPitch = 0.1;  ///< mm of belt per encoder pulse
    /// Speed over time: it changes evenly between two points and stays after the last one, or begins anew
    /// after `profilePeriod` seconds where that is not 0. Empty: `speed`, always.
    std::vector<SpeedPoint> profile{};
    double profilePeriod = 0;
};

/// How the shaft encoder's two tracks reach the board. Its faults follow from the seed alone.
struct Encoder {
    /// Inputs (0 to 7, front inputs 8 to 11) that tracks A and B are wired to; without a value the tracks
    /// reach whatever inputs the line trigger listens to.
    std::optional<std::uint32_t> inputA{}, inputB{};
    double jitter = 0;   ///< standard deviation of an edge's place, in pitches; 0 to 0.1
    double missing = 0;  ///< share of the pulses that the encoder leaves out; 0 to 1
    std::uint64_t seed = 0;
};

/// What an input sees over time, counted in ns of board time from the moment that it is given to the board.
struct InputSignal {
    struct Edge {
        std::int64_t at = 0;  ///< ns; ascending
        bool high = false;    ///< level from then on
    };
    /// Pulses at a fixed period, above the level that the edges say.
    struct Train {
        std::int64_t first = 0;   ///< ns; rising edge of the first pulse
        std::int64_t period = 0;  ///< ns; more than `width`
        std::int64_t width = 0;   ///< ns at high level
        std::uint64_t count = 0;  ///< 0: endless
    };
    bool high = false;  ///< level before the first edge
    std::vector<Edge> edges{};
    std::vector<Train> trains{};
};

}  // namespace virtualboard::imaging
