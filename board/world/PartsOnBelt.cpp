#include "board/world/PartsOnBelt.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "board/world/WorldFields.h"

namespace virtualboard::world {
namespace {

using imaging::PictureGeometry;
using imaging::Pixel;

/// Collects where the pixels of a thing lie in a picture.
class Extent {
 public:
    void add(std::uint32_t row, std::uint32_t left, std::uint32_t right) {
        left_ = std::min(left_, left);
        right_ = std::max(right_, right);
        top_ = std::min(top_, row);
        bottom_ = row;
    }
    bool empty() const { return right_ == 0; }
    TruthBox box() const { return {left_, top_, right_ - left_, bottom_ - top_ + 1}; }

 private:
    std::uint32_t left_ = PictureGeometry::kNoColumn, right_ = 0, top_ = left_, bottom_ = 0;
};

/// The picture's columns that show a run of sensor pixels: the first one, and behind the last one.
class Columns {
 public:
    explicit Columns(const PictureGeometry& picture) : columns_(picture.columns) {}

    struct Found {
        std::uint32_t left = 0, right = 0;
        bool complete = false;
        bool empty() const { return right == 0; }
    };
    Found of(Run run) const {
        Found found;
        std::int64_t seen = 0;
        for (std::uint32_t i = 0; i < columns_.size(); ++i) {
            if (columns_[i] == PictureGeometry::kNoColumn || columns_[i] < run.begin ||
                columns_[i] >= run.end)
                continue;
            if (seen++ == 0) found.left = i;
            found.right = i + 1;
        }
        found.complete = seen >= run.end - run.begin;
        return found;
    }

 private:
    const std::vector<std::uint32_t>& columns_;
};

/// Picture rows that follow each other and show parts of one thing.
struct Rows {
    std::uint32_t first = 0, last = 0;
    bool complete = false;
};

/// Each time that the picture comes by the belt's rows from `begin` to `end` - 1.
std::vector<Rows> passages(const PictureGeometry& picture, std::int64_t begin, std::int64_t end) {
    std::vector<Rows> result;
    bool inside = false;
    for (std::uint32_t i = 0; i < picture.rows.size(); ++i) {
        const bool now = picture.rows[i] >= begin && picture.rows[i] < end;
        if (now && !inside) result.push_back({.first = i});
        if (now) result.back().last = i;
        inside = now;
    }
    // Whole when the rows before and behind show what lies beside it, or its own ends.
    for (Rows& rows : result) {
        const std::int64_t ends[] = {picture.rows[rows.first], picture.rows[rows.last]};
        const bool begun = rows.first > 0 || ends[0] == begin || ends[0] == end - 1;
        const bool ended = rows.last + 1 < picture.rows.size() || ends[1] == begin || ends[1] == end - 1;
        rows.complete = begun && ended;
    }
    return result;
}

/// What the rows of a passage show of a defect.
std::optional<TruthDefect> seenDefect(const DefectShape& shape, const PartStream::Place& at,
                                      const PictureGeometry& picture, const Columns& columns,
                                      const Rows& rows) {
    Extent extent;
    bool whole = true;
    for (std::uint32_t y = rows.first; y <= rows.last; ++y) {
        const Run run = shape.runAt(picture.rows[y] - at.top);
        if (run.empty()) continue;
        const auto found = columns.of({at.left + run.begin, at.left + run.end});
        whole = whole && found.complete;
        if (!found.empty()) extent.add(y, found.left, found.right);
    }
    if (extent.empty()) return std::nullopt;
    const auto passed = passages(picture, at.top + shape.rows.begin, at.top + shape.rows.end);
    const bool lengthwise = std::ranges::any_of(passed, [&](const Rows& passage) {
        return passage.complete && passage.first >= rows.first && passage.last <= rows.last;
    });
    return TruthDefect{std::string(kDefectKinds[shape.defect->kind]), shape.severity, extent.box(),
                       whole && lengthwise};
}

}  // namespace

void PartsOnBelt::row(std::int64_t position, std::uint32_t first, std::span<Pixel> out) const {
    const std::size_t seen = width_ > first ? std::min<std::size_t>(out.size(), width_ - first) : 0;
    const std::int64_t rest = position % bare_.height;
    const auto line = static_cast<std::uint32_t>(rest < 0 ? rest + bare_.height : rest);
    if (bare_.width == 1) {
        std::fill_n(out.begin(), seen, bare_.at(0, line));
    } else {
        for (std::size_t i = 0; i < seen; ++i)
            out[i] = bare_.at(static_cast<std::uint32_t>((first + i) % bare_.width), line);
    }
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(seen), out.end(), Pixel{});
    for (const PartStream& stream : streams_) stream.draw(position, first, out.first(seen));
}

