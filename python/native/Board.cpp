#include "python/native/Board.h"

#include <nanobind/ndarray.h>
#include <nanobind/stl/filesystem.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

#include "python/native/Values.h"

namespace marovine::python {

using virtualboard::ClockMode;
using virtualboard::Control;
using virtualboard::Write;

// ---- writes ----

namespace {

/// Whose functions this thread is in; one may lead to writes on another board.
thread_local std::vector<const WriteListeners*> calling;

}  // namespace

bool WriteListeners::keepJournal(bool on) {
    const std::lock_guard lock(mutex_);
    const bool before = std::exchange(journalOn_, on);
    if (!on) journal_.clear();
    listen();
    return before;
}

Writes WriteListeners::takeJournal() {
    const std::lock_guard lock(mutex_);
    return std::exchange(journal_, {});
}

void WriteListeners::add(Writes* list) {
    const std::lock_guard lock(mutex_);
    lists_.push_back(list);
    listen();
}

void WriteListeners::remove(Writes* list) {
    const std::lock_guard lock(mutex_);
    std::erase(lists_, list);
    listen();
}

void WriteListeners::call(nb::object function) {
    // The last copy may end in a thread that writes, without the interpreter's lock.
    const auto drop = [](nb::object* object) {
        const nb::gil_scoped_acquire lock;
        delete object;
    };
    std::shared_ptr<nb::object> made;
    if (!function.is_none()) made = {new nb::object(std::move(function)), drop};
    {
        const std::lock_guard lock(mutex_);
        function_.swap(made);
        listen();
    }
}

bool WriteListeners::isCalling() const {
    return std::ranges::find(calling, this) != calling.end();
}

/// A board that nobody listens to pays nothing for it.
void WriteListeners::listen() {
    if (!journalOn_ && lists_.empty() && function_ == nullptr) return control_.watchWrites({});
    control_.watchWrites([this](const Write& write) { heard(write); });
}

void WriteListeners::heard(const Write& write) {
    std::shared_ptr<nb::object> function;
    {
        const std::lock_guard lock(mutex_);
        if (journalOn_) journal_.push_back(write);
        for (Writes* list : lists_) list->push_back(write);
        function = function_;
    }
    if (function == nullptr) return;
    const nb::gil_scoped_acquire lock;
    calling.push_back(this);
    struct Leaving {
        ~Leaving() { calling.pop_back(); }
    } leaving;
    try {
        (*function)(writeToPython(write));
    } catch (nb::python_error& error) {
        keepCallbackError(error);
        throw std::runtime_error("a callback failed");  // makes the write fail
    }
}

nb::object writeToPython(const Write& write) {
    return nb::make_tuple(write.name, toPython(write.value), write.firstIndex, write.result);
}

nb::list writesToPython(const Writes& writes) {
    nb::list result;
    for (const auto& write : writes) result.append(writeToPython(write));
    return result;
}

// ---- the object ----

BoardObject::~BoardObject() {
    if (!born_.isHere()) abandon(std::move(state_));
    close();
}

std::shared_ptr<BoardState> BoardObject::use() const {
    born_.check();
    if (state_ == nullptr) raiseError("ClosedError", "the board is closed");
    return state_;
}

void BoardObject::close() {
    if (state_ == nullptr) return;
    state_->listeners->call(nb::none());
    auto last = std::move(state_);
    const nb::gil_scoped_release release;
    last.reset();
}

namespace {

using Colours = nb::ndarray<const std::uint8_t, nb::shape<-1, -1, 3>, nb::c_contig, nb::device::cpu>;

/// Runs something on a board's control without the interpreter's lock.
template <class Body>
auto onBoard(const BoardObject& object, const Body& body) {
    const auto state = object.use();
    const nb::gil_scoped_release release;
    return body(state->board.control());
}

template <class... Arguments>
auto forward(void (Control::*function)(Arguments...)) {
    return [function](const BoardObject& board, std::decay_t<Arguments>... arguments) {
        onBoard(board, [&](Control& control) { (control.*function)(arguments...); });
    };
}

void setClock(const BoardObject& board, int mode) {
    if (mode < 0 || mode > 2) raise(PyExc_ValueError, "there is no such clock mode");
    board.use()->clock = static_cast<ClockMode>(mode);
    onBoard(board, [&](Control& control) { control.setClockMode(static_cast<ClockMode>(mode)); });
}

void force(const BoardObject& board, const std::string& name, nb::handle object) {
    const auto state = board.use();
    const auto like = onBoard(board, [&](Control& control) { return control.value(name); });
    const auto value = fromPythonLike(name, like, object);
    onBoard(board, [&](Control& control) { control.force(name, value); });
}

void setScene(const BoardObject& board, const Colours& picture, std::uint32_t fieldWidth) {
    constexpr std::size_t mostPixels = std::size_t{1} << 28;
    const std::size_t height = picture.shape(0), width = picture.shape(1);
    if (width == 0 || height == 0) raise(PyExc_ValueError, "the scene is empty");
    if (width > mostPixels / height) raise(PyExc_ValueError, "the scene has more than 2**28 pixels");
    virtualboard::imaging::Image scene(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    std::memcpy(scene.pixels.data(), picture.data(), scene.bytes().size());
    onBoard(board, [&](Control& control) { control.setScene(scene, fieldWidth); });
}

void setWorld(const BoardObject& board, const std::string& json, const std::filesystem::path& folder) {
    const auto state = board.use();
    onBoard(board, [&](Control& control) { control.setWorld(json, folder); });
    state->hasWorld = true;
}

void loadWorld(const BoardObject& board, const std::filesystem::path& file) {
    const auto state = board.use();
    onBoard(board, [&](Control& control) { control.loadWorld(file); });
    state->hasWorld = true;
}

void setBelt(const BoardObject& board, double speed, double objectPixel, double encoderPitch) {
    for (const double number : {speed, objectPixel, encoderPitch})
        if (!std::isfinite(number)) raise(PyExc_ValueError, "the belt takes finite numbers only");
    if (objectPixel <= 0 || encoderPitch <= 0)
        raise(PyExc_ValueError, "object_pixel and encoder_pitch must be above 0 mm");
    const auto state = board.use();
    state->belt = {.speed = speed, .objectPixel = objectPixel, .encoderPitch = encoderPitch};
    onBoard(board, [&](Control& control) { control.setBelt(state->belt); });
}

void setCamera(const BoardObject& board, std::uint32_t sensorWidth, std::uint32_t phase, double exposure) {
    if (!std::isfinite(exposure) || exposure <= 0)
        raise(PyExc_ValueError, "neutral_exposure must be above 0 µs");
    if (phase > 3) raise(PyExc_ValueError, "a Bayer phase is 0 to 3");
    onBoard(board, [&](Control& control) {
        control.setCamera(
            {.sensorWidth = sensorWidth, .phase = phase, .neutralExposure = exposure, .readout = {}});
    });
}

}  // namespace

void bindBoard(nb::module_& module) {
    nb::class_<BoardObject>(module, "Board", nb::is_weak_referenceable())
        .def(nb::init<>())
        .def("close", &BoardObject::close)
        .def_prop_ro("closed", &BoardObject::closed)
        .def_prop_ro("clock_mode",
                     [](const BoardObject& board) { return static_cast<int>(board.use()->clock); })
        .def("set_clock_mode", &setClock, nb::arg("mode"))
        .def("time",
             [](const BoardObject& board) {
                 return onBoard(board, [](Control& control) { return control.time(); });
             })
        .def(
            "raise_event",
            [](const BoardObject& board, std::uint64_t mask, std::int64_t payload) {
                if (!std::has_single_bit(mask)) raise(PyExc_ValueError, "the mask of one event has one bit");
                const auto number = static_cast<unsigned>(std::countr_zero(mask));
                onBoard(board, [&](Control& control) { control.raiseEvent(number, payload); });
            },
            nb::arg("mask"), nb::arg("payload"))
        .def("advance_clock", forward(&Control::advanceClock), nb::arg("seconds"))
        .def("names",
             [](const BoardObject& board) {
                 return onBoard(board, [](Control& control) { return control.parameterNames(); });
             })
        .def(
            "value",
            [](const BoardObject& board, const std::string& name) {
                return toPython(onBoard(board, [&](Control& control) { return control.value(name); }));
            },
            nb::arg("name"))
        .def("force", &force, nb::arg("name"), nb::arg("value"))
        .def("refuse_writes", forward(&Control::refuseWrites), nb::arg("name"), nb::arg("code"))
        .def("refuse_reads", forward(&Control::refuseReads), nb::arg("name"), nb::arg("code"))
        .def("refuse_nth_write", forward(&Control::refuseNthWrite), nb::arg("n"), nb::arg("code"))
        .def("refuse_nth_read", forward(&Control::refuseNthRead), nb::arg("n"), nb::arg("code"))
        .def("clear_faults", forward(&Control::clearFaults))
        .def("refuse_design", forward(&Control::refuseDesign), nb::arg("on"))
        .def("refuse_handle", forward(&Control::refuseHandle), nb::arg("on"), nb::arg("code"))
        .def("hide", forward(&Control::hide), nb::arg("name"))
        .def("clear_opening_faults", forward(&Control::clearOpeningFaults))
        .def("set_input", forward(&Control::setInput), nb::arg("input"), nb::arg("high"))
        .def("set_render_threads", forward(&Control::setRenderThreads), nb::arg("threads"))
        .def("set_scene", &setScene, nb::arg("picture"), nb::arg("field_width"))
        .def("set_world", &setWorld, nb::arg("json"), nb::arg("folder"))
        .def("load_world_file", &loadWorld, nb::arg("file"))
        .def("show_test_chart", forward(&Control::showTestChart))
        .def("set_belt", &setBelt, nb::arg("speed"), nb::arg("object_pixel"), nb::arg("encoder_pitch"))
        .def("set_camera", &setCamera, nb::arg("sensor_width"), nb::arg("phase"), nb::arg("neutral_exposure"))
        .def(
            "keep_journal",
            [](const BoardObject& board, bool on) {
                if (board.use()->listeners->keepJournal(on) && on)
                    raiseError("Error", "the board keeps a journal already; one journal at a time");
            },
            nb::arg("on"))
        .def("take_journal",
             [](const BoardObject& board) { return writesToPython(board.use()->listeners->takeJournal()); })
        .def(
            "call_at_writes",
            [](const BoardObject& board, nb::object function) {
                board.use()->listeners->call(std::move(function));
            },
            nb::arg("function").none());
}

}  // namespace marovine::python
