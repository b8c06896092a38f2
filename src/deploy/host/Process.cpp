#include "deploy/host/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>  // IWYU pragma: keep, it would name another header of the same numbers
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iterator>
#include <new>
#include <string_view>

#include "deploy/host/ProcessOutput.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Words.h"
#include "posix/Descriptor.h"
#include "posix/ReadWrite.h"

namespace ZET::Deploy {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kSignalInterval = 250ms;  // a signal just before a wait does not end it
constexpr std::chrono::milliseconds kBetweenLooks = 20ms;     // where the end of a program is not reported
constexpr std::chrono::seconds kTimeToEnd = 2s;               // between SIGTERM and SIGKILL

/// Its ends are closed in the programs that are started.
struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

Pipe MakePipe() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw SystemFailure(
            {.text = _("a pipe cannot be made"), .remedy = _("let the command open more files")}, errno);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> Environment(const std::vector<std::string>& additions) {
    std::vector<std::string> all(additions);
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view name = std::string_view(*entry).substr(0, std::strcspn(*entry, "=") + 1);
        const bool isReplaced = std::any_of(additions.begin(), additions.end(),
                                            [&](const auto& addition) { return addition.starts_with(name); });
        if (!isReplaced) all.emplace_back(*entry);
    }
    return all;
}

/// A program that is not started exactly as it should be could write where it must not.
void Require(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    if (error != 0)
        throw SystemFailure({.text = _("a program cannot be started"), .remedy = _("run the command again")},
                            error);
}

/// How a program starts: without input, with its output in a pipe, as the first of a process group, and with
/// the signals and files that programs expect.
class StartConditions {
  public:
    StartConditions(int output, const std::string& directory) {
        Require(posix_spawn_file_actions_init(&m_actions));
        Require(posix_spawnattr_init(&m_attributes));
        if (!directory.empty()) Require(posix_spawn_file_actions_addchdir_np(&m_actions, directory.c_str()));
        Require(posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        Require(posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO));
        Require(posix_spawn_file_actions_adddup2(&m_actions, output, STDERR_FILENO));
        Require(posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1));
        sigset_t signals;
        sigfillset(&signals);
        Require(posix_spawnattr_setsigdefault(&m_attributes, &signals));
        sigemptyset(&signals);
        Require(posix_spawnattr_setsigmask(&m_attributes, &signals));
        Require(posix_spawnattr_setpgroup(&m_attributes, 0));
        Require(posix_spawnattr_setflags(
            &m_attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP));
    }
    ~StartConditions() {
        posix_spawnattr_destroy(&m_attributes);
        posix_spawn_file_actions_destroy(&m_actions);
    }
    StartConditions(const StartConditions&) = delete;
    StartConditions& operator=(const StartConditions&) = delete;

    const posix_spawn_file_actions_t* Actions() const { return &m_actions; }
    const posix_spawnattr_t* Attributes() const { return &m_attributes; }

  private:
    posix_spawn_file_actions_t m_actions = {};
    posix_spawnattr_t m_attributes = {};
};

pid_t Start(std::vector<std::string> arguments, const ProcessConditions& conditions, int output) {
    const StartConditions start(output, conditions.directory);
    std::vector<std::string> environment = Environment(conditions.environment);
    pid_t child = -1;
    const int error = posix_spawnp(&child, arguments.front().c_str(), start.Actions(), start.Attributes(),
                                   Pointers(arguments).data(), Pointers(environment).data());
    if (error != 0) {
        throw SystemFailure({.file = arguments.front(),
                             .text = _("cannot be started"),
                             .remedy = _("install it, or correct its name")},
                            error);
    }
    return child;
}

[[noreturn]] void Fail(const char* what) {
    throw SystemFailure({.text = what, .remedy = _("run the command again")}, errno);
}

/// While the object lives, whoever started a program can find out how it ended, even in a process that
/// ignores SIGCHLD, as daemons do. A handler stays in place.
class EndsAreTold {
  public:
    EndsAreTold() {
        sigaction(SIGCHLD, nullptr, &m_former);
        m_areIgnored = m_former.sa_handler == SIG_IGN || (m_former.sa_flags & SA_NOCLDWAIT) != 0;
        if (!m_areIgnored) return;
        struct sigaction action = m_former;
        action.sa_flags &= ~SA_NOCLDWAIT;
        if (action.sa_handler == SIG_IGN) action.sa_handler = SIG_DFL;
        sigaction(SIGCHLD, &action, nullptr);
    }
    ~EndsAreTold() {
        if (!m_areIgnored) return;
        sigaction(SIGCHLD, &m_former, nullptr);
        // Nobody else asks for the programs that ended meanwhile.
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
    }
    EndsAreTold(const EndsAreTold&) = delete;
    EndsAreTold& operator=(const EndsAreTold&) = delete;

  private:
    struct sigaction m_former = {};
    bool m_areIgnored = false;
};

