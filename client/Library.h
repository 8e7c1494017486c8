#pragma once

/// The applet's library, loaded as a host loads it: by file, its exports looked up by name.

#include <filesystem>
#include <memory>
#include <string>

#include "marovine/marovine.h"

namespace marovine::host {

/// A loaded applet library. Keep it as long as an instance of the applet lives.
class Library {
 public:
    /// Loads libMarovine.so: `file`, or without one the library that belongs to the board's, in a build
    /// or an installation, or else the one that the dynamic loader finds. Throws `Failure` when
    /// it cannot be loaded or lacks an export.
    static std::shared_ptr<const Library> load(const std::filesystem::path& file = {});

    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// Where the library was loaded from.
    const std::filesystem::path& file() const { return file_; }

 private:
    /// An address in the library, as whatever function pointer it is assigned to.
    struct Symbol {
        void* address;
        template <class Function>
        operator Function*() const {
            return reinterpret_cast<Function*>(address);
        }
    };
    struct Close {
        void operator()(void* handle) const;
    };

    using Handle = std::unique_ptr<void, Close>;

    static Handle open(const std::filesystem::path& file);
    explicit Library(const std::filesystem::path& file);
    Symbol find(const char* name) const;

    Handle handle_;  // before the exports, which are looked up in it
    std::filesystem::path file_;

 public:
    decltype(&::Std_entry) stdEntry = find("Std_entry");
    decltype(&::Fg_FreeGrabber) freeGrabber = find("Fg_FreeGrabber");
    decltype(&::Info) info = find("Info");
    decltype(&::Fg_getNrOfParameter) parameterCount = find("Fg_getNrOfParameter");
    decltype(&::Fg_getParameterName) parameterName = find("Fg_getParameterName");
    decltype(&::Fg_getParameterId) parameterId = find("Fg_getParameterId");
    decltype(&::Fg_getParameterIdByName) parameterIdByName = find("Fg_getParameterIdByName");
    decltype(&::Fg_setParameterWithType) set = find("Fg_setParameterWithType");
    decltype(&::Fg_getParameterWithType) get = find("Fg_getParameterWithType");
    decltype(&::Fg_freeParameterStringWithType) freeText = find("Fg_freeParameterStringWithType");
    decltype(&::Fg_getParameterInfo) parameterInfo = find("Fg_getParameterInfo");
    decltype(&::Fg_getParameterInfoXML) parameterInfoXml = find("Fg_getParameterInfoXML");
    decltype(&::Fg_saveConfig) saveConfig = find("Fg_saveConfig");
    decltype(&::Fg_loadConfig) loadConfig = find("Fg_loadConfig");
    decltype(&::Fg_getLastErrorNumber) lastErrorNumber = find("Fg_getLastErrorNumber");
    decltype(&::Fg_getEventMask) eventMask = find("Fg_getEventMask");
    decltype(&::Fg_getEventName) eventName = find("Fg_getEventName");
    decltype(&::Fg_AcquireEx) acquire = find("Fg_AcquireEx");
    decltype(&::Fg_stopAcquireEx) stopAcquire = find("Fg_stopAcquireEx");
    decltype(&::Fg_getStatusEx) status = find("Fg_getStatusEx");
    decltype(&::Fg_getLastPicNumberEx) lastPicture = find("Fg_getLastPicNumberEx");
    decltype(&::Fg_getLastPicNumberBlockingEx) waitForPicture = find("Fg_getLastPicNumberBlockingEx");
};

/// Switches the log lines of the applet and its board on, from `level` (0 everything, 7 nothing) to standard
/// error, for libraries loaded afterwards: sets MAROVINE_LOG_LEVEL and, unless the caller's environment names
/// an installation already, TAVRDIR5_64 to the one around `library`.
void switchLogOn(int level, const std::filesystem::path& library = {});

}  // namespace marovine::host
