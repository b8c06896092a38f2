#include "Commands.h"
#include "CommitPlan.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Manifest.h"
#include "Render.h"
#include "Signals.h"
#include "TargetCheck.h"
#include "Targets.h"

namespace ZET {

namespace {

constexpr char kInSync[] = "in sync";

/// Renders the target as a commit would; empty when it cannot be rendered, which a commit would have to tell.
std::string StateOfTarget(Session& session, const Staging& staging, const Manifest& manifest,
                          const Target& target) {
    const std::string path = session.FilePath(target.path);
    if (!manifest.Has(path)) return "not committed";
    const FileState now = StateOf(path);
    if (!now.exists) return "missing";
    const bool isUntouched = manifest.IsUntouched(path);
    if (!CheckTemplateFile(session, target.templateName, session.Config().TemplatesValues()).empty()) {
        return isUntouched ? "pending" : "edited";
    }
    const std::string staged = RenderStaged(session, staging, target.templateName);
    if (StateOf(staged).mode == now.mode && HaveSameBytes(staged, path)) return kInSync;
    return isUntouched ? "pending" : "edited";
}

void ReportRole(Session& session) {
    Report& report = session.Out();
    IZETConfig& config = session.Config();
    StringMap status;
    if (config.IsConfigStatusExist(session.Role())) config.LoadConfigStatus(session.Role(), status);
    const std::string commitTime = status["COMMIT_TIME"];
    report.Line("role: " + session.Role());
    report.Line("committed: " + (commitTime.empty() ? "never" : commitTime));
    report.Set("role", session.Role());
    report.Set("commit_time", commitTime.empty() ? Value(nullptr) : Value(commitTime));
    if (session.Role() != "client") return;
    const std::string fileServer = config.GetFileServerStatus();
    report.Line("file server: " + (fileServer.empty() ? "none recorded" : fileServer));
    report.Set("file_server", fileServer.empty() ? Value(nullptr) : Value(fileServer));
}

}  // namespace

int RunStatus(Session& session) {
    const SignalGuard signals;
    Report& report = session.Out();
    ReportRole(session);
    const Manifest manifest(session);
    const Staging staging;
    bool allInSync = true;
    report.AddList("targets");
    for (const Target& target : SelectTargets(session, {})) {
        SignalGuard::Check();
        const std::string state = StateOfTarget(session, staging, manifest, target);
        allInSync = allInSync && state == kInSync;
        report.Line(session.FilePath(target.path) + ": " + state);
        report.Add("targets", Fields{{"template", target.templateName},
                                     {"path", session.FilePath(target.path)},
                                     {"state", state}});
    }
    return allInSync ? kDone : kNotInSync;
}

}  // namespace ZET
