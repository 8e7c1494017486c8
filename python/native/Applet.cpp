#include "python/native/Applet.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "client/Explain.h"
#include "client/Failure.h"
#include "client/Library.h"
#include "python/native/Acquisition.h"

namespace marovine::python {

namespace {

/// A wheel brings the applet's library; without it the one that belongs to the board's is taken.
std::shared_ptr<const host::Library> loadLibrary() {
    Dl_info self{};
    dladdr(reinterpret_cast<const void*>(&loadLibrary), &self);
    const auto own = std::filesystem::absolute(self.dli_fname).parent_path() / "lib64" / "libMarovine.so";
    return host::Library::load(std::filesystem::exists(own) ? own : std::filesystem::path());
}

/// (parameter, value, remedies, direction, advice)
nb::object causeToPython(const host::Cause& cause) {
    static constexpr std::array kDirections{"exactly", "or more", "or less"};
    return nb::make_tuple(cause.parameter, cause.value, cause.remedies,
                          kDirections[static_cast<std::size_t>(cause.direction)], host::remedyText(cause));
}

}  // namespace

AppletObject::AppletObject(const BoardObject& board, bool writeDefaults, bool explains)
    : writesDefaults_(writeDefaults), explains_(explains), board_(board.use()) {
    applet_ = unlocked([&] {
        return std::make_shared<host::Applet>(
            loadLibrary(), std::make_unique<host::VirtualBoard>(board_->board),
            host::OpenOptions{.writeDefaults = writeDefaults, .rememberSteps = explains});
    });
    for (const auto& name : applet_->names()) {
        const auto parameter = applet_->parameter(name);
        types_[name] = {.name = name, .kind = parameter.kind, .elements = parameter.elements};
    }
}

AppletObject::~AppletObject() {
    if (!born_.isHere()) {
        abandon(std::move(applet_));
        abandon(std::move(board_));
        return;
    }
    close();
}

AppletUse AppletObject::use() const {
    born_.check();
    if (applet_ == nullptr) raiseError("ClosedError", "the applet is closed");
    return {board_, applet_, !writesDefaults_};
}

AppletUse AppletObject::useRemembered() const {
    if (!explains_)
        raiseError("Error", "an applet opened with explain=False does not remember what this needs");
    return use();
}

AppletUse AppletObject::useToSet() const {
    auto used = use();
    if (used.board->listeners->isCalling())
        raiseError("Error", "a function that watches writes cannot set parameters");
    return used;
}

void AppletObject::close() {
    born_.check();
    AppletUse last{std::move(board_), std::move(applet_), false};
    const auto acquisitions = std::exchange(acquisitions_, {});
    const nb::gil_scoped_release release;
    for (const auto& weak : acquisitions)
        if (const auto acquisition = weak.lock()) acquisition->stop();
    last = {};
}

const ParameterType* AppletObject::find(std::string_view name) const {
    const auto found = types_.find(name);
    return found != types_.end() ? &found->second : nullptr;
}

const ParameterType& AppletObject::named(const std::string& name) const {
    if (const auto* type = find(name)) return *type;
    return *find(use()->nameOf(name));
}

const ParameterType& AppletObject::named(nb::handle name) const {
    if (PyUnicode_Check(name.ptr()) == 0)
        raise(PyExc_TypeError,
              std::string("the name of a parameter is a text, not ") + Py_TYPE(name.ptr())->tp_name);
    return named(spelling(name));
}

bool AppletObject::has(nb::handle name) const {
    try {
        static_cast<void>(named(name));
        return true;
    } catch (const host::UnknownName&) {
        return false;
    }
}

nb::object AppletObject::get(const ParameterType& type) const {
    const auto used = use();
    const auto value = unlocked([&] { return used->get(type.name); });
    return toPython(type, *used, value);
}

void AppletObject::set(const ParameterType& type, nb::handle object) const {
    const auto used = useToSet();
    const auto value = fromPython(type, *used, object);
    const int code = unlocked([&] { return used->trySet(type.name, value); });
    if (code == 0) return;
    const nb::object error = refusal(used, type, value, code);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
    throw nb::python_error();
}

void AppletObject::setElements(const ParameterType& type, std::uint32_t first, nb::handle object) const {
    const auto used = useToSet();
    if (type.kind != FG_KIND_UINT32_FIELD) raise(PyExc_TypeError, type.name + " is no table");
    const auto elements = elementsFromPython(type, object);
    unlocked([&] { used->setElements(type.name, first, elements); });
}

nb::object AppletObject::refusal(const AppletUse& used, const ParameterType& type, const host::Value& value,
                                 int code) const {
    const auto parameter = used->parameter(type.name);
    host::Explanation why{.parameter = type.name,
                          .value = parameter.textOf(value),
                          .code = code,
                          .rule = host::meaningOf(code),
                          .nearest = {},
                          .causes = {},
                          .accepted = {}};
    if (explains_) {
        const nb::gil_scoped_release release;
        try {
            why = host::explain(*used, {type.name, value}, code);
        } catch (const host::Failure&) {
            // The refusal itself stays to be told.
        }
    }
    nb::list nearest, causes;
    for (const auto& text : why.nearest) nearest.append(toPython(type, *used, parameter.parse(text)));
    for (const auto& cause : why.causes) causes.append(causeToPython(cause));
    return errorClass("Refused")(why.sentence(), code, type.name, toPython(type, *used, value), why.rule,
                                 nearest, causes, why.accepted, why.advice());
}

void AppletObject::follow(const std::shared_ptr<AcquisitionState>& acquisition) {
    std::erase_if(acquisitions_, [](const auto& weak) { return weak.expired(); });
    acquisitions_.push_back(acquisition);
}

namespace {

// ---- parameters as attributes ----

/// The object behind a Python object whose `__init__` has run; else null.
AppletObject* appletIn(PyObject* self) {
    return nb::inst_ready(self) ? nb::inst_ptr<AppletObject>(self) : nullptr;
}

std::string_view textOf(PyObject* name) {
    Py_ssize_t size = 0;
    const char* text = PyUnicode_AsUTF8AndSize(name, &size);
    if (text == nullptr) throw nb::python_error();
    return {text, static_cast<std::size_t>(size)};
}

/// Whether a text looks like a parameter's name, so that a mistyped one deserves suggestions.
bool resemblesParameter(std::string_view name) {
    return !name.empty() && name.front() >= 'A' && name.front() <= 'Z';
}

PyObject* getAttribute(PyObject* self, PyObject* name) {
    return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
        const auto* object = appletIn(self);
        if (object != nullptr)
            if (const auto* type = object->find(textOf(name))) return object->get(*type).release().ptr();
        PyObject* result = PyObject_GenericGetAttr(self, name);
        if (result != nullptr || object == nullptr || PyErr_ExceptionMatches(PyExc_AttributeError) == 0 ||
            !resemblesParameter(textOf(name)))
            return result;
        PyErr_Clear();
        static_cast<void>(object->named(std::string(textOf(name))));  // throws with the nearest names
        raise(PyExc_AttributeError,
              std::string(textOf(name)) + ": parameters are attributes in capital letters");
    });
}

