#include "board/world/PartStream.h"

#include <algorithm>
#include <cmath>

namespace virtualboard::world {
namespace {

using imaging::Pixel;
using imaging::Randomness;

// Streams and places of the random numbers of one part.
constexpr std::uint64_t kAlong = 0, kAcross = 1;  // places
constexpr std::uint64_t kFirstDefect = 16;        // streams
constexpr std::uint64_t kOccurs = 0, kSeverity = 1, kSize = 2, kWidth = 3, kDirection = 4, kCentre = 8;

std::uint8_t mixed(std::uint8_t below, std::uint8_t above, std::uint32_t share) {
    return static_cast<std::uint8_t>((below * (255 - share) + above * share + 127) / 255);
}
Pixel mixed(Pixel below, Pixel above, std::uint32_t share) {
    return {mixed(below.blue, above.blue, share), mixed(below.green, above.green, share),
            mixed(below.red, above.red, share)};
}

std::uint8_t shifted(std::uint8_t value, double by) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value + by), 0L, 255L));
}

/// The pixels whose middles lie between two places.
Run between(double from, double to) {
    return {static_cast<std::int64_t>(std::ceil(from - 0.5)),
            static_cast<std::int64_t>(std::floor(to - 0.5)) + 1};
}
Run cut(Run run, Run limits) {
    return {std::max(run.begin, limits.begin), std::min(run.end, limits.end)};
}

/// Puts a defect over a row of its part.
void apply(const DefectShape& shape, Run run, std::span<Pixel> row) {
    const DefectText& defect = *shape.defect;
    const auto share = static_cast<std::uint32_t>(std::lround(shape.severity * 255));
    for (std::int64_t x = run.begin; x < run.end; ++x) {
        Pixel& pixel = row[static_cast<std::size_t>(x)];
        switch (static_cast<DefectKind>(defect.kind)) {
            case kSpot:
            case kScratch:
                pixel = mixed(pixel, defect.colour, share);
                break;
            case kColourShift:
                pixel = {shifted(pixel.blue, defect.shift.blue * shape.severity),
                         shifted(pixel.green, defect.shift.green * shape.severity),
                         shifted(pixel.red, defect.shift.red * shape.severity)};
                break;
            case kMissingPrint:
                pixel = defect.colour;
                break;
        }
    }
}

}  // namespace

Run DefectShape::runAt(std::int64_t row) const {
    if (row < rows.begin || row >= rows.end) return {};
    const double dy = static_cast<double>(row) + 0.5 - centreY;
    if (defect->kind == kSpot) {
        const double half = std::sqrt(std::max(radius * radius - dy * dy, 0.0));
        return cut(between(centreX - half, centreX + half), columns);
    }
    if (defect->kind == kScratch) {
        // A rectangle that stands askew: a pixel is in it when it is near enough to its axis and its middle.
        const double squared = alongX * alongX + alongY * alongY;
        const auto inside = [&](std::int64_t column) {
            const double dx = static_cast<double>(column) + 0.5 - centreX;
            const double across = dx * alongY - dy * alongX;
            return std::abs(dx * alongX + dy * alongY) <= squared &&
                   across * across <= radius * radius * squared;
        };
        Run run = columns;
        while (!run.empty() && !inside(run.begin)) ++run.begin;
        while (!run.empty() && !inside(run.end - 1)) --run.end;
        return run;
    }
    return columns;
}

PartStream::PartStream(PartsText text, imaging::Image picture, std::vector<std::uint8_t> cover,
                       double objectPixel, Randomness random)
    : text_(std::move(text)),
      picture_(std::move(picture)),
      cover_(std::move(cover)),
      objectPixel_(objectPixel),
      start_(text_.at / objectPixel),
      spacing_(text_.spacing / objectPixel),
      jitter_(text_.jitterAlong / objectPixel),
      count_(text_.count == 0 ? kEndless : static_cast<std::int64_t>(text_.count)),
      random_(random) {}

PartStream::Place PartStream::place(std::int64_t number) const {
    const Randomness random = random_.stream(static_cast<std::uint64_t>(number));
    const double along =
        start_ + static_cast<double>(number) * spacing_ + random.between(-jitter_, jitter_, kAlong);
    const double across =
        (text_.across + random.between(-text_.jitterAcross, text_.jitterAcross, kAcross)) / objectPixel_;
    return {std::llround(along), std::max<std::int64_t>(std::llround(across), 0)};
}

std::int64_t PartStream::firstBehind(std::int64_t position) const {
    // Rounding moves a part by half a pixel at most.
    const double last =
        (static_cast<double>(position) - start_ - jitter_ - static_cast<double>(height())) / spacing_;
    if (last > 0x1p60) return count_;
    return std::min(
        count_, std::max<std::int64_t>(static_cast<std::int64_t>(std::floor(std::max(last, 0.0))) - 1, 0));
}

DefectShapes PartStream::defects(std::int64_t number) const {
    const Randomness part = random_.stream(static_cast<std::uint64_t>(number));
    DefectShapes result;
    for (std::size_t i = 0; i < text_.defects.size(); ++i) {
        const Randomness random = part.stream(kFirstDefect + i);
        if (random.share(kOccurs) >= text_.defects[i].probability) continue;
        if (const auto one = shape(random, text_.defects[i])) result.shapes[result.count++] = *one;
    }
    return result;
}

