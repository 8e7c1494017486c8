#pragma once

/// The reference documents in docs/, made from the tables and from what the applet does.

#include <ostream>

#include "client/Client.h"

namespace marovine::host {

/// docs/PARAMETERS.md: every parameter with its values, what it writes, what limits it and what it moves.
/// `applet` must be in its start state and remember its steps.
void writeParameterReference(std::ostream& out, Applet& applet);

/// docs/CODES.md: error codes, events and environment variables.
void writeCodeReference(std::ostream& out, Applet& applet);

}  // namespace marovine::host
