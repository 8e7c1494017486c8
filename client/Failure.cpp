#include "client/Failure.h"

#include <utility>

#include "base/ErrorCodes.h"
#include "marovine/BoardCodes.h"

namespace marovine::host {

namespace {

std::string refusal(const std::string& parameter, const std::string& value, int code) {
    const std::string what = value.empty() ? "reading " + parameter : parameter + " = " + value;
    return what + " refused (" + std::to_string(code) + "): " + meaningOf(code);
}

std::string unknownName(const std::string& name, const std::vector<std::string>& suggestions) {
    std::string text = "no parameter is named " + name;
    for (std::size_t i = 0; i < suggestions.size(); ++i)
        text += (i == 0 ? "; nearest: " : ", ") + suggestions[i];
    return text;
}

}  // namespace

std::string meaningOf(int code) {
    if (const char* text = error::meaningOf(code)) return text;
    if (const char* text = virtualboard::codeMeaning(code)) return std::string("the board: ") + text;
    return "unknown code";
}

Refused::Refused(int refusalCode, std::string name, std::string text)
    : Failure(refusal(name, text, refusalCode)),
      code(refusalCode),
      parameter(std::move(name)),
      value(std::move(text)) {}

Refused::Refused(int refusalCode, const std::string& operation)
    : Failure(operation + " refused (" + std::to_string(refusalCode) + "): " + meaningOf(refusalCode)),
      code(refusalCode) {}

UnknownName::UnknownName(const std::string& name, std::vector<std::string> nearest)
    : Failure(unknownName(name, nearest)), suggestions(std::move(nearest)) {}

}  // namespace marovine::host
