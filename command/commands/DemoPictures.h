#pragma once

#include <filesystem>

#include "command/Session.h"

namespace marovine::host::commands {

/// Where the demonstration writes its pictures.
struct DemoOutput {
    std::filesystem::path folder{};  ///< empty: the current one
    bool replace = false;            ///< also files that hold something else
};

/// The demonstration's end: a picture of the belt taken with the defaults, shown and written to a file, and
/// the contact sheet beside it. Throws `Failure`, with nothing written, when a file of the same name holds
/// something else.
void demonstratePictures(Session& session, const DemoOutput& output);

}  // namespace marovine::host::commands
