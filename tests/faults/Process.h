#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

namespace trel::test {

/// What an attempt in a process of its own came to.
enum class Attempt { Survived = 10, NothingFailed = 11 };

/// Runs an attempt in a copy of this process, for what one process does once
/// only. What it expects there is expected here.
inline Attempt inAnotherProcess(const std::function<Attempt()>& attempt) {
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        const Attempt result = attempt();
        std::fflush(stdout);
        ::_exit(testing::Test::HasFailure() ? 1 : static_cast<int>(result));
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_GE(WEXITSTATUS(status), static_cast<int>(Attempt::Survived));
    return static_cast<Attempt>(WEXITSTATUS(status));
}

}  // namespace trel::test
