#pragma once

/// The shaft encoder on the belt's drive, and the filter that makes line triggers of its tracks.

#include <array>
#include <memory>
#include <optional>

#include "board/imaging/Randomness.h"
#include "board/imaging/Settings.h"
#include "board/lines/InputLevel.h"

namespace virtualboard {

/// A track of the encoder: high on the first half of each pitch, from `phase` pitches on. Track A has the
/// phase 0, track B lies a quarter behind it.
class EncoderTrack : public BeltPattern {
 public:
    EncoderTrack(const imaging::Encoder& encoder, double pitch, double phase)
        : encoder_(encoder), random_(encoder.seed), pitch_(pitch), phase_(phase) {}

    bool level(double position) const override;
    double edgeAbove(double position) const override;
    double edgeBelow(double position) const override;

 private:
    bool present(double pulse) const;
    /// Where a pulse begins (or ends).
    double edge(double pulse, bool end) const;

    static std::uint64_t placeOf(double pulse) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(pulse));
    }

    imaging::Encoder encoder_;
    imaging::Randomness random_;
    double pitch_, phase_;
};

/// The debouncing time of the line trigger's inputs in ns.
inline BoardTime lineDebounce(const imaging::LineSettings& settings) {
    return toCycles(settings.lineDebouncing);
}

/// What the filter does with steps of the encoder: passes forward ones on, and holds those back that only
/// make up for steps backwards.
class Compensation {
 public:
    /// The filter's counter has 20 bits.
    static constexpr std::uint32_t kMost = 0xFFFFF;

    void configure(bool on) { on_ = on; }
    void set(std::uint32_t count) { count_ = std::min(count, kMost); }
    std::uint32_t count() const { return count_; }

    /// Steps forwards; returns how many of them, the first ones, are held back.
    std::uint64_t forward(std::uint64_t steps) {
        const std::uint64_t held = on_ ? std::min<std::uint64_t>(steps, count_) : 0;
        count_ -= static_cast<std::uint32_t>(held);
        return held;
    }
    void backward(std::uint64_t steps) {
        if (on_) count_ += static_cast<std::uint32_t>(std::min<std::uint64_t>(steps, kMost - count_));
    }

 private:
    bool on_ = true;
    std::uint32_t count_ = 0;
};

/// The line trigger as its inputs make it, before it is scaled down: rising edges of input A, or steps of the
/// encoder on inputs A and B. A step lies at an edge of the tracks: x1 at A's rising edge, x2 at B's as well,
/// x4 at every edge; crossed the other way it is a step backwards.
class LineTrigger {
 public:
    /// The pulses up to `through`; there are no others up to then.
    struct Step {
        BoardTime through = 0;
        Pulses pulses{};
    };
    /// Where inputs A and B get their levels from. A faultless encoder that drives both (A alone without the
    /// filter) is followed by the belt's way and not edge by edge.
    struct Wiring {
        std::shared_ptr<const InputLevel> a, b;
        bool straightFromEncoder = false;
        std::shared_ptr<const BeltTravel> travel;

        bool operator==(const Wiring&) const = default;
    };

    /// Begins at a time.
    void start(const imaging::LineSettings& settings, Wiring wiring, BoardTime now);
    /// Takes over another state of things from now on.
    void configure(const imaging::LineSettings& settings, Wiring wiring, BoardTime now);

    /// Goes on to `until`, or not as far.
    Step advance(BoardTime until);
    Compensation& compensation() { return compensation_; }
    const Compensation& compensation() const { return compensation_; }
    /// No pulse comes before this time; nothing where none will.
    std::optional<BoardTime> notBefore() const;
    /// ns that pulses lie apart at least, as far as that is known.
    double shortestGap() const {
        return wiring_.straightFromEncoder && stretchFrom_ != kNoStretch ? steps_.shortestGap() : 0;
    }

 private:
    enum class Filter { None, X1, X2, X4 };

    Step followBelt(BoardTime until);
    Step followInputA(BoardTime until);
    Step followTracks(BoardTime until);
    Pulses stepsOf(const BeltTravel::Stretch& stretch, std::int64_t from) const;
    /// The step that comes next in the belt's direction.
    std::int64_t upcoming() const { return direction_ > 0 ? next_ : next_ - 1; }
    double placeOf(std::int64_t step) const;
    double pixels(double millimetres) const;
    void enter(const BeltTravel::Stretch& stretch);
    Pulses single(BoardTime at) const;

    imaging::LineSettings settings_;
    Wiring wiring_;
    Filter filter_ = Filter::None;
    Compensation compensation_;
    BoardTime now_ = 0;

    // Straight from the belt.
    static constexpr BoardTime kNoStretch = -1;
    BoardTime stretchFrom_ = kNoStretch;  ///< the stretch that the belt is in
    int direction_ = 0;
    std::int64_t next_ = 0;  ///< the first step above the belt's position
    Pulses steps_;           ///< those still to come in a stretch of even speed
    // From inputs.
    DebouncedInput a_, b_;
    std::optional<DebouncedInput::Step> pendingA_, pendingB_;
    bool levelA_ = false, levelB_ = false;
};

}  // namespace virtualboard
