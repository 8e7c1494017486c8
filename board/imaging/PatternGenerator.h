#pragma once

#include "board/imaging/LineSource.h"
#include "board/imaging/Settings.h"

namespace virtualboard::imaging {

/// The design's test pattern generator. Pixel x of line y of generator frame f is
///
///     (EnableX * x + y mod Y_Divisor + f mod Frame_Divisor + Offset_Value) mod 256
///
/// where EnableX is 0 or 1 and a divisor of 0 counts as 1. So a horizontal ramp is EnableX 1, Y_Divisor 1;
/// a vertical one 0, 256; a diagonal one 1, 256; and Frame_Divisor 256 rolls the pattern by one grey value
/// per frame while 1 holds it still.
///
/// A line has 8 x LineGap_Number pixels (the gap behind them up to 8 x Size_ImageWidth is time without
/// pixels), a frame has FrameGap_Number lines (the frame gap, too, is only time). Rows count through the
/// frames: row r is line r mod FrameGap_Number of frame r / FrameGap_Number.
class PatternGenerator : public LineSource {
 public:
    explicit PatternGenerator(const DesignSettings& settings);

    void readRow(std::uint64_t row, std::uint32_t first, std::span<std::uint8_t> out) const override;

 private:
    bool enableX_;
    std::uint32_t yDivisor_, frameDivisor_, offset_, linesPerFrame_;
    std::uint64_t lineLength_;
};

}  // namespace virtualboard::imaging
