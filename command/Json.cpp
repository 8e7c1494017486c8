#include "command/Json.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

#include "client/Defaults.h"
#include "client/Failure.h"
#include "client/Snapshot.h"

namespace marovine::host {

namespace {

/// The library's own kind of document.
using JsonLibrary = nlohmann::ordered_json;

JsonLibrary converted(const Json& json) {
    return std::visit(
        []<class T>(const T& content) -> JsonLibrary {
            if constexpr (std::is_same_v<T, Json::Array>) {
                JsonLibrary array = JsonLibrary::array();
                for (const auto& element : content) array.push_back(converted(element));
                return array;
            } else if constexpr (std::is_same_v<T, Json::Object>) {
                JsonLibrary object = JsonLibrary::object();
                for (const auto& [name, member] : content) object[name] = converted(member);
                return object;
            } else {
                return content;
            }
        },
        json.content());
}

Json converted(const JsonLibrary& json) {
    if (json.is_array()) {
        Json array = Json::array();
        for (const auto& element : json) array.push_back(converted(element));
        return array;
    }
    if (json.is_object()) {
        Json object = Json::object();
        for (const auto& [name, member] : json.items()) object[name] = converted(member);
        return object;
    }
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number_unsigned()) return json.get<std::uint64_t>();
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_number_float()) return json.get<double>();
    if (json.is_string()) return json.get<std::string>();
    return {};
}

/// The text that an element begins with when it is a pair of a name and something.
const std::string* nameOf(const Json& element) {
    const auto* pair = std::get_if<Json::Array>(&element.content());
    return pair != nullptr && pair->size() == 2 ? std::get_if<std::string>(&pair->front().content())
                                                : nullptr;
}

}  // namespace

Json::Json(std::initializer_list<Json> elements) : content_(Array(elements)) {
    if (!std::ranges::all_of(elements, [](const Json& element) { return nameOf(element) != nullptr; }))
        return;
    Object object;
    for (const auto& element : elements)
        object.emplace_back(*nameOf(element), std::get<Array>(element.content_).back());
    content_ = std::move(object);
}

Json Json::object() {
    Json result;
    result.content_ = Object();
    return result;
}

void Json::push_back(Json element) {
    if (std::holds_alternative<std::nullptr_t>(content_)) content_ = Array();
    std::get<Array>(content_).push_back(std::move(element));
}

Json& Json::operator[](std::string_view name) {
    if (std::holds_alternative<std::nullptr_t>(content_)) content_ = Object();
    auto& members = std::get<Object>(content_);
    for (auto& [known, member] : members)
        if (known == name) return member;
    return members.emplace_back(std::string(name), Json()).second;
}

const Json* Json::find(std::string_view name) const {
    const auto* members = std::get_if<Object>(&content_);
    if (members == nullptr) return nullptr;
    const auto found = std::ranges::find(*members, name, &std::pair<std::string, Json>::first);
    return found != members->end() ? &found->second : nullptr;
}

std::optional<double> Json::number() const {
    return std::visit(
        []<class T>(const T& content) -> std::optional<double> {
            if constexpr (std::is_arithmetic_v<T> && !std::is_same_v<T, bool>)
                return static_cast<double>(content);
            return std::nullopt;
        },
        content_);
}

std::size_t Json::size() const {
    if (const auto* array = std::get_if<Array>(&content_)) return array->size();
    if (const auto* object = std::get_if<Object>(&content_)) return object->size();
    return 0;
}

Json jsonOf(const Value& value) {
    return std::visit(
        []<class T>(const T& v) -> Json {
            if constexpr (std::is_same_v<T, double>) {
                if (!std::isfinite(v)) return textOf(v);
            }
            return v;
        },
        value);
}

Json jsonOf(const Parameter& parameter, const Value& value) {
    if (parameter.kind == FG_KIND_ENUMERATION) return parameter.textOf(value);
    return jsonOf(value);
}

Json jsonOf(const Parameter& parameter) {
    static constexpr struct {
        std::uint32_t kind;
        const char* name;
    } kinds[] = {{FG_KIND_UINT32, "uint32"},
                 {FG_KIND_ENUMERATION, "enumeration"},
                 {FG_KIND_TEXT, "text"},
                 {FG_KIND_DOUBLE, "double"},
                 {FG_KIND_UINT32_FIELD, "uint32 field"},
                 {FG_KIND_UINT64, "uint64"},
                 {FG_KIND_INT32, "int32"},
                 {FG_KIND_INT64, "int64"}};
    Json result{{"name", parameter.name},
                {"id", parameter.id},
                {"group", parameter.group},
                {"displayName", parameter.displayName}};
    for (const auto& entry : kinds)
        if (entry.kind == parameter.kind) result["type"] = entry.name;
    result["readable"] = parameter.readable;
    result["writable"] = parameter.writable;
    if (!parameter.unit.empty()) result["unit"] = parameter.unit;
    if (parameter.range) {
        result["minimum"] = jsonOf(parameter.range->minimum);
        result["maximum"] = jsonOf(parameter.range->maximum);
        if (parameter.hasStep()) result["step"] = jsonOf(parameter.range->increment);
    }
    if (parameter.elements != 0) result["elements"] = parameter.elements;
    if (!parameter.filePattern.empty()) result["filePattern"] = parameter.filePattern;
    for (const auto& entry : parameter.entries)
        result["entries"].push_back(
            {{"name", entry.constantName}, {"displayName", entry.displayName}, {"value", entry.value}});
    return result;
}

Json jsonOf(const Parameter& parameter, const std::optional<Value>& value) {
    Json entry = jsonOf(parameter);
    entry["readOut"] = isReadOut(parameter.name);
    if (const auto before = defaultOf(parameter)) {
        entry["default"] = jsonOf(parameter, *before);
        entry["differs"] = value != before;
    }
    entry["value"] = value ? jsonOf(parameter, *value) : Json();
    return entry;
}

std::string printed(const Json& document) {
    return converted(document).dump(2, ' ', false, JsonLibrary::error_handler_t::replace);
}

std::string printedOnOneLine(const Json& document) {
    return converted(document).dump(-1, ' ', false, JsonLibrary::error_handler_t::replace);
}

Json parsedJson(std::string_view text) {
    constexpr int kDeepest = 16;
    const auto refuseDepth = [](int depth, JsonLibrary::parse_event_t, const JsonLibrary&) {
        if (depth > kDeepest) throw Failure("no JSON here goes deeper than 16 levels");
        return true;
    };
    try {
        return converted(JsonLibrary::parse(text, refuseDepth));
    } catch (const JsonLibrary::exception& error) {
        const std::string_view what = error.what();  // "[json.exception.parse_error.101] parse error at ..."
        throw Failure("no JSON: " + std::string(what.substr(std::min(what.find(']') + 2, what.size()))));
    }
}

}  // namespace marovine::host
