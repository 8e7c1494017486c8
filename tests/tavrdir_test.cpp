#include "base/TavrDir.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/OwnProcess.h"
#include "tests/Threads.h"

namespace {

constexpr const char* kLibrary = "test_companion";

TEST(TavrDir, FindsTheInstallationAboveALibrary) {
    const struct {
        std::string file;
        std::optional<std::string> directory;
    } rows[] = {
        {"/opt/x/Hardware Applets/board/libapplet.so", "/opt/x"},
        {"/opt/x/lib64/libapplet.so", "/opt/x"},
        {"/opt/x/LIB64/libapplet.so", "/opt/x"},
        {"/opt/x/hardware applets/a/b/c/libapplet.so", "/opt/x"},
        {"/opt/x/bin/libapplet.so", "/opt/x"},
        {"/opt/x/Dll/libapplet.so", "/opt/x"},
        {"/opt/lib/x/lib/libapplet.so", "/opt/lib/x"},  // the deepest folder counts
        {"/opt///x///lib64///libapplet.so", "/opt///x"},
        {"/lib64/libapplet.so", ""},
        {"build/lib/libapplet.so", "build"},
        {"/opt/x/lib64", std::nullopt},  // the file itself is no folder
        {"/opt/x/lib6/libs/libapplet.so", std::nullopt},
        {"/libapplet.so", std::nullopt},
        {"libapplet.so", std::nullopt},
        {"", std::nullopt},
        {"/opt/lib64/" + std::string(1012, 'a'), "/opt"},  // 1023 characters fit
        {"/opt/lib64/" + std::string(1013, 'a'), std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TavrDir::directoryAbove(row.file), row.directory) << row.file;
    }
}

TEST(TavrDir, AsksTheEnvironmentInOrder) {
    const struct {
        const char* first;   // TAVRDIR5_64; null: unset
        const char* second;  // TAVRDIR5
        std::optional<std::string> directory;
    } rows[] = {
        {nullptr, nullptr, std::nullopt},
        {"/opt/x", "/opt/y", "/opt/x"},
        {nullptr, "/opt/y///", "/opt/y"},
        {"", "/opt/y", ""},  // set, though empty
        {"///", nullptr, "/"},
    };
    const auto set = [](const char* name, const char* value) {
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    };
    inOwnProcess([&] {
        for (const auto& row : rows) {
            set("TAVRDIR5_64", row.first);
            set("TAVRDIR5", row.second);
            EXPECT_EQ(TavrDir::directoryFromEnvironment(), row.directory);
        }
        const std::string longest = "/" + std::string(1022, 'a');
        set("TAVRDIR5_64", (longest + "bcd").c_str());
        EXPECT_EQ(TavrDir::directoryFromEnvironment(), longest);
    });
}

TEST(TavrDir, OpensLibrariesOfADirectory) {
    inOwnProcess([] {
        const auto library = TavrDir::LoadRuntimeLibrary(kLibrary, TEST_INSTALLATION);
        ASSERT_NE(library, nullptr);
        EXPECT_NE(library->handle(), nullptr);
        EXPECT_EQ(library->path(), TEST_INSTALLATION "/lib64/libtest_companion.so");
        EXPECT_EQ(library->error(), "");
        EXPECT_EQ(TavrDir::LoadRuntimeLibrary("missing", TEST_INSTALLATION), nullptr);
        EXPECT_EQ(TavrDir::LoadRuntimeLibrary(kLibrary, std::string(2000, 'a').c_str()), nullptr);
    });

    RuntimeLibrary missing("/nonexistent/libmissing.so");
    EXPECT_FALSE(missing.open());
    EXPECT_NE(missing.error().find("libmissing.so"), std::string::npos) << missing.error();
}

TEST(RuntimeLibrary, StaysLoadedUnlessToldOtherwise) {
    const std::string path = TEST_INSTALLATION "/lib64/libtest_companion.so";
    const auto isLoaded = [&] {
        void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (library != nullptr) {
            dlclose(library);
        }
        return library != nullptr;
    };
    const auto useOnce = [&](bool unload) {
        RuntimeLibrary library(path);
        library.setUnloadOnRelease(unload);
        EXPECT_TRUE(library.open());
    };
    inOwnProcess([&] {
        useOnce(true);
        EXPECT_FALSE(isLoaded());
        useOnce(false);
        EXPECT_TRUE(isLoaded());
    });
}

TEST(TavrDir, SettlesTheInstallationOnceForTheProcess) {
    if (testProgramLooksInstalled()) {
        GTEST_SKIP() << "the checkout lies below a folder that looks like an installation";
    }
    inOwnProcess([] {
        unsetenv("TAVRDIR5_64");
        unsetenv("TAVRDIR5");
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(TavrDir::LoadRuntimeLibrary(kLibrary, nullptr), nullptr);
        }
        setenv("TAVRDIR5", TEST_INSTALLATION "///", 1);
        onThreads(4, [](int) { EXPECT_NE(TavrDir::LoadRuntimeLibrary(kLibrary, nullptr), nullptr); });
        EXPECT_STREQ(TavrLibStatic::gmTavrDir, TEST_INSTALLATION);
        setenv("TAVRDIR5_64", "/nonexistent", 1);
        EXPECT_NE(TavrDir::LoadRuntimeLibrary(kLibrary, nullptr), nullptr) << "settled by the first success";
    });
}

}  // namespace
