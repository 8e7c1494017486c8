#pragma once

/// An applet as a Python object. Its parameters are attributes: the type's own slots look a name up among
/// them before anything else.

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "client/Client.h"
#include "python/native/Board.h"
#include "python/native/Values.h"

namespace marovine::python {

class AcquisitionState;

/// What a call on an applet works with, kept until the call is over: another thread may close the object.
struct AppletUse {
    std::shared_ptr<BoardState> board;
    std::shared_ptr<host::Applet> applet;
    bool attached = false;  ///< opened without writing the defaults

    host::Applet* operator->() const { return applet.get(); }
    host::Applet& operator*() const { return *applet; }
};

class AppletObject {
 public:
    /// Opens the applet of the library that lies beside this module.
    AppletObject(const BoardObject& board, bool writeDefaults, bool explains);
    AppletObject(const AppletObject&) = delete;
    AppletObject& operator=(const AppletObject&) = delete;
    ~AppletObject();

    /// Raises `ClosedError` or `ForkedError`.
    AppletUse use() const;
    /// As `use`, to set parameters; raises `Error` in a function that watches the board's writes.
    AppletUse useToSet() const;
    void close();
    bool closed() const { return applet_ == nullptr; }

    /// The parameter of exactly this name; null when there is none.
    const ParameterType* find(std::string_view name) const;
    /// The parameter that a text names without regard to case. Throws `UnknownName`.
    const ParameterType& named(const std::string& name) const;
    /// The same for a Python object; raises `TypeError` for what is no text.
    const ParameterType& named(nb::handle name) const;
    /// Whether a text names a parameter, without regard to case.
    bool has(nb::handle name) const;
    /// As `use`, for what is tried out on a second board; raises `Error` when the steps to there are unknown.
    AppletUse useRemembered() const;

    nb::object get(const ParameterType& type) const;
    void set(const ParameterType& type, nb::handle value) const;
    void setElements(const ParameterType& type, std::uint32_t first, nb::handle value) const;

    /// The exception for a refused value, with its reasons.
    nb::object refusal(const AppletUse& used, const ParameterType& type, const host::Value& value,
                       int code) const;
    /// An acquisition to be stopped before the applet closes.
    void follow(const std::shared_ptr<AcquisitionState>& acquisition);

 private:
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };

    Birthplace born_;
    bool writesDefaults_;
    bool explains_;
    std::shared_ptr<BoardState> board_;
    std::shared_ptr<host::Applet> applet_;
    std::unordered_map<std::string, ParameterType, NameHash, std::equal_to<>> types_;
    std::vector<std::weak_ptr<AcquisitionState>> acquisitions_;
};

/// Runs something without the interpreter's lock. An exception of a callback that it led to is raised in
/// place of what came of it.
template <class Body>
auto unlocked(const Body& body) {
    forgetCallbackError();
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            {
                const nb::gil_scoped_release release;
                body();
            }
            raiseCallbackError();
        } else {
            auto result = [&] {
                const nb::gil_scoped_release release;
                return body();
            }();
            raiseCallbackError();
            return result;
        }
    } catch (const nb::python_error&) {
        throw;
    } catch (...) {
        raiseCallbackError();
        throw;
    }
}

void bindApplet(nb::module_& module);
/// The calls that answer with a report: several settings at once, files, and what limits a parameter.
void bindReports(nb::class_<AppletObject>& type);

}  // namespace marovine::python
