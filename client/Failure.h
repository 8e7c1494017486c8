#pragma once

/// What can go wrong between the host and the applet, as exceptions that say what to do.

#include <stdexcept>
#include <string>
#include <vector>

namespace marovine::host {

/// The meaning of a code of the applet or of the board behind it; "unknown code" for any other.
std::string meaningOf(int code);

/// Base of everything that the client throws for a reason outside of the program.
class Failure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The applet answered a call with a negative code.
class Refused : public Failure {
 public:
    /// A refused set, "FG_WIDTH = 1004 refused (-7080): ...", or get, when `value` is empty.
    Refused(int code, std::string parameter, std::string value);
    /// A refused operation that names no parameter, such as "saving to x.mcf".
    Refused(int code, const std::string& operation);

    int code;
    std::string parameter;  ///< SDK name; empty when the call names none
    std::string value;      ///< what was to be set, as the user wrote it; empty when nothing was
};

/// No parameter has this name.
class UnknownName : public Failure {
 public:
    /// `suggestions` are the nearest names that exist, best first.
    UnknownName(const std::string& name, std::vector<std::string> suggestions);

    std::vector<std::string> suggestions;
};

/// A text is no value of the parameter's type.
class UnreadableValue : public Failure {
    using Failure::Failure;
};

}  // namespace marovine::host
