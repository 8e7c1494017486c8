#include "virtualboard/imaging/SafeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace virtualboard::imaging {

namespace fs = std::filesystem;

namespace {

constexpr mode_t kNewFile = 0666;  // less what the process masks
constexpr mode_t kPermissions = 07777;
constexpr int kMostLinks = 40;

[[noreturn]] void fail(const fs::path& file, const std::string& reason) {
    throw std::runtime_error(file.string() + " cannot be written: " + reason);
}

[[noreturn]] void fail(const fs::path& file, int reason) {
    fail(file, std::generic_category().message(reason));
}

/// An open file, closed on every way out.
class Descriptor {
 public:
    Descriptor(const fs::path& file, int flags, mode_t mode = 0)
        : number_(open(file.c_str(), flags | O_CLOEXEC, mode)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }

    int number() const { return number_; }

    /// 0, or the reason why not everything could be written.
    int write(std::string_view content) const {
        while (!content.empty()) {
            const ssize_t count = ::write(number_, content.data(), content.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return errno;
            content.remove_prefix(static_cast<std::size_t>(count));
        }
        return 0;
    }

    /// 0, or the reason why what was written is lost.
    int close() { return ::close(std::exchange(number_, -1)) == 0 ? 0 : errno; }

 private:
    int number_;
};

/// The path of a regular file behind all links, whether it exists or not; nothing for what can only be
/// written through: pipes, devices, folders, and the descriptors that the kernel shows as links.
std::optional<fs::path> regularTarget(fs::path path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) return std::nullopt;
    for (int links = 0; links < kMostLinks; ++links) {
        const fs::path folder = fs::weakly_canonical(fs::absolute(path).parent_path(), error);
        path = folder / path.filename();
        if (error || !fs::is_symlink(fs::symlink_status(path, error))) return path;
        if (folder.string().starts_with("/proc/")) return std::nullopt;
        const fs::path next = fs::read_symlink(path, error);
        path = next.is_absolute() ? next : folder / next;
    }
    fail(path, ELOOP);
}

void writeThrough(const fs::path& target, std::string_view content) {
    Descriptor file(target, O_WRONLY | O_APPEND);
    if (file.number() < 0) fail(target, errno);
    int error = file.write(content);
    if (error == 0) error = file.close();
    if (error != 0) fail(target, error);
}

}  // namespace

SafeFile::SafeFile(fs::path target) : target_(std::move(target)) {
    const auto destination = regularTarget(target_);
    if (!destination) fail(target_, "it is no regular file, which could be replaced by a complete one");
    destination_ = *destination;
    temporary_ = destination_.string() + ".new" + std::to_string(getpid());

    struct stat existing {};
    const bool exists = stat(destination_.c_str(), &existing) == 0;
    if (exists && access(destination_.c_str(), W_OK) != 0) fail(target_, errno);
    const Descriptor file(temporary_, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, kNewFile);
    if (file.number() < 0) fail(target_, errno);
    if (exists) {
        mode_ = existing.st_mode & kPermissions;
        // Nobody may read meanwhile who may not read the target; we must be able to.
        fchmod(file.number(), (mode_ & kNewFile) | S_IRUSR | S_IWUSR);
    } else if (struct stat created{}; fstat(file.number(), &created) == 0) {
        mode_ = created.st_mode & kPermissions;
    }
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
