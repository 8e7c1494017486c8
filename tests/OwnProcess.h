#pragma once

/// For what happens once in a process: a scenario runs in a child of its own, whatever ran before it.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "base/TavrDir.h"

/// Runs `scenario` in a child process; its failed expectations fail this test.
template <typename Scenario>
void inOwnProcess(Scenario scenario) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        // An exception must not reach the test runner of the child.
        [&]() noexcept { scenario(); }();
        std::exit(::testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "wait status of the child process";
}

/// True for a checkout below a folder such as lib or bin: the test program then takes that folder's parent
/// for its installation and the environment is never asked.
inline bool testProgramLooksInstalled() {
    Dl_info self{};
    return dladdr(TavrLibStatic::gmTavrDir, &self) != 0 &&
           TavrDir::directoryAbove(self.dli_fname).has_value();
}