PictureTruth PartsOnBelt::truth(const PictureGeometry& picture) const {
    PictureTruth truth{.number = 0,
                       .width = static_cast<std::uint32_t>(picture.columns.size()),
                       .height = static_cast<std::uint32_t>(picture.rows.size())};
    if (picture.rows.empty()) return truth;
    const auto [lowest, highest] = std::ranges::minmax(picture.rows);
    const Columns columns(picture);
    for (std::size_t index = 0; index < streams_.size(); ++index) {
        const PartStream& stream = streams_[index];
        for (std::int64_t number = stream.firstBehind(lowest); number < stream.count(); ++number) {
            const PartStream::Place at = stream.place(number);
            if (at.top > highest) break;
            const auto across = columns.of({at.left, at.left + stream.width()});
            if (across.empty()) continue;
            const DefectShapes defects = stream.defects(number);
            for (const Rows& rows : passages(picture, at.top, at.top + stream.height())) {
                TruthPart& part = truth.parts.emplace_back();
                part.name = stream.name();
                part.stream = static_cast<std::uint32_t>(index);
                part.number = number;
                part.box = {across.left, rows.first, across.right - across.left, rows.last - rows.first + 1};
                part.complete = rows.complete && across.complete;
                for (const DefectShape& shape : defects.all()) {
                    if (auto seen = seenDefect(shape, at, picture, columns, rows))
                        part.defects.push_back(*seen);
                }
            }
        }
    }
    std::ranges::stable_sort(truth.parts, {}, [](const TruthPart& part) { return part.box.top; });
    return truth;
}

// ---- light barriers ----

LightBarrier::Ends LightBarrier::endsOf(const PartStream& stream, std::int64_t number) const {
    const std::int64_t top = stream.place(number).top;
    return {static_cast<double>(top) * objectPixel_ - before_,
            static_cast<double>(top + stream.height()) * objectPixel_ - before_};
}

/// A part that ends near a position, none of those before it behind the position.
std::int64_t LightBarrier::firstNear(const PartStream& stream, double position) const {
    const double pixels = std::clamp(std::floor((position + before_) / objectPixel_) - 2, -0x1p60, 0x1p60);
    return stream.firstBehind(static_cast<std::int64_t>(pixels));
}

bool LightBarrier::broken(double position) const {
    for (const PartStream& stream : belt_->streams()) {
        for (std::int64_t number = firstNear(stream, position); number < stream.count(); ++number) {
            const Ends ends = endsOf(stream, number);
            if (ends.begin > position) break;
            if (position < ends.end) return true;
        }
    }
    return false;
}

bool LightBarrier::level(double position) const {
    return broken(position) == high_;
}

double LightBarrier::nextAbove(const PartStream& stream, double position) const {
    for (std::int64_t number = firstNear(stream, position); number < stream.count(); ++number) {
        const Ends ends = endsOf(stream, number);
        if (ends.begin > position) return ends.begin;
        if (ends.end > position) return ends.end;
    }
    return std::numeric_limits<double>::infinity();
}

double LightBarrier::nextBelow(const PartStream& stream, double position) const {
    double result = -std::numeric_limits<double>::infinity();
    // The parts from one before those that may reach beyond the position.
    const std::int64_t from = std::max<std::int64_t>(firstNear(stream, position) - 1, 0);
    for (std::int64_t number = from; number < stream.count(); ++number) {
        const Ends ends = endsOf(stream, number);
        if (ends.begin > position) break;
        result = std::max(result, ends.end <= position ? ends.end : ends.begin);
    }
    return result;
}

namespace {

// Parts that touch each other give no edge. A barrier that so many of them keep broken counts as broken for
// good.
constexpr int kMostTouching = 4096;

}  // namespace

double LightBarrier::edgeAbove(double position) const {
    const bool now = broken(position);
    for (int i = 0; i < kMostTouching && std::isfinite(position); ++i) {
        double next = std::numeric_limits<double>::infinity();
        for (const PartStream& stream : belt_->streams()) next = std::min(next, nextAbove(stream, position));
        if (!std::isfinite(next) || broken(next) != now) return next;
        position = next;
    }
    return std::numeric_limits<double>::infinity();
}

double LightBarrier::edgeBelow(double position) const {
    for (int i = 0; i < kMostTouching; ++i) {
        double next = -std::numeric_limits<double>::infinity();
        for (const PartStream& stream : belt_->streams()) next = std::max(next, nextBelow(stream, position));
        if (!std::isfinite(next)) return next;
        // The level just below an edge is the one above the edge before it.
        const double before = std::nextafter(next, -std::numeric_limits<double>::infinity());
        if (broken(before) != broken(next)) return next;
        position = before;
    }
    return -std::numeric_limits<double>::infinity();
}

}  // namespace virtualboard::world
