#pragma once

/// What the design's parameters say about the picture, read once per picture or whenever one was written.

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "marovine/Bayer.h"

namespace virtualboard::imaging {

/// Reads current values of the design by full name ("Device1_Process0_Buffer_0_DRAM_A_0_XLength").
/// The board implements it over its parameter store.
class ValueReader {
 public:
    virtual ~ValueReader() = default;
    virtual std::uint32_t u32(std::string_view name) const = 0;
    virtual double real(std::string_view name) const = 0;
    /// Copies the first elements of a field; elements that the field does not have stay as they are.
    virtual void field(std::string_view name, std::span<std::uint32_t> out) const = 0;
};

/// The design values that say when lines come and when frames begin. A member holds exactly what was written;
/// the member initialisers are what the applet's defaults write, so a test changes only what it is about.
struct LineSettings {
    // Camera link. FullMode 0: 8 taps of 8 bits, 1: 10 taps of 8 bits, 3: 8 taps of 10 bits.
    std::uint32_t fullMode = 0;
    std::uint32_t coreReset = 0;    ///< 1 holds the link in reset: no line arrives
    std::uint32_t pixelClock = 85;  ///< MHz of the first link; 0 while no camera is connected
    std::uint32_t tapWidth = 1024;  ///< pixels that one tap delivers per line
    std::uint32_t tapCount = 1;
    std::uint32_t dummyTaps = 0;

    // Pattern generator (see PatternGenerator.h).
    std::uint32_t generatorEnable = 0;          ///< 1: the generator replaces the camera
    std::uint32_t generatorLineWords = 128;     ///< words of 8 pixels in a line, gap included
    std::uint32_t generatorFrameLines = 1024;   ///< lines in a frame, gap included
    std::uint32_t generatorActiveLines = 1024;  ///< the line at which the frame gap begins
    std::uint32_t generatorClockMode = 1;       ///< 0: pixel frequency, 1: one line per sequence
    std::uint32_t generatorActivePixel = 1;
    std::uint32_t generatorSequence = 12207;  ///< clock cycles of 8 ns
    std::uint32_t generatorFreeRun = 1;       ///< 0: the valve waits for ExSync edges
    std::uint32_t generatorValve = 2;         ///< 1: an edge starts a line, 2: an edge starts a frame

    // Line trigger (see LineStream.h). Times in µs.
    std::uint32_t lineTriggerMode = 0;  ///< 0: generator, 1: external, 2 and 3: the same, in frames only
    std::uint32_t lineSourceA = 1;      ///< input, 0 to 11
    std::uint32_t lineSourceB = 2;
    std::uint32_t linePolarity = 0;  ///< 1: low active
    double lineDebouncing = 0.112;
    std::uint32_t lineDownscaler = 1;
    std::uint32_t linePhase = 1;    ///< pulses up to the first that passes the downscaler
    std::uint32_t encoderMode = 0;  ///< 0: off, 1 to 3: filter x1, x2, x4
    std::uint32_t encoderLead = 0;  ///< 1: B before A is forwards
    std::uint32_t encoderCompensation = 1;
    std::uint32_t exsyncEnable = 1;
    std::uint32_t exsyncPolarity = 0;  ///< 1: ExSync is active low
    double exsyncPeriod = 200.0;
    double exsyncExposure = 19.0;
    double exsync2Delay = 0.0;
    std::uint32_t cc1Select = 1;  ///< multiplexer index of the camera's line trigger input
    std::uint32_t cc1Invert = 0;

    // The image trigger's input.
    static constexpr std::uint32_t kFromSoftware = 4;
    std::uint32_t imageSource = 2;  ///< 2: an input, or `kFromSoftware`
    std::uint32_t imageSelect = 0;  ///< input, 0 to 11
    std::uint32_t imagePolarity = 0;
    double imageDebouncing = 0.112;
    std::uint32_t softwareLevel = 0;

