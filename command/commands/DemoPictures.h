#pragma once

#include "command/Session.h"

namespace marovine::host::commands {

/// The demonstration's end: a picture of the belt taken with the defaults, shown and written to a file, and
/// the contact sheet beside it.
void demonstratePictures(Session& session);

}  // namespace marovine::host::commands
