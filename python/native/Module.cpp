/// The extension module marovine._native: the client library as Python sees it. What a user works with is
/// made from it in the package's Python files.

#include "python/native/Acquisition.h"
#include "python/native/Applet.h"
#include "python/native/Board.h"
#include "python/native/Events.h"

NB_MODULE(_native, module) {
    using namespace marovine::python;
    module.doc() =
        "The applet, its board and its pictures, close to the client library; use marovine instead.";
    // Objects that live to the end of the process are no leak.
    nb::set_leak_warnings(false);
    nb::register_exception_translator([](const std::exception_ptr& thrown, void*) { translate(thrown); });
    bindBoard(module);
    bindEvents(module);
    bindAcquisition(module);
    bindApplet(module);
}
