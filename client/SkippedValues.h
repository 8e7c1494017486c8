#pragma once

/// What a load of a configuration does not take: it skips values that a setter refuses, and says nothing.

#include <string>
#include <vector>

#include "client/Client.h"
#include "client/ConfigFile.h"
#include "client/Explain.h"

namespace marovine::host {

/// A value that a load skips.
struct SkippedValue {
    const ConfigLine* line = nullptr;
    Explanation why;                           ///< with the other refused values out of the way
    std::vector<const ConfigLine*> followUps;  ///< lines that are refused only because of this one
    std::string misread;                       ///< what the file says, when a load reads something else

    /// The refusal, with the file's own words where they differ.
    std::string sentence() const;
    /// What to do, and what follows from it.
    std::vector<std::string> advice() const;
};

/// The values that a load of `file` skips in the state of `before`, which remembers its steps and stays as it
/// is. A missing key keeps the value that it has there, so that one does not hide what is wrong with the
/// others. Each value is tried alone, in the state after the load: what is refused only because of another is
/// listed under that one. `file` must outlive the result. Throws `Failure` when the applet refuses to load
/// what it saved itself.
std::vector<SkippedValue> skippedValues(const Applet& before, const ConfigFile& file);

/// The tables whose present elements a save loses, because the file has no place for them: those entered
/// value by value, which `state` must remember. A load makes them anew. Empty when the applet refuses to save
/// or load the state.
std::vector<std::string> tablesLostInSave(const Applet& state);
/// "FG_LUT_VALUE_RED has elements for which a configuration has no place; `marovine lut save FILE.lut` ..."
std::string lostTablesText(const std::vector<std::string>& tables);

}  // namespace marovine::host
