#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
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
#include "zet/deploy/Role.h"

namespace ZET::Cli {
namespace {

/// Ensures that no file opened later gets the number of a standard stream, and with it the output for the
/// user.
void OpenStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // A new descriptor gets the lowest free number; those before are in use. Without a standard output, a
        // report is lost, which its stream reports if it cannot be written.
        const int access = stream == STDOUT_FILENO ? O_RDONLY : O_RDWR;
        if (fcntl(stream, F_GETFD) < 0 && errno == EBADF) open("/dev/null", access);
    }
}

/// Makes a closed pipe, or a file that grows too large, an error of the write, so that it does not end a
/// command between two steps.
void TurnSignalsIntoErrors() {
    for (const int number : {SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_IGN);
}

/// A parent may have set SIGCHLD to be ignored, and then exit statuses of programs would be lost.
void HearOfEndedPrograms() {
    std::signal(SIGCHLD, SIG_DFL);
}

/// Keeps freed memory for reuse: fetching it from the system for each text of ordinary size would take longer
/// than the work on it.
void KeepMemory() {
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
    mallopt(M_TRIM_THRESHOLD, 4 << 20);
#endif
}

/// Whether the output is for a program: that is always in English.
bool IsForProgram(int count, char** arguments) {
    return std::any_of(arguments, arguments + count, [](std::string_view word) {
        return word == "--json" || word.starts_with("--json=") || word == "--format=openmetrics" ||
               word == "openmetrics";
    });
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
        // The module reports some failures only to the log.
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

/// What `Report` would print of it, which needs memory.
constexpr char kOutOfMemory[] = R"json({
  "version": 1,
  "command": null,
  "warnings": [],
  "errors": [
    "out of memory (free some, then run the command again)"
  ],
  "failure": {
    "file": null,
    "line": null,
    "column": null,
    "problem": "out of memory",
    "remedy": "free some, then run the command again",
    "output": null,
    "errno": "ENOMEM"
  },
  "exit_status": 1
}
)json";

int RunAndReport(const Call& call) {
    const SignalMemory signals;  // the output uses it, too
    Report report(call.options);
    int status = Run(call, report);
    const std::string left = Staging::LeftBehind();
    if (!left.empty()) {
        report.Error(left);
        status = kFailed;
    }
    return report.Finish(status);
}

int RunProgram(int count, char** arguments) {
    const bool isForServers = BaseNameOf(arguments[0]) == ProgramOf(Role::Server);
    int status = kDone;
    const auto call = ParseCommandLine(isForServers ? Role::Server : Role::Client, count, arguments, status);
    if (!call) return status;
    try {
        return RunAndReport(*call);
    } catch (const std::bad_alloc&) {
        if (call->options.json) std::fputs(kOutOfMemory, stdout);
        throw;
    }
}

/// Exits at once, since everything is written and closed: releasing each object takes 1% of a command with a
/// small file.
int End(int status) {
#ifndef __SANITIZE_ADDRESS__  // it checks for leaks at the end
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
        std::fprintf(stderr, "%s: error: out of memory (free some, then run the command again)\n",
                     program_invocation_short_name);
        return ZET::Cli::kFailed;
    }
}
