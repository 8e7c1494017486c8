#pragma once

/// Trying settings out on a second instance, so that claims about what would be accepted are tested, not
/// guessed.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "client/Client.h"
#include "client/Snapshot.h"

namespace marovine::host {

/// A parameter and a value for it.
struct Setting {
    std::string parameter;
    Value value;
};

/// Another parameter whose present value rules something out, found by changing that one alone.
struct Cause {
    std::string parameter;
    std::string value;  ///< its present value, as text
    /// Values of it that would do, as text: for a number the one nearest to the present value, for an
    /// enumeration every one.
    std::vector<std::string> remedies;
    enum class Direction { Exactly, OrMore, OrLess } direction = Direction::Exactly;
    /// Whether the value is one that the parameter was given in another mode and still holds, although it
    /// reads otherwise now.
    bool parked = false;
    bool together = false;  ///< whether it helps only after the cause before it is out of the way
};

/// A twin of an instance on a board of its own. Each trial leaves the twin as it was.
class Rehearsal {
 public:
    /// `original` must remember its steps and stay alive.
    explicit Rehearsal(const Applet& original);

    /// The code that a set is answered with.
    int codeOf(const Setting& setting);
    bool accepts(const Setting& setting) { return codeOf(setting) == 0; }

    /// The accepted value nearest to `refused` on the way to `accepted`, both numbers: for integers the last
    /// multiple of the step, for doubles a short decimal at most a millionth short of the limit. An end of
    /// the reported range stands as it is.
    Value limitTowards(const Parameter& parameter, const Value& accepted, const Value& refused);

    /// What a condition depends on: each other parameter whose change alone makes the condition true. The
    /// condition is asked about the twin, may change it by a `codeOf` of this object, and is false at first.
    /// Parameters that hold a parked value come first. Others that are reported read-only now are not
    /// considered. When no parameter does it alone, a parked value is tried together with one of its group.
    std::vector<Cause> causesAgainst(const std::string& parameter, const std::function<bool()>& condition);

    /// The twin, to look at. Whoever changes it calls `reset` afterwards.
    Applet& twin() { return *twin_; }
    /// Makes a new twin.
    void reset() { twin_ = original_.twin(); }

 private:
    bool set(const Setting& setting);
    bool trueAfter(const Setting& setting, const std::function<bool()>& condition);
    std::optional<Cause> causeIn(const ParameterState& other, const std::function<bool()>& condition);
    /// The value that a parameter was given last, when it reads otherwise.
    std::optional<Value> parkedIn(const std::string& name);
    std::vector<Cause> parkedCauses(const std::string& parameter, const std::function<bool()>& condition);
    std::vector<Cause> jointCauses(const std::string& parameter, const std::function<bool()>& condition);
    void refine(const Parameter& parameter, const Value& held, long double good,
                const std::function<bool()>& condition, Cause& cause);
    void takeBase();
    void restore();

    const Applet& original_;
    std::unique_ptr<Applet> twin_;
    /// The settings as they are without trials; taken when a search needs them.
    std::optional<Snapshot> base_;
    std::vector<Applet::Standing> standings_;
};

/// The multiple of a parameter's step that lies at or below `number`; `number` itself without step.
long double stepBelow(const Parameter& parameter, long double number);

}  // namespace marovine::host
