#pragma once

/// Runs the command `marovine` as a user runs it.

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>

#include "tests/TemporaryFile.h"

namespace marovine::test {

struct Outcome {
    int status = -1;  ///< -1 when a signal ended it
    std::string output;
    std::string errors;

    std::string all() const { return output + errors; }
};

/// Runs it through a shell, with 80 columns. `before` is shell text that stands before the command.
inline Outcome run(const std::string& arguments, const std::string& before = "") {
    const TemporaryFile errors(".err");
    const std::string line = "COLUMNS=80; export COLUMNS; " + before + "'" MAROVINE_COMMAND "' " + arguments +
                             " 2>" + errors.name();
    Outcome outcome;
    FILE* pipe = popen(line.c_str(), "r");
    if (pipe == nullptr) return outcome;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
        outcome.output.append(buffer.data(), count);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome.errors = errors.content();
    return outcome;
}

/// A text with its lines joined again, wherever the terminal's width broke them.
inline std::string joined(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const bool blank = c == ' ' || c == '\n';
        if (!blank || !result.ends_with(' ')) result += blank ? ' ' : c;
    }
    return result;
}

}  // namespace marovine::test
