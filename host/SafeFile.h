#pragma once

/// Files that appear under their name only when they are complete.

#include <filesystem>
#include <string_view>

namespace marovine::host {

/// A file to be written beside its target. Without `commit` it is removed and the target stays as it was.
class SafeFile {
 public:
    /// Nothing is created yet.
    explicit SafeFile(std::filesystem::path target);
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;
    ~SafeFile();

    /// Where to write: in the target's folder, under a name that contains the target's.
    const std::filesystem::path& temporary() const { return temporary_; }
    /// Brings the content to the disk and gives it the target's name. Throws `Failure` when it cannot.
    void commit();

 private:
    std::filesystem::path target_;
    std::filesystem::path temporary_;
    bool committed_ = false;
};

/// Writes a whole file safely. Throws `Failure`, which names the file, when it cannot.
void writeSafely(const std::filesystem::path& target, std::string_view content);

}  // namespace marovine::host
