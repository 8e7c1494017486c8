#include "board/imaging/FrameRenderer.h"

#include <algorithm>

namespace virtualboard::imaging {
FrameRenderer::FrameRenderer(std::shared_ptr<const SensorScene> scene, Crew* crew)
    : scene_(std::move(scene)), camera_(scene_, {}), crew_(crew), lines_(crew != nullptr ? crew->size() : 1) {
    configure(settings_);
}

void FrameRenderer::configure(const DesignSettings& settings) {
    settings_ = settings;
    plan_ = planLine(settings, scene_->camera());
    generator_.reset();
    if (settings.generatorEnable != 0) generator_.emplace(settings);
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
    const LineSource& source = generator_ ? static_cast<const LineSource&>(*generator_) : camera_;
    source.readRow(picture.firstRow + row, plan_.first, pixels);
    balance(pixels, row);
    if (!plan_.inOrder) plan_.rearrangement.apply(lines.sensor.data(), line);
    extendEdges(line, plan_.width);
}

PictureGeometry FrameRenderer::geometry(const FramePosition& position, const Motion& motion,
                                        std::uint32_t rows) const {
    if (generator_) return {};
    PictureGeometry result{.columns = plan_.sensorPixels()};
    for (std::uint64_t row = position.firstLine * rowsPerLine_; result.rows.size() < rows; ++row)
        result.rows.push_back(motion.of(row).position >> kBeltBits);
    return result;
}

std::uint32_t FrameRenderer::render(const FramePosition& position, const Motion& motion,
                                    std::span<std::uint8_t> out) {
    if (plan_.width == 0) return 0;
    camera_.setMotion(motion);
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
