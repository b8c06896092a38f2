#include "deploy/host/Signals.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

namespace ZET::Deploy {
namespace {

/// Exits with 0 when the signal ended a wait for something that does not come, and was noticed.
[[noreturn]] void WaitForNothing() {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) std::exit(2);
    const SignalGuard guard;
    const pthread_t waiter = pthread_self();
    std::thread other([&] {
        // One that comes before the call ends nothing, so there are several.
        for (int i = 0; i < 200; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            pthread_kill(waiter, SIGTERM);
        }
        // So that the test ends when it fails.
        [[maybe_unused]] const ssize_t count = write(ends[1], "x", 1);
    });
    char byte = 0;
    const bool isEnded = read(ends[0], &byte, 1) < 0 && errno == EINTR;
    // The other thread goes on, and is not waited for.
    std::_Exit(isEnded && SignalGuard::Caught() ? 0 : 1);
}

TEST(SignalsTest, SignalEndsACallThatWaitsForSomethingThatMayNeverCome) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(WaitForNothing(), testing::ExitedWithCode(0), "");
}

TEST(SignalsTest, SignalIsForgottenWithTheOutermostGuard) {
    {
        const SignalGuard outer;
        {
            const SignalGuard inner;
            std::raise(SIGTERM);
        }
        EXPECT_TRUE(SignalGuard::Caught());
        EXPECT_THROW(SignalGuard::Check(), Interrupted);
    }
    EXPECT_FALSE(SignalGuard::Caught());
    EXPECT_NO_THROW(SignalGuard::Check());
}

volatile std::sig_atomic_t g_heard = 0;

void Hear(int number) {
    g_heard = number;
}

/// For as long as it lives, the program handles SIGHUP, as a daemon does, so.
class OwnHandler {
  public:
    explicit OwnHandler(void (*handler)(int)) : m_former(std::signal(SIGHUP, handler)) { g_heard = 0; }
    ~OwnHandler() { std::signal(SIGHUP, m_former); }
    OwnHandler(const OwnHandler&) = delete;
    OwnHandler& operator=(const OwnHandler&) = delete;

  private:
    void (*m_former)(int);
};

TEST(SignalsTest, SignalThatWasNotAnsweredComesToTheProgramsOwnHandler) {
    const OwnHandler handler(Hear);
    {
        const SignalGuard outer;
        {
            const SignalGuard inner;
            std::raise(SIGHUP);
        }
        EXPECT_EQ(g_heard, 0);
    }
    EXPECT_EQ(g_heard, SIGHUP);
    EXPECT_FALSE(SignalGuard::Caught());
}

TEST(SignalsTest, SignalThatWasAnsweredDoesNotComeTwice) {
    const OwnHandler handler(Hear);
    {
        const SignalGuard guard;
        std::raise(SIGHUP);
        EXPECT_THROW(SignalGuard::Check(), Interrupted);
    }
    EXPECT_EQ(g_heard, 0);
}

TEST(SignalsTest, SignalThatTheProgramIgnoresStaysIgnored) {
    const OwnHandler handler(SIG_IGN);
    {
        const SignalGuard guard;
        std::raise(SIGHUP);
        EXPECT_FALSE(SignalGuard::Caught());
    }
}

[[noreturn]] void BeAskedToEndTooLate() {
    {
        const SignalGuard guard;
        std::raise(SIGTERM);
    }
    std::exit(0);
}

TEST(SignalsTest, ProgramThatHandlesNoneEndsByTheSignalAfterAll) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(BeAskedToEndTooLate(), testing::KilledBySignal(SIGTERM), "");
}

TEST(SignalsTest, SignalIsRememberedForWhoAsksAfterTheGuards) {
    {
        const SignalMemory memory;
        {
            const SignalGuard guard;
            std::raise(SIGTERM);
        }
        EXPECT_TRUE(SignalGuard::Caught());
    }
    EXPECT_FALSE(SignalGuard::Caught());
}

}  // namespace
}  // namespace ZET::Deploy
