#include "base/Logging.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <barrier>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "base/DynamicLoading.h"
#include "base/LogLine.h"
#include "family/Fg_Log.h"
#include "tests/OwnProcess.h"
#include "tests/TestDispatcher.h"
#include "tests/Threads.h"

namespace {

using marovine::logLine;
using tavr::tools::logging::Logger;
using tavr::tools::logging::Logging;

constexpr const char* kName = "tavr.wrapper.Marovine";
constexpr const char* kOtherName = "tavr.wrapper.FgGxWrapper";

std::string threadHead() {
    return "thread-id=" + std::to_string(pthread_self()) + "|";
}

/// Names the installation to search, and opens its dispatcher to look into it.
TestDispatcher& useTestInstallation() {
    setenv("TAVRDIR5_64", TEST_INSTALLATION, 1);
    const std::string file =
        std::string(TEST_INSTALLATION "/lib64/lib") + tavr::tools::logging::kDispatcherLibrary + ".so";
    void* library = dlopen(file.c_str(), marovine::kLibraryOpenFlags);
    EXPECT_NE(library, nullptr) << dlerror();
    return *marovine::resolve<TestDispatcher* (*)()>(library, "testDispatcher")();
}

class LoggingTest : public testing::Test {
 protected:
    void SetUp() override {
        if (testProgramLooksInstalled()) {
            GTEST_SKIP() << "the checkout lies below a folder that looks like an installation";
        }
    }
};

void expectSilence() {
    Logger* logger = Logging::getLogger(kName);
    ASSERT_NE(logger, nullptr);
    EXPECT_EQ(logger, Logging::getLogger(kOtherName)) << "one logger for all names";
    EXPECT_FALSE(logger->isEnabled(6));
    Logging::setLogLevel(nullptr, 0);
    EXPECT_FALSE(logger->isEnabled(6)) << "the silent logger is not the dispatcher's to change";
    logger->log(6, "dropped", 0, nullptr);
    Logging::notifyDispatcherDestroyed();
}

TEST_F(LoggingTest, IsSilentWithoutDispatcher) {
    const std::filesystem::path base =
        std::filesystem::temp_directory_path() / ("logging_test." + std::to_string(getpid()));
    std::filesystem::create_directories(base / "lib64");
    Dl_info someLibrary{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&dladdr), &someLibrary), 0);
    std::filesystem::create_symlink(someLibrary.dli_fname, base / "lib64/libcommon-logging-dispatcher.so");

    inOwnProcess([] {
        unsetenv("TAVRDIR5_64");
        unsetenv("TAVRDIR5");
        expectSilence();
    });
    inOwnProcess([] {
        setenv("TAVRDIR5_64", "/nonexistent", 1);
        expectSilence();
    });
    inOwnProcess([&] {  // a library of that name which is no dispatcher
        setenv("TAVRDIR5_64", base.c_str(), 1);
        expectSilence();
    });
    inOwnProcess([] {  // a dispatcher that registers and then offers nothing
        useTestInstallation().offersFunctions = false;
        expectSilence();
    });
    std::filesystem::remove_all(base);
}

TEST_F(LoggingTest, HandsMessagesFromTheThresholdOnToTheDispatcher) {
    inOwnProcess([] {
        TestDispatcher& dispatcher = useTestInstallation();
        dispatcher.thresholds = {{kName, 5}, {kOtherName, 7}};
        const Logger& logger = *Logging::getLogger(kName);
        const Logger& silent = *Logging::getLogger(kOtherName);
        EXPECT_NE(&logger, &silent);
        EXPECT_EQ(&logger, Logging::getLogger(kName));
        EXPECT_EQ(dispatcher.registrations, 1);

        for (unsigned int level : {4u, 5u, 6u}) {
            logLine(logger, level, "trying to set parameter '", -100, "' on process ", 18446744073709551615u);
            logLine(silent, level, "never");
        }
        ASSERT_EQ(dispatcher.messages.size(), 2u);
        for (const TestDispatcher::Message& message : dispatcher.messages) {
            EXPECT_EQ(message.handle, dispatcher.handleOf(kName));
            EXPECT_EQ(message.text,
                      threadHead() + "trying to set parameter '-100' on process 18446744073709551615");
            EXPECT_EQ(message.number, 0u);
            EXPECT_EQ(message.extra, nullptr);
        }
        EXPECT_EQ(dispatcher.messages[0].level, 5u);
        EXPECT_EQ(dispatcher.messages[1].level, 6u);

        void** instancePointer = nullptr;
        static_cast<Logging*>(dispatcher.logging)->getStaticMemberPointers(&instancePointer);
        EXPECT_EQ(*instancePointer, dispatcher.logging);
    });
}

TEST_F(LoggingTest, LetsTheDispatcherChangeThresholds) {
    inOwnProcess([] {
        TestDispatcher& dispatcher = useTestInstallation();
        dispatcher.thresholds = {{kName, 7}};
        const Logger& logger = *Logging::getLogger(kName);
        EXPECT_FALSE(logger.isEnabled(4));
        dispatcher.setLevel(dispatcher.handleOf(kName), 4);
        EXPECT_TRUE(logger.isEnabled(4));
        EXPECT_FALSE(logger.isEnabled(3));
        dispatcher.setLevel(nullptr, 0);  // no logger of ours
        EXPECT_FALSE(logger.isEnabled(3));
    });
}

