#pragma once

/// Values and parameters as JSON.

#include <string>

#include <nlohmann/json.hpp>

#include "host/Parameter.h"
#include "host/Value.h"

namespace marovine::host {

using Json = nlohmann::ordered_json;

/// A value: a number, a text or an array of numbers. Not-a-number and the infinities, which JSON lacks, are
/// texts.
Json jsonOf(const Value& value);
/// A parameter's value: the constant's name for an enumeration.
Json jsonOf(const Parameter& parameter, const Value& value);
/// A parameter with range, access, unit and entries.
Json jsonOf(const Parameter& parameter);

/// The text of a document, indented; bytes that are no UTF-8 are replaced.
std::string printed(const Json& document);

}  // namespace marovine::host
