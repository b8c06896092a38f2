#include "ChildProcess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <thread>

namespace ZET {

namespace {
[[noreturn]] void RunAndExit(const std::function<int()>& body) {
    int code = 2;
    try {
        code = body();
        if (testing::Test::HasFailure()) code = 1;
    } catch (const std::exception& error) {
        std::cout << "exception in the child: " << error.what() << std::endl;
    } catch (...) {
        std::cout << "unknown exception in the child" << std::endl;
    }
    std::fflush(nullptr);
    ::_exit(code);
}

/// Long enough for every child on a busy machine, and shorter than the time that a whole test has.
constexpr std::chrono::seconds kPatience(50);

std::chrono::nanoseconds ProcessorTimeOf(pid_t child) {
    clockid_t clock = {};
    timespec time = {};
    if (::clock_getcpuclockid(child, &clock) != 0 || ::clock_gettime(clock, &time) != 0) return {};
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::optional<int> WaitFor(pid_t child, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        const bool isStuck = std::chrono::steady_clock::now() >= deadline;
        if (isStuck || ProcessorTimeOf(child) >= limit) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return isStuck ? std::optional(kStuck) : std::nullopt;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
}  // namespace

std::optional<int> ExitOfChild(std::chrono::milliseconds limit, const std::function<int()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) RunAndExit(body);
    return child < 0 ? 3 : WaitFor(child, limit);
}

void ExpectChildPasses(std::chrono::milliseconds limit, const std::function<void()>& body) {
    const auto code = ExitOfChild(limit, [&] {
        body();
        return 0;
    });
    if (!code) {
        ADD_FAILURE() << "the child did not end in time";
    } else {
        EXPECT_EQ(*code, 0) << "how the child ended";
    }
}

bool StillRunsAfter(std::chrono::milliseconds time, const std::function<void()>& body) {
    const auto code = ExitOfChild(time, [&] {
        body();
        return 0;
    });
    return !code.has_value();
}

}  // namespace ZET
