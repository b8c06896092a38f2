#include "deploy/host/Process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

/// For as long as it lives, the process does that when a program of its own ends.
class AtEnds {
  public:
    AtEnds(void (*handler)(int), int flags) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = flags;
        sigaction(SIGCHLD, &action, &m_former);
    }
    ~AtEnds() { sigaction(SIGCHLD, &m_former, nullptr); }
    AtEnds(const AtEnds&) = delete;
    AtEnds& operator=(const AtEnds&) = delete;

    static struct sigaction Present() {
        struct sigaction present = {};
        sigaction(SIGCHLD, nullptr, &present);
        return present;
    }

  private:
    struct sigaction m_former = {};
};

int StatusOf(const std::string& words) {
    return RunProcess({"sh", "-c", words}).status;
}

TEST(ProcessTest, EndIsToldWhereTheProcessIgnoresThoseOfItsPrograms) {
    const AtEnds ignored(SIG_IGN, 0);
    EXPECT_EQ(StatusOf("exit 3"), 3);
    EXPECT_EQ(AtEnds::Present().sa_handler, SIG_IGN);
}

TEST(ProcessTest, EndIsToldWhereTheProcessWaitsForNone) {
    const AtEnds unwaited(SIG_DFL, SA_NOCLDWAIT);
    EXPECT_EQ(StatusOf("exit 3"), 3);
    EXPECT_NE(AtEnds::Present().sa_flags & SA_NOCLDWAIT, 0);
}

TEST(ProcessTest, NobodyElseWhoEndsMeanwhileStaysWhereTheirEndsAreIgnored) {
    const AtEnds ignored(SIG_IGN, 0);
    const pid_t other = fork();
    if (other == 0) {
        sleep(60);
        _exit(0);
    }
    // The command lasts until the other one has ended.
    const std::string number = std::to_string(other);
    EXPECT_EQ(StatusOf("kill " + number + "; while grep -qs '^State:.[^Z]' /proc/" + number +
                       "/status; do :; done"),
              0);
    EXPECT_EQ(kill(other, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

void WaitForAny(int /*number*/) {
    const int error = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    errno = error;
}

TEST(ProcessTest, EndThatSomebodyElseWasToldIsAFailureThatSaysSo) {
    const AtEnds handled(WaitForAny, SA_RESTART);
    try {
        StatusOf("exit 0");
        ADD_FAILURE() << "nothing failed";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.ErrorNumber(), ECHILD);
        EXPECT_EQ(failure.Facts().remedy, "let this program wait only for those that it starts itself");
    }
}

}  // namespace
}  // namespace ZET::Deploy
