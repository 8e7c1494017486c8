#pragma once

/// A whole command line, carried out: what the program `marovine` does, on its own applet or on a shared one.

#include <exception>
#include <string>
#include <vector>

#include "command/CommandLine.h"
#include "command/Session.h"

namespace marovine::host {

/// Carries out a command line (without the program's name) and tells failures as the command does, on the
/// session's consoles. Returns the exit status. `before`, where given, may keep the command from running.
int run(Session& session, std::vector<std::string> arguments, BeforeCommand before = {});

/// The same, but lets failures pass; the status is the session's.
void runOrThrow(Session& session, std::vector<std::string> arguments, BeforeCommand before = {});

/// What `--json` prints for a failure.
std::string errorDocument(Session& session, const std::exception& error);

}  // namespace marovine::host
