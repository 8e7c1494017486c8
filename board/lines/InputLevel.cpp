#include "board/lines/InputLevel.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace virtualboard {

namespace {

using Piece = InputLevel::Piece;
using Train = imaging::InputSignal::Train;

/// Whether a pulse of the train lasts at a time.
bool highIn(const Piece& piece, BoardTime time) {
    const std::uint64_t next = piece.rising.after(time);
    return next > piece.rising.begin && time < piece.rising.at(next - 1) + piece.width;
}

BoardTime endOf(const Train& train) {
    const long double last = static_cast<long double>(train.period) * static_cast<long double>(train.count);
    if (train.count == 0 || last > static_cast<long double>(BoardClock::kLatest))
        return ConstantLevel::kNever;
    return train.first + static_cast<BoardTime>(train.count - 1) * train.period + train.width;
}

[[noreturn]] void refuse(const std::string& what) {
    throw std::invalid_argument("this signal cannot be played: " + what);
}

}  // namespace

bool InputLevel::high(BoardTime time) const {
    const Piece piece = at(time);
    return piece.train ? highIn(piece, time) : piece.high;
}

std::optional<BoardTime> InputLevel::nextChange(BoardTime time, BoardTime until) const {
    const bool before = high(time);
    while (time < until) {
        const Piece piece = at(time);
        if (piece.train) {
            const std::uint64_t next = piece.rising.after(time);
            const bool lasts = highIn(piece, time);
            const BoardTime edge = lasts                     ? piece.rising.at(next - 1) + piece.width
                                   : next < piece.rising.end ? piece.rising.at(next)
                                                             : piece.until;
            if (edge < piece.until) return edge <= until ? std::optional(edge) : std::nullopt;
        }
        time = piece.until;
        if (time <= until && high(time) != before) return time;
    }
    return std::nullopt;
}

// ---- played signals ----

PlayedLevel::PlayedLevel(imaging::InputSignal signal, BoardTime given)
    : signal_(std::move(signal)), given_(given) {
    constexpr BoardTime kLatest = BoardClock::kLatest;
    for (std::size_t i = 0; i < signal_.edges.size(); ++i) {
        const BoardTime at = signal_.edges[i].at;
        const std::string name = "edge " + std::to_string(i) + " at " + std::to_string(at) + " ns ";
        if (at < 0 || at > kLatest) refuse(name + "lies outside of 0 to 4e18 ns");
        if (i > 0 && at <= signal_.edges[i - 1].at) refuse(name + "does not come after the one before");
    }
    for (std::size_t i = 0; i < signal_.trains.size(); ++i) {
        const Train& train = signal_.trains[i];
        const std::string name = "train " + std::to_string(i) + " ";
        if (train.first < 0 || train.first > kLatest) refuse(name + "does not begin within 0 to 4e18 ns");
        if (train.width < 1) refuse(name + "has pulses without width");
        if (train.period <= train.width || train.period > kLatest)
            refuse(name + "needs a period above its pulses' width and up to 4e18 ns");
    }
}

Piece PlayedLevel::at(BoardTime time) const {
    const BoardTime now = time - given_;
    const auto later = std::ranges::upper_bound(signal_.edges, now, {}, &imaging::InputSignal::Edge::at);
    Piece piece{.until = later != signal_.edges.end() ? given_ + later->at : ConstantLevel::kNever,
                .high = later != signal_.edges.begin() ? (later - 1)->high : signal_.high};
    if (piece.high) return piece;
    const Train* only = nullptr;
    unsigned running = 0;
    const auto endsAt = [&](BoardTime at) { piece.until = std::min(piece.until, given_ + at); };
    for (const Train& train : signal_.trains) {
        const BoardTime end = endOf(train);
        if (now >= end) continue;
        if (now < train.first) {
            endsAt(train.first);
            continue;
        }
        only = &train;
        ++running;
        if (end != ConstantLevel::kNever) endsAt(end);
    }
    if (running == 1) {
        piece.train = true;
        piece.rising = {.origin = given_ + only->first,
                        .time = {.step = static_cast<double>(only->period)},
                        .end = only->count != 0 ? only->count : Pulses::kEndless};
        piece.width = only->width;
    } else if (running > 1) {  // where trains overlap, level by level
        for (const Train& train : signal_.trains) {
            if (now < train.first || now >= endOf(train)) continue;
            const BoardTime inside = (now - train.first) % train.period;
            const bool high = inside < train.width;
            piece.high = piece.high || high;
            endsAt(now - inside + (high ? train.width : train.period));
        }
    }
    return piece;
}

// ---- patterns on the belt ----

