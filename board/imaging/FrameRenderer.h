#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "board/imaging/Crew.h"
#include "board/imaging/FrameSequencer.h"
#include "board/imaging/LineScanCamera.h"
#include "board/imaging/PatternGenerator.h"
#include "board/imaging/PictureGeometry.h"
#include "board/imaging/Settings.h"
#include "board/imaging/Stages.h"
#include "board/imaging/TapSorter.h"

namespace virtualboard::imaging {

/// The whole image path: turns a picture's lines into 24-bit pixels (blue, green, red) in a caller's buffer.
///
/// Row by row, in this order:
/// 1. source: the pattern generator (Enable_SelectSource 1) or the camera over the belt;
/// 2. white balance, on Bayer data in the sensor's own columns: that is why its phase (White_BayerInit) is
///    the one before window and mirroring. Rows count from the picture's top, as for the interpolation: the
///    source's frames may have an odd number of rows. Gains count in steps of 1/1024;
/// 3. tap geometry sorter and frame buffer window (see `LinePlan`);
/// 4. de-Bayer on the window: EnableFast 1 takes the plain interpolation with phase BayerInit, 0 the enhanced
///    one with the phase that Mode stands for. Beyond the picture's edges the pattern goes on with the rows
///    and columns next to the edge (row -1 is row 1); a picture of one row or column repeats it;
/// 5. lookup tables per colour.
/// Settings hold for a whole picture. The renderer keeps only line buffers, so it costs no time to make one
/// per acquisition; it is not thread-safe, the scene behind it may be shared. A crew renders large pictures
/// in bands of rows.
class FrameRenderer {
 public:
    /// A crew outlives its renderers; without one the calling thread renders alone.
    explicit FrameRenderer(std::shared_ptr<const SensorScene> scene, Crew* crew = nullptr);

    /// Takes over new settings, from the next picture on.
    void configure(const DesignSettings& settings);

    std::uint32_t width() const { return plan_.width; }  ///< pixels per row
    std::size_t rowBytes() const { return plan_.width * std::size_t{3}; }

    /// What a picture of so many rows shows of the belt; nothing when it does not come from the camera.
    PictureGeometry geometry(const FramePosition& position, const Motion& motion, std::uint32_t rows) const;

    /// Renders a picture of a belt that moves so; rows that do not fit into `out` are left out. Returns the
    /// rows written.
    std::uint32_t render(const FramePosition& position, const Motion& motion, std::span<std::uint8_t> out);

 private:
    /// What one thread needs: a row before sorting and three after it, of which the middle one is developed.
    struct Lines {
        std::uint8_t* row(std::uint32_t y) { return raw[y % 3].data() + BayerRow::kMargin; }
        std::vector<std::uint8_t> sensor, raw[3];
    };
    struct Picture {
        std::uint64_t firstRow;  ///< in the stream
        std::uint32_t rows;
        std::uint8_t* out;
    };

    void renderBand(const Picture& picture, std::uint32_t begin, std::uint32_t end, Lines& lines) const;
    void fetch(const Picture& picture, std::uint32_t row, Lines& lines) const;
    void balance(std::span<std::uint8_t> pixels, std::uint32_t row) const;

    std::shared_ptr<const SensorScene> scene_;
    LineScanCamera camera_;
    std::optional<PatternGenerator> generator_;  // in the camera's place
    DesignSettings settings_;
    LinePlan plan_;
    std::uint64_t rowsPerLine_ = 1;
    bool lookUp_ = false;                          // some table changes some value
    std::uint16_t gains_[3] = {1024, 1024, 1024};  // blue, green, red
    Crew* crew_;
    std::vector<Lines> lines_;  // per thread
};

}  // namespace virtualboard::imaging
