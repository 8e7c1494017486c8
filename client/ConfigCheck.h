#pragma once

/// What a person would want to know about a configuration file before loading it.

#include <filesystem>
#include <string>
#include <vector>

#include "client/Client.h"
#include "client/ConfigFile.h"

namespace marovine::host {

/// Something about a file.
struct Finding {
    enum class Weight {
        Note,     ///< a load takes every value all the same
        Misread,  ///< a load takes another value than the file says
        NotKept,  ///< a load takes the value, but the parameter reads otherwise in the end
        Untried,  ///< what a load would make of the values could not be found out
        Skipped,  ///< a load skips the value, and says nothing
        Fatal,    ///< the load fails
    };

    std::size_t line = 0;  ///< 0 for what is missing
    Weight weight = Weight::Note;
    std::string text;
    std::vector<std::string> advice;
    std::string subject;           ///< what many findings of one kind differ in, a key mostly
    const char* plural = nullptr;  ///< "keys are missing": what many of them say together; null: each counts
};

/// "note", "misread", "not kept", "not tried", "skipped" or "load fails".
const char* textOf(Finding::Weight weight);

/// What the text alone shows, line by line: what is missing, doubled, unknown, cut.
std::vector<Finding> findingsIn(const ConfigFile& file);
/// All that can be found, in line order. `applet` is in the state that the file is to be loaded into,
/// remembers its steps, and stays as it is.
std::vector<Finding> checkConfiguration(const Applet& applet, const std::filesystem::path& file);
/// The same with one finding, which counts and names the first few, in place of many of one kind.
std::vector<Finding> collapsed(const std::vector<Finding>& findings);

/// Loads a configuration. Throws `Failure` with every reason that can be found when the applet refuses it, or
/// when it is no file that can be checked, such as a pipe.
void loadConfiguration(Applet& applet, const std::filesystem::path& file);

}  // namespace marovine::host
