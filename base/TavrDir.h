#pragma once

/// Finds the installation that this library belongs to and opens companion libraries from its lib64 folder.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// What the directory locator keeps for the process.
struct TavrLibStatic {
    static char gmTavrDir[1024];  ///< the installation directory without trailing '/'
    static int gmInitLock;        ///< spin variable: 0 free, 1 taken
    static bool gmIsInitialized;  ///< `gmTavrDir` is settled; never reset
};

/// A library opened by its path.
class RuntimeLibrary {
 public:
    explicit RuntimeLibrary(std::string path) : path_(std::move(path)) {}
    RuntimeLibrary(const RuntimeLibrary&) = delete;
    RuntimeLibrary& operator=(const RuntimeLibrary&) = delete;
    /// Leaves the library loaded unless `unloadOnRelease` was set.
    ~RuntimeLibrary();

    /// Opens the library; on failure false, and `error` says why.
    bool open();

    void* handle() const { return handle_; }  ///< of the dynamic loader; null if not open
    void setUnloadOnRelease(bool unload) { unloadOnRelease_ = unload; }
    const std::string& path() const { return path_; }
    const std::string& error() const { return error_; }  ///< the loader's text; empty on success

 private:
    void* handle_ = nullptr;
    bool unloadOnRelease_ = false;
    std::string path_;
    std::string error_;
};

class TavrDir {
 public:
    /// Opens lib64/lib + `name` + .so below `directory`; null if it cannot be opened. A null `directory`
    /// stands for the installation directory, which is determined once in the process; null if there is none.
    static std::unique_ptr<RuntimeLibrary> LoadRuntimeLibrary(const char* name, const char* directory);

    /// The installation directory above a library file: what stands before the deepest folder named bin, dll,
    /// Hardware Applets, lib or lib64 (in any case) on its path. Nothing if there is no such folder or the
    /// path does not fit `gmTavrDir`.
    static std::optional<std::string> directoryAbove(std::string_view libraryFile);
    /// The installation directory named by TAVRDIR5_64 or, if that is unset, TAVRDIR5; nothing if both are.
    static std::optional<std::string> directoryFromEnvironment();
};
