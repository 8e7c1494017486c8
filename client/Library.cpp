#include "client/Library.h"

#include <dlfcn.h>

#include <cstdlib>

#include "client/Failure.h"
#include "marovine/Control.h"

namespace marovine::host {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLibraryName = "libMarovine.so";
constexpr const char* kDispatcher = "lib64/libcommon-logging-dispatcher.so";

/// The file to load when none is named. The board's library, which this one is linked with, knows the way: in
/// a build the applet lies beside it, in an installation in a folder below.
fs::path findLibrary() {
    Dl_info board{};
    std::error_code failed;
    if (dladdr(reinterpret_cast<void*>(&virtualboard::insertBoard), &board) != 0) {
        for (const char* folder : {".", APPLET_FOLDER}) {
            const fs::path beside = fs::path(board.dli_fname).parent_path();
            fs::path file = (beside / folder / kLibraryName).lexically_normal();
            if (fs::exists(file, failed)) return file;
        }
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
