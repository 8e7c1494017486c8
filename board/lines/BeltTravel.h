#pragma once

#include <vector>

#include "board/lines/BoardClock.h"
#include "marovine/World.h"

namespace virtualboard {

/// Where the belt is: the integral of its speed since it was given to the board. Immutable.
class BeltTravel {
 public:
    BeltTravel() : BeltTravel({}, 0) {}
    /// `given`: when the belt was given to the board, at position 0. `start` moves that position, in mm.
    BeltTravel(const imaging::Belt& belt, BoardTime given, double start = 0);

    /// A time in which the speed changes evenly and never turns its sign.
    struct Stretch {
        BoardTime from = 0, until = 0;
        double position = 0;      ///< mm, at `from`
        double speed = 0;         ///< mm/s, at `from`
        double acceleration = 0;  ///< mm/s²

        double positionAt(BoardTime time) const;
        double speedAt(BoardTime time) const;
        bool steady() const { return acceleration == 0; }
        /// 1 forwards, -1 backwards, 0 at rest.
        int direction() const;
        /// The first time of this stretch, after `from`, at which the belt has reached a position that lies
        /// in its direction; `until` where it does not.
        BoardTime reaches(double position, BoardTime from) const;
    };

    /// The stretch at a time: from <= time < until.
    Stretch at(BoardTime time) const;
    double position(BoardTime time) const { return at(time).positionAt(time); }
    const imaging::Belt& belt() const { return belt_; }

 private:
    struct Leg {
        double from, position, speed, acceleration;  // s, mm, mm/s, mm/s²
    };
    void add(double from, double until, double speed, double endSpeed);

    imaging::Belt belt_;
    BoardTime given_ = 0;
    std::vector<Leg> legs_;   ///< of one period, from second 0 on
    double cycleTravel_ = 0;  ///< mm in one period
    double travelled_ = 0;    ///< mm, while the legs are put together
    BoardTime cycle_ = 0;     ///< ns; 0: the profile does not repeat
};

}  // namespace virtualboard
