#pragma once

/// Why the applet refuses a value, and what it would take instead.

#include <string>
#include <utility>
#include <vector>

#include "client/Client.h"
#include "client/Rehearsal.h"

namespace marovine::host {

/// A way out of a refusal: settings that are taken in this order, the wanted one or one near it last.
struct Remedy {
    std::vector<std::pair<std::string, std::string>> settings;  ///< parameter and value, as text

    /// "FG_XOFFSET = 12280, then FG_WIDTH = 4104"
    std::string text() const;
};

/// A refusal with its reason. Every value named as accepted was accepted by a second instance in the same
/// state, and every cause was found by changing that parameter alone.
struct Explanation {
    std::string parameter;
    std::string value;
    int code = 0;
    std::string rule;                  ///< "above 4096", "not a multiple of 8", "not one of the entries"
    std::vector<std::string> nearest;  ///< accepted values next to the refused one
    std::vector<Cause> causes;         ///< parameters whose present values rule the value out
    std::string accepted;              ///< the range or the entries as they are now

    /// "FG_WIDTH = 4104 refused (-6000): above 4096, because FG_XOFFSET is 12288"
    std::string sentence() const;
    /// What to do, a sentence each: nearest values, other parameters to set first.
    std::vector<std::string> advice() const;
};

/// Explains why `state` refused `setting` with `code`. `state` must remember its steps.
Explanation explain(const Applet& state, const Setting& setting, int code);

/// Ways out of an explained refusal of `setting`, the nearest first. Each was taken by a second instance in
/// the same state.
std::vector<Remedy> remediesFor(const Applet& state, const Setting& setting, const Explanation& why);

/// One end of a range that is narrower than the applet's widest, with what narrows it.
struct Narrowing {
    bool upper = true;
    std::string limit;  ///< the last accepted value
    std::vector<Cause> causes;
};

/// What limits a parameter now: both ends of its range as a second instance accepts them. Empty for
/// parameters other than numbers that can be set, and where nothing narrows the widest range.
std::vector<Narrowing> narrowings(const Applet& state, const std::string& parameter);

/// The parameters that decide whether this one is reported read-only now; empty when it is not, or always is.
std::vector<Cause> causesOfReadOnly(const Applet& state, const std::string& parameter);

/// The design parameters that a set of this parameter writes, in order of their first write, with the names
/// that the board gives them. Empty when it cannot be set without consequences, such as a written file.
std::vector<std::string> drivenDesignParameters(const Applet& state, const std::string& parameter);

/// Causes as a clause: "FG_XOFFSET is 12288 and FG_VANTAGEPOINT is FG_VANTAGEPOINT_TOP_RIGHT".
std::string causesText(const std::vector<Cause>& causes);
/// What to do about a cause: "set FG_XOFFSET to 12280 or less".
std::string remedyText(const Cause& cause);

}  // namespace marovine::host
