#include "python/native/Values.h"

#include <nanobind/ndarray.h>

#include <limits>
#include <memory>
#include <utility>
#include <variant>

namespace marovine::python {

using host::Field;
using host::Value;

namespace {

std::string typeName(nb::handle object) {
    return Py_TYPE(object.ptr())->tp_name;
}

/// Raises an exception with a better text in place of the present one of its class; others stay.
[[noreturn]] void raiseInstead(PyObject* type, const std::string& text) {
    if (PyErr_ExceptionMatches(type) == 0) throw nb::python_error();
    PyErr_Clear();
    raise(type, text);
}

template <class T>
constexpr const char* kTypeText = sizeof(T) == 4 ? std::is_signed_v<T> ? "a signed whole number of 32 bits"
                                                                       : "an unsigned whole number of 32 bits"
                                  : std::is_signed_v<T> ? "a signed whole number of 64 bits"
                                                        : "an unsigned whole number of 64 bits";

template <class T>
T wholeNumber(const std::string& name, nb::handle object) {
    const nb::object index = nb::steal(PyNumber_Index(object.ptr()));
    if (!index.is_valid())
        raiseInstead(PyExc_TypeError, name + ": takes a whole number, not " + typeName(object));
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    if (overflow == 0 && std::in_range<T>(number)) return static_cast<T>(number);
    if constexpr (std::is_same_v<T, std::uint64_t>) {
        if (overflow > 0) {
            const unsigned long long large = PyLong_AsUnsignedLongLong(index.ptr());
            if (PyErr_Occurred() == nullptr) return large;
            PyErr_Clear();
        }
    }
    raise(PyExc_OverflowError, name + ": the number does not fit " + kTypeText<T>);
}

double realNumber(const std::string& name, nb::handle object) {
    const double number = PyFloat_AsDouble(object.ptr());
    if (number != -1.0 || PyErr_Occurred() == nullptr) return number;
    if (PyErr_ExceptionMatches(PyExc_OverflowError) != 0)
        raiseInstead(PyExc_OverflowError, name + ": the number does not fit a double");
    raiseInstead(PyExc_TypeError, name + ": takes a number, not " + typeName(object));
}

/// A text without zero bytes, in the encoding of file names; paths are texts as well.
std::string text(const std::string& name, nb::handle object) {
    const nb::object path = nb::steal(PyOS_FSPath(object.ptr()));
    if (!path.is_valid()) {
        PyErr_Clear();
        raise(PyExc_TypeError, name + ": takes a text or a path, not " + typeName(object));
    }
    const nb::object bytes =
        PyBytes_Check(path.ptr()) != 0 ? path : nb::steal(PyUnicode_EncodeFSDefault(path.ptr()));
    if (!bytes.is_valid()) throw nb::python_error();
    std::string result(PyBytes_AS_STRING(bytes.ptr()),
                       static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
    if (result.find('\0') != std::string::npos)
        raise(PyExc_ValueError, name + ": a text must not hold a zero byte");
    return result;
}

Field field(const std::string& name, std::size_t elements, bool whole, nb::handle object) {
    using Array = nb::ndarray<const std::uint32_t, nb::ndim<1>, nb::c_contig, nb::device::cpu>;
    const auto checked =
        nb::module_::import_("marovine._fields").attr("elements")(name, elements, whole, object);
    const auto array = nb::cast<Array>(checked);
    return {array.data(), array.data() + array.size()};
}

void makeMembers(const ParameterType& type, const host::Applet& applet) {
    nb::list entries;
    for (const auto& entry : applet.parameter(type.name).entries)
        entries.append(nb::make_tuple(entry.constantName, entry.value, entry.displayName));
    const nb::object enumeration =
        nb::module_::import_("marovine._enumerations").attr("enumeration")(type.name, entries);
    for (nb::handle member : enumeration)
        type.members.emplace_back(nb::cast<std::int32_t>(nb::int_(member)), nb::borrow(member));
}

nb::object arrayOf(const Field& elements) {
    auto owned = std::make_unique<Field>(elements);
    std::uint32_t* data = owned->data();
    const std::size_t size = owned->size();
    const nb::capsule owner(owned.release(), [](void* field) noexcept { delete static_cast<Field*>(field); });
    return nb::cast(nb::ndarray<nb::numpy, std::uint32_t, nb::ndim<1>>(data, {size}, owner));
}

}  // namespace

std::string spelling(nb::handle text) {
    const nb::object bytes = nb::steal(PyUnicode_AsEncodedString(text.ptr(), "utf-8", "backslashreplace"));
    if (!bytes.is_valid()) throw nb::python_error();
    std::string result;
    for (const char c : std::string_view(PyBytes_AS_STRING(bytes.ptr()),
                                         static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr()))))
        c == '\0' ? result += "\\0" : result += c;
    return result;
}

nb::object textToPython(std::string_view text) {
    return nb::steal(PyUnicode_DecodeFSDefaultAndSize(text.data(), static_cast<Py_ssize_t>(text.size())));
}

nb::object toPython(const Value& value) {
    return std::visit(
        []<class T>(const T& v) -> nb::object {
            if constexpr (std::is_same_v<T, std::string>) {
                return textToPython(v);
            } else if constexpr (std::is_same_v<T, Field>) {
                return arrayOf(v);
            } else if constexpr (std::is_same_v<T, double>) {
                return nb::steal(PyFloat_FromDouble(v));
            } else if constexpr (std::is_signed_v<T>) {
                return nb::steal(PyLong_FromLongLong(v));
            } else {
                return nb::steal(PyLong_FromUnsignedLongLong(v));
            }
        },
        value);
}

nb::object toPython(const ParameterType& type, const host::Applet& applet, const Value& value) {
    if (type.kind != FG_KIND_ENUMERATION) return toPython(value);
    if (type.members.empty()) makeMembers(type, applet);
    const std::int32_t number = std::get<std::int32_t>(value);
    for (const auto& [known, member] : type.members)
        if (known == number) return member;
    return toPython(value);  // what the applet answers need not be one of the entries
}

Value fromPython(const ParameterType& type, const host::Applet& applet, nb::handle object) {
    if (type.kind == FG_KIND_UINT32_FIELD) return field(type.name, type.elements, true, object);
    if (type.kind == FG_KIND_ENUMERATION && PyUnicode_Check(object.ptr()) != 0)
        return applet.parameter(type.name).parse(spelling(object));
    return fromPythonLike(type.name, host::emptyValueOf(type.kind), object);
}

Field elementsFromPython(const ParameterType& type, nb::handle object) {
    return field(type.name, type.elements, false, object);
}

Value fromPythonLike(const std::string& name, const Value& like, nb::handle object) {
    return std::visit(
        [&]<class T>(const T& v) -> Value {
            if constexpr (std::is_same_v<T, std::string>) {
                return text(name, object);
            } else if constexpr (std::is_same_v<T, Field>) {
                return field(name, v.size(), false, object);
            } else if constexpr (std::is_same_v<T, double>) {
                return realNumber(name, object);
            } else {
                return wholeNumber<T>(name, object);
            }
        },
        like);
}

}  // namespace marovine::python