/// A descriptor that becomes readable when the process ends; -1 if the system has none.
int DescriptorOf(pid_t process) {
    // The C library's header does not declare it as a C function.
    return static_cast<int>(syscall(SYS_pidfd_open, process, 0));
}

/// A running program. If nobody waited for it, it is killed when the object ends, unless its number may be
/// another process's by then.
class Child {
  public:
    explicit Child(pid_t process) : m_process(process), m_descriptor(DescriptorOf(process)) {}
    ~Child() {
        if (m_isGone) return;
        SignalGroup(SIGKILL);
        Uninterrupted([&] { return waitpid(m_process, nullptr, 0); });
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    int PollableDescriptor() const { return m_descriptor; }

    /// The process keeps its number, so that its group can still be told from others.
    bool HasEnded() {
        siginfo_t ended = {};
        if (waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOHANG | WNOWAIT) != 0)
            FailToTell();
        return ended.si_pid != 0;
    }

    void SignalGroup(int number) const { kill(-m_process, number); }

    void WaitForEnd(ProcessResult& result) {
        int status = 0;
        if (Uninterrupted([&] { return waitpid(m_process, &status, 0); }) < 0) FailToTell();
        m_isGone = true;
        result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + result.signal;
    }

  private:
    [[noreturn]] void FailToTell() {
        m_isGone = true;
        throw SystemFailure({.text = _("how a program ended cannot be told"),
                             .remedy = _("let this program wait only for those that it starts itself")},
                            errno);
    }

    pid_t m_process;
    Descriptor m_descriptor;
    bool m_isGone = false;
};

/// Reads what a program prints for as long as it runs.
class Attendance {
  public:
    Attendance(Child& child, int source, std::size_t keptOutput)
        : m_child(child), m_source(source), m_output(keptOutput) {}

    /// Returns false if the program still runs at the deadline, or a signal came.
    bool WaitUntil(Clock::time_point deadline) {
        while (!m_child.HasEnded()) {
            if (SignalGuard::Caught() || Clock::now() >= deadline) return false;
            Attend(deadline);
        }
        return true;
    }

    /// Asks the program, and what it started, to end; after a while, kills what is left.
    void End() {
        m_child.SignalGroup(SIGTERM);
        m_child.SignalGroup(SIGCONT);
        const Clock::time_point deadline = Clock::now() + kTimeToEnd;
        while ((m_isOpen || !m_child.HasEnded()) && Clock::now() < deadline)
            Attend(deadline);
        m_child.SignalGroup(SIGKILL);
    }

    /// All that the program printed is there once it has ended, whoever else goes on printing.
    std::string TakeOutput() {
        int count = 0;
        if (m_isOpen && ioctl(m_source, FIONREAD, &count) != 0) FailOutput();
        while (count > 0) {
            const std::size_t length = Read(static_cast<std::size_t>(count));
            if (length == 0) break;
            count -= static_cast<int>(length);
        }
        return m_output.Text();
    }

  private:
    [[noreturn]] static void FailOutput() { Fail(_("the output of a program cannot be read")); }

    void Attend(Clock::time_point deadline) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const auto longest = m_child.PollableDescriptor() < 0 ? kBetweenLooks : kSignalInterval;
        struct pollfd ready[] = {{m_isOpen ? m_source : -1, POLLIN, 0},
                                 {m_child.PollableDescriptor(), POLLIN, 0}};
        const int wait = static_cast<int>(std::clamp(left, 0ms, longest).count());
        if (poll(ready, std::size(ready), wait) < 0) {
            if (errno != EINTR) FailOutput();
        } else if (ready[0].revents != 0) {
            m_isOpen = Read(kPart) != 0;
        }
    }

    /// Returns zero at the end of the output.
    std::size_t Read(std::size_t most) {
        char part[kPart];
        const ssize_t length = ReadSome(m_source, part, std::min(most, sizeof part));
        if (length < 0) FailOutput();
        m_output.Append({part, static_cast<std::size_t>(length)});
        return static_cast<std::size_t>(length);
    }

    static constexpr std::size_t kPart = 16384;

    Child& m_child;
    int m_source;
    bool m_isOpen = true;
    ProcessOutput m_output;
};

}  // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments, const ProcessConditions& conditions) {
    const bool isLimited = conditions.timeLimit.count() > 0;
    const Clock::time_point deadline =
        isLimited ? Clock::now() + conditions.timeLimit : Clock::time_point::max();
    // The program's own process group does not get the signals that end this process.
    const SignalGuard signals;
    const EndsAreTold ends;
    Pipe pipe = MakePipe();
    Child child(Start(arguments, conditions, pipe.writeEnd));
    pipe.writeEnd.Close();
    Attendance attendance(child, pipe.readEnd, conditions.keptOutput);
    ProcessResult result;
    if (!attendance.WaitUntil(deadline)) {
        attendance.End();
        result.isLate = !SignalGuard::Caught();
    }
    child.WaitForEnd(result);
    result.output = attendance.TakeOutput();
    SignalGuard::Check();
    return result;
}

}  // namespace ZET::Deploy