std::optional<DefectShape> PartStream::shape(const Randomness& random, const DefectText& defect) const {
    const RegionText& region = defect.region;
    const auto wide = static_cast<double>(width()), high = static_cast<double>(height());
    DefectShape shape{.defect = &defect};
    shape.severity = random.between(defect.severity.least, defect.severity.most, kSeverity);
    shape.columns = between(region.left * wide, (region.left + region.width) * wide);
    shape.rows = between(region.top * high, (region.top + region.height) * high);
    if (defect.kind == kMissingPrint) {
        const auto kept = static_cast<double>(shape.rows.end - shape.rows.begin) * (1 - shape.severity);
        shape.rows.begin += static_cast<std::int64_t>(std::floor(kept));
    }
    if (defect.kind == kSpot || defect.kind == kScratch) {
        const double size = random.between(defect.size.least, defect.size.most, kSize) / objectPixel_ / 2;
        shape.radius = size;
        if (defect.kind == kScratch) {
            // A direction without sines, whose last bits are not the same on every machine.
            const double t = random.between(-1, 1, kDirection);
            shape.alongX = size * 2 * t / (1 + t * t);
            shape.alongY = size * (1 - t * t) / (1 + t * t);
            shape.radius = random.between(defect.width.least, defect.width.most, kWidth) / objectPixel_ / 2;
        }
        if (!settle(random, shape)) return std::nullopt;
    }
    shape.columns = cut(shape.columns, {0, width()});
    shape.rows = cut(shape.rows, {0, height()});
    if (shape.columns.empty() || shape.rows.empty()) return std::nullopt;
    return shape;
}

/// Finds a spot or a scratch a place in its region, with its middle where the part is; false when there is
/// none.
bool PartStream::settle(const Randomness& random, DefectShape& shape) const {
    constexpr std::uint64_t tries = 32;
    const Run across = cut(shape.columns, {0, width()}), along = cut(shape.rows, {0, height()});
    if (across.empty() || along.empty()) return false;
    for (std::uint64_t i = 0; i < tries; ++i) {
        const auto pick = [&](Run run, std::uint64_t place) {
            const auto size = static_cast<double>(run.end - run.begin);
            return run.begin + static_cast<std::int64_t>(random.share(place) * size);
        };
        const std::int64_t x = pick(across, kCentre + 2 * i), y = pick(along, kCentre + 2 * i + 1);
        if (!cover_.empty() && cover_[static_cast<std::size_t>(y * width() + x)] < 128) continue;
        shape.centreX = static_cast<double>(x) + 0.5;
        shape.centreY = static_cast<double>(y) + 0.5;
        const double reachX = std::abs(shape.alongX) + shape.radius,
                     reachY = std::abs(shape.alongY) + shape.radius;
        shape.columns = between(shape.centreX - reachX, shape.centreX + reachX);
        shape.rows = between(shape.centreY - reachY, shape.centreY + reachY);
        // The smallest defect is one pixel.
        shape.columns = {std::min(shape.columns.begin, x), std::max(shape.columns.end, x + 1)};
        shape.rows = {std::min(shape.rows.begin, y), std::max(shape.rows.end, y + 1)};
        return true;
    }
    return false;
}

void PartStream::draw(std::int64_t position, std::uint32_t first, std::span<Pixel> out) const {
    for (std::int64_t number = firstBehind(position); number < count_; ++number) {
        const Place at = place(number);
        if (at.top > position) return;
        if (position < at.top + height()) drawRow(number, position - at.top, at.left, first, out);
    }
}

void PartStream::drawRow(std::int64_t number, std::int64_t row, std::int64_t left, std::uint32_t first,
                         std::span<Pixel> out) const {
    const Run seen =
        cut({left, left + width()}, {first, std::int64_t{first} + static_cast<std::int64_t>(out.size())});
    if (seen.empty()) return;
    const auto offset = static_cast<std::size_t>(row * width());
    const auto wide = static_cast<std::size_t>(width());
    std::span<const Pixel> line(&picture_.pixels[offset], wide);
    thread_local std::vector<Pixel> changed;
    const DefectShapes found = defects(number);
    for (const DefectShape& shape : found.all()) {
        const Run run = shape.runAt(row);
        if (run.empty()) continue;
        if (line.data() != changed.data()) {
            changed.assign(line.begin(), line.end());
            line = changed;
        }
        apply(shape, run, changed);
    }
    const auto from = static_cast<std::size_t>(seen.begin - left),
               to = static_cast<std::size_t>(seen.begin - first);
    const auto columns = static_cast<std::size_t>(seen.end - seen.begin);
    if (cover_.empty()) {
        std::ranges::copy(line.subspan(from, columns), out.begin() + static_cast<std::ptrdiff_t>(to));
        return;
    }
    for (std::size_t i = 0; i < columns; ++i) {
        out[to + i] = mixed(out[to + i], line[from + i], cover_[offset + from + i]);
    }
}

}  // namespace virtualboard::world
