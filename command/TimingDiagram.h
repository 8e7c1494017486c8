#pragma once

/// Signals over time, as text for a terminal and as an SVG picture.

#include <string>
#include <variant>
#include <vector>

#include "command/Console.h"

namespace marovine::host {

/// A level that changes at some times.
struct LevelTrack {
    bool high = false;            ///< at the left edge
    std::vector<double> edges{};  ///< ms, ascending
};

/// A value at even distances over the whole diagram.
struct CurveTrack {
    std::string unit{};
    std::vector<double> values{};
};

/// Times that last, such as frames.
struct SpanTrack {
    struct Span {
        double from = 0, to = 0;  ///< ms
        std::string label{};
    };
    std::vector<Span> spans{};  ///< in their order
};

/// Tracks one below the other over the same time.
struct TimingDiagram {
    struct Track {
        std::string name;
        std::variant<LevelTrack, CurveTrack, SpanTrack> content;
    };

    double from = 0, to = 1;  ///< ms; `from` before `to`
    std::vector<Track> tracks{};

    /// Draws with box characters as wide as the console. Where a level changes too often to be drawn it is
    /// shaded.
    void print(const Console& console) const;
    /// The text of an SVG file.
    std::string svg() const;
};

}  // namespace marovine::host
