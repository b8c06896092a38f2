#include "deploy/targets/CommitPlan.h"

#include <unistd.h>

#include <optional>

#include "cli/ExitStatus.h"
#include "deploy/edit/ChangeReport.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Signals.h"
#include "deploy/targets/OwnCheck.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Secrets.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

void RequireAcceptance(Session& session, const Target& target, const std::string& path,
                       const std::string& staged) {
    const std::optional<Problem> problem = OwnCheckProblem(session, target, path, staged);
    if (problem) throw Failure(problem->Describe(), problem->output);
}

PlannedTarget::Change ChangeOf(const PlannedTarget& planned) {
    if (!planned.before.exists) return PlannedTarget::Change::Create;
    const bool isSame =
        planned.before.mode == planned.after.mode && HaveSameBytes(planned.path, planned.staged);
    return isSame ? PlannedTarget::Change::None : PlannedTarget::Change::Modify;
}

/// What the product has on record of the files, for the role that is committed and for the other one.
class Records {
  public:
    Records(Session& session, const Manifest& own) : m_session(session), m_own(own) {}

    void FillIn(PlannedTarget& planned) {
        const std::string& path = planned.path;
        const bool isOwn = m_own.Has(path);
        const bool isStrange =
            (isOwn ? !m_own.IsUntouched(path) : HasCompanion(path)) && !Other().IsUntouched(path);
        planned.isTouched = isOwn && isStrange;
        planned.isUnrecorded = !isOwn && isStrange;
        planned.isReserved = planned.isUnrecorded && planned.before.exists && IsReserved(path);
    }

  private:
    static bool HasCompanion(const std::string& path) {
        return IsFileExist(path + ZETReserveSuffix) || IsFileExist(path + ZETAbsenceSuffix);
    }

    static bool IsReserved(const std::string& path) {
        const std::string reserve = path + ZETReserveSuffix;
        return access(reserve.c_str(), R_OK) == 0 && HaveSameBytes(path, reserve);
    }

    /// Read when it is needed: most commits do without.
    const Manifest& Other() {
        if (!m_other) m_other.emplace(m_session, m_session.Role() == "server" ? "client" : "server");
        return *m_other;
    }

    Session& m_session;
    const Manifest& m_own;
    std::optional<Manifest> m_other;
};

}  // namespace

std::vector<PlannedTarget> PlanTargets(Session& session, const Staging& staging,
                                       const std::vector<Target>& targets, const Manifest& manifest) {
    std::vector<PlannedTarget> plan;
    Records records(session, manifest);
    const bool runsChecks = RunsOwnChecks(session.Asked());
    RemarkChecksNotRun(session, targets);
    for (const Target& target : targets) {
        SignalGuard::Check();
        PlannedTarget planned;
        planned.target = target;
        planned.path = session.HostPaths().WithRealDirectory(session.FilePath(target.path));
        planned.staged = RenderQuietly(session, staging, target.templateName);
        if (runsChecks) RequireAcceptance(session, target, planned.path, planned.staged);
        planned.version = VersionOf(planned.path);
        planned.before = StateOf(planned.path);
        planned.after = StateInPlace(planned.path, planned.staged);
        planned.change = ChangeOf(planned);
        records.FillIn(planned);
        plan.push_back(std::move(planned));
    }
    return plan;
}

bool IsPrivate(Session& session, const PlannedTarget& planned) {
    return planned.target.isSecret || Secrets::IsClosed(planned.before) ||
           Secrets::IsClosed(planned.staged) || session.HostSecrets().IsPrivate(planned.path);
}

ShownDiff DiffOf(Session& session, const PlannedTarget& planned) {
    if (planned.change == PlannedTarget::Change::None) return {};
    return DiffToShow(session, planned.before.exists ? planned.path : "", planned.staged, planned.path);
}

}  // namespace ZET
