#include "pictures/SafeFile.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>

#include "pictures/Descriptor.h"

namespace virtualboard::imaging {

namespace fs = std::filesystem;

namespace {

constexpr mode_t kNewFile = 0666;  // less what the process masks
constexpr mode_t kPermissions = 07777;
constexpr int kMostLinks = 40;
constexpr int kMostNames = 100;  ///< tried for a temporary file

/// The holds of a thread: the first one blocks the signals, the last one lets them through.
struct Holds {
    int count = 0;
    sigset_t before{};
};
thread_local Holds holds;

[[noreturn]] void fail(const fs::path& file, const std::string& reason) {
    throw std::runtime_error(file.string() + " cannot be written: " + reason);
}

[[noreturn]] void fail(const fs::path& file, int reason) {
    fail(file, std::generic_category().message(reason));
}

/// The path of a regular file behind all links, whether it exists or not; nothing for what can only be
/// written through: pipes, devices, folders, and the descriptors that the kernel shows as links.
std::optional<fs::path> regularTarget(const fs::path& given) {
    fs::path path = given;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) return std::nullopt;
    for (int links = 0; links < kMostLinks; ++links) {
        const fs::path folder = fs::weakly_canonical(fs::absolute(path, error).parent_path(), error);
        path = folder / path.filename();
        if (error || !fs::is_symlink(fs::symlink_status(path, error))) return path;
        if (folder.string().starts_with("/proc/")) return std::nullopt;
        const fs::path next = fs::read_symlink(path, error);
        path = next.is_absolute() ? next : folder / next;
    }
    fail(given, ELOOP);
}

/// A name beside the target that is no longer than names may be. What is too long loses its beginning: the
/// applet knows its files by their ending.
fs::path temporaryName(const fs::path& target, int attempt) {
    std::string name = target.filename().string();
    std::string suffix = ".new" + std::to_string(getpid());
    if (attempt > 0) suffix += "-" + std::to_string(attempt);
    const long known = pathconf(target.parent_path().c_str(), _PC_NAME_MAX);
    const std::size_t most = known > 0 ? static_cast<std::size_t>(known) : NAME_MAX;
    if (name.size() + suffix.size() > most) {
        name.erase(0, name.size() + suffix.size() - most);
        // Some file systems refuse the rest of a character of UTF-8.
        while (!name.empty() && (static_cast<unsigned char>(name.front()) & 0xC0U) == 0x80U) name.erase(0, 1);
    }
    return target.parent_path() / (name + suffix);
}

void writeThrough(const fs::path& target, std::string_view content) {
    Descriptor file(target, O_WRONLY | O_APPEND);
    if (file.number() < 0) fail(target, errno);
    int error = file.write(content);
    if (error == 0) error = file.close();
    if (error != 0) fail(target, error);
}

}  // namespace

bool isReplaceable(const fs::path& target) {
    return regularTarget(target).has_value();
}

SignalHold::SignalHold() {
    if (holds.count++ > 0) return;
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&held, signal);
    pthread_sigmask(SIG_BLOCK, &held, &holds.before);
}

SignalHold::~SignalHold() {
    if (--holds.count == 0) pthread_sigmask(SIG_SETMASK, &holds.before, nullptr);
}

SafeFile::SafeFile(fs::path target) : target_(std::move(target)) {
    const auto destination = regularTarget(target_);
    if (!destination) fail(target_, "it is no regular file, which could be replaced by a complete one");
    destination_ = *destination;

    struct stat existing {};
    const bool exists = stat(destination_.c_str(), &existing) == 0;
    if (!exists && errno != ENOENT) fail(target_, errno);
    if (exists && access(destination_.c_str(), W_OK) != 0) fail(target_, errno);
    const Descriptor file(createTemporary());
    if (file.number() < 0) fail(target_, errno);
    if (exists) {
        mode_ = existing.st_mode & kPermissions;
        // Only the superuser may give files away; for others the group is the most that can be kept.
        if (fchown(file.number(), existing.st_uid, existing.st_gid) != 0)
            std::ignore = fchown(file.number(), static_cast<uid_t>(-1), existing.st_gid);
        // Nobody may read meanwhile who may not read the target; we must be able to.
        fchmod(file.number(), (mode_ & kNewFile) | S_IRUSR | S_IWUSR);
    } else if (struct stat created{}; fstat(file.number(), &created) == 0) {
        mode_ = created.st_mode & kPermissions;
    }
}

int SafeFile::createTemporary() {
    int descriptor = -1;
    for (int attempt = 0; attempt < kMostNames; ++attempt) {
        temporary_ = temporaryName(destination_, attempt);
        descriptor = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
        if (descriptor >= 0 || errno != EEXIST) break;
    }
    return descriptor;
}

SafeFile::~SafeFile() {
    std::error_code ignored;
    if (!committed_) fs::remove(temporary_, ignored);
}

void SafeFile::commit() {
    Descriptor file(temporary_, O_RDONLY);
    if (file.number() < 0 || fsync(file.number()) != 0 || fchmod(file.number(), mode_) != 0 ||
        rename(temporary_.c_str(), destination_.c_str()) != 0)
        fail(target_, errno);
    committed_ = true;
    // The new name, too, is to survive a power failure; file systems that cannot do this refuse.
    const Descriptor folder(destination_.parent_path(), O_RDONLY | O_DIRECTORY);
    if (folder.number() >= 0) fsync(folder.number());
}

void writeSafely(const fs::path& target, std::string_view content) {
    if (!regularTarget(target)) return writeThrough(target, content);
    SafeFile file(target);
    Descriptor out(file.temporary(), O_WRONLY);
    if (out.number() < 0) fail(target, errno);
    int error = out.write(content);
    if (error == 0) error = out.close();
    if (error != 0) fail(target, error);
    file.commit();
}

}  // namespace virtualboard::imaging
