#pragma once

/// A parameter as its applet describes it to a host now.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/Value.h"
#include "marovine/marovine.h"

namespace marovine::host {

/// One entry of an enumeration.
struct Entry {
    std::string displayName;
    std::int32_t value = 0;
    std::string constantName;

    bool operator==(const Entry&) const = default;
};

/// Range and step of a number or of a field's elements, in the parameter's own type. A step of 0 or of a
/// double's epsilon means that the parameter states none.
struct Range {
    Value minimum;
    Value maximum;
    Value increment;

    bool operator==(const Range&) const = default;
};

/// A value of a kind's own type, 0 or empty. Throws `Failure` for a kind that no parameter has.
const Value& emptyValueOf(std::uint32_t kind);
/// The type code under which the runtime expects a value of a kind.
FgParamTypes typeCodeOf(std::uint32_t kind);

/// A parameter with what the description tree says about it at the time of asking. Ranges and access change
/// when other parameters are set.
struct Parameter {
    std::string name;        ///< SDK name
    std::int32_t id = 0;     ///< what the typed calls take
    std::uint32_t kind = 0;  ///< an FG_KIND_ value
    bool described = false;  ///< false for the runtime's own parameters, which the tree leaves out
    std::string group;       ///< path of groups, "Digital I/O > GPO"
    std::string displayName;
    std::string unit;  ///< UTF-8; empty without unit
    bool readable = true;
    bool writable = false;  ///< as reported now; the applet takes a set of a writable parameter regardless
    std::optional<Range> range;
    std::vector<Entry> entries;  ///< of an enumeration
    std::uint32_t elements = 0;  ///< of a field
    std::string filePattern;     ///< of a text that names a file: "*.lut"

    /// A value of the parameter's own type, 0 or empty.
    Value emptyValue() const;
    /// A value as text: the constant's name for an enumeration.
    std::string textOf(const Value& value, bool whole = false) const;
    /// A value with its unit.
    std::string textWithUnit(const Value& value) const;
    /// The range or the entries' names on one line.
    std::string rangeText() const;
    /// Reads a value: a number, an enumeration's constant or display name (without regard to case), a text,
    /// or a field's elements separated by commas or blanks. Throws `UnreadableValue`, which names the
    /// entries or what was expected.
    Value parse(std::string_view text) const;
    /// Whether a number is one of the entries, or lies in the reported range; false for texts.
    bool holds(const Value& value) const;
    /// Whether the parameter states a step that its values must be multiples of.
    bool hasStep() const;

 private:
    /// Why a text is no value of the parameter, and what is.
    std::string faultIn(std::string_view text) const;
};

/// The range in a node of the description tree as it is now; nothing for kinds without range.
std::optional<Range> rangeIn(const RegisterInfo& node);

/// The parameter that a node of the description tree describes. `group` is the path of its groups.
Parameter readNode(const RegisterInfo& node, std::string group);

}  // namespace marovine::host
