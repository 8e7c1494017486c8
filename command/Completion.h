#pragma once

/// What a shell offers at TAB. One way of finding it serves all shells: their scripts only pass words on.

#include <ostream>
#include <string>
#include <vector>

#include "command/CommandTree.h"

namespace marovine::host {

/// Something that may stand at the cursor.
struct Candidate {
    std::string text;
    std::string summary;

    bool operator==(const Candidate&) const = default;
};

/// What may stand at the cursor.
struct Completions {
    std::vector<Candidate> candidates;
    std::string
        files;  ///< pattern of files that may stand there as well, "*.mcf"; "*" for any; empty for none
};

/// Completes the last of the words behind the program's name, which may be empty. Names of commands, options,
/// parameters and entries of enumerations come from the tables; no applet is opened.
Completions complete(const CommandText& program, const std::vector<std::string>& words);

/// Prints what may stand at the cursor, a line each, its summary behind a tab; last the pattern of files, as
/// ":files *.mcf".
void printCompletions(std::ostream& out, const Completions& completions);

/// The script that makes a shell ask: "bash", "zsh" or "fish". Throws `Failure` for another.
std::string completionScript(const std::string& shell);

}  // namespace marovine::host
