#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iterator>
#include <new>
#include <string>
#include <string_view>

#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/Names.h"  // IWYU pragma: keep, no name of it is ever written
#include "cli/Report.h"
#include "cli/Session.h"
#include "cli/Translation.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Language.h"
#include "deploy/state/Overrides.h"
#include "posix/PathNames.h"

namespace ZET::Cli {
namespace {

/// No file that is opened later may take the place of a standard stream and get what is meant for a reader.
void OpenStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // What is opened takes the first free number: those before are in use.
        // A report that is lost is told to be that: its stream takes nothing.
        const int access = stream == STDOUT_FILENO ? O_RDONLY : O_RDWR;
        if (fcntl(stream, F_GETFD) < 0 && errno == EBADF) open("/dev/null", access);
    }
}

/// A reader that goes away, or a file that grows too large, is an error of that write and does not end a
/// command between two steps.
void TurnSignalsIntoErrors() {
    for (const int number : {SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_IGN);
}

/// Who ignores the end of programs is not told how they ended, and whoever started the command may.
void HearOfEndedPrograms() {
    std::signal(SIGCHLD, SIG_DFL);
}

/// The texts of a file of ordinary size come and go: their memory is used again instead of fetched from the
/// system each time, which takes longer than what is done with it.
void KeepMemory() {
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
    mallopt(M_TRIM_THRESHOLD, 4 << 20);
#endif
}

/// What a program reads is English, whatever language it is run in.
bool IsForProgram(int count, char** arguments) {
    constexpr std::string_view kWords[] = {"--json", "--json=true", "--format=openmetrics", "openmetrics"};
    char** const end = arguments + count;
    return std::find_first_of(arguments, end, std::begin(kWords), std::end(kWords)) != end;
}

void SetLanguage(int count, char** arguments) {
    if (IsForProgram(count, arguments)) return UseReadersLetters();
    UseReadersLanguage();
    BindCatalogues();
}

int Run(const Call& call, Report& report) {
    try {
        Session session(call.options, report);
        const LoggedFailures failures;
        const int status = call.run(session);
        // The module reports some failures to the log only.
        return status != kFailed && failures.Any() ? kFailed : status;
    } catch (const UsageError& error) {
        report.Error(error.what());
        return kWrongUse;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        const Failure failure = FailureOf(error);
        report.Set("failure", FieldsOf(failure));
        report.Error(failure.what(), failure.Lines());
        return kFailed;
    }
}

int RunProgram(int count, char** arguments) {
    const std::string program = BaseNameOf(arguments[0]);
    int status = kDone;
    const auto call =
        ParseCommandLine(program == "zet-init" ? "zet-init" : "zet-client", count, arguments, status);
    if (!call) return status;
    const SignalMemory signals;  // which the output asks for, too
    Report report(call->options);
    status = Run(*call, report);
    const std::string left = Staging::LeftBehind();
    if (!left.empty()) {
        report.Error(left);
        status = kFailed;
    }
    return report.Finish(status);
}

/// All is written and closed. What would still be taken down one by one, the system takes back at once: 1% of
/// a command with a small file.
int End(int status) {
#ifndef __SANITIZE_ADDRESS__  // which looks for lost memory at the end
    std::fflush(nullptr);
    _exit(status);
#endif
    return status;
}

}  // namespace
}  // namespace ZET::Cli

int main(int count, char** arguments) {
    ZET::Cli::OpenStandardStreams();
    ZET::Cli::TurnSignalsIntoErrors();
    ZET::Cli::HearOfEndedPrograms();
    ZET::Cli::KeepMemory();
    ZET::Cli::SetLanguage(count, arguments);
    try {
        return ZET::Cli::End(ZET::Cli::RunProgram(count, arguments));
    } catch (const std::bad_alloc&) {
        std::fputs("error: out of memory (free some, then run the command again)\n", stderr);
        return ZET::Cli::kFailed;
    }
}
