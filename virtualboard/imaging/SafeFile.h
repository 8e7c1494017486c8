#pragma once

/// Files that appear under their name only when they are complete. Every `std::runtime_error` thrown here
/// names the target and the reason.

#include <sys/types.h>

#include <filesystem>
#include <string_view>

namespace virtualboard::imaging {

/// A file to be written beside its target. Without `commit` it is removed and the target stays as it was.
/// A symbolic link stays: what it points to is the target. An existing file keeps its mode.
class SafeFile {
 public:
    /// Creates the empty file. Throws `std::runtime_error` when it cannot, when the target must not be
    /// written, or when it exists and is no regular file: a pipe or a device cannot be replaced.
    explicit SafeFile(std::filesystem::path target);
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;
    ~SafeFile();

    /// Where to write: in the target's folder, under a name that contains the target's.
    const std::filesystem::path& temporary() const { return temporary_; }
    /// Brings the content to the disk and gives it the target's name. Throws `std::runtime_error` when it
    /// cannot.
    void commit();

 private:
    std::filesystem::path target_;       ///< as given, for messages
    std::filesystem::path destination_;  ///< behind all links
    std::filesystem::path temporary_;
    mode_t mode_ = 0;
    bool committed_ = false;
};

/// Writes a whole file: safely where the target is or becomes a regular file, straight through to a pipe, a
/// device or an open descriptor such as /dev/stdout. Throws `std::runtime_error` when it cannot.
void writeSafely(const std::filesystem::path& target, std::string_view content);

}  // namespace virtualboard::imaging
