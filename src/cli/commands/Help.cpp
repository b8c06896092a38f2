#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "cli/ExitStatus.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Process.h"

namespace ZET::Cli {

namespace {

struct HelpOptions {
    std::vector<std::string> words;
};

/// Whether the user's manual has the program's page.
bool HasPage(const std::string& program) {
    try {
        return RunProcess({"man", "-w", program}).status == 0;
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure&) {
        return false;  // there is no manual
    }
}

/// The search for less: below the heading of all commands, the heading of this one. That is indented less
/// than its text, and may be for several commands ("param get|set"). There must be no "$", which ends an
/// option.
std::string WayTo(const std::vector<std::string>& command) {
    std::string heading = "^ {7}" + command.front();
    if (command.size() > 1) heading += " ([a-z]+[|])*" + command[1];
    return "+/^COMMANDS\n/" + heading;
}

/// Does not return if the manual could be started. It begins at the command, if one is given.
void ShowPage(const std::string& program, const std::vector<std::string>& command) {
    if (!command.empty()) {
        const char* options = std::getenv("LESS");
        const std::string before = options == nullptr ? "" : std::string(options) + " ";
        setenv("LESS", (before + WayTo(command)).c_str(), 1);
    }
    std::signal(SIGPIPE, SIG_DFL);  // quitting the manual ends its programs by this signal
    std::signal(SIGXFSZ, SIG_DFL);
    execlp("man", "man", program.c_str(), nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int Help(Session& session, const HelpOptions& asked) {
    Report& out = session.Out();
    const std::string& program = session.Asked().program;
    out.Set("text", nullptr);
    const std::string text = HelpText(session.Asked().role, asked.words);
    if (isatty(STDOUT_FILENO) == 1 && !session.Asked().json && HasPage(program))
        ShowPage(program, asked.words);
    out.Set("text", text);
    out.Text(text);
    return kDone;
}

}  // namespace

void RegisterHelp(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<HelpOptions>("help", "Show the manual, or this help where there is none", Help)
        .Any("COMMAND", &HelpOptions::words, "Of this command");
}

}  // namespace ZET::Cli
