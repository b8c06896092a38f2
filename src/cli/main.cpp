#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"
#include "cli/Report.h"
#include "cli/Session.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Language.h"
#include "deploy/state/Overrides.h"
#include "zet/ZETErrors.h"

namespace {

/// No file that is opened later may take the place of a standard stream and get what is meant for a reader.
void OpenStandardStreams() {
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO) close(descriptor);
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

int Run(const ZET::Call& call, ZET::Report& report) {
    try {
        ZET::Session session(call.options, report);
        const ZET::LoggedFailures failures;
        const int status = call.run(session);
        // The module reports some failures to the log only.
        return status != ZET::kFailed && failures.Any() ? ZET::kFailed : status;
    } catch (const ZET::UsageError& error) {
        report.Error(error.what());
        return ZET::kWrongUse;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const ZET::EZETError& error) {
        report.Error(ZET::WithRemedy(error.what()));
        return ZET::kFailed;
    } catch (const ZET::Failure& failure) {
        report.Error(failure.what(), failure.Lines());
        return ZET::kFailed;
    } catch (const std::exception& error) {
        report.Error(error.what());
        return ZET::kFailed;
    }
}

int RunProgram(int count, char** arguments) {
    const std::string program = ZET::BaseNameOf(arguments[0]);
    int status = ZET::kDone;
    const auto call =
        ZET::ParseCommandLine(program == "zet-init" ? "zet-init" : "zet-client", count, arguments, status);
    if (!call) return status;
    ZET::Report report(call->options);
    status = Run(*call, report);
    const std::string left = ZET::Staging::LeftBehind();
    if (!left.empty()) {
        report.Error(left);
        status = ZET::kFailed;
    }
    return report.Finish(status);
}

}  // namespace

int main(int count, char** arguments) {
    OpenStandardStreams();
    TurnSignalsIntoErrors();
    HearOfEndedPrograms();
    ZET::UseReadersLanguage();
    try {
        return RunProgram(count, arguments);
    } catch (const std::bad_alloc&) {
        std::fputs("error: out of memory (free some, then run the command again)\n", stderr);
        return ZET::kFailed;
    }
}
