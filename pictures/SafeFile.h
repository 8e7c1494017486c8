#pragma once

/// Files that appear under their name only when they are complete. Every `std::runtime_error` thrown here
/// names the target and the reason.

#include <sys/types.h>

#include <filesystem>
#include <string_view>

namespace virtualboard::imaging {

/// Holds SIGINT, SIGTERM and SIGHUP back from this thread and from those that it starts meanwhile, so that
/// nothing temporary stays behind; they arrive when the last hold of the thread ends. Ends in the thread that
/// it began in.
class SignalHold {
 public:
    SignalHold();
    SignalHold(const SignalHold&) = delete;
    SignalHold& operator=(const SignalHold&) = delete;
    ~SignalHold();
};

/// A file to be written beside its target. Without `commit` it is removed and the target stays as it was.
/// A symbolic link stays: what it points to is the target. An existing file keeps its mode, and its owner and
/// group as far as the process may set them; a second hard link to it keeps the old content. Signals that
/// would end the process wait until the file is done with, see `SignalHold`.
class SafeFile {
 public:
    /// Creates the empty file. Throws `std::runtime_error` when it cannot, when the target must not be
    /// written, or when it exists and is no regular file: a pipe or a device cannot be replaced.
    explicit SafeFile(std::filesystem::path target);
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;
    ~SafeFile();

    /// Where to write: in the target's folder, under the target's name (of a very long one the end) with a
    /// suffix.
    const std::filesystem::path& temporary() const { return temporary_; }
    /// Brings the content to the disk and gives it the target's name, for good where the file system can
    /// promise that. Throws `std::runtime_error` when it cannot.
    void commit();

 private:
    /// A descriptor of the new temporary file; negative, with the reason in errno, when none can be made.
    int createTemporary();

    SignalHold hold_;                    ///< first, to end after the removal
    std::filesystem::path target_;       ///< as given, for messages
    std::filesystem::path destination_;  ///< behind all links
    std::filesystem::path temporary_;
    mode_t mode_ = 0;
    bool committed_ = false;
};

/// Whether the target is or becomes a regular file; a pipe or a device can only be written through. Throws
/// `std::runtime_error` for links that lead in a circle.
bool isReplaceable(const std::filesystem::path& target);

/// Writes a whole file: safely where the target is or becomes a regular file, straight through to a pipe, a
/// device or an open descriptor such as /dev/stdout. Throws `std::runtime_error` when it cannot.
void writeSafely(const std::filesystem::path& target, std::string_view content);

}  // namespace virtualboard::imaging