int setAttribute(PyObject* self, PyObject* name, PyObject* value) {
    return guarded(-1, [&] {
        const auto* object = appletIn(self);
        const std::string_view text = textOf(name);
        const auto* type = object != nullptr ? object->find(text) : nullptr;
        if (type != nullptr) {
            if (value == nullptr) raise(PyExc_AttributeError, type->name + " is a parameter and stays");
            object->set(*type, value);
            return 0;
        }
        // A mistyped parameter must not become an attribute without effect.
        const bool isOwn = text.starts_with('_') || _PyType_Lookup(Py_TYPE(self), name) != nullptr;
        if (!isOwn && object != nullptr) {
            static_cast<void>(object->named(std::string(text)));
            raise(PyExc_AttributeError, std::string(text) + ": parameters are attributes in capital letters");
        }
        return PyObject_GenericSetAttr(self, name, value);
    });
}

const PyType_Slot kSlots[] = {{Py_tp_getattro, reinterpret_cast<void*>(&getAttribute)},
                              {Py_tp_setattro, reinterpret_cast<void*>(&setAttribute)},
                              {0, nullptr}};

nb::list maskList(const AppletObject& object) {
    const auto used = object.use();
    nb::list result;
    for (const auto& event : unlocked([&] { return used->events(); }))
        result.append(nb::make_tuple(event.name, event.mask));
    return result;
}

}  // namespace

void bindApplet(nb::module_& module) {
    nb::class_<AppletObject> type(module, "Applet", nb::type_slots(kSlots), nb::is_weak_referenceable());
    type.def(nb::init<const BoardObject&, bool, bool>(), nb::arg("board"), nb::arg("write_defaults"),
             nb::arg("explains"))
        .def("close", &AppletObject::close)
        .def_prop_ro("closed", &AppletObject::closed)
        .def("names", [](const AppletObject& object) { return object.use()->names(); })
        .def(
            "name_of", [](const AppletObject& object, nb::handle name) { return object.named(name).name; },
            nb::arg("name"))
        .def("has", &AppletObject::has, nb::arg("name"))
        .def(
            "get", [](const AppletObject& object, nb::handle name) { return object.get(object.named(name)); },
            nb::arg("name"))
        .def(
            "put",
            [](const AppletObject& object, nb::handle name, nb::handle value) {
                object.set(object.named(name), value);
            },
            nb::arg("name"), nb::arg("value").none())
        .def(
            "put_elements",
            [](const AppletObject& object, nb::handle name, std::uint32_t first, nb::handle value) {
                object.setElements(object.named(name), first, value);
            },
            nb::arg("name"), nb::arg("first"), nb::arg("value"))
        .def("mask_list", &maskList)
        .def("begin_acquisition", &acquire, nb::arg("pictures"), nb::arg("buffers"));
    bindReports(type);
}

}  // namespace marovine::python
