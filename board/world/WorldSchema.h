#pragma once

#include <string>

namespace virtualboard::world {

/// The schema of world files (JSON Schema 2020-12), made from the tables of WorldFields.h.
std::string worldSchema();

}  // namespace virtualboard::world
