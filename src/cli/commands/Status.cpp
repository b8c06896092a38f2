#include <set>
#include <string>

#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/state/Manifest.h"
#include "deploy/state/StateFile.h"
#include "deploy/targets/CommitPlan.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/Targets.h"

namespace ZET {

namespace {

constexpr char kInSync[] = "in sync";
constexpr char kUnknown[] = "unknown";

/// A `Failure` when this user cannot read the template that is there: what a commit would make of it is then
/// unknown.
void RequireReadableTemplate(Session& session, const std::string& templateName) {
    const std::string file = RemedyErrors("", [&] { return TemplateFile(session, templateName); });
    if (!file.empty() && session.HostPaths().StaysInside(file)) RequireReadableFile(file);
}

/// Renders the target as a commit would. One that cannot be rendered is not what was committed, which a
/// commit would have to tell.
std::string StateOfTarget(Session& session, const Staging& staging, const Manifest& manifest,
                          const std::string& templateName, const std::string& path) {
    if (!manifest.Has(path)) return "not committed";
    const FileState now = StateOf(path);
    if (!now.exists) return "missing";
    const bool isUntouched = manifest.IsUntouched(path);
    RequireReadableTemplate(session, templateName);
    if (!CheckTemplateFile(session, templateName, session.Config().TemplatesValues()).empty()) {
        return isUntouched ? "pending" : "edited";
    }
    const std::string staged = RenderQuietly(session, staging, templateName);
    if (HaveSameModeAndBytes(staged, path)) return kInSync;
    return isUntouched ? "pending" : "edited";
}

std::string StatusFile(Session& session, const std::string& name) {
    return session.Param("ZET_VAR_LIB_DIR") + "/zet-" + name + ".status";
}

void ReportRole(Session& session) {
    Report& report = session.Out();
    report.Set("role", session.Role());
    report.Set("commit_time", nullptr);
    if (session.Role() == "client") report.Set("file_server", nullptr);
    report.AddList("targets");
    IZETConfig& config = session.Config();
    StringMap status;
    RequireStateFile(StatusFile(session, session.Role()));
    if (config.IsConfigStatusExist(session.Role())) config.LoadConfigStatus(session.Role(), status);
    const std::string commitTime = status["COMMIT_TIME"];
    report.Line("role: " + session.Role());
    report.Line("committed: " + (commitTime.empty() ? "never" : commitTime));
    if (!commitTime.empty()) report.Set("commit_time", commitTime);
    if (session.Role() != "client") return;
    RequireStateFile(StatusFile(session, "client-fs"));
    const std::string fileServer = config.GetFileServerStatus();
    report.Line("file server: " + (fileServer.empty() ? "none recorded" : fileServer));
    if (!fileServer.empty()) report.Set("file_server", fileServer);
}

/// The targets one by one: one whose state cannot be told does not keep that of the others from being told.
class TargetStates {
  public:
    explicit TargetStates(Session& session) : m_session(session), m_manifest(session) {}

    void Tell(const Target& target) {
        std::string path = m_session.HostPaths().FromInside(target.path);
        std::string state = kUnknown;
        try {
            path = m_session.HostPaths().WithRealDirectory(m_session.FilePath(target.path));
            state = StateOfTarget(m_session, m_staging, m_manifest, target.templateName, path);
        } catch (const Interrupted&) {
            throw;
        } catch (const Failure& failure) {
            m_session.Out().Error(path + ": its state cannot be told: " + failure.what());
        }
        m_paths.insert(path);
        m_states.insert(state);
        m_session.Out().Line(path + ": " + state);
        m_session.Out().Add("targets", Fields{{"template", target.templateName},
                                              {"path", m_session.HostPaths().RealName(path)},
                                              {"state", state}});
    }

    /// Files that were committed and that the list does not have any more.
    void WarnOfLeftOvers() {
        for (const std::string& path : m_manifest.Paths()) {
            if (m_paths.count(path) != 0) continue;
            m_session.Out().Warning(path +
                                    ": was committed and is not in the list of targets any more "
                                    "(\"rollback-config\" puts it back)");
        }
    }

    int ExitStatus() const {
        if (m_states.count(kUnknown) != 0) return kFailed;
        return m_states.empty() || m_states == std::set<std::string>{kInSync} ? kDone : kNotInSync;
    }

  private:
    Session& m_session;
    const Manifest m_manifest;
    const Staging m_staging;
    std::set<std::string> m_paths;
    std::set<std::string> m_states;
};

}  // namespace

int RunStatus(Session& session) {
    const SignalGuard signals;
    ReportRole(session);
    TargetStates states(session);
    for (const Target& target : SelectTargets(session, {})) {
        SignalGuard::Check();
        states.Tell(target);
    }
    states.WarnOfLeftOvers();
    return states.ExitStatus();
}

}  // namespace ZET
