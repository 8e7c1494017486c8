#pragma once

#include <optional>

#include "client/Parameter.h"

namespace marovine::host {

/// What a parameter is set to when the applet is opened, in the parameter's own type; nothing for those that
/// have no default.
std::optional<Value> defaultOf(const Parameter& parameter);

}  // namespace marovine::host
