#pragma once

/// The arithmetic of the test-pattern generator: clock counts, rates, and the limits that follow from them.
///
/// The generator counts clock cycles. A line takes one sequence of cycles; in pixel-frequency mode the
/// sequence has a fixed length and pixels, eight at a time, come in the active part of it. Products of sizes
/// are formed in double precision, where they are exact.

#include <algorithm>
#include <cstdint>
#include <limits>

namespace marovine {

/// Seconds of one generator clock cycle.
inline constexpr double kClockPeriod = 8e-9;
/// Clock cycles of the sequence in pixel-frequency mode.
inline constexpr std::uint32_t kPixelSequence = 2000;
/// Pixels of one word: widths and line gaps are written in words.
inline constexpr std::uint32_t kWord = 8;
/// Most pixels of a line with its gap, and most lines of a frame with its gap.
inline constexpr std::uint32_t kSizeLimit = 65536;
/// What the pixel frequency reads as in MHz while another speed mode rules: the generator's best.
inline constexpr double kMaximumPixelFrequency = 999.9999999999999;

/// Pixels rounded up to whole words. A count beyond the size limit stays beyond it.
constexpr std::uint64_t roundedUpToWord(std::uint32_t pixels) {
    return (std::uint64_t{pixels} + kWord - 1) / kWord * kWord;
}

// ---- rates that clock counts give ----

/// Lines per second of a sequence.
constexpr double lineRateOf(std::uint32_t sequence) {
    return 1.0 / (sequence * kClockPeriod);
}
/// Frames per second of this many lines, one sequence each.
constexpr double frameRateOf(std::uint32_t lines, std::uint32_t sequence) {
    return 1.0 / (static_cast<double>(lines) * sequence * kClockPeriod);
}
/// Pixels per second of the active part of a pixel-frequency sequence.
constexpr double pixelRateOf(std::uint32_t active) {
    return active * 8.0 / 2000.0 / kClockPeriod;
}

// ---- clock counts that rates need; round half up, still to be truncated ----

/// Active part of the sequence for a pixel frequency in MHz.
constexpr double activePartFor(double pixelFrequency) {
    return pixelFrequency * 1e6 * 2000.0 * kClockPeriod * 0.125 + 0.5;
}
/// Sequence for a line rate in Hz.
constexpr double sequenceFor(double lineRate) {
    return 1.0 / (lineRate * kClockPeriod) + 0.5;
}
/// Sequence of each line for a frame rate in Hz.
constexpr double sequenceFor(double frameRate, std::uint32_t lines) {
    return (1.0 / (frameRate * kClockPeriod)) / lines + 0.5;
}
/// Whether a clock count can be truncated to what the design holds.
constexpr bool isClockCount(double count) {
    return count >= 0.0 && count < 4294967296.0;
}

// ---- limits ----

/// A size limit from a rate: truncated toward zero, at least 0 and at most `most`.
constexpr std::uint32_t sizeWithin(double size, std::uint32_t most) {
    if (size >= most) return most;
    return size > 0.0 ? static_cast<std::uint32_t>(size) : 0;
}
/// What a taken part leaves of the size limit.
constexpr std::uint32_t restOfSize(std::uint32_t taken) {
    return kSizeLimit - std::min(taken, kSizeLimit);
}
/// A rate as a registry maximum: never zero.
constexpr double asMaximum(double rate) {
    return std::max(rate, std::numeric_limits<double>::min());
}

}  // namespace marovine
