#include "cli/Session.h"

#include "cli/FileReport.h"
#include "deploy/host/Installed.h"

namespace ZET {

namespace {

ZETLogLevel Threshold(const Request& request) {
    if (request.quiet) return ZETLogError;
    return request.verbose ? ZETLogNotice : ZETLogWarning;
}

void StartLog(const Request& request) {
    ConfigureLog(request.log == "syslog" ? ZETLogTarget::SystemLog : ZETLogTarget::StandardError,
                 Threshold(request), request.program);
}

Options OptionsOf(const Request& request) {
    Options options;
    options.role = request.role;
    options.configFile = request.configFile;
    options.needsConfigFile = request.needsConfigFile || request.isConfigFileNamed;
    options.mendsParameters = request.command == "option set";
    options.root = request.root;
    options.moduleFile = request.moduleFile.empty() ? OwnModule() : request.moduleFile;
    options.program = request.program;
    options.command = request.command;
    options.dryRun = request.dryRun;
    options.onlyLooks = request.OnlyLooks();
    options.wantsDiffs = request.diff;
    options.showsSecrets = request.showSecrets;
    options.runsChecks = !request.noChecks;
    options.runsChecksOfTree = request.runChecks;
    return options;
}

}  // namespace

Session::LogInReport::LogInReport(const Request& request, Report& report) {
    StartLog(request);
    SetLogObserver([&report](ZETLogLevel level, const std::string& text) {
        if (level == ZETLogError) report.Add("errors", text);
        if (level == ZETLogWarning) report.Add("warnings", text);
    });
}

Session::LogInReport::~LogInReport() {
    SetLogObserver({});
}

Session::Session(const Request& request, Report& report)
    : m_request(request),
      m_report(report),
      m_logInReport(request, report),
      m_product(OptionsOf(request), *this) {}

void Session::Done(const FileOutcome& outcome) {
    if (m_teller != nullptr) m_teller(*this, outcome);
}

void Session::Restarts(const std::vector<std::string>& services) {
    TellRestarts(*this, services);
}

}  // namespace ZET
