#include "cli/Pager.h"
#include "cli/Translation.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "posix/Descriptor.h"
#include "posix/ReadWrite.h"

namespace ZET::Cli {

namespace {

constexpr char kUsual[] = "less";
// Print what fits on the screen and exit; show colors; leave the text on the screen.
constexpr char kOptionsOfUsual[] = "FRX";
constexpr int kNoCommand = 2;  // what the shell cannot read
constexpr int kCannotBeExecuted = 126;
constexpr int kNotFound = 127;

/// Ignores interrupts, which are for the program that reads the keyboard.
class InterruptsIgnored {
  public:
    InterruptsIgnored() {
        struct sigaction ignored = {};
        ignored.sa_handler = SIG_IGN;
        sigaction(SIGINT, &ignored, &m_interrupt);
        sigaction(SIGQUIT, &ignored, &m_quit);
    }
    ~InterruptsIgnored() {
        sigaction(SIGINT, &m_interrupt, nullptr);
        sigaction(SIGQUIT, &m_quit, nullptr);
    }
    InterruptsIgnored(const InterruptsIgnored&) = delete;
    InterruptsIgnored& operator=(const InterruptsIgnored&) = delete;

  private:
    struct sigaction m_interrupt = {};
    struct sigaction m_quit = {};
};

int StatusOf(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) return kNotFound;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 0;
}

}  // namespace

Pager::Pager() {
    const char* const given = std::getenv("PAGER");
    if (given == nullptr) return;
    m_command = given;
    m_isWanted = m_command.find_first_not_of(" \t") != std::string::npos && m_command != "cat";
}

bool Pager::Show(const std::string& text) const {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    Descriptor input(ends[0]);
    Descriptor output(ends[1]);
    const InterruptsIgnored ignored;
    const pid_t process = fork();
    if (process < 0) return false;
    if (process == 0) Run(input);
    input = Descriptor();
    WriteAll(output, text);  // a user who has seen enough closes the pipe
    output = Descriptor();
    const int status = StatusOf(process);
    return status != kNotFound && status != kCannotBeExecuted && status != kNoCommand;
}

std::string Pager::Trouble() const {
    if (m_command.empty()) return "";
    return Filled(_("the pager \"%s\" cannot be run (correct PAGER, or set it to \"cat\")"), {m_command});
}

void Pager::Run(int input) const {
    for (const int number : {SIGINT, SIGQUIT, SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_DFL);
    dup2(input, STDIN_FILENO);
    if (m_command.empty()) {
        setenv("LESS", kOptionsOfUsual, 0);
        execlp(kUsual, kUsual, nullptr);
    } else {
        execl("/bin/sh", "sh", "-c", m_command.c_str(), nullptr);
    }
    _exit(kNotFound);
}

}  // namespace ZET::Cli
