#pragma once

namespace virtualboard {

/// A level that changes along the belt: what an encoder's track or a light barrier shows at a belt position.
/// Positions are mm that the belt has moved since it was given to the board, backward ones taken off.
/// Immutable, thread-safe.
class BeltPattern {
 public:
    BeltPattern() = default;
    BeltPattern(const BeltPattern&) = delete;
    BeltPattern& operator=(const BeltPattern&) = delete;
    virtual ~BeltPattern() = default;

    /// The level at a position; an edge's own position belongs to the level above it.
    virtual bool level(double position) const = 0;
    /// The next edge above a position (not at it); +infinity when there is none.
    virtual double edgeAbove(double position) const = 0;
    /// The next edge at or below a position; -infinity when there is none.
    virtual double edgeBelow(double position) const = 0;
};

}  // namespace virtualboard
