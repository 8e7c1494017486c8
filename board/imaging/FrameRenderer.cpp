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

FrameRenderer::FrameRenderer(std::shared_ptr<const SensorScene> scene, const Belt& belt, Crew* crew)
    : scene_(std::move(scene)), belt_(belt), crew_(crew), lines_(crew != nullptr ? crew->size() : 1) {
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
    for (Lines& lines : lines_) {
        lines.sensor.resize(plan_.count);
        for (auto& row : lines.raw) row.resize(plan_.width + 2 * BayerRow::kMargin);
    }
    lookUp_ = settings.tables != DesignSettings::identityTables();
}

void FrameRenderer::balance(std::span<std::uint8_t> pixels, std::uint32_t row) const {
    const auto gainOf = [&](std::uint64_t column) {
        return gains_[static_cast<std::size_t>(bayerColour(settings_.whiteBalancePhase, column, row))];
    };
    const std::uint16_t even = gainOf(plan_.first), odd = gainOf(plan_.first + std::uint64_t{1});
    if (even != 1024 || odd != 1024) whiteBalance(pixels, even, odd);
}

void FrameRenderer::fetch(const Picture& picture, std::uint32_t row, Lines& lines) const {
    // A line that needs no sorting is read straight into its place.
    std::uint8_t* const line = lines.row(row);
    const std::span<std::uint8_t> pixels(plan_.inOrder ? line : lines.sensor.data(), plan_.count);
    source_->readRow(picture.firstRow + row, plan_.first, pixels);
    balance(pixels, row);
    if (!plan_.inOrder) plan_.rearrangement.apply(lines.sensor.data(), line);
    extendEdges(line, plan_.width);
}

std::uint32_t FrameRenderer::render(const FramePosition& position, std::span<std::uint8_t> out) {
    if (plan_.width == 0) return 0;
    const auto rows =
        static_cast<std::uint32_t>(std::min<std::size_t>(position.rows, out.size() / rowBytes()));
    const Picture picture{position.firstLine * rowsPerLine_, rows, out.data()};
    // Bands that are worth a thread's waking, of so many rows that two more at their edges do not count.
    constexpr std::uint32_t kPixels = 1 << 16, kRows = 16;
    const std::uint32_t band = std::max(kPixels / plan_.width, kRows);
    if (crew_ == nullptr || rows <= band) {
        if (rows != 0) renderBand(picture, 0, rows, lines_[0]);
        return rows;
    }
    crew_->run((rows - 1) / band + 1, [&](unsigned part, unsigned member) {
        renderBand(picture, part * band, std::min(rows, (part + 1) * band), lines_[member]);
    });
    return rows;
}

/// Renders rows `begin` to `end` - 1.
void FrameRenderer::renderBand(const Picture& picture, std::uint32_t begin, std::uint32_t end,
                               Lines& lines) const {
    const std::uint32_t phase = interpolationPhase(settings_), rows = picture.rows;
    Development how{.followEdges = settings_.fastDeBayer == 0,
                    .tables = lookUp_ ? settings_.tables.data() : nullptr};
    if (begin > 0) fetch(picture, begin - 1, lines);
    fetch(picture, begin, lines);
    for (std::uint32_t y = begin; y < end; ++y) {
        if (y + 1 < rows) fetch(picture, y + 1, lines);
        const std::uint32_t inner = rows == 1 ? 0
                                    : y == 0  ? 1
                                              : y - 1;  // stands in for the missing neighbour
        how.first = bayerColour(phase, 0, y);
        how.second = bayerColour(phase, 1, y);
        develop({lines.row(y == 0 ? inner : y - 1)}, {lines.row(y)},
                {lines.row(y + 1 == rows ? inner : y + 1)}, plan_.width, how, picture.out + y * rowBytes());
    }
}

}  // namespace virtualboard::imaging
