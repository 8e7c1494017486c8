#include "base/TavrDir.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

#include "base/DynamicLoading.h"
#include "base/IgnoreCase.h"
#include "base/Locks.h"
#include "marovine/EnvironmentVariables.h"

char TavrLibStatic::gmTavrDir[1024] = "";
int TavrLibStatic::gmInitLock = 0;
bool TavrLibStatic::gmIsInitialized = false;

namespace {

/// Folders of an installation that a library of it may lie in, at any depth.
constexpr std::array<std::string_view, 5> kInstallationFolders{"bin", "dll", "Hardware Applets", "lib",
                                                               "lib64"};
constexpr std::size_t kLongestPath = sizeof TavrLibStatic::gmTavrDir - 1;

std::string_view withoutTrailingSlashes(std::string_view path) {
    return path.substr(0, path.find_last_not_of('/') + 1);
}

/// Settles the installation directory for the process, if there is one.
bool installationDirectoryIsKnown() {
    const tavr::templates::platform::SpinLockVariableGuard guard(&TavrLibStatic::gmInitLock);
    if (!TavrLibStatic::gmIsInitialized) {
        Dl_info self{};
        std::optional<std::string> directory;
        if (dladdr(TavrLibStatic::gmTavrDir, &self) != 0 && self.dli_fname != nullptr) {
            directory = TavrDir::directoryAbove(self.dli_fname);
        }
        if (!directory) {
            directory = TavrDir::directoryFromEnvironment();
        }
        if (directory) {
            TavrLibStatic::gmTavrDir[directory->copy(TavrLibStatic::gmTavrDir, kLongestPath)] = '\0';
            TavrLibStatic::gmIsInitialized = true;
        }
    }
    return TavrLibStatic::gmIsInitialized;
}

}  // namespace

RuntimeLibrary::~RuntimeLibrary() {
    if (handle_ != nullptr && unloadOnRelease_) {
        dlclose(handle_);
    }
}

bool RuntimeLibrary::open() {
    handle_ = dlopen(path_.c_str(), marovine::kLibraryOpenFlags);
    if (handle_ == nullptr) {
        const char* text = dlerror();
        error_ = text != nullptr ? text : "unknown error of the dynamic loader";
    }
    return handle_ != nullptr;
}

std::unique_ptr<RuntimeLibrary> TavrDir::LoadRuntimeLibrary(const char* name, const char* directory) {
    if (directory == nullptr) {
        if (!installationDirectoryIsKnown()) {
            return nullptr;
        }
        directory = TavrLibStatic::gmTavrDir;
    }
    const std::string path = std::string(directory) + "/lib64/lib" + name + ".so";
    auto library = std::make_unique<RuntimeLibrary>(path.substr(0, kLongestPath));
    if (!library->open()) {
        return nullptr;
    }
    return library;
}

std::optional<std::string> TavrDir::directoryAbove(std::string_view libraryFile) {
    if (libraryFile.empty() || libraryFile.size() > kLongestPath) {
        return std::nullopt;
    }
    std::string_view path = libraryFile.substr(0, libraryFile.find_last_of('/') + 1);
    while (!(path = withoutTrailingSlashes(path)).empty()) {
        const std::size_t start = path.find_last_of('/') + 1;
        const std::string_view component = path.substr(start);
        path = path.substr(0, start);
        if (std::ranges::any_of(kInstallationFolders, [&](std::string_view folder) {
                return marovine::equalIgnoringCase(component, folder);
            })) {
            return std::string(withoutTrailingSlashes(path));
        }
    }
    return std::nullopt;
}

std::optional<std::string> TavrDir::directoryFromEnvironment() {
    for (const char* variable : marovine::environment::kInstallation) {
        if (const char* value = std::getenv(variable)) {
            const std::string_view directory = std::string_view(value).substr(0, kLongestPath);
            const std::string_view stripped = withoutTrailingSlashes(directory);
            return std::string(stripped.empty() ? directory.substr(0, 1) : stripped);
        }
    }
    return std::nullopt;
}
