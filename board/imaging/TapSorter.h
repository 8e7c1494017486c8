#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "board/imaging/PictureGeometry.h"
#include "board/imaging/Settings.h"
#include "board/imaging/Stages.h"
#include "marovine/World.h"

namespace virtualboard::imaging {

/// How the pixels of a window's line are fetched from the sensor's line: the tap geometry sorter together
/// with the frame buffer's horizontal window.
///
/// Sorter. The line is put together from the physical taps (TapCount, of which one in five carries nothing
/// when DummyTaps is set), TapWidth pixels each: the pixels of tap t go to the TapOrder[t]-th part of the
/// line, from back to front where ReferenceTapMirror[t] is set. The window takes XLength pixels of that line
/// from XOffset on; pixels beyond its end are black.
///
/// Camera. Without a readout of its own the camera delivers in tap t the t-th part of its line, from back to
/// front where ReferenceTapMirror[t] differs from TranslateVantagePoint, which tells a tap read from its far
/// end from one that is only looked at from the other side. So the line comes out in order, and mirrored as a
/// whole for a vantage point at the top right; a mirrored line starts at the sensor's right edge, also where
/// the taps do not divide the sensor's width. With a readout, pixels travel as on the link: per clock each
/// tap fills its lanes, and the sorter takes the lanes for its own taps (all lanes for one tap, else 10 /
/// TapCount each).
struct LinePlan {
    bool inOrder = true;      ///< the pixels read are the line as they are
    std::uint32_t width = 0;  ///< pixels of the window's line, at most `kMaxLine`
    std::uint32_t first = 0;  ///< the sensor pixels to read: `count` from `first` on
    std::uint32_t count = 0;
    Rearrangement rearrangement;  ///< puts them into the window's order, when they are not

    /// The sensor pixel of each of the window's pixels; `PictureGeometry::kNoColumn` where there is none.
    std::vector<std::uint32_t> sensorPixels() const;
};

LinePlan planLine(const DesignSettings& settings, const CameraTraits& camera);

}  // namespace virtualboard::imaging
