#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

/// A name in the folder for temporary files, and whatever file lies under it, removed at the end.
class TemporaryFile {
 public:
    explicit TemporaryFile(std::string_view extension)
        : path_(std::filesystem::temp_directory_path() /
                ("marovine-" + std::to_string(getpid()) + "-" + std::to_string(counter_++) +
                 std::string(extension))) {}
    TemporaryFile(std::string_view extension, std::string_view content) : TemporaryFile(extension) {
        write(content);
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const char* name() const { return path_.c_str(); }

    void write(std::string_view content) const { std::ofstream(path_, std::ios::binary) << content; }

    [[nodiscard]] std::string content() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

 private:
    static inline int counter_ = 0;
    std::filesystem::path path_;
};
