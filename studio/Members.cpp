#include "studio/Members.h"

#include <algorithm>
#include <cmath>

#include "client/Value.h"

namespace marovine::studio {

using host::Json;

Members::Members(const Json& object, std::string what, std::initializer_list<std::string_view> known)
    : object_(object), what_(std::move(what)) {
    const auto* members = object.as<Json::Object>();
    if (members == nullptr) throw BadRequest(what_ + " is no JSON object");
    for (const auto& [name, member] : *members) {
        if (std::ranges::find(known, name) != known.end()) continue;
        std::string names;
        for (const auto one : known) names += (names.empty() ? "" : ", ") + std::string(one);
        throw BadRequest(
            std::string(what_).append(" has no member ").append(name).append("; there are: ").append(names));
    }
}

const Json& Members::at(std::string_view name) const {
    if (const Json* member = find(name)) return *member;
    throw BadRequest(what_ + " lacks the member " + std::string(name));
}

std::string Members::text(std::string_view name) const {
    const auto* text = at(name).as<std::string>();
    if (text == nullptr) refuse(name, "a text");
    return *text;
}

std::optional<std::string> Members::maybeText(std::string_view name) const {
    const Json* member = find(name);
    if (member == nullptr || member->as<std::nullptr_t>() != nullptr) return std::nullopt;
    return text(name);
}

std::optional<double> Members::maybeNumber(std::string_view name, double least, double most) const {
    const Json* member = find(name);
    if (member == nullptr) return std::nullopt;
    const auto number = member->number();
    if (!number || !(*number >= least && *number <= most))
        refuse(name, "a number from " + host::textOf(least) + " to " + host::textOf(most));
    return number;
}

std::optional<std::int64_t> Members::maybeWhole(std::string_view name, std::int64_t least,
                                                std::int64_t most) const {
    const auto number = maybeNumber(name, static_cast<double>(least), static_cast<double>(most));
    if (!number) return std::nullopt;
    if (*number != std::floor(*number)) refuse(name, "a whole number");
    return static_cast<std::int64_t>(*number);
}

std::optional<bool> Members::maybeBool(std::string_view name) const {
    const Json* member = find(name);
    if (member == nullptr) return std::nullopt;
    const auto* truth = member->as<bool>();
    if (truth == nullptr) refuse(name, "true or false");
    return *truth;
}

const Json::Array& Members::array(std::string_view name) const {
    const auto* array = at(name).as<Json::Array>();
    if (array == nullptr) refuse(name, "an array");
    return *array;
}

void Members::refuse(std::string_view name, const std::string& kind) const {
    throw BadRequest(std::string(name) + " of " + what_ + " is not " + kind);
}

Json documentIn(std::string_view body) {
    try {
        return host::parsedJson(body);
    } catch (const host::Failure& failure) {
        throw BadRequest(failure.what());
    }
}

}  // namespace marovine::studio
