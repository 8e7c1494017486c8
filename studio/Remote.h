#pragma once

/// A command line that is carried out by a studio, on its board.

#include <string>
#include <vector>

#include "command/Session.h"

namespace marovine::studio {

/// Sends a command line with the files that it names, prints what it printed there, and writes the files that
/// it wrote. Returns its exit status; tells failures as the command does.
int runRemotely(host::Session& session, const std::vector<std::string>& arguments);

}  // namespace marovine::studio
