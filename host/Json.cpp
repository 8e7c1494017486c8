#include "host/Json.h"

#include <cmath>

namespace marovine::host {

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

std::string printed(const Json& document) {
    return document.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace marovine::host
