#pragma once

/// A world that is ready to stand around a board.

#include <filesystem>
#include <map>
#include <memory>
#include <string_view>

#include "board/lines/BeltPattern.h"
#include "board/world/PartsOnBelt.h"
#include "marovine/World.h"
#include "marovine/WorldError.h"

namespace virtualboard::world {

struct World {
    imaging::Belt belt{};
    imaging::Encoder encoder{};
    imaging::CameraTraits camera{};
    imaging::Light light{};
    std::map<unsigned, imaging::InputSignal> inputs{};                  ///< by input
    std::map<unsigned, std::shared_ptr<const BeltPattern>> barriers{};  ///< by input
    std::shared_ptr<const PartsOnBelt> parts{};                         ///< never null
};

/// Reads a world from a file. Throws `WorldError`, also when the file cannot be read.
std::shared_ptr<const World> loadWorld(const std::filesystem::path& file);
/// Reads a world from its text; names of files in it are relative to `folder`. Throws `WorldError`.
std::shared_ptr<const World> readWorld(std::string_view json, const std::filesystem::path& folder);

}  // namespace virtualboard::world
