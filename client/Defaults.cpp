#include "client/Defaults.h"

#include <type_traits>
#include <variant>

#include "tables/SdkParameterTable.h"

namespace marovine::host {

std::optional<Value> defaultOf(const Parameter& parameter) {
    const auto* row = findSdkParameter(parameter.name);
    if (row == nullptr) return std::nullopt;
    return std::visit(
        [&]<class T>(const T& value) -> std::optional<Value> {
            if constexpr (std::is_same_v<T, std::monostate>) {
                return std::nullopt;
            } else if constexpr (std::is_same_v<T, const char*>) {
                return std::string(value);
            } else if constexpr (std::is_arithmetic_v<T>) {
                return valueLike(parameter.emptyValue(), value).value_or(parameter.emptyValue());
            } else {
                return parameter.emptyValue();
            }
        },
        row->defaultValue);
}

}  // namespace marovine::host
