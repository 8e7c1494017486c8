/// Files that are replaced only by complete ones, and what cannot be replaced.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "pictures/Png.h"
#include "pictures/SafeFile.h"

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

TEST_F(SafeFileTest, LeavesNothingBehindWhenInterrupted) {
    const fs::path target = folder / "target";
    writeSafely(target, "whole");
    constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
    for (std::size_t run = 0; run < 30; ++run) {
        const int signal = kSignals[run % kSignals.size()];
        const pid_t child = fork();
        if (child == 0) {
            std::signal(signal, SIG_DFL);  // whoever runs the tests may ignore it
            for (;;) writeSafely(target, "whole");
        }
        usleep(static_cast<useconds_t>(1000 + 137 * run));
        kill(child, signal);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << "held back, not lost";
    }
    EXPECT_EQ(1, fileCount());
    EXPECT_EQ("whole", contentOf(target));
}

TEST_F(SafeFileTest, HoldsSignalsUntilTheLastFileIsDone) {
    const auto isHeld = [] {
        sigset_t now;
        pthread_sigmask(SIG_SETMASK, nullptr, &now);
        return sigismember(&now, SIGTERM) == 1;
    };
    auto first = std::make_unique<SafeFile>(folder / "first");
    auto second = std::make_unique<SafeFile>(folder / "second");
    first.reset();
    EXPECT_TRUE(isHeld());
    EXPECT_NE("no error", messageOf(folder));
    EXPECT_TRUE(isHeld());
    second.reset();
    EXPECT_FALSE(isHeld());
}

TEST_F(SafeFileTest, FindsANameForTheTemporaryFile) {
    const fs::path target = folder / "target";
    const fs::path taken = target.string() + ".new" + std::to_string(getpid());
    std::ofstream(taken) << "of another process";
    writeSafely(target, "x");
    EXPECT_EQ("x", contentOf(target));
    EXPECT_EQ("of another process", contentOf(taken));

    const fs::path longest = folder / (std::string(251, 'n') + ".mcf");
    EXPECT_NE(std::string::npos, SafeFile(longest).temporary().string().find(".mcf"));
    writeSafely(longest, "y");
    EXPECT_EQ("y", contentOf(longest));
    const fs::path tooLong = folder / std::string(256, 'n');
    EXPECT_EQ(tooLong.string() + " cannot be written: File name too long", messageOf(tooLong));
    EXPECT_EQ(3, fileCount());
}

TEST_F(SafeFileTest, KeepsTheOwner) {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser may give files away";
    const fs::path target = folder / "target";
    writeSafely(target, "x");
    ASSERT_EQ(0, chown(target.c_str(), 1234, 2345));
    ASSERT_EQ(0, chmod(target.c_str(), 06750));
    writeSafely(target, "y");
    struct stat status {};
    stat(target.c_str(), &status);
    EXPECT_EQ(1234U, status.st_uid);
    EXPECT_EQ(2345U, status.st_gid);
    EXPECT_EQ(06750U, modeOf(target));
}

}  // namespace
}  // namespace virtualboard::imaging
