#pragma once

/// What all parameters are at one moment, and what moved between two moments.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"

namespace marovine::host {

/// Whether nobody can ever set the parameter; what is reported read-only for now is a setting.
bool isReadOut(std::string_view name);

/// One parameter at one moment.
struct ParameterState {
    Parameter parameter;
    std::optional<Value> value;  ///< nothing when it cannot be read
};

/// All parameters at one moment, in list order.
class Snapshot {
 public:
    /// Which parameters to look at.
    enum class Scope {
        All,
        Settings,  ///< numbers and enumerations that can be set: what decides over later sets
    };

    explicit Snapshot(Applet& applet, Scope scope = Scope::All);

    const std::vector<ParameterState>& states() const { return states_; }
    /// The state of a parameter; null when the snapshot has none.
    const ParameterState* find(const std::string& name) const;

 private:
    std::vector<ParameterState> states_;
};

/// One thing about one parameter that differs between two moments.
struct Change {
    enum class Aspect { HeldValue, Minimum, Maximum, Step, Access };

    std::string parameter;
    Aspect aspect{};
    std::string before;  ///< as text, enumeration values by constant name
    std::string after;
    std::string unit;
};

/// "value", "minimum", "maximum", "step" or "access".
const char* nameOf(Change::Aspect aspect);

/// Everything that differs, in list order.
std::vector<Change> changesBetween(const Snapshot& before, const Snapshot& after);

}  // namespace marovine::host
