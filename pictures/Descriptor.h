#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <utility>

namespace virtualboard::imaging {

/// An open file, closed on every way out. Its number is negative when it could not be opened; errno says why.
class Descriptor {
 public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const std::filesystem::path& file, int flags, mode_t mode = 0)
        : number_(::open(file.c_str(), flags | O_CLOEXEC, mode)) {}
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

}  // namespace virtualboard::imaging
