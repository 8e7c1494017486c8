#include "studio/Signals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "client/VirtualBoard.h"
#include "tables/EnumerationTables.h"
#include "tables/EventTable.h"
#include "tables/SignalTable.h"

namespace marovine::studio {

using host::Json;

namespace {

constexpr std::int64_t kNanosecondsPerMs = 1'000'000;
constexpr std::int64_t kKept = 1'500 * kNanosecondsPerMs;  ///< of board time
constexpr std::size_t kMostKept = 50'000;                  ///< edges of a signal
constexpr std::size_t kMostShown = 2'000;
constexpr std::int64_t kPulse = 1'000;  ///< ns; how long a signal that is a mere moment is shown
constexpr auto kPatience = std::chrono::seconds(10);

constexpr std::string_view kLine = "FG_SIGNAL_CAM0_LVAL";
constexpr std::string_view kFrame = "FG_SIGNAL_CAM0_FVAL";

/// Events that begin or end a level other than an input's.
struct Boundary {
    std::string_view event;
    std::string_view signal;
    bool high;
};
constexpr std::array boundaries{Boundary{"FG_START_OF_FRAME_CAM_PORT_0", kFrame, true},
                                Boundary{"FG_END_OF_FRAME_CAM_PORT_0", kFrame, false},
                                Boundary{"FG_START_OF_LINE_CAM_PORT_0", kLine, true},
                                Boundary{"FG_END_OF_LINE_CAM_PORT_0", kLine, false}};

/// Signals that are a moment: the edge of a level.
struct Moment {
    std::string_view signal;
    std::string_view level;
    bool edge;  ///< true for the rising one
};
constexpr std::array moments{
    Moment{"FG_SIGNAL_CAM0_LINE_START", kLine, true}, Moment{"FG_SIGNAL_CAM0_LINE_END", kLine, false},
    Moment{"FG_SIGNAL_CAM0_FRAME_START", kFrame, true}, Moment{"FG_SIGNAL_CAM0_FRAME_END", kFrame, false}};

/// The bit of an input in FG_DIGIO_INPUT; nothing for other signals.
std::optional<unsigned> inputOf(std::string_view signal) {
    constexpr std::array<std::pair<std::string_view, unsigned>, 2> rows{
        {{"FG_SIGNAL_GPI_", 0U}, {"FG_SIGNAL_FRONT_GPI_", 8U}}};
    for (const auto& [start, first] : rows)
        if (signal.starts_with(start)) return first + static_cast<unsigned>(signal.back() - '0');
    return std::nullopt;
}

/// The signal whose edges an input's event tells: "FG_TRIGGER_INPUT3_RISING" is input 3.
std::string_view inputSignal(std::string_view event) {
    const bool front = event.find("FRONT_GPI") != event.npos;
    if (!front && event.find("INPUT") == event.npos) return {};
    const char digit = event[event.find_last_of('_') - 1];
    for (const auto& entry : SignalMappingAnalyzer_1Cam) {
        const std::string_view name = entry.constantName;
        const bool fits = name.starts_with(front ? "FG_SIGNAL_FRONT_GPI_" : "FG_SIGNAL_GPI_");
        if (fits && name.back() == digit) return name;
    }
    return {};
}

/// The mean distance of rising edges that come regularly.
Json periodIn(const auto& edges) {
    constexpr double kTolerance = 0.02;
    constexpr std::size_t kFewest = 3;
    std::vector<std::int64_t> rises;
    for (const auto& edge : edges)
        if (edge.high) rises.push_back(edge.at);
    if (rises.size() < kFewest) return {};
    const double mean =
        static_cast<double>(rises.back() - rises.front()) / static_cast<double>(rises.size() - 1);
    for (std::size_t i = 1; i < rises.size(); ++i)
        if (std::fabs(static_cast<double>(rises[i] - rises[i - 1]) - mean) > mean * kTolerance) return {};
    return mean / static_cast<double>(kNanosecondsPerMs);
}

}  // namespace

Signals::Signals(host::Applet& applet, std::function<void(Json)> tell)
    : applet_(applet), tell_(std::move(tell)) {
    auto& board = host::boardOf(applet);
    std::uint64_t others = 0;
    for (const auto& event : sdkEvents) {
        const unsigned number = board.eventNumber(event.designName);
        Meaning meaning{.event = event.sdkName};
        const std::string_view name = event.sdkName;
        if (const auto input = inputSignal(name); !input.empty()) {
            meaning.track = input;
            meaning.high = name.ends_with("_RISING");
        }
        for (const auto& boundary : boundaries) {
            if (boundary.event != name) continue;
            meaning.track = boundary.signal;
            meaning.high = boundary.high;
        }
        (meaning.track == kLine ? lineEvents_ : others) |= std::uint64_t{1} << number;
        meanings_[number] = std::move(meaning);
    }
    others_ = board.onEvents(others, [this](const auto& event) { happened(event); });
}

void Signals::end() {
    lines_.end();
    others_.end();
}

void Signals::happened(const virtualboard::Event& event) {
    const auto found = meanings_.find(event.number);
    if (found == meanings_.end()) return;
    Meaning& meaning = found->second;
    std::int64_t untold = 0;
    {
        const std::lock_guard lock(mutex_);
        if (meaning.track) {
            auto& edges = tracks_[*meaning.track];
            edges.push_back({event.time, meaning.high});
            while (edges.size() > kMostKept || edges.back().at - edges.front().at > kKept) edges.pop_front();
        }
        if (meaning.track == kLine) return;
        if (!meaning.told.take()) {
            ++meaning.untold;
            return;
        }
        untold = std::exchange(meaning.untold, 0);
    }
    tell_({{"name", meaning.event},
           {"atNs", event.time},
           {"count", event.count},
           {"payload", event.payload},
           {"left", untold + event.lost}});
}

std::vector<Signals::Edge> Signals::edgesOf(std::string_view signal, std::int64_t since) const {
    const auto* moment = std::ranges::find(moments, signal, &Moment::signal);
    const bool isMoment = moment != moments.end();
    std::vector<Edge> edges;
    const std::lock_guard lock(mutex_);
    const auto track = tracks_.find(isMoment ? moment->level : signal);
    if (track == tracks_.end()) return edges;
    for (const auto& edge : track->second) {
        if (edge.at < since) continue;
        if (!isMoment) {
            edges.push_back(edge);
        } else if (edge.high == moment->edge) {
            edges.push_back({edge.at, true});
            edges.push_back({edge.at + kPulse, false});
        }
    }
    if (edges.size() > kMostShown)
        edges.erase(edges.begin(), edges.end() - static_cast<std::ptrdiff_t>(kMostShown));
    return edges;
}

std::optional<bool> Signals::levelAtStart(std::string_view signal, const std::vector<Edge>& edges) const {
    if (signal == "GND" || signal == "VCC") return signal == "VCC";
    if (std::ranges::find(moments, signal, &Moment::signal) != moments.end()) return false;
    if (!edges.empty()) return !edges.front().high;
    if (const auto input = inputOf(signal)) {
        const auto levels = static_cast<std::uint32_t>(*host::numberOf(applet_.get("FG_DIGIO_INPUT")));
        return ((levels >> *input) & 1) != 0;
    }
    if (signal != kLine && signal != kFrame) return std::nullopt;  // the board tells nothing of it
    const std::lock_guard lock(mutex_);
    const auto track = tracks_.find(signal);
    return track != tracks_.end() && !track->second.empty() && track->second.back().high;
}

Json Signals::row(const std::string& name, const char* kind, std::string_view constant, bool inverted,
                  std::int64_t now, double ms) const {
    const auto since = now - static_cast<std::int64_t>(ms * static_cast<double>(kNanosecondsPerMs));
    auto edges = edgesOf(constant, since);
    const auto high = levelAtStart(constant, edges);
    const Json period = periodIn(edges);
    Json list = Json::array();
    for (const auto& edge : edges)
        list.push_back({{"atMs", static_cast<double>(edge.at - now) / static_cast<double>(kNanosecondsPerMs)},
                        {"high", edge.high != inverted}});
    return {{"name", name},
            {"kind", kind},
            {"constant", constant},
            {"known", high.has_value()},
            {"high", high.value_or(false) != inverted},
            {"edges", std::move(list)},
            {"periodMs", period}};
}

Json Signals::json(double ms, const Json& wiring) {
    auto& board = host::boardOf(applet_);
    const bool fresh = asked_ == Clock::time_point{};
    asked_ = Clock::now();
    if (fresh) lines_ = board.onEvents(lineEvents_, [this](const auto& event) { happened(event); });
    const std::int64_t now = board.time();
    Json rows = Json::array();
    for (const auto& entry : SignalMappingAnalyzer_1Cam) {
        const std::string_view constant = entry.constantName;
        if (constant == "GND" || constant == "VCC") continue;
        rows.push_back(
            row(entry.displayName, inputOf(constant) ? "input" : "trigger", constant, false, now, ms));
    }
    if (const auto* wires = wiring.as<Json::Array>())
        for (const auto& wire : *wires)
            rows.push_back(row(*wire.find("output")->as<std::string>(), "output",
                               *wire.find("source")->as<std::string>(), *wire.find("inverted")->as<bool>(),
                               now, ms));
    return {{"nowNs", now}, {"ms", ms}, {"signals", std::move(rows)}};
}

void Signals::tick() {
    if (asked_ == Clock::time_point{} || Clock::now() - asked_ < kPatience) return;
    asked_ = {};
    lines_.end();
}

}  // namespace marovine::studio
