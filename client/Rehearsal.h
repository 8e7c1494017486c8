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
    /// multiple of the step, for doubles a short decimal at most a millionth short of the limit.
    Value limitTowards(const Parameter& parameter, const Value& accepted, const Value& refused);

    /// What a condition depends on: each other parameter whose change alone makes the condition true. The
    /// condition is asked about the twin, may change it by a `codeOf` of this object, and is false at first.
    /// Parameters that are reported read-only now are not considered.
    std::vector<Cause> causesAgainst(const std::string& parameter, const std::function<bool()>& condition);

    /// The twin, to look at. Whoever changes it calls `reset` afterwards.
    Applet& twin() { return *twin_; }
    /// Makes a new twin.
    void reset() { twin_ = original_.twin(); }

 private:
    bool set(const Setting& setting);
    bool trueAfter(const Setting& setting, const std::function<bool()>& condition);
    std::optional<Cause> causeIn(const ParameterState& other, const std::function<bool()>& condition);
    void refine(const ParameterState& other, long double good, const std::function<bool()>& condition,
                Cause& cause);
    void restore();

    const Applet& original_;
    std::unique_ptr<Applet> twin_;
    Snapshot base_;
};

/// The multiple of a parameter's step that lies at or below `number`; `number` itself without step.
long double stepBelow(const Parameter& parameter, long double number);

}  // namespace marovine::host
