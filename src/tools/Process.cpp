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

pid_t Start(std::vector<std::string> arguments, std::vector<std::string> environment, int output) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    // A broken pipe ends other programs as they are used to.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGXFSZ);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t child = -1;
    const int error = posix_spawnp(&child, arguments.front().c_str(), &actions, &attributes,
                                   Pointers(arguments).data(), Pointers(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw Failure(arguments.front() + ": cannot be started: " + std::strerror(error) +
                      " (install it, or correct its name)");
    }
    return child;
}

/// Reads to the end; stops before it when a signal came or reading broke off.
std::string ReadAll(int descriptor) {
    std::string output;
    char part[16384];
    while (!SignalGuard::Caught()) {
        struct pollfd ready = {descriptor, POLLIN, 0};
        if (poll(&ready, 1, kSignalInterval) <= 0) continue;
        const ssize_t length = read(descriptor, part, sizeof part);
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) break;
        output.append(part, static_cast<std::size_t>(length));
    }
    return output;
}

int WaitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
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
