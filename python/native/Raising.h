#pragma once

/// How failures of the client become Python exceptions, and what keeps a forked child away from its parent's
/// objects.

#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>
#include <nanobind/stl/vector.h>

#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "client/Client.h"

namespace marovine::python {

namespace nb = nanobind;

/// A class of marovine/errors.py.
nb::object errorClass(const char* name);
/// Raises a class of marovine/errors.py with a text.
[[noreturn]] void raiseError(const char* name, const std::string& text);
/// Raises one of Python's own exceptions.
[[noreturn]] void raise(PyObject* type, const std::string& text);

/// Sets the Python exception for whatever the client threw. Needs the interpreter's lock.
void translate(const std::exception_ptr& thrown);

/// Runs a slot of a type: what it throws becomes the Python exception, and `failed` the result.
template <class Result, class Body>
Result guarded(Result failed, const Body& body) noexcept {
    try {
        return body();
    } catch (...) {
        translate(std::current_exception());
        return failed;
    }
}

/// Which process an object belongs to. The board's threads and locks do not live on in a forked child.
class Birthplace {
 public:
    Birthplace();
    bool isHere() const;
    /// Raises `ForkedError` in a forked child.
    void check() const;

 private:
    unsigned forks_;
};

/// Leaves what a forked child has of its parent's objects alone for good: to end them would touch threads and
/// locks that are not there.
template <class Thing>
void abandon(std::shared_ptr<Thing> thing) {
    static_cast<void>(new std::shared_ptr<Thing>(std::move(thing)));
}

/// Holds the exception of a Python callback until the call that led to it returns in the same thread.
void keepCallbackError(nb::python_error& error);
/// Raises it.
void raiseCallbackError();
/// Ends what was kept, so that a call does not answer for the one before.
void forgetCallbackError();

}  // namespace marovine::python
