#pragma once

/// Which parameters move which: found by trying, so that it says what the applet does.

#include <map>
#include <string>
#include <vector>

#include "client/Client.h"
#include "client/Snapshot.h"

namespace marovine::host {

/// What one parameter does to another.
struct Influence {
    std::string on;  ///< the parameter that moves
    bool value = false;
    bool range = false;   ///< minimum, maximum or step
    bool access = false;  ///< whether it can be set
};

/// The parameters that move when one is set, in list order: a second instance in the same state is given each
/// entry of an enumeration, or a number's smallest, largest and middle value. What moves only in another
/// state is not found. Empty for parameters that are neither enumerations nor numbers, or that nobody can
/// set.
std::vector<Influence> influencesOf(const Applet& state, const std::string& parameter);

/// For each parameter that others move: those others, in list order. One second instance is given the first,
/// the last and a middle entry or the ends of every range in turn, so this takes hundredths of a second.
std::map<std::string, std::vector<std::string>> moversOfAll(const Applet& state);

}  // namespace marovine::host
