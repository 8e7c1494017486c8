#include "board/imaging/FrameRenderer.h"

#include <algorithm>

#include "board/imaging/PatternGenerator.h"

namespace virtualboard::imaging {
namespace {

std::unique_ptr<LineSource> makeSource(const DesignSettings& settings,
                                       std::shared_ptr<const SensorScene> scene, const Belt& belt,
                                       double linePeriod) {
    if (settings.generatorEnable != 0) return std::make_unique<PatternGenerator>(settings);
    const double brightness = exposureTime(settings, linePeriod) / scene->camera().neutralExposure;
    const Motion motion{Motion::stepOf(beltStep(belt, linePeriod)), rowsPerTrigger(settings),
                        exposureGain(brightness)};
    return std::make_unique<LineScanCamera>(std::move(scene), motion);
}

}  // namespace

FrameRenderer::FrameRenderer(std::shared_ptr<const SensorScene> scene, const Belt& belt)
    : scene_(std::move(scene)), belt_(belt) {
    configure(settings_);
}

void FrameRenderer::configure(const DesignSettings& settings) {
    settings_ = settings;
    clock_ = lineClock(settings, belt_, scene_->rows());
    plan_ = planLine(settings, scene_->camera());
    source_ = makeSource(settings, scene_, belt_, clock_.linePeriod);
    rowsPerLine_ = rowsPerTrigger(settings);
    gains_[0] = whiteBalanceGain(settings.blueGain);
    gains_[1] = whiteBalanceGain(settings.greenGain);
    gains_[2] = whiteBalanceGain(settings.redGain);
    sensor_.resize(plan_.count);
    for (auto& row : raw_) row.resize(plan_.width + 2 * BayerRow::kMargin);
    lookUp_ = settings.tables != DesignSettings::identityTables();
}

void FrameRenderer::balance(std::span<std::uint8_t> pixels, std::uint32_t row) const {
    const auto gainOf = [&](std::uint64_t column) {
        return gains_[static_cast<std::size_t>(bayerColour(settings_.whiteBalancePhase, column, row))];
    };
    const std::uint16_t even = gainOf(plan_.first), odd = gainOf(plan_.first + std::uint64_t{1});
    if (even != 1024 || odd != 1024) whiteBalance(pixels, even, odd);
}

void FrameRenderer::fetch(std::uint64_t firstRow, std::uint32_t row, std::uint8_t* line) {
    // A line that needs no sorting is read straight into its place.
    const std::span<std::uint8_t> pixels(plan_.inOrder ? line : sensor_.data(), plan_.count);
    source_->readRow(firstRow + row, plan_.first, pixels);
    balance(pixels, row);
    if (!plan_.inOrder) plan_.rearrangement.apply(sensor_.data(), line);
    extendEdges(line, plan_.width);
}

std::uint32_t FrameRenderer::render(const FramePosition& position, std::span<std::uint8_t> out) {
    if (plan_.width == 0) return 0;
    const auto rows =
        static_cast<std::uint32_t>(std::min<std::size_t>(position.rows, out.size() / rowBytes()));
    if (rows == 0) return 0;

    const std::uint32_t phase = interpolationPhase(settings_);
    Development how{.followEdges = settings_.fastDeBayer == 0,
                    .tables = lookUp_ ? settings_.tables.data() : nullptr};
    const std::uint64_t firstRow = position.firstLine * rowsPerLine_;

    // Three raw rows are kept: the one being interpolated and its neighbours.
    fetch(firstRow, 0, rawRow(0));
    for (std::uint32_t y = 0; y < rows; ++y) {
        if (y + 1 < rows) fetch(firstRow, y + 1, rawRow(y + 1));
        const std::uint32_t inner = rows == 1 ? 0
                                    : y == 0  ? 1
                                              : y - 1;  // stands in for the missing neighbour
        const std::uint8_t* above = rawRow(y == 0 ? inner : y - 1);
        const std::uint8_t* below = rawRow(y + 1 == rows ? inner : y + 1);
        how.first = bayerColour(phase, 0, y);
        how.second = bayerColour(phase, 1, y);
        develop({above}, {rawRow(y)}, {below}, plan_.width, how, out.data() + y * rowBytes());
    }
    return rows;
}

}  // namespace virtualboard::imaging
