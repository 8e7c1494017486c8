#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "board/imaging/Randomness.h"
#include "board/world/WorldFile.h"
#include "marovine/Image.h"

namespace virtualboard::world {

/// Some pixels of one row: from `begin` to `end` - 1.
struct Run {
    std::int64_t begin = 0, end = 0;
    bool empty() const { return begin >= end; }
};

/// A defect of one part, in pixels of its picture.
struct DefectShape {
    const DefectText* defect = nullptr;
    double severity = 1;
    Run columns{}, rows{};            ///< around all of it
    double centreX = 0, centreY = 0;  ///< of a spot or scratch
    double alongX = 0, alongY = 0;    ///< of a scratch: from its centre to its end
    double radius = 0;                ///< of a spot; half the width of a scratch

    /// What it covers of a row.
    Run runAt(std::int64_t row) const;
};

inline constexpr std::size_t kMostDefects = 16;

/// The defects of one part.
struct DefectShapes {
    std::array<DefectShape, kMostDefects> shapes;
    std::size_t count = 0;
    std::span<const DefectShape> all() const { return {shapes.data(), count}; }
};

/// Equal parts on the belt, one behind the other: where each of them lies and what is wrong with it follows
/// from its number and the seed, so that an endless stream takes no memory. Positions are belt pixels along
/// and sensor columns across. Immutable.
class PartStream {
 public:
    struct Place {
        std::int64_t top = 0, left = 0;
    };
    static constexpr std::int64_t kEndless = std::numeric_limits<std::int64_t>::max();

    /// `cover` may be empty for a picture without transparent pixels. The picture has the size that parts
    /// have on the belt; `text` is in mm.
    PartStream(PartsText text, imaging::Image picture, std::vector<std::uint8_t> cover, double objectPixel,
               imaging::Randomness random);

    const std::string& name() const { return text_.name; }
    std::int64_t width() const { return picture_.width; }
    std::int64_t height() const { return picture_.height; }
    std::int64_t count() const { return count_; }  ///< `kEndless` when there is no last one

    /// Where a part lies; its rows come behind those of all parts before it.
    Place place(std::int64_t number) const;
    /// The first part, at most two before it, that ends behind a position; `count()` when there is none.
    std::int64_t firstBehind(std::int64_t position) const;
    DefectShapes defects(std::int64_t number) const;

    /// Draws what the stream has at a belt position over `out`, the belt from column `first` on.
    void draw(std::int64_t position, std::uint32_t first, std::span<imaging::Pixel> out) const;

 private:
    std::optional<DefectShape> shape(const imaging::Randomness& random, const DefectText& defect) const;
    bool settle(const imaging::Randomness& random, DefectShape& shape) const;
    void drawRow(std::int64_t number, std::int64_t row, std::int64_t left, std::uint32_t first,
                 std::span<imaging::Pixel> out) const;

    PartsText text_;
    imaging::Image picture_;
    std::vector<std::uint8_t> cover_;
    double objectPixel_, start_, spacing_, jitter_;
    std::int64_t count_;
    imaging::Randomness random_;
};

}  // namespace virtualboard::world
