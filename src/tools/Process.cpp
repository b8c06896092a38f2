#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>
#include <string_view>

#include "ExitStatus.h"
#include "Signals.h"

namespace ZET {

namespace {

constexpr int kSignalInterval = 250;  // ms; a signal just before the waiting does not end it

/// A pipe whose ends do not reach the programs that are started.
class Pipe {
  public:
    Pipe() {
        if (pipe2(m_ends, O_CLOEXEC) != 0)
            throw Failure(std::string("a pipe cannot be made: ") + std::strerror(errno) +
                          " (let the command open more files)");
    }
    ~Pipe() {
        close(m_ends[0]);
        CloseWriteEnd();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int ReadEnd() const { return m_ends[0]; }
    int WriteEnd() const { return m_ends[1]; }
    void CloseWriteEnd() {
        if (m_ends[1] >= 0) close(m_ends[1]);
        m_ends[1] = -1;
    }

  private:
    int m_ends[2] = {-1, -1};
};

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

/// A program that is started otherwise than it should be could write where it must not.
void Require(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    if (error != 0)
        throw Failure(std::string("a program cannot be started: ") + std::strerror(error) +
                      " (run the command again)");
}

/// How a program starts: without input, its output in a pipe, signals as it is used to them.
class StartConditions {
  public:
    explicit StartConditions(int output) {
        Require(posix_spawn_file_actions_init(&m_actions));
        Require(posix_spawnattr_init(&m_attributes));
        Require(posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        Require(posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO));
        Require(posix_spawn_file_actions_adddup2(&m_actions, output, STDERR_FILENO));
        sigset_t defaults;
        sigemptyset(&defaults);
        for (const int number : {SIGPIPE, SIGXFSZ, SIGCHLD})
            sigaddset(&defaults, number);
        Require(posix_spawnattr_setsigdefault(&m_attributes, &defaults));
        Require(posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF));
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

pid_t Start(std::vector<std::string> arguments, std::vector<std::string> environment, int output) {
    const StartConditions conditions(output);
    pid_t child = -1;
    const int error =
        posix_spawnp(&child, arguments.front().c_str(), conditions.Actions(), conditions.Attributes(),
                     Pointers(arguments).data(), Pointers(environment).data());
    if (error != 0) {
        throw Failure(arguments.front() + ": cannot be started: " + std::strerror(error) +
                      " (install it, or correct its name)");
    }
    return child;
}

[[noreturn]] void FailOutput() {
    throw Failure(std::string("the output of a program cannot be read: ") + std::strerror(errno) +
                  " (run the command again)");
}

/// False after a wait that ended without anything to read.
bool WaitForOutput(int descriptor) {
    struct pollfd ready = {descriptor, POLLIN, 0};
    const int count = poll(&ready, 1, kSignalInterval);
    if (count < 0 && errno != EINTR) FailOutput();
    return count > 0;
}

/// Reads to the end; stops before it when a signal came.
std::string ReadAll(int descriptor) {
    std::string output;
    char part[16384];
    while (!SignalGuard::Caught()) {
        if (!WaitForOutput(descriptor)) continue;
        const ssize_t length = read(descriptor, part, sizeof part);
        if (length == 0) break;
        if (length < 0 && errno != EINTR) FailOutput();
        if (length > 0) output.append(part, static_cast<std::size_t>(length));
    }
    return output;
}

int WaitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            throw Failure(std::string("how a program ended cannot be told: ") + std::strerror(errno) +
                          " (run the command again)");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment) {
    Pipe pipe;
    const pid_t child = Start(arguments, Environment(environment), pipe.WriteEnd());
    pipe.CloseWriteEnd();
    ProcessResult result;
    result.output = ReadAll(pipe.ReadEnd());
    if (SignalGuard::Caught()) kill(child, SIGTERM);
    result.status = WaitFor(child);
    SignalGuard::Check();
    return result;
}

}  // namespace ZET
