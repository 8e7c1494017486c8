#pragma once

/// What two configurations say differently, value by value.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "client/Client.h"

namespace marovine::host {

/// What one configuration says about a parameter.
struct DifferentSide {
    std::optional<Value> value;  ///< nothing when the file lacks it
    std::string note;            ///< what the file says, when that is not what a load reads
    bool hasPlace = true;        ///< whether a file can hold the value at all
};

struct Difference {
    Parameter parameter;
    DifferentSide first;
    DifferentSide second;
};

/// The parameters in which two files differ, in list order; an empty path is the applet as it is now. Values
/// are compared, not lines. Read-outs are left out unless `all`: they differ from moment to moment. When
/// `second` is the applet, tables that a file has no place for count as well. Throws `Failure` for a file
/// that cannot be read.
std::vector<Difference> differencesBetween(Applet& applet, const std::filesystem::path& first,
                                           const std::filesystem::path& second, bool all = false);

}  // namespace marovine::host
