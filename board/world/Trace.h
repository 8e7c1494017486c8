#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "marovine/World.h"

namespace virtualboard::world {

/// Reads a recorded signal from a CSV file: rows of a time in ms and the level from then on, divided by a
/// comma, a semicolon or a tab; a first row without any number is a heading. `high` is the
/// level before the first row. Rows that change nothing are left
/// out. Throws `std::runtime_error` that says what is wrong and where.
imaging::InputSignal readTrace(const std::filesystem::path& file, bool high, std::size_t mostEdges);

/// ms as the board's ns.
std::int64_t nanoseconds(double milliseconds);

}  // namespace virtualboard::world
