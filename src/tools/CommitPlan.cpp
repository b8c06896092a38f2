#include "CommitPlan.h"

#include <unistd.h>

#include <optional>

#include "ChangeReport.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Process.h"
#include "Render.h"
#include "Secrets.h"
#include "Signals.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

ProcessResult ResultOfCheck(const Target& target, const std::string& path,
                            const std::vector<std::string>& arguments) {
    try {
        return RunProcess(arguments);
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure& failure) {
        throw Failure(path + ": what [" + target.templateName +
                      "] renders to cannot be checked: " + failure.what());
    }
}

/// What was looked at must be what is written.
void RequireUnchanged(const std::string& staged, mode_t mode, const std::string& bytes,
                      const std::string& failure) {
    const FileState now = StateOf(staged);
    if (!now.IsRegular() || now.mode != mode || ReadFileBytes(staged) != bytes) throw Failure(failure);
}

/// `path` is the target as it is on this host, below the root directory.
void RunOwnCheck(Session& session, const Target& target, const std::string& path, const std::string& staged) {
    if (target.check.empty()) return;
    std::vector<std::string> arguments = target.check;
    for (std::string& argument : arguments) {
        for (std::size_t place = argument.find("{}"); place != std::string::npos;
             place = argument.find("{}", place + staged.size()))
            argument.replace(place, 2, staged);
    }
    const mode_t mode = StateOf(staged).mode;
    const std::string bytes = ReadFileBytes(staged);
    const ProcessResult result = ResultOfCheck(target, path, arguments);
    const std::string itsCheck = path + ": its check \"" + target.check.front() + "\" ";
    if (result.status == 0)
        return RequireUnchanged(staged, mode, bytes,
                                itsCheck + "changed the file it was given (let it only read)");
    // What the command prints may quote the file.
    Secrets& secrets = session.HostSecrets();
    const bool isHidden = secrets.Hides(path) || (Secrets::IsClosed(staged) && !session.Asked().showSecrets);
    const std::string output = "\n" + (isHidden ? "(" + secrets.Excuse(path) + ")" : result.output);
    throw Failure(itsCheck + "refuses what [" + target.templateName + "] renders to, with status " +
                  std::to_string(result.status) + " (correct the template)" + output);
}

PlannedTarget::Change ChangeOf(const PlannedTarget& planned) {
    if (!planned.before.exists) return PlannedTarget::Change::Create;
    const bool isSame =
        planned.before.mode == planned.after.mode && HaveSameBytes(planned.path, planned.staged);
    return isSame ? PlannedTarget::Change::None : PlannedTarget::Change::Modify;
}

/// What the log has to say comes with the real rendering.
std::string RenderQuietly(Session& session, const Staging& staging, const Target& target) {
    const QuietLog quiet(session.Asked(), ZETLogError);
    return RenderStaged(session, staging, target.templateName);
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
    for (const Target& target : targets) {
        SignalGuard::Check();
        PlannedTarget planned;
        planned.target = target;
        planned.path = session.HostPaths().WithRealDirectory(session.FilePath(target.path));
        planned.staged = RenderQuietly(session, staging, target);
        RunOwnCheck(session, target, planned.path, planned.staged);
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
