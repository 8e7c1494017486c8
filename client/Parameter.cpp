#include "client/Parameter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "base/IgnoreCase.h"
#include "base/Names.h"
#include "client/Failure.h"

namespace marovine::host {

namespace {

std::string textOrEmpty(const char* text) {
    return text != nullptr ? utf8FromLatin1(text) : std::string();
}

template <class Limits>
Range rangeOf(const Limits& limits) {
    return {limits.minimum, limits.maximum, limits.increment};
}

/// Type code, and a value of the type, of each kind of node.
struct KindType {
    std::uint32_t kind;
    FgParamTypes code;
    Value empty;
};

const KindType& typeOfKind(std::uint32_t kind) {
    static const std::array types{
        KindType{FG_KIND_UINT32, FG_TYPE_UINT32, std::uint32_t{0}},
        KindType{FG_KIND_ENUMERATION, FG_TYPE_INT32, std::int32_t{0}},
        KindType{FG_KIND_TEXT, FG_TYPE_TEXT, std::string()},
        KindType{FG_KIND_DOUBLE, FG_TYPE_DOUBLE, 0.0},
        KindType{FG_KIND_UINT32_FIELD, FG_TYPE_FIELD_ACCESS, Field()},
        KindType{FG_KIND_UINT64, FG_TYPE_UINT64, std::uint64_t{0}},
        KindType{FG_KIND_INT32, FG_TYPE_INT32, std::int32_t{0}},
        KindType{FG_KIND_INT64, FG_TYPE_INT64, std::int64_t{0}},
    };
    for (const auto& type : types)
        if (type.kind == kind) return type;
    throw Failure("the applet describes a parameter of the unknown kind " + std::to_string(kind));
}

Field parseField(const Parameter& parameter, std::string_view text) {
    Field field;
    constexpr std::string_view separators = ", \t\n";
    while ((text.remove_prefix(std::min(text.find_first_not_of(separators), text.size())), !text.empty())) {
        const std::string_view element = text.substr(0, text.find_first_of(separators));
        const auto value = parseNumber(std::uint32_t{0}, element);
        if (!value)
            throw UnreadableValue(parameter.name + ": " + std::string(element) +
                                  " is no element; give whole numbers separated by commas");
        field.push_back(std::get<std::uint32_t>(*value));
        text.remove_prefix(element.size());
    }
    return field;
}

/// What keeps a text from being a number of the parameter's type, as the rest of a sentence about it.
std::string numberFault(const Parameter& parameter, std::string_view text) {
    const auto number = parseNumber(0.0, text);
    if (!number || parameter.kind == FG_KIND_DOUBLE) return " is no number";
    const double value = std::get<double>(*number);
    const bool whole = text.find_first_not_of("-0123456789") == text.npos;
    if (!whole)
        return std::trunc(value) == value ? " is not written as a whole number" : " is not a whole number";
    if (!parameter.range) return " does not fit";
    const bool below = value < static_cast<double>(*numberOf(parameter.range->minimum));
    return below ? " is below the minimum " + textOf(parameter.range->minimum)
                 : " is above the maximum " + textOf(parameter.range->maximum);
}

}  // namespace

const Value& emptyValueOf(std::uint32_t kind) {
    return typeOfKind(kind).empty;
}

FgParamTypes typeCodeOf(std::uint32_t kind) {
    return typeOfKind(kind).code;
}

Value Parameter::emptyValue() const {
    return emptyValueOf(kind);
}

std::string Parameter::textOf(const Value& value, bool whole) const {
    if (const auto* number = std::get_if<std::int32_t>(&value))
        for (const auto& entry : entries)
            if (entry.value == *number) return entry.constantName;
    return host::textOf(value, whole);
}

std::string Parameter::textWithUnit(const Value& value) const {
    const std::string text = textOf(value);
    return unit.empty() ? text : text + " " + unit;
}

bool Parameter::holds(const Value& value) const {
    const auto number = numberOf(value);
    if (!number) return false;
    if (!entries.empty())
        return std::any_of(entries.begin(), entries.end(),
                           [&](const Entry& entry) { return entry.value == *number; });
    return range && *number >= numberOf(range->minimum) && *number <= numberOf(range->maximum);
}

bool Parameter::hasStep() const {
    if (!range) return false;
    const auto step = numberOf(range->increment);
    return step && *step > std::numeric_limits<double>::epsilon();
}

std::string Parameter::rangeText() const {
    std::string text;
    if (kind == FG_KIND_ENUMERATION) {
        for (const auto& entry : entries) text += (text.empty() ? "" : ", ") + entry.constantName;
        return text;
    }
    if (!range) return filePattern.empty() ? "any text" : "a file name, " + filePattern;
    text = host::textOf(range->minimum) + " to " + host::textOf(range->maximum);
    if (hasStep() && numberOf(range->increment) != 1) text += ", step " + host::textOf(range->increment);
    if (elements != 0) text += ", " + std::to_string(elements) + " elements";
    return text;
}

Value Parameter::parse(std::string_view text) const {
    if (kind == FG_KIND_TEXT) return std::string(text);
    if (kind == FG_KIND_UINT32_FIELD) return parseField(*this, text);
    if (kind == FG_KIND_ENUMERATION) {
        for (const auto& entry : entries)
            if (equalIgnoringCase(entry.constantName, text)) return entry.value;
        for (const auto& entry : entries)
            if (equalIgnoringCase(entry.displayName, text)) return entry.value;
    }
    if (const auto value = parseNumber(emptyValue(), text)) return *value;

    throw UnreadableValue(name + ": " + faultIn(text));
}

std::string Parameter::faultIn(std::string_view text) const {
    std::string message(text);
    if (text.empty()) {
        message = "a value is missing after '='";
        return message + "; give " + (kind == FG_KIND_ENUMERATION ? "an entry: " : "a number: ") +
               rangeText();
    }
    if (kind == FG_KIND_ENUMERATION) {
        std::vector<std::string> names;
        for (const auto& entry : entries) names.push_back(entry.constantName);
        const auto nearest = nearestNames(text, names, 1);
        message += " is no entry; ";
        message += nearest.empty() ? "" : "nearest: " + nearest.front() + "; ";
        message += "entries: " + rangeText();
    } else {
        message += numberFault(*this, text) + "; give a ";
        message += kind == FG_KIND_DOUBLE ? "decimal number" : "whole number";
        if (range) message += " in the range " + rangeText();
    }
    return message;
}

std::optional<Range> rangeIn(const RegisterInfo& node) {
    switch (node.kind) {
        case FG_KIND_UINT32:
            return rangeOf(node.value.uint32);
        case FG_KIND_INT32:
            return rangeOf(node.value.int32);
        case FG_KIND_UINT64:
            return rangeOf(node.value.uint64);
        case FG_KIND_INT64:
            return rangeOf(node.value.int64);
        case FG_KIND_DOUBLE:
            return rangeOf(node.value.real);
        case FG_KIND_UINT32_FIELD:
            return rangeOf(node.value.uint32Field);
        default:
            return std::nullopt;
    }
}

Parameter readNode(const RegisterInfo& node, std::string group) {
    Parameter parameter;
    parameter.name = textOrEmpty(node.name);
    parameter.id = node.address;
    parameter.kind = node.kind;
    parameter.described = true;
    parameter.group = std::move(group);
    parameter.displayName = textOrEmpty(node.displayName);
    // The pulse counts are listed in microseconds, which they are not.
    if (parameter.name.find("_PULSE_COUNT") == std::string::npos) parameter.unit = textOrEmpty(node.unit);
    parameter.readable = (node.accessFlags & 1) != 0;
    parameter.writable = (node.accessFlags & 2) != 0;
    parameter.range = rangeIn(node);
    switch (node.kind) {
        case FG_KIND_UINT32_FIELD:
            parameter.elements = node.value.uint32Field.elements;
            break;
        case FG_KIND_TEXT:
            parameter.filePattern = textOrEmpty(node.value.text.attribute);
            break;
        case FG_KIND_ENUMERATION: {
            const auto& list = node.value.enumeration;
            for (int i = 0; i < list.count; ++i)
                parameter.entries.push_back(
                    {textOrEmpty(list.displayNames[i]), list.values[i], textOrEmpty(list.constantNames[i])});
            break;
        }
        default:
            break;
    }
    return parameter;
}

}  // namespace marovine::host