Piece PatternLevel::at(BoardTime time) const {
    const BeltTravel::Stretch stretch = travel_->at(time);
    const double position = stretch.positionAt(time);
    Piece piece{.until = stretch.until, .high = pattern_->level(position)};
    if (const int direction = stretch.direction(); direction != 0) {
        const double edge = direction > 0 ? pattern_->edgeAbove(position) : pattern_->edgeBelow(position);
        piece.until = std::min(piece.until, stretch.reaches(edge, time));
    }
    return piece;
}

// ---- the filter ----

void DebouncedInput::start(std::shared_ptr<const InputLevel> level, BoardTime debounce, BoardTime now) {
    level_ = std::move(level);
    debounce_ = debounce;
    now_ = seen_ = now;
    high_ = level_->high(now);
    candidate_.reset();
}

void DebouncedInput::change(std::shared_ptr<const InputLevel> level, BoardTime debounce) {
    level_ = std::move(level);
    debounce_ = debounce;
    const bool high = level_->high(seen_);
    if (high == high_)
        candidate_.reset();
    else if (!candidate_)
        candidate_ = Candidate{seen_, high};
}

DebouncedInput::Step DebouncedInput::advance(BoardTime until, bool trains) {
    int left = 1000;  // changes too short to count, before somebody else gets his turn
    while (now_ < until && left-- > 0) {
        const InputLevel::Piece piece = level_->at(seen_);
        if (piece.train && seen_ < until) {
            if (const auto step = train(piece, until, trains)) return *step;
        }
        const auto change = level_->nextChange(seen_, until);
        if (candidate_ && candidate_->at + debounce_ <= std::min(until, change.value_or(until))) {
            now_ = std::max(now_, candidate_->at + debounce_);
            high_ = candidate_->high;
            Step step{.through = now_, .kind = Step::Kind::Change, .high = high_};
            const InputLevel::Piece from = level_->at(candidate_->at);
            if (high_ && from.train) {  // told by the train's own rule
                step.rising = from.rising.between(candidate_->at - 1, candidate_->at).delayed(debounce_);
            }
            candidate_.reset();
            return step;
        }
        if (!change) {
            now_ = seen_ = until;
            break;
        }
        seen_ = *change;
        const bool high = level_->high(seen_);
        candidate_ = high != high_ ? std::optional(Candidate{seen_, high}) : std::nullopt;
    }
    now_ = std::max(now_, std::min(seen_, until));
    return {.through = now_};
}

/// What a train brings without a look at each of its edges.
std::optional<DebouncedInput::Step> DebouncedInput::train(const InputLevel::Piece& piece, BoardTime until,
                                                          bool whole) {
    const auto gap = static_cast<BoardTime>(piece.rising.time.step) - piece.width;
    const BoardTime end = std::min(piece.until, until);
    if (high_ ? gap < debounce_ : piece.width < debounce_) {  // it changes nothing
        seen_ = end;
        const std::uint64_t next = piece.rising.after(seen_);
        const bool lasts = highIn(piece, seen_) && seen_ < piece.until;
        candidate_.reset();
        if (seen_ < piece.until && lasts != high_ && next > piece.rising.begin) {
            const BoardTime rise = piece.rising.at(next - 1);
            candidate_ = Candidate{lasts ? rise : rise + piece.width, lasts};
        } else if (seen_ == piece.until && level_->high(seen_) != high_) {
            candidate_ = Candidate{seen_, !high_};
        }
        return std::nullopt;
    }
    if (!whole || high_ || candidate_ || gap < debounce_ || piece.width < debounce_ || highIn(piece, seen_))
        return std::nullopt;
    // Pulses that are over by then; the last ones come edge by edge.
    const Pulses over = piece.rising.between(seen_, end - piece.width - debounce_);
    if (over.count() < 2) return std::nullopt;
    seen_ = over.last() + piece.width;
    now_ = std::max(now_, seen_ + debounce_);
    return Step{
        .through = now_, .kind = Step::Kind::Train, .rising = over.delayed(debounce_), .width = piece.width};
}

std::optional<BoardTime> DebouncedInput::notBefore() const {
    if (candidate_) return candidate_->at + debounce_;
    // A belt that swings between two edges goes on for ever: what has not been found soon is left for later.
    constexpr int kPieces = 1000;
    BoardTime seen = seen_;
    for (int left = kPieces; left > 0; --left) {
        const BoardTime end = std::min(level_->at(seen).until, ConstantLevel::kNever - 1);
        if (const auto change = level_->nextChange(seen, end)) return *change + debounce_;
        if (end == ConstantLevel::kNever - 1) return std::nullopt;
        seen = end;
    }
    return seen + debounce_;
}

}  // namespace virtualboard
