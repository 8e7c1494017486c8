#include "board/design/DesignData.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace virtualboard {

void refuse(const std::string& what) {
    throw std::invalid_argument(what);
}

namespace {

void checkPlainName(std::string_view name) {
    const auto plain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    };
    if (name.empty() || name.size() > 255 || !std::all_of(name.begin(), name.end(), plain)) {
        refuse("'" + std::string(name) + "' is not a name of letters, digits and '_'");
    }
}

/// True when minimum <= value <= maximum in the kind's own order; false for a double that is not a number.
bool inOrder(ParameterKind kind, Number minimum, Number value, Number maximum) {
    switch (kind) {
        case ParameterKind::Double:
            return toDouble(minimum) <= toDouble(value) && toDouble(value) <= toDouble(maximum);
        case ParameterKind::Int32:
        case ParameterKind::Int64:
            return std::cmp_less_equal(static_cast<std::int64_t>(minimum),
                                       static_cast<std::int64_t>(value)) &&
                   std::cmp_less_equal(static_cast<std::int64_t>(value), static_cast<std::int64_t>(maximum));
        default:
            return minimum <= value && value <= maximum;
    }
}

void checkRange(const ParameterData& parameter) {
    if (!inOrder(parameter.kind, parameter.minimum, parameter.minimum, parameter.maximum)) {
        refuse("the range of '" + parameter.leaf + "' is empty");
    }
    if (!inOrder(parameter.kind, parameter.minimum, parameter.start, parameter.maximum)) {
        refuse("the start value of '" + parameter.leaf + "' lies outside its range");
    }
}

void checkValue(const ParameterData& parameter) {
    switch (parameter.kind) {
        case ParameterKind::Text:
            if (parameter.elements > kMaxTextLength) refuse("text '" + parameter.leaf + "' is too long");
            if (parameter.startText.size() > parameter.elements) {
                refuse("the start text of '" + parameter.leaf + "' is longer than its maximum");
            }
            if (parameter.startText.find('\0') != std::string::npos) {
                refuse("the start text of '" + parameter.leaf + "' holds a zero byte");
            }
            return;
        case ParameterKind::UInt32Field:
            if (parameter.elements == 0) refuse("field '" + parameter.leaf + "' has no elements");
            for (const std::uint32_t element : parameter.startField) {
                if (element < parameter.minimum || element > parameter.maximum) {
                    refuse("a start value of field '" + parameter.leaf + "' lies outside its range");
                }
            }
            return;
        default:
            checkRange(parameter);
    }
}

}  // namespace

std::string DesignBuilder::fullName(std::int32_t group, std::string_view leaf) const {
    std::string name = group >= 0 ? prefixes_[static_cast<std::size_t>(group)] : std::string();
    name += leaf;
    if (name.size() > 1023) refuse("'" + std::string(leaf) + "' stands too deep in its groups");
    return name;
}

void DesignBuilder::claim(const std::string& name) {
    if (!names_.insert(name).second) refuse("'" + name + "' is there twice");
}

std::int32_t DesignBuilder::addGroup(std::int32_t parent, std::string_view name) {
    checkPlainName(name);
    if (data_.groups.size() >= kMaxParameters) refuse("there are too many groups");
    prefixes_.push_back(fullName(parent, name) + '_');
    data_.groups.push_back({.parent = parent, .name = std::string(name)});
    return static_cast<std::int32_t>(data_.groups.size()) - 1;
}

void DesignBuilder::addParameter(ParameterData parameter) {
    checkPlainName(parameter.leaf);
    checkValue(parameter);
    if (data_.parameters.size() >= kMaxParameters) refuse("there are too many parameters");
    if (parameter.id == 0) {
        if (parameter.group < 0) refuse("parameter '" + parameter.leaf + "' stands in no group");
        if (!runtimeIds_.empty()) refuse("the runtime's own parameters must come after the design's");
        parameter.id = kFirstParameterId + static_cast<std::int32_t>(data_.parameters.size());
    } else if (parameter.id >= kFirstParameterId || !runtimeIds_.insert(parameter.id).second) {
        refuse("id " + std::to_string(parameter.id) + " of '" + parameter.leaf +
               "' is taken or out of range");
    }
    parameter.name = fullName(parameter.group, parameter.leaf);
    claim(parameter.name);
    data_.parameters.push_back(std::move(parameter));
}

void DesignBuilder::addEvent(std::int32_t group, std::string_view leaf, std::int32_t kind) {
    checkPlainName(leaf);
    if (data_.events.size() >= 64)
        refuse("event '" + std::string(leaf) + "' is one too many: an event mask has 64 bits");
    data_.events.push_back({.kind = kind, .name = fullName(group, leaf)});
    claim(data_.events.back().name);
}

void DesignBuilder::addRegister(RegisterData data) {
    checkPlainName(data.name);
    if (data.bits < 1 || data.bits > 64) refuse("register '" + data.name + "' must be 1 to 64 bits wide");
    if (data.bits < 64 && (data.start >> data.bits) != 0) {
        refuse("the start value of register '" + data.name + "' is wider than the register");
    }
    if (data_.registers.size() >= kMaxParameters) refuse("there are too many registers");
    claim(data.name);
    data_.registers.push_back(std::move(data));
}

void DesignBuilder::setName(std::string_view name) {
    checkPlainName(name);
    data_.name = name;
}

DesignData DesignBuilder::take() {
    if (data_.name.empty()) refuse("there is no line 'design \"NAME\"'");
    if (data_.type == 0) refuse("there is no line 'type NUMBER'");
    return std::exchange(data_, {});
}

}  // namespace virtualboard
