#pragma once

/// Values of parameters as Python objects and back.

#include <cstdint>
#include <string>
#include <string_view>

#include "client/Parameter.h"
#include "python/native/Raising.h"

namespace marovine::python {

/// What the conversion needs to know of a parameter.
struct ParameterType {
    std::string name;
    std::uint32_t kind = 0;
    std::uint32_t elements = 0;  ///< of a field
    /// Members of its enumeration by their numbers, made when first needed.
    mutable std::vector<std::pair<std::int32_t, nb::object>> members{};
};

/// A Python text that names something. Names hold neither zero bytes nor halves of surrogate pairs: both are
/// written out, so that what is not found can be told.
std::string spelling(nb::handle text);
/// Texts that are file names, in the encoding of file names.
nb::object textToPython(std::string_view text);
/// A value without a parameter's meaning: a number, a text or an array.
nb::object toPython(const host::Value& value);
/// A value of a parameter: a member of its enumeration where it is one.
nb::object toPython(const ParameterType& type, const host::Applet& applet, const host::Value& value);

/// The value that an object stands for. Raises `TypeError` for what cannot be one, `OverflowError` for a
/// number that no value of the type reaches and `ValueError` for an unknown entry or a table that is not
/// whole.
host::Value fromPython(const ParameterType& type, const host::Applet& applet, nb::handle object);
/// Some elements of a table.
host::Field elementsFromPython(const ParameterType& type, nb::handle object);
/// The same in the type of a value that is there already, for parameters of the design.
host::Value fromPythonLike(const std::string& name, const host::Value& like, nb::handle object);

}  // namespace marovine::python
