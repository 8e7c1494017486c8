/// Files that are replaced only by complete ones, and what cannot be replaced.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "virtualboard/imaging/Png.h"
#include "virtualboard/imaging/SafeFile.h"

namespace virtualboard::imaging {
namespace {

namespace fs = std::filesystem;

class SafeFileTest : public testing::Test {
 protected:
    SafeFileTest() : folder(fs::temp_directory_path() / ("marovine-safe-" + std::to_string(getpid()))) {
        fs::create_directory(folder);
    }
    ~SafeFileTest() override { fs::remove_all(folder); }

    static std::string contentOf(const fs::path& file) {
        std::ifstream in(file);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    static std::string messageOf(const fs::path& target) {
        try {
            const SafeFile file(target);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no error";
    }
    static mode_t modeOf(const fs::path& file) {
        struct stat status {};
        stat(file.c_str(), &status);
        return status.st_mode & 07777;
    }
    std::ptrdiff_t fileCount() const { return std::distance(fs::directory_iterator(folder), {}); }

    fs::path folder;
};

TEST_F(SafeFileTest, LeavesTheTargetUntilItIsComplete) {
    const fs::path target = folder / "target";
    writeSafely(target, "old");
    {
        const SafeFile file(target);
        std::ofstream(file.temporary()) << "half";
        EXPECT_EQ("old", contentOf(target));
    }
    EXPECT_EQ("old", contentOf(target));
    writeSafely(target, "new");
    EXPECT_EQ("new", contentOf(target));
    EXPECT_EQ(1, fileCount());
    EXPECT_EQ("/nowhere/file cannot be written: No such file or directory", messageOf("/nowhere/file"));
}

TEST_F(SafeFileTest, WritesWhatALinkPointsTo) {
    fs::create_directory(folder / "below");
    fs::create_symlink("below/target", folder / "inner");
    fs::create_symlink("inner", folder / "outer");
    for (const char* content : {"where nothing was", "where something was"}) {
        writeSafely(folder / "outer", content);
        EXPECT_TRUE(fs::is_symlink(folder / "outer"));
        EXPECT_TRUE(fs::is_symlink(folder / "inner"));
        EXPECT_EQ(content, contentOf(folder / "below" / "target"));
    }
    EXPECT_EQ(3, fileCount());
    fs::create_symlink("loop", folder / "loop");
    EXPECT_THROW(writeSafely(folder / "loop", "x"), std::runtime_error);
    EXPECT_TRUE(fs::is_symlink(folder / "loop"));
}

TEST_F(SafeFileTest, KeepsAnExistingMode) {
    const mode_t before = umask(027);
    writeSafely(folder / "new", "x");
    umask(before);
    EXPECT_EQ(0640U, modeOf(folder / "new"));
    for (const mode_t mode : {0600U, 0664U, 0755U}) {
        chmod((folder / "new").c_str(), mode);
        writeSafely(folder / "new", "y");
        EXPECT_EQ(mode, modeOf(folder / "new"));
    }
}

TEST_F(SafeFileTest, WritesThroughAPipeAndNeverReplacesOne) {
    const fs::path pipe = folder / "pipe";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    writeSafely(pipe, "through");
    std::array<char, 16> buffer{};
    EXPECT_EQ(7, read(reader, buffer.data(), buffer.size()));
    EXPECT_STREQ("through", buffer.data());

    const Image picture(1, 1);
    writePng(pipe, picture);
    EXPECT_GT(read(reader, buffer.data(), buffer.size()), 0);
    EXPECT_EQ("PNG", std::string(&buffer[1], 3));
    close(reader);

    for (const fs::path& target : {pipe, folder})
        EXPECT_EQ(target.string() +
                      " cannot be written: it is no regular file, which could be replaced by a complete one",
                  messageOf(target));
    EXPECT_THROW(writeSafely(folder, "x"), std::runtime_error);
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_EQ(1, fileCount());
}

TEST_F(SafeFileTest, WritesToAnOpenDescriptor) {
    const fs::path target = folder / "target";
    const int descriptor = open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(descriptor, 0);
    struct stat before {};
    fstat(descriptor, &before);
    const std::string name = "/dev/fd/" + std::to_string(descriptor);
    writeSafely(name, "through");
    EXPECT_EQ("through", contentOf(target));
    struct stat after {};
    stat(target.c_str(), &after);
    EXPECT_EQ(before.st_ino, after.st_ino) << "the open file, not another of its name";
    EXPECT_NE("no error", messageOf(name));
    close(descriptor);
}

}  // namespace
}  // namespace virtualboard::imaging
