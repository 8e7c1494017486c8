#pragma once

/// Manual pages made from the texts of the help.

#include <string>
#include <vector>

#include "command/CommandTree.h"

namespace marovine::host {

/// A page and the file that holds it.
struct ManualPage {
    std::string file;  ///< "marovine-grab.1"
    std::string text;  ///< roff
};

/// A page for the program and one for each command, those below a command on the page of that command.
std::vector<ManualPage> manualPages(const CommandText& program, const std::string& version);

}  // namespace marovine::host
