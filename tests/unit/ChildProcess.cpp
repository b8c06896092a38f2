#include "ChildProcess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
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

std::optional<int> WaitFor(pid_t child, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return std::nullopt;
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
