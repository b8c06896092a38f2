#include <algorithm>

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
    const QuietLog quiet(session.Asked(), ZETLogError);
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

/// Files that were committed and that the list does not have any more.
void RemarkLeftOvers(Session& session, const Manifest& manifest, const std::vector<Target>& targets) {
    for (const std::string& path : manifest.Paths()) {
        const bool isListed = std::any_of(targets.begin(), targets.end(), [&](const Target& target) {
            return session.FilePath(target.path) == path;
        });
        if (!isListed) {
            session.Out().Warning(path +
                                  ": was committed and is not in the list of targets any more "
                                  "(\"rollback-config\" puts it back)");
        }
    }
}

}  // namespace

int RunStatus(Session& session) {
    const SignalGuard signals;
    Report& report = session.Out();
    ReportRole(session);
    const Manifest manifest(session);
    const Staging staging;
    const std::vector<Target> targets = SelectTargets(session, {});
    bool allInSync = true;
    report.AddList("targets");
    for (const Target& target : targets) {
        SignalGuard::Check();
        const std::string path = session.FilePath(target.path);
        const std::string state = StateOfTarget(session, staging, manifest, target);
        allInSync = allInSync && state == kInSync;
        report.Line(path + ": " + state);
        report.Add("targets", Fields{{"template", target.templateName}, {"path", path}, {"state", state}});
    }
    RemarkLeftOvers(session, manifest, targets);
    return allInSync ? kDone : kNotInSync;
}

}  // namespace ZET
