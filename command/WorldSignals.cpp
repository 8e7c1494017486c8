#include "command/WorldSignals.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

#include "board/lines/BeltTravel.h"
#include "board/lines/InputLevel.h"
#include "board/lines/ShaftEncoder.h"
#include "board/lines/Signals.h"
#include "board/world/World.h"
#include "client/Grabber.h"
#include "client/VirtualBoard.h"

namespace marovine::host {

namespace {

using virtualboard::BeltTravel;
using virtualboard::BoardTime;
using virtualboard::InputLevel;

constexpr double kNanoseconds = 1e6;  // in a ms
constexpr std::size_t kMostEdges = 100'000;
constexpr std::size_t kSpeeds = 400;

BoardTime boardTime(double milliseconds) {
    return std::llround(milliseconds * kNanoseconds);
}

/// Refuses a drawing that nobody could read and that would take long.
void limitEdges(std::size_t edges) {
    if (edges > kMostEdges) {
        throw Failure("more than " + std::to_string(kMostEdges) +
                      " edges of one signal lie in this time: choose a shorter one with --from and --to");
    }
}

LevelTrack edgesOf(const InputLevel& level, double from, double to) {
    const BoardTime end = boardTime(to);
    BoardTime now = boardTime(from);
    LevelTrack track{.high = level.high(now)};
    while (const auto edge = level.nextChange(now, end)) {
        now = *edge;
        track.edges.push_back(static_cast<double>(now) / kNanoseconds);
        limitEdges(track.edges.size());
    }
    return track;
}

std::string inputName(unsigned input) {
    return input < 8 ? "input " + std::to_string(input) : "front input " + std::to_string(input - 8);
}

/// Events of the design as they come, by their numbers.
class Collector {
 public:
    Collector(virtualboard::Control& board, const std::vector<const char*>& names) : board_(board) {
        std::uint64_t mask = 0;
        for (const char* name : names) {
            const std::string full = std::string("Device1_Process1_Trigger_Events_Events_LVAL_FVAL_") + name;
            numbers_.push_back(board.eventNumber(full));
            mask |= std::uint64_t{1} << numbers_.back();
        }
        times_.resize(names.size());
        subscription_.emplace(board.waitEvents(mask, kRoom));
    }

    /// Lets time pass, in steps that leave no event out.
    void advance(double seconds) {
        constexpr double step = 0.01;
        for (double left = seconds; left > 0; left -= step) {
            board_.advanceClock(std::min(left, step));
            while (const auto event = subscription_->next(0)) {
                const auto at = std::ranges::find(numbers_, event->number) - numbers_.begin();
                auto& times = times_[static_cast<std::size_t>(at)];
                times.push_back(static_cast<double>(event->time) / kNanoseconds);
                if (event->lost > 0) limitEdges(kMostEdges + 1);
                limitEdges(times.size());
            }
        }
    }

    const std::vector<double>& times(std::size_t index) const { return times_[index]; }

 private:
    static constexpr std::uint32_t kRoom = 1 << 16;

    virtualboard::Control& board_;
    std::vector<unsigned> numbers_;
    std::vector<std::vector<double>> times_;
    std::optional<virtualboard::EventSubscription> subscription_;
};

/// Moments as pulses without width.
LevelTrack momentsOf(const std::vector<double>& times, double from) {
    LevelTrack track;
    for (const double time : times)
        if (time >= from) track.edges.insert(track.edges.end(), {time, time});
    return track;
}

}  // namespace

TimingDiagram outsideSignals(const virtualboard::world::World& world, double from, double to) {
    TimingDiagram diagram{.from = from, .to = to};
    const auto travel = std::make_shared<const BeltTravel>(world.belt, 0);
    CurveTrack speed{.unit = "mm/s"};
    for (std::size_t i = 0; i < kSpeeds; ++i) {
        const BoardTime time = boardTime(from + (to - from) * static_cast<double>(i) / (kSpeeds - 1));
        speed.values.push_back(travel->at(time).speedAt(time));
    }
    diagram.tracks.push_back({"belt", std::move(speed)});
    const auto add = [&](const std::string& name, const InputLevel& level) {
        diagram.tracks.push_back({name, edgesOf(level, from, to)});
    };
    const auto addTrack = [&](const char* name, double phase) {
        const auto track =
            std::make_shared<virtualboard::EncoderTrack>(world.encoder, world.belt.encoderPitch, phase);
        add(name, virtualboard::PatternLevel(track, travel));
    };
    addTrack("encoder A", 0);
    addTrack("encoder B", 0.25);
    for (const auto& [input, barrier] : world.barriers)
        add(inputName(input) + ", barrier", virtualboard::PatternLevel(barrier, travel));
    for (const auto& [input, signal] : world.inputs)
        add(inputName(input), virtualboard::PlayedLevel(signal, 0));
    return diagram;
}

void addBoardSignals(Applet& applet, TimingDiagram& diagram) {
    virtualboard::Control& board = boardOf(applet);
    const std::string select = "Device1_Process1_Trigger_Events_SelectCustomSignalEvent";
    board.force(select + "0_SelectSignal_Select", static_cast<std::uint32_t>(virtualboard::kExsync));
    board.force(select + "1_SelectSignal_Select", static_cast<std::uint32_t>(virtualboard::kFlash));
    Collector events(board, {"CustomSignalEvent0", "CustomSignalEvent1", "Cam0LineStart", "Cam0FrameStart",
                             "Cam0FrameEnd"});
    const Grabber grabber(applet);
    events.advance(diagram.to / 1000);
    diagram.tracks.push_back({"ExSync", momentsOf(events.times(0), diagram.from)});
    if (!events.times(1).empty())
        diagram.tracks.push_back({"flash", momentsOf(events.times(1), diagram.from)});
    diagram.tracks.push_back({"lines", momentsOf(events.times(2), diagram.from)});
    SpanTrack frames;
    const auto &starts = events.times(3), &ends = events.times(4);
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const double end = i < ends.size() ? ends[i] : diagram.to;
        if (end >= diagram.from)
            frames.spans.push_back({std::max(starts[i], diagram.from), end, std::to_string(i + 1)});
    }
    diagram.tracks.push_back({"frames", std::move(frames)});
}

}  // namespace marovine::host
