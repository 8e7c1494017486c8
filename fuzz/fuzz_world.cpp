/// Reads any text as a world. What is taken must draw, and its light barriers must tell the same from both
/// sides.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include "board/world/World.h"

namespace {

void walk(const virtualboard::BeltPattern& barrier) {
    double position = -10;
    for (int i = 0; i < 8; ++i) {
        const double next = barrier.edgeAbove(position);
        if (!std::isfinite(next)) return;
        if (!(next > position) || barrier.edgeBelow(next) != next) std::abort();
        if (barrier.level(next) == barrier.level(std::nextafter(next, -INFINITY))) std::abort();
        position = next;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace world = virtualboard::world;
    // Names of files lead nowhere but to the seeds' own pictures.
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const auto read = world::readWorld(text, std::filesystem::path(WORLD_FOLDER));
        std::vector<virtualboard::imaging::Pixel> row(64);
        for (const std::int64_t position :
             {std::int64_t{-1}, std::int64_t{0}, std::int64_t{300}, INT64_MAX / 4})
            read->parts->row(position, 0, row);
        virtualboard::imaging::PictureGeometry picture;
        for (std::int64_t i = 0; i < 64; ++i) {
            picture.rows.push_back(100 + i);
            picture.columns.push_back(static_cast<std::uint32_t>(i));
        }
        read->parts->truth(picture);
        for (const auto& [input, barrier] : read->barriers) walk(*barrier);
    } catch (const virtualboard::WorldError& error) {
        if (error.faults().empty()) std::abort();
    }
    return 0;
}
