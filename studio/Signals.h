#pragma once

/// What the board's signals did lately, as its events tell.

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "command/Json.h"
#include "marovine/Control.h"
#include "studio/Access.h"

namespace marovine::studio {

/// Follows the board's events: edges at inputs and frames always, lines only while somebody asks, as they are
/// many. Events are told as they come, each up to 20 times a second.
class Signals {
 public:
    /// `tell` is called in a thread of the board's.
    Signals(host::Applet& applet, std::function<void(host::Json)> tell);
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    /// Ends the events first.
    ~Signals() { end(); }

    /// The last `ms` milliseconds; `wiring` is the document of the command of that name.
    host::Json json(double ms, const host::Json& wiring);
    /// Lets the lines go when nobody has asked for long.
    void tick();
    void end();

 private:
    using Clock = std::chrono::steady_clock;

    /// A level that events tell of: an input, or that a line or frame is under way.
    using Track = std::string_view;  ///< the SDK constant of the signal

    struct Edge {
        std::int64_t at = 0;  ///< ns of the board's clock
        bool high = false;
    };
    struct Meaning {
        std::string event;             ///< the SDK's name
        std::optional<Track> track{};  ///< which level it changes
        bool high = false;
        /// Each event has its own: one that comes with every line leaves room for an input's edge.
        RateLimit told{20, 20};
        std::int64_t untold = 0;
    };

    void happened(const virtualboard::Event& event);
    std::vector<Edge> edgesOf(std::string_view signal, std::int64_t since) const;
    std::optional<bool> levelAtStart(std::string_view signal, const std::vector<Edge>& edges) const;
    host::Json row(const std::string& name, const char* kind, std::string_view constant, bool inverted,
                   std::int64_t now, double ms) const;

    host::Applet& applet_;
    std::function<void(host::Json)> tell_;
    std::map<unsigned, Meaning> meanings_;  ///< by number of the event
    std::uint64_t lineEvents_ = 0;          ///< their mask

    mutable std::mutex mutex_;
    std::map<Track, std::deque<Edge>> tracks_;

    Clock::time_point asked_{};
    virtualboard::EventSubscription lines_;
    virtualboard::EventSubscription others_;
};

}  // namespace marovine::studio
