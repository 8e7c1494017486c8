#include "board/imaging/LineClock.h"

#include <algorithm>
#include <cmath>

namespace virtualboard::imaging {
namespace {

constexpr double kClockCycle = 0.008;  // µs

// Multiplexer indices of the board's output signals.
constexpr std::uint32_t kSignalExsync = 1, kSignalExsync2 = 2;

// Also turns a division by zero into "no line ever comes".
double usable(double period) {
    return period > 0 && period < 1e12 ? period : 0;
}

double encoderPeriod(const DesignSettings& settings, const Belt& belt) {
    constexpr double kPulsesPerPitch[] = {1, 1, 2, 4};
    const double pulses =
        kPulsesPerPitch[std::min(settings.encoderMode, 3u)] / std::max(settings.lineDownscaler, 1u);
    return belt.encoderPitch / belt.speed * 1e6 / pulses;
}

double exsyncPeriod(const DesignSettings& settings, const Belt& belt) {
    if (settings.exsyncEnable == 0) return 0;
    const bool external = settings.lineTriggerMode == 1 || settings.lineTriggerMode == 3;
    return usable(external ? encoderPeriod(settings, belt) : settings.exsyncPeriod);
}

LineClock cameraClock(const DesignSettings& settings, const Belt& belt, std::uint32_t sceneRows) {
    const bool triggered = settings.cc1Select == kSignalExsync || settings.cc1Select == kSignalExsync2;
    if (!triggered || settings.coreReset != 0 || settings.pixelClock == 0) return {};
    const double period = exsyncPeriod(settings, belt);
    if (period == 0) return {};
    const double step = beltStep(belt, period);
    // Whole row pairs; on a belt at rest the scene never ends.
    const double lines = step > 0 ? std::round(sceneRows / step / 2) * 2 : 1e9;
    const auto frame = static_cast<std::uint64_t>(std::clamp(lines, 2.0, 1e9));
    return {period, frame, static_cast<double>(frame) * period};
}

LineClock generatorClock(const DesignSettings& settings, const Belt& belt) {
    double period = settings.generatorSequence * kClockCycle;
    if (settings.generatorClockMode == 0)
        period *= double{1} * settings.generatorLineWords / settings.generatorActivePixel;
    period = usable(period);
    if (period == 0) return {};
    const auto lines = std::max<std::uint64_t>(settings.generatorActiveLines, 1);
    const auto linesWithGap = std::max<std::uint64_t>(settings.generatorFrameLines, lines);
    if (settings.generatorFreeRun != 0) return {period, lines, static_cast<double>(linesWithGap) * period};

    const double edges = exsyncPeriod(settings, belt);
    if (edges == 0) return {};
    const auto nextEdge = [&](double time) { return std::ceil(time / edges - 1e-9) * edges; };
    if (settings.generatorValve == 1) period = nextEdge(period);
    const double frame = nextEdge(static_cast<double>(linesWithGap) * period);
    return {period, lines, frame};
}

}  // namespace

double LineClock::startOf(std::uint64_t line) const {
    const std::uint64_t frames = line / linesPerFrame, rest = line % linesPerFrame;
    return static_cast<double>(frames) * framePeriod + static_cast<double>(rest) * linePeriod;
}

double LineClock::timeFor(std::uint64_t lines) const {
    return lines == 0 ? 0 : startOf(lines - 1) + linePeriod;
}

std::uint64_t LineClock::linesBy(double time) const {
    if (!running() || !(time > 0)) return 0;
    const double frames = std::floor(time / framePeriod);
    const double lines = std::floor((time - frames * framePeriod) / linePeriod + 1e-9);
    return static_cast<std::uint64_t>(frames) * linesPerFrame +
           std::min(static_cast<std::uint64_t>(std::max(lines, 0.0)), linesPerFrame);
}

LineClock lineClock(const DesignSettings& settings, const Belt& belt, std::uint32_t sceneRows) {
    return settings.generatorEnable != 0 ? generatorClock(settings, belt)
                                         : cameraClock(settings, belt, sceneRows);
}

double exposureTime(const DesignSettings& settings, double linePeriod) {
    const double active = std::clamp(settings.exsyncExposure, 0.0, linePeriod);
    const bool inverted = (settings.exsyncPolarity != 0) != (settings.cc1Invert != 0);
    return inverted ? linePeriod - active : active;
}

double beltStep(const Belt& belt, double linePeriod) {
    return belt.speed * linePeriod * 1e-6 / belt.objectPixel;
}

}  // namespace virtualboard::imaging
