#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "board/imaging/BeltSurface.h"
#include "board/imaging/PictureGeometry.h"
#include "board/lines/BeltPattern.h"
#include "board/world/PartStream.h"
#include "marovine/Truth.h"

namespace virtualboard::world {

/// The belt of a world with all that lies on it. Immutable, thread-safe.
class PartsOnBelt : public imaging::BeltSurface {
 public:
    /// The bare belt: a picture, repeated, of at least one pixel; black beside `width` columns.
    PartsOnBelt(imaging::Image bare, std::uint32_t width, std::vector<PartStream> streams)
        : bare_(std::move(bare)), width_(width), streams_(std::move(streams)) {}

    void row(std::int64_t position, std::uint32_t first, std::span<imaging::Pixel> out) const override;

    /// What a picture shows; its number is left to the caller.
    PictureTruth truth(const imaging::PictureGeometry& picture) const;

    const std::vector<PartStream>& streams() const { return streams_; }

 private:
    imaging::Image bare_;
    std::uint32_t width_;
    std::vector<PartStream> streams_;
};

/// A light barrier across the belt of a world: broken while a part is between its ends.
class LightBarrier : public BeltPattern {
 public:
    /// `before`: mm of belt from the barrier to the camera's line.
    LightBarrier(std::shared_ptr<const PartsOnBelt> belt, double objectPixel, double before,
                 bool highWhenBroken)
        : belt_(std::move(belt)), objectPixel_(objectPixel), before_(before), high_(highWhenBroken) {}

    bool level(double position) const override;
    double edgeAbove(double position) const override;
    double edgeBelow(double position) const override;

 private:
    struct Ends {
        double begin, end;  // belt positions at which a part breaks the barrier and leaves it
    };
    Ends endsOf(const PartStream& stream, std::int64_t number) const;
    bool broken(double position) const;
    double nextAbove(const PartStream& stream, double position) const;
    double nextBelow(const PartStream& stream, double position) const;
    std::int64_t firstNear(const PartStream& stream, double position) const;

    std::shared_ptr<const PartsOnBelt> belt_;
    double objectPixel_, before_;
    bool high_;
};

}  // namespace virtualboard::world
