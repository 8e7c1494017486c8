/// The log dispatcher of the virtual board, as a library of its own.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using Create = void (*)(const char* name, void** handle, unsigned* threshold);
using Log = void (*)(void* handle, unsigned level, const char* text, unsigned number, void* extra);
using Registration = void (*)(void* logging, void (*destroyed)(), void (*setLevel)(void*, unsigned), Create*,
                              Log*);

class LogDispatcherTest : public testing::Test {
 protected:
    LogDispatcherTest() {
        library_ = dlopen(LOG_DISPATCHER, RTLD_NOW);
        auto* descriptor = static_cast<Registration*>(
            library_ != nullptr ? dlsym(library_, "logging_dispatcher_descriptor") : nullptr);
        if (descriptor == nullptr) throw std::runtime_error("the dispatcher is not there");
        int logging = 0;
        descriptor[0](
            &logging, [] {}, [](void*, unsigned) {}, &create_, &log_);
    }
    ~LogDispatcherTest() override {
        unsetenv("MAROVINE_LOG_LEVEL");
        dlclose(library_);
    }

    /// The threshold that a new logger gets under this value of the environment variable; null unsets it.
    unsigned thresholdAt(const char* name, const char* level) {
        level != nullptr ? setenv("MAROVINE_LOG_LEVEL", level, 1) : unsetenv("MAROVINE_LOG_LEVEL");
        unsigned threshold = 99;
        create_(name, &handle_, &threshold);
        return threshold;
    }
    std::string written(unsigned level, const char* text) {
        testing::internal::CaptureStderr();
        log_(handle_, level, text, 0, nullptr);
        return testing::internal::GetCapturedStderr();
    }

    void* library_ = nullptr;
    Create create_ = nullptr;
    Log log_ = nullptr;
    void* handle_ = nullptr;
};

TEST_F(LogDispatcherTest, WritesLinesFromTheLevelThatTheEnvironmentNames) {
    for (const char* level : {static_cast<const char*>(nullptr), "", "all", "8", "44"})
        EXPECT_EQ(7u, thresholdAt(level != nullptr ? level : "unset", level));
    EXPECT_EQ("", written(7, "never"));
    EXPECT_EQ(0u, thresholdAt("zero", "0"));
    EXPECT_EQ(4u, thresholdAt("tavr.test", "4"));
    EXPECT_EQ("", written(3, "too low"));
    EXPECT_THAT(written(4, "looked up"),
                testing::AllOf(testing::HasSubstr("tavr.test"), testing::HasSubstr("looked up\n")));
    EXPECT_EQ("", written(6, nullptr));
    void* const first = handle_;
    thresholdAt("second", "4");
    EXPECT_NE(first, handle_);
    EXPECT_EQ(4u, thresholdAt("tavr.test", "0")) << "a logger keeps its threshold";
    EXPECT_EQ(first, handle_);
}

}  // namespace
