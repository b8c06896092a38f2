#include <clocale>
#include <exception>
#include <string>

#include "CommandLine.h"
#include "ExitStatus.h"
#include "Report.h"
#include "Session.h"

namespace {

int Run(const ZET::Request& request, ZET::Report& report) {
    try {
        ZET::Session session(request, report);
        const ZET::LoggedFailures failures;
        const int status = request.run(session);
        // The module reports some failures to the log only.
        return status != ZET::kFailed && failures.Any() ? ZET::kFailed : status;
    } catch (const ZET::UsageError& error) {
        report.Error(error.what());
        return ZET::kWrongUse;
    } catch (const std::exception& error) {
        report.Error(error.what());
        return ZET::kFailed;
    }
}

}  // namespace

int main(int count, char** arguments) {
    setlocale(LC_MESSAGES, "");
    const std::string program = ZET::BaseNameOf(arguments[0]);
    int status = ZET::kDone;
    const auto request =
        ZET::ParseCommandLine(program == "zet-init" ? "zet-init" : "zet-client", count, arguments, status);
    if (!request) return status;
    ZET::Report report(*request);
    return report.Finish(Run(*request, report));
}
