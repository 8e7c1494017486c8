#pragma once

/// What a picture of a world shows, known without looking at it.

#include <cstdint>
#include <string>
#include <vector>

namespace virtualboard {

/// Pixels and rows of a picture that a thing covers at most; never empty.
struct TruthBox {
    std::uint32_t left = 0, top = 0;
    std::uint32_t width = 0, height = 0;

    double centreX() const { return left + width / 2.0; }
    double centreY() const { return top + height / 2.0; }
    bool operator==(const TruthBox&) const = default;
};

/// A fault on a part, as far as the picture shows it.
struct TruthDefect {
    std::string kind{};   ///< as in the world file: "spot"
    double severity = 0;  ///< above 0, at most 1
    TruthBox box{};
    bool complete = false;  ///< whether the picture shows all of it
};

/// A part of which the picture shows something. A belt that runs backwards may show it twice.
struct TruthPart {
    std::string name{};        ///< as in the world file
    std::uint32_t stream = 0;  ///< which of the file's `parts` it comes from
    std::int64_t number = 0;   ///< among the parts of its stream, from 0
    TruthBox box{};
    bool complete = false;
    std::vector<TruthDefect> defects{};  ///< of which the picture shows something
};

struct PictureTruth {
    std::int64_t number = 0;  ///< of the picture
    std::uint32_t width = 0, height = 0;
    std::vector<TruthPart> parts{};  ///< in the order of their first rows
};

}  // namespace virtualboard
