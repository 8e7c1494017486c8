#pragma once

#include "board/imaging/Settings.h"
#include "marovine/World.h"

namespace virtualboard::imaging {

/// When lines come. Line 0 begins with the acquisition; times are µs since then.
///
/// Camera: a line per ExSync pulse, provided that ExSync is enabled, CC1 carries it (or ExSync 2) and the
/// camera is connected and its link not in reset. Line trigger modes 0 and 2: every ExsyncPeriod. Modes 1 and
/// 3: at the encoder's pulses, period = encoder pitch / belt speed x downscaler / (1, 2 or 4 by the encoder
/// filter). Gates of the line trigger (modes 2, 3) count as open. The camera holds frame valid as long as it
/// sees one scene.
///
/// Pattern generator: clock mode 1 gives a line per SequenceLength cycles of 8 ns; clock mode 0 gives
/// ActivePixel words of 8 pixels in SequenceLength cycles, so a line of Size_ImageWidth words takes
/// Size_ImageWidth x SequenceLength x 8 ns / ActivePixel. A frame takes Size_ImageHeight lines, of which
/// FrameGap_Number bring pixels. With the valve shut (FreeRun_Select 0) each line (valve mode 1) or frame
/// (valve mode 2) waits for an ExSync edge, so its period grows to a multiple of ExsyncPeriod.
struct LineClock {
    double linePeriod = 0;            ///< µs; 0 when no line ever comes
    std::uint64_t linesPerFrame = 1;  ///< lines in one frame of the source's own
    double framePeriod = 0;           ///< µs; at least linesPerFrame x linePeriod

    bool running() const { return linePeriod > 0; }
    /// When a line begins.
    double startOf(std::uint64_t line) const;
    /// When the first `lines` lines are complete.
    double timeFor(std::uint64_t lines) const;
    /// Lines complete after `time` µs.
    std::uint64_t linesBy(double time) const;
};

/// The clock that the settings give; `sceneRows` is the camera's scene length in pixels along the belt.
LineClock lineClock(const DesignSettings& settings, const Belt& belt, std::uint32_t sceneRows);

/// µs that the camera is exposed per line: CC1's time at high level. That is the ExSync exposure, at most the
/// line period; with ExSync or CC1 inverted (not both) the rest of the period.
double exposureTime(const DesignSettings& settings, double linePeriod);

/// Sensor pixels that the belt moves per line.
double beltStep(const Belt& belt, double linePeriod);

}  // namespace virtualboard::imaging
