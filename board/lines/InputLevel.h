#pragma once

/// What stands at an input over time, and the filter behind it that keeps bouncing away.

#include <memory>
#include <optional>

#include "board/lines/BeltPattern.h"
#include "board/lines/BeltTravel.h"
#include "board/lines/Pulses.h"
#include "marovine/World.h"

namespace virtualboard {

/// A level over board time. Immutable.
class InputLevel {
 public:
    /// A time, from the one asked for up to `until`, in which the level is constant or one train of pulses.
    struct Piece {
        BoardTime until = 0;
        bool high = false;   ///< without a train
        bool train = false;  ///< pulses of `width` ns begin at `rising`, low in between
        Pulses rising{};     ///< endless in both directions as far as the piece goes
        BoardTime width = 0;
    };

    InputLevel() = default;
    InputLevel(const InputLevel&) = delete;
    InputLevel& operator=(const InputLevel&) = delete;
    virtual ~InputLevel() = default;
    virtual Piece at(BoardTime time) const = 0;

    bool high(BoardTime time) const;
    /// The first change of the level after a time; nothing up to `until`.
    std::optional<BoardTime> nextChange(BoardTime time, BoardTime until) const;
};

/// Always the same.
class ConstantLevel : public InputLevel {
 public:
    explicit ConstantLevel(bool high) : high_(high) {}
    Piece at(BoardTime) const override { return {.until = kNever, .high = high_}; }

    static constexpr BoardTime kNever = BoardClock::kLatest * 2;

 private:
    bool high_;
};

/// A signal that was given to an input at some time.
class PlayedLevel : public InputLevel {
 public:
    /// Throws `std::invalid_argument`, saying why, for edges out of order and for trains that are none.
    PlayedLevel(imaging::InputSignal signal, BoardTime given);
    Piece at(BoardTime time) const override;

 private:
    imaging::InputSignal signal_;
    BoardTime given_;
};

/// What a pattern on the belt shows as the belt moves.
class PatternLevel : public InputLevel {
 public:
    PatternLevel(std::shared_ptr<const BeltPattern> pattern, std::shared_ptr<const BeltTravel> travel)
        : pattern_(std::move(pattern)), travel_(std::move(travel)) {}
    Piece at(BoardTime time) const override;
    const BeltPattern* pattern() const { return pattern_.get(); }

 private:
    std::shared_ptr<const BeltPattern> pattern_;
    std::shared_ptr<const BeltTravel> travel_;
};

/// Follows a level through its filter: a change counts once it has lasted for the debouncing time, and then
/// that much later.
class DebouncedInput {
 public:
    /// What comes next: nothing up to `through`, a change at `through`, or rising edges up to `through`, of
    /// pulses that each last `width` ns.
    struct Step {
        BoardTime through = 0;
        enum class Kind { Nothing, Change, Train } kind = Kind::Nothing;
        bool high = false;  ///< after the change
        Pulses rising{};
        BoardTime width = 0;
    };

    /// Begins at a time, with the level that stands there then.
    void start(std::shared_ptr<const InputLevel> level, BoardTime debounce, BoardTime now);
    /// Takes over another level or time from now on; the filter goes on with what it has seen.
    void change(std::shared_ptr<const InputLevel> level, BoardTime debounce);

    /// Goes on to `until`, or not as far; `trains`: tells trains as such instead of edge by edge.
    Step advance(BoardTime until, bool trains);
    bool high() const { return high_; }
    const std::shared_ptr<const InputLevel>& level() const { return level_; }
    BoardTime debounce() const { return debounce_; }
    /// No change comes before this time, and none at all where there is no value.
    std::optional<BoardTime> notBefore() const;

 private:
    struct Candidate {
        BoardTime at;
        bool high;
    };
    std::optional<Step> train(const InputLevel::Piece& piece, BoardTime until, bool whole);

    std::shared_ptr<const InputLevel> level_ = std::make_shared<ConstantLevel>(false);
    BoardTime debounce_ = 0;
    BoardTime now_ = 0;   ///< told up to here
    BoardTime seen_ = 0;  ///< the level was looked at up to here
    bool high_ = false;
    std::optional<Candidate> candidate_;  ///< a change that has not lasted yet
};

}  // namespace virtualboard
