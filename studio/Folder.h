#pragma once

/// A folder for what programs send and fetch: the studio works on files only there.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace marovine::studio {

/// Among the temporary files, for this user alone; removed with all in it at the end.
class Folder {
 public:
    Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();

    /// A new empty folder in it.
    std::filesystem::path makeRoom();
    /// A new room with one file in it. The name counts without its folders; an odd one is replaced.
    std::filesystem::path keep(std::string_view name, std::string_view content);
    /// The content of a file of it, which is removed with its room. Throws `Failure` when there is none.
    std::string take(const std::filesystem::path& file) const;
    /// Whether a path lies in it, however it is written.
    bool holds(const std::filesystem::path& file) const;
    /// Removes every room that none of these files lies in.
    void removeAllBut(const std::vector<std::string>& files) const;
    /// A text with every path in it as its name alone.
    std::string withoutPaths(std::string text) const;

 private:
    std::filesystem::path path_;
    std::size_t rooms_ = 0;
};

/// The last part of a name when nothing in it can mislead, else `otherwise`.
std::string plainName(std::string_view name, const std::string& otherwise);

}  // namespace marovine::studio
