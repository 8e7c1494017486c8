#pragma once

/// What a hardware design says about itself: its parameters with ranges and start values, its events and its
/// registers. The parser fills one from the description text.

#include <bit>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "marovine/marovine.h"

namespace virtualboard {

/// Kinds of parameters, numbered like the nodes of a description tree.
enum class ParameterKind : std::uint8_t {
    UInt32 = FG_KIND_UINT32,
    Text = FG_KIND_TEXT,
    Double = FG_KIND_DOUBLE,
    UInt32Field = FG_KIND_UINT32_FIELD,
    UInt64 = FG_KIND_UINT64,
    Int32 = FG_KIND_INT32,
    Int64 = FG_KIND_INT64,
};

/// A number of any kind as 64 bits: integers widened (signed ones sign-extended), doubles by their bits.
using Number = std::uint64_t;

constexpr double toDouble(Number number) {
    return std::bit_cast<double>(number);
}
constexpr Number fromDouble(double value) {
    return std::bit_cast<Number>(value);
}

/// Parameters of the design carry these ids upward, in the design's order; smaller ids are the runtime's own.
inline constexpr int kFirstParameterId = 100001;
/// Bounds that keep a malformed description from asking for unreasonable memory; elements count for all
/// fields.
inline constexpr std::size_t kMaxParameters = 4096;
inline constexpr std::size_t kMaxElements = 65536;
inline constexpr std::size_t kMaxTextLength = 65535;

struct GroupData {
    std::int32_t parent = -1;  ///< index of an earlier group; -1 at the top
    std::string name;
};

struct ParameterData {
    ParameterKind kind{};
    bool readOnly = false;    ///< the host may not write it; the board itself may
    std::int32_t group = -1;  ///< index of its group; -1 for the runtime's own parameters
    std::int32_t id = 0;      ///< 0 until the builder numbers it; given for the runtime's own parameters
    std::string leaf;         ///< last part of the name
    std::string name;         ///< full name, filled by the builder
    std::string unit;         ///< ISO-8859-1; may be empty
    Number minimum = 0, maximum = 0, increment = 0, start = 0;  ///< of a number or of a field's elements
    std::uint32_t elements = 0;             ///< of a field; of a text the longest length in characters
    std::string startText;                  ///< of a text
    std::vector<std::uint32_t> startField;  ///< of a field, one per element
};

struct EventData {
    std::int32_t kind = 0;
    std::string name;  ///< full name
};

struct RegisterData {
    std::string name;
    std::uint32_t bits = 32;  ///< 1 to 64
    bool writable = false;
    std::uint64_t start = 0;
};

struct DesignData {
    std::string name;
    std::uint32_t type = 0;
    std::vector<GroupData> groups;
    std::vector<ParameterData> parameters;  ///< those of the design in id order, then the runtime's own
    std::vector<EventData> events;
    std::vector<RegisterData> registers;  ///< register numbers count from 1
};

/// Puts a design together and refuses what makes no sense. Every function throws `std::invalid_argument` with
/// a text that names the faulty thing.
class DesignBuilder {
 public:
    /// Returns the index of the new group in the earlier group `parent`; -1 at the top, for the others as
    /// well.
    std::int32_t addGroup(std::int32_t parent, std::string_view name);
    /// Numbers the parameter and fills its full name. Its numbers fit its kind.
    void addParameter(ParameterData parameter);
    /// Events are numbered in the order in which they come.
    void addEvent(std::int32_t group, std::string_view leaf, std::int32_t kind);
    void addRegister(RegisterData data);
    void setName(std::string_view name);
    void setType(std::uint32_t type) { data_.type = type; }
    DesignData take();

 private:
    std::string fullName(std::int32_t group, std::string_view leaf) const;
    void claim(const std::string& name);

    DesignData data_;
    std::vector<std::string> prefixes_;  ///< per group: the names down to it, each followed by "_"
    std::set<std::string> names_;
    std::set<std::int32_t> runtimeIds_;
};

/// Says what is wrong with a design; always throws `std::invalid_argument`.
[[noreturn]] void refuse(const std::string& what);

}  // namespace virtualboard
