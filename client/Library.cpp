#include "client/Library.h"

#include <dlfcn.h>

#include <cstdlib>

#include "client/Failure.h"

namespace marovine::host {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLibraryName = "libMarovine.so";
constexpr const char* kDispatcher = "lib64/libcommon-logging-dispatcher.so";

fs::path folderOfProgram() {
    std::error_code failed;
    return fs::read_symlink("/proc/self/exe", failed).parent_path();
}

/// The file to load when none is named: in a build all lies in one folder, in an installation the program in
/// bin and the library beside it in lib64 or lib.
fs::path findLibrary() {
    const fs::path program = folderOfProgram();
    std::error_code failed;
    for (const char* folder : {".", "../lib64", "../lib"}) {
        fs::path file = (program / folder / kLibraryName).lexically_normal();
        if (fs::exists(file, failed)) return file;
    }
    return kLibraryName;
}

}  // namespace

void Library::Close::operator()(void* handle) const {
    dlclose(handle);
}

Library::Handle Library::open(const fs::path& file) {
    Handle handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (handle) return handle;
    const char* reason = dlerror();
    throw Failure("the applet's library cannot be loaded: " + std::string(reason != nullptr ? reason : "") +
                  " (name it with --applet)");
}

Library::Library(const fs::path& file) : handle_(open(file)), file_(file) {}

Library::Symbol Library::find(const char* name) const {
    void* address = dlsym(handle_.get(), name);
    if (address == nullptr)
        throw Failure(file_.string() + " is no applet library: it does not export " + name);
    return {address};
}

std::shared_ptr<const Library> Library::load(const fs::path& file) {
    return std::shared_ptr<const Library>(new Library(file.empty() ? findLibrary() : file));
}

void switchLogOn(int level, const fs::path& library) {
    setenv("MAROVINE_LOG_LEVEL", std::to_string(level).c_str(), 1);
    const fs::path folder = (library.empty() ? findLibrary() : fs::absolute(library)).parent_path();
    std::error_code failed;
    for (const fs::path& installation : {folder, folder.parent_path()}) {
        if (!fs::exists(installation / kDispatcher, failed)) continue;
        setenv("TAVRDIR5_64", installation.c_str(), 0);
        return;
    }
}

}  // namespace marovine::host
