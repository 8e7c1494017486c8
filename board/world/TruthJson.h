#pragma once

#include <string>

#include "marovine/Truth.h"

namespace virtualboard::world {

/// The ground truth of a picture as JSON, in one line.
std::string truthJson(const PictureTruth& truth);

}  // namespace virtualboard::world
