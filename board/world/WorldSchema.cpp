#include "board/world/WorldSchema.h"

#include <array>
#include <cstdio>
#include <type_traits>

#include <nlohmann/json.hpp>

#include "board/world/WorldFields.h"

namespace virtualboard::world {
namespace {

using Json = nlohmann::ordered_json;

/// Whole numbers without a fraction, so that 500 does not read 500.0.
Json numberOf(double value) {
    const auto whole = static_cast<std::int64_t>(value);
    return static_cast<double>(whole) == value ? Json(whole) : Json(value);
}

template <class Record>
Json objectSchema();

/// The schema of a value of a type; a default where the record has one that a file could hold.
struct ValueSchema {
    const FieldText& text;

    Json limited(const char* type) const {
        return {{"type", type}, {"minimum", numberOf(text.minimum)}, {"maximum", numberOf(text.maximum)}};
    }
    Json with(Json schema, Json standard) const {
        if (!text.required) schema["default"] = std::move(standard);
        return schema;
    }

    Json operator()(double value) const { return with(limited("number"), numberOf(value)); }
    template <class Whole>
    requires(std::is_unsigned_v<Whole> && !std::is_same_v<Whole, bool>) Json operator()(Whole value) const {
        if (text.choices.empty()) return with(limited("integer"), value);
        Json names = Json::array();
        for (const auto& choice : text.choices) names.push_back(choice);
        return with({{"enum", names}}, names[value]);
    }
    Json operator()(bool value) const { return with({{"type", "boolean"}}, value); }
    Json operator()(const std::string& /*value*/) const { return {{"type", "string"}}; }
    Json operator()(const FileName& /*value*/) const { return {{"type", "string"}, {"minLength", 1}}; }
    Json operator()(const imaging::Pixel& value) const {
        char code[16];
        std::snprintf(code, sizeof code, "#%02X%02X%02X", value.red, value.green, value.blue);
        return with({{"type", "string"}, {"pattern", "^#[0-9A-Fa-f]{6}$"}}, code);
    }
    Json operator()(const Limits& value) const {
        const Json number = limited("number");
        const Json both{{"type", "array"}, {"items", number}, {"minItems", 2}, {"maxItems", 2}};
        return with({{"anyOf", Json::array({number, both})}},
                    Json::array({numberOf(value.least), numberOf(value.most)}));
    }
    template <class T>
    Json operator()(const std::optional<T>& /*value*/) const {
        Json schema = (*this)(T{});
        schema.erase("default");  // without a value is another thing than any value
        return schema;
    }
    template <class T>
    Json operator()(const std::vector<T>& /*value*/) const {
        return {{"type", "array"}, {"items", objectSchema<T>()}, {"maxItems", text.most}};
    }
    template <std::size_t count>
    Json operator()(const std::array<bool, count>& /*value*/) const {
        return {{"type", "array"}, {"items", {{"type", "boolean"}}}, {"maxItems", text.most}};
    }
    template <class Record>
    requires requires { Fields<Record>::fields; }
    Json operator()(const Record& /*value*/) const { return objectSchema<Record>(); }
};

template <class Record>
Json objectSchema() {
    const Record standard{};
    Json properties = Json::object(), required = Json::array();
    const auto add = [&](const auto& field) {
        Json schema = ValueSchema{field.text}(standard.*field.member);
        std::string about(field.text.about);
        if (!field.text.unit.empty()) about += " (" + std::string(field.text.unit) + ")";
        schema["description"] = about;
        properties[std::string(field.text.name)] = std::move(schema);
        if (field.text.required) required.push_back(field.text.name);
    };
    std::apply([&](const auto&... fields) { (add(fields), ...); }, Fields<Record>::fields);
    Json schema{{"type", "object"},
                {"description", Fields<Record>::about},
                {"properties", std::move(properties)},
                {"additionalProperties", false}};
    if (!required.empty()) schema["required"] = std::move(required);
    return schema;
}

}  // namespace

std::string worldSchema() {
    Json schema{{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                {"title", "World around the virtual board"}};
    schema.update(objectSchema<WorldText>());
    return schema.dump(2) + '\n';
}

}  // namespace virtualboard::world