TEST_F(LoggingTest, StaysQuietAfterTheDispatcherHasGone) {
    inOwnProcess([] {
        TestDispatcher& dispatcher = useTestInstallation();
        const Logger* logger = Logging::getLogger(kName);
        logLine(*logger, 6, "heard");
        dispatcher.destroyed();
        logLine(*logger, 6, "dropped");
        EXPECT_EQ(dispatcher.messages.size(), 1u);

        const Logger* fallback = Logging::getLogger(kName);
        EXPECT_NE(fallback, logger);
        EXPECT_FALSE(fallback->isEnabled(6));
        EXPECT_EQ(dispatcher.registrations, 1) << "a dispatcher is never attached again";
    });
}

TEST(Logger, CanBeSwitchedOffForAThread) {
    Logger* logger = Logger::create(nullptr, 4);
    const struct {
        bool enable, wasEnabled;
    } steps[] = {{false, true}, {false, false}, {true, false}, {true, true}, {false, true}};
    for (const auto& step : steps) {
        EXPECT_EQ(logger->setEnabled(step.enable), step.wasEnabled);
        EXPECT_EQ(logger->isEnabled(4), step.enable);
        onThreads(1, [&](int) { EXPECT_TRUE(logger->isEnabled(4)); });
    }
    Logger::destroy(logger);
    Logger::destroy(nullptr);
    EXPECT_FALSE(Logger().isEnabled(6)) << "silent unless told otherwise";
}

TEST_F(LoggingTest, ServesManyThreadsFromTheFirstCallOn) {
    inOwnProcess([] {
        constexpr int kThreads = 4;
        constexpr int kLines = 200;
        TestDispatcher& dispatcher = useTestInstallation();
        std::vector<std::vector<const Logger*>> loggers(kThreads);
        // All threads leave the dispatcher together and go for the map of loggers at once.
        std::barrier together(kThreads + 1);
        dispatcher.onCreate = [&] { together.arrive_and_wait(); };
        onThreads(kThreads + 1, [&](int t) {
            if (t == kThreads) {
                for (int i = 0; i < kLines; ++i) {
                    // The last to arrive does not sleep: its lookup meets the insertions.
                    std::this_thread::sleep_for(std::chrono::microseconds(100));
                    together.arrive_and_wait();
                    Logging::setLogLevel(&dispatcher, 0);
                }
                return;
            }
            for (int i = 0; i < kLines; ++i) {
                const std::string name = "logger " + std::to_string(i);
                Logger& logger = *Logging::getLogger(name.c_str());
                loggers[static_cast<std::size_t>(t)].push_back(&logger);
                logLine(logger, 6, "line ", i);
                logger.setEnabled(false);
                logLine(logger, 6, "never");
                logger.setEnabled(true);
                dispatcher.setLevel(dispatcher.handleOf(name), static_cast<unsigned int>(i % 7));
            }
        });
        EXPECT_EQ(std::ranges::count(loggers, loggers.front()), kThreads) << "a name has one logger";
        EXPECT_EQ(dispatcher.registrations, 1);
        EXPECT_EQ(dispatcher.messages.size(), static_cast<std::size_t>(kThreads * kLines));
    });
}

/// The older log with its file open, which only a test does.
class OpenLog : public Fg_Log {
 public:
    OpenLog() : Fg_Log("ignored") { stream_ = open_memstream(&text_, &size_); }
    ~OpenLog() {
        CloseLogFile();
        std::free(text_);
    }
    /// What `write` made the log write.
    std::string written(const std::function<void(Fg_Log&)>& write) {
        const std::size_t before = textSize();
        write(*this);
        const std::size_t after = textSize();
        return {text_ + before, after - before};
    }

 private:
    std::size_t textSize() {
        std::fflush(stream_);
        return size_;
    }

    char* text_ = nullptr;
    std::size_t size_ = 0;
};

TEST(FgLog, WritesItsFixedLines) {
    OpenLog log;
    const auto line = [&](auto write) { return log.written(write); };
    EXPECT_EQ(line([](Fg_Log& l) { l.Error("bad"); }), "orbicardIV::Error >> bad;\n");
    EXPECT_EQ(line([](Fg_Log& l) { l.Info("rows", -3); }), "orbicardIV::Info >> rows >> -3;\n");
    EXPECT_EQ(line([](Fg_Log& l) { l.ErrorInt("a", "b", 7); }), "orbicardIV::Error >> a >> b >> 7;\n");
    EXPECT_EQ(line([](Fg_Log& l) { l.ErrorDouble("a", "b", 1.0 / 3.0); }),
              "orbicardIV::Error >> a >> b >> 0.333333333333;\n");
    EXPECT_EQ(line([](Fg_Log& l) { l.UsrDbg("%d of %s", 2, "two"); }), "2 of two");
    EXPECT_EQ(line([](Fg_Log& l) { l.Info("text"), l.Func("text"); }), "");
    EXPECT_EQ(std::ranges::count(line([](Fg_Log& l) { l.WriteWelcome(); }), '\n'), 5);
    Fg_Log closed("ignored.log");
    closed.WriteWelcome();
    closed.Error("bad");
    EXPECT_FALSE(std::filesystem::exists("ignored.log"));
}

}  // namespace
