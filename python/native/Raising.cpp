#include "python/native/Raising.h"

#include <pthread.h>

#include <atomic>
#include <new>
#include <stdexcept>

#include "client/Failure.h"
#include "marovine/WorldError.h"

namespace marovine::python {

namespace {

std::atomic<unsigned> forks{0};
thread_local PyObject* callbackError = nullptr;

void set(const nb::object& type, const std::string& text) {
    const nb::object message =
        nb::steal(PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape"));
    PyErr_SetObject(type.ptr(), message.ptr());
}

}  // namespace

nb::object errorClass(const char* name) {
    return nb::module_::import_("marovine.errors").attr(name);
}

void raiseError(const char* name, const std::string& text) {
    set(errorClass(name), text);
    throw nb::python_error();
}

void raise(PyObject* type, const std::string& text) {
    set(nb::borrow(type), text);
    throw nb::python_error();
}

void translate(const std::exception_ptr& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (nb::python_error& error) {
        error.restore();
    } catch (const nb::builtin_exception& error) {
        PyErr_SetString(PyExc_TypeError, error.what());
    } catch (const host::UnknownName& error) {
        const nb::object made = errorClass("UnknownParameter")(error.what(), nb::cast(error.suggestions));
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(made.ptr())), made.ptr());
    } catch (const host::Refused& error) {
        const nb::object made = errorClass("Refused")(error.what(), error.code, error.parameter);
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(made.ptr())), made.ptr());
    } catch (const host::UnreadableValue& error) {
        set(nb::borrow(PyExc_ValueError), error.what());
    } catch (const virtualboard::WorldError& error) {
        set(errorClass("WorldError"), error.what());
    } catch (const host::Failure& error) {
        set(errorClass("Error"), error.what());
    } catch (const std::out_of_range& error) {
        set(errorClass("UnknownParameter"), error.what());
    } catch (const std::invalid_argument& error) {
        set(nb::borrow(PyExc_ValueError), error.what());
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& error) {
        set(nb::borrow(PyExc_RuntimeError), error.what());
    }
}

Birthplace::Birthplace() : forks_(forks) {
    static const int registered = pthread_atfork(nullptr, nullptr, [] { ++forks; });
    static_cast<void>(registered);
}

bool Birthplace::isHere() const {
    return forks_ == forks.load(std::memory_order_relaxed);
}

void Birthplace::check() const {
    if (isHere()) return;
    raiseError("ForkedError",
               "this object belongs to the process that was forked; open a board and an applet in this one");
}

void keepCallbackError(nb::python_error& error) {
    error.restore();
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
    if (traceback != nullptr) PyException_SetTraceback(value, traceback);
    Py_XDECREF(type);
    Py_XDECREF(traceback);
    Py_XSETREF(callbackError, value);
}

void raiseCallbackError() {
    if (callbackError == nullptr) return;
    const nb::object error = nb::steal(std::exchange(callbackError, nullptr));
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
    throw nb::python_error();
}

void forgetCallbackError() {
    Py_CLEAR(callbackError);
}

}  // namespace marovine::python
