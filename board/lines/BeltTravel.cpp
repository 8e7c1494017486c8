#include "board/lines/BeltTravel.h"

#include <algorithm>
#include <cmath>

namespace virtualboard {

namespace {

constexpr double kSecond = 1e9;  // ns

BoardTime nanoseconds(double seconds) {
    constexpr auto kLatest = static_cast<double>(BoardClock::kLatest);
    return static_cast<BoardTime>(std::clamp(std::round(seconds * kSecond), 0.0, kLatest));
}

}  // namespace

double BeltTravel::Stretch::speedAt(BoardTime time) const {
    return speed + acceleration * (static_cast<double>(time - from) / kSecond);
}

double BeltTravel::Stretch::positionAt(BoardTime time) const {
    const double since = static_cast<double>(time - from) / kSecond;
    return position + (speed + acceleration * since / 2) * since;
}

int BeltTravel::Stretch::direction() const {
    const double sign = speed != 0 ? speed : acceleration;
    return sign > 0 ? 1 : sign < 0 ? -1 : 0;
}

BoardTime BeltTravel::Stretch::reaches(double target, BoardTime after) const {
    if (direction() == 0) return until;
    const double way = target - position;
    double since = way / speed;
    if (acceleration != 0) {
        const double root = speed * speed + 2 * acceleration * way;
        if (root < 0) return until;
        // The form without a difference of near numbers; the speed keeps its sign.
        since = 2 * way / (speed + std::copysign(std::sqrt(root), static_cast<double>(direction())));
    }
    if (!(since < static_cast<double>(until - from) / kSecond)) return until;
    return std::max(after + 1, from + static_cast<BoardTime>(std::ceil(std::max(since, 0.0) * kSecond)));
}

BeltTravel::BeltTravel(const imaging::Belt& belt, BoardTime given, double start)
    : belt_(belt), given_(given), travelled_(start) {
    const auto& profile = belt.profile;
    if (profile.empty()) {
        add(0, 0, belt.speed, belt.speed);
        return;
    }
    cycle_ = nanoseconds(belt.profilePeriod);
    const double end = cycle_ > 0 ? static_cast<double>(cycle_) / kSecond : profile.back().at;
    double time = 0, speed = profile.front().speed;
    for (const imaging::SpeedPoint& point : profile) {
        const double at = std::min(point.at, end);
        const double cut = point.at > time ? (at - time) / (point.at - time) : 1;
        const double reached = speed + (point.speed - speed) * cut;
        add(time, at, speed, reached);
        time = std::max(time, at);
        speed = reached;
    }
    add(time, end, speed, speed);
    cycleTravel_ = travelled_ - start;
}

/// Adds what happens up to a time, in two legs where the belt turns round.
void BeltTravel::add(double from, double until, double speed, double endSpeed) {
    const double length = until - from;
    if (length > 0 && speed * endSpeed < 0) {
        const double turn = from + length * speed / (speed - endSpeed);
        add(from, turn, speed, 0);
        add(turn, until, 0, endSpeed);
        return;
    }
    const double acceleration = length > 0 ? (endSpeed - speed) / length : 0;
    if (!legs_.empty() && legs_.back().from >= from) legs_.pop_back();
    legs_.push_back({from, travelled_, speed, acceleration});
    if (length > 0) travelled_ += (speed + endSpeed) / 2 * length;
}

BeltTravel::Stretch BeltTravel::at(BoardTime time) const {
    const BoardTime since = std::max<BoardTime>(0, time - given_);
    const BoardTime cycles = cycle_ > 0 ? since / cycle_ : 0;
    const BoardTime begin = given_ + cycles * cycle_;
    const auto startOf = [&](const Leg& leg) { return begin + nanoseconds(leg.from); };
    auto next = std::upper_bound(legs_.begin() + 1, legs_.end(), time,
                                 [&](BoardTime t, const Leg& leg) { return t < startOf(leg); });
    const Leg& leg = *(next - 1);
    const BoardTime end = cycle_ > 0 ? begin + cycle_ : BoardClock::kLatest * 2;
    return {.from = startOf(leg),
            .until = next != legs_.end() ? std::min(startOf(*next), end) : end,
            .position = leg.position + static_cast<double>(cycles) * cycleTravel_,
            .speed = leg.speed,
            .acceleration = leg.acceleration};
}

}  // namespace virtualboard