    bool operator==(const LineSettings&) const = default;
};

/// µs that the camera is exposed per line: CC1's time at high level. That is the ExSync exposure, at most the
/// line period; with ExSync or CC1 inverted (not both) the rest of the period.
double exposureTime(const LineSettings& settings, double linePeriod);

/// A snapshot of the design values that the image path executes. A member holds exactly what was written;
/// the member initialisers are what the applet's defaults write, so a test changes only what it is about.
struct DesignSettings : LineSettings {
    // Tap geometry sorter (see TapSorter.h).
    std::uint32_t translateVantagePoint = 0;
    std::array<std::uint32_t, 10> tapOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 8};
    std::array<std::uint32_t, 10> tapMirror{};

    // Frame buffer window, pixels and rows.
    std::uint32_t xOffset = 0;
    std::uint32_t xLength = 1024;
    std::uint32_t yLength = 1024;

    // Pattern generator (see PatternGenerator.h).
    std::uint32_t generatorEnableX = 1;
    std::uint32_t generatorYDivisor = 256;
    std::uint32_t generatorOffset = 0;
    std::uint32_t generatorFrameDivisor = 256;
    std::uint32_t generatorActiveWords = 128;  ///< the word at which the line gap begins

    // Trigger window, in lines of the line trigger.
    std::uint32_t triggerYOffset = 0;
    std::uint32_t triggerYLength = 1024;
    std::uint32_t imageHeight = 1024;

    // Image trigger (see FrameSequencer.h).
    std::uint32_t imageTriggerMode = 0;  ///< 0: free run, 1: a pulse starts a frame, 2: a gate holds it open
    std::uint32_t imageTriggerEnable = 1;
    std::uint32_t imageTriggerDelay = 0;  ///< lines between the trigger and the frame's start
    std::uint32_t cameraFval = 0;         ///< 1: the source's own frames decide, in free run
    std::uint32_t maxGatedHeight = 0;     ///< 1: a gate may outlast one picture
    std::uint32_t flashEnable = 1;
    std::uint32_t flashPolarity = 0;  ///< 1: low active
    std::uint32_t flashDelay = 0;     ///< lines between a frame's start and its flash

    // Colour.
    std::uint32_t fastDeBayer = 0;        ///< 1: the plain interpolation, 0: the enhanced one
    std::uint32_t deBayerPhase = 2;       ///< phase of the plain interpolation
    std::uint32_t deBayerMode = 0;        ///< phase of the enhanced interpolation, in its own coding
    std::uint32_t whiteBalancePhase = 2;  ///< phase of the sensor, before window and mirroring
    double redGain = 1.0;
    double greenGain = 1.0;
    double blueGain = 1.0;
    std::array<std::array<std::uint8_t, 256>, 3> tables = identityTables();  ///< blue, green, red

    // Image selector: of every `selectPeriod` pictures the one numbered `selectPhase` is passed on.
    std::uint32_t selectPeriod = 1;
    std::uint32_t selectPhase = 0;

    bool operator==(const DesignSettings&) const = default;

    static constexpr std::array<std::array<std::uint8_t, 256>, 3> identityTables() {
        std::array<std::array<std::uint8_t, 256>, 3> result{};
        for (auto& table : result) {
            for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(i);
        }
        return result;
    }
};

/// Bayer phase of the window, as the interpolation at work was told.
constexpr std::uint32_t interpolationPhase(const DesignSettings& settings) {
    return settings.fastDeBayer != 0 ? settings.deBayerPhase : phaseOfMode(settings.deBayerMode);
}

/// Tells the full name of each value of `LineSettings` and where it belongs, to those who read them often.
void forEachLineNumber(const std::function<void(std::string_view, std::uint32_t LineSettings::*)>& visit);
void forEachLineReal(const std::function<void(std::string_view, double LineSettings::*)>& visit);

/// Takes a snapshot. Lookup table entries above 255 count as 255.
DesignSettings readSettings(const ValueReader& design);

/// Picture rows that one line trigger brings: 2 for a sensor row pair sampled once, else 1.
/// The design has no parameter for it: a frame buffer twice as long as the image height says so.
constexpr std::uint32_t rowsPerTrigger(const DesignSettings& settings) {
    return settings.yLength == 2 * std::uint64_t{settings.imageHeight} ? 2 : 1;
}

}  // namespace virtualboard::imaging
