#include <algorithm>
#include <memory>

#include "Commands.h"
#include "CommitPlan.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Lock.h"
#include "PendingRecord.h"
#include "Render.h"
#include "Signals.h"
#include "TargetCheck.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// One run of the command.
class Rollback {
  public:
    explicit Rollback(Session& session)
        : m_session(session),
          m_report(session.Out()),
          m_isDryRun(session.Asked().dryRun),
          m_manifest(session) {
        m_report.Set("role", session.Role());
        m_report.Set("dry_run", m_isDryRun);
        m_report.AddList("targets");
    }

    int Run() {
        const SignalGuard signals;
        std::unique_ptr<WriteLock> lock;
        if (!m_isDryRun) {
            lock = std::make_unique<WriteLock>(m_session);
            PendingRecord::ClearLeftOvers(m_session);
        }
        const std::vector<Target> all = SelectTargets(m_session, {});
        for (const Target& target : Named(all)) {
            SignalGuard::Check();
            PutBack(target);
        }
        if (m_isDryRun) return m_changed ? kNotInSync : (m_kept ? kFailed : kDone);
        m_manifest.Save();
        if (m_manifest.IsEmpty()) RemoveStatus();
        return m_kept ? kFailed : kDone;
    }

  private:
    /// The targets that were asked for, by their files; all when none was.
    std::vector<Target> Named(const std::vector<Target>& all) {
        const std::vector<std::string>& names = m_session.Asked().names;
        if (names.empty()) return all;
        std::vector<Target> named;
        for (const std::string& name : names) {
            const Target* target = FindTargetByPath(m_session, all, name);
            if (target == nullptr) {
                throw UsageError(name + ": is no target of the role " + m_session.Role() +
                                 " (\"status\" lists them; \"file restore\" puts any other file back)");
            }
            named.push_back(*target);
        }
        return named;
    }

    void PutBack(const Target& target) {
        const std::string path = m_session.FilePath(target.path);
        const std::string reserve = path + ZETReserveSuffix;
        const bool hasReserve = IsFileExist(reserve);
        const bool hasRecord = IsFileExist(path + ZETAbsenceSuffix);
        const FileState now = StateOf(path);
        if (!hasReserve && !hasRecord) {
            if (!m_isDryRun) m_manifest.Forget(path);
            return Tell(target, path, "kept", now.exists ? "has no reserve, stays as it is" : "is not there",
                        "");
        }
        if (now.exists && !m_session.Asked().force && !IsOwnWork(target, path)) {
            m_kept = true;
            m_report.Warning(
                path +
                ": was edited since it was committed and stays (--force puts back what was there before)");
            return Tell(target, path, "kept", "edited, stays as it is", "");
        }
        m_changed = true;
        const std::string diff = m_session.Asked().diff && !target.isSecret
                                     ? UnifiedDiff(now.exists ? path : "", hasReserve ? reserve : "", path)
                                     : "";
        if (!m_isDryRun) {
            if (!hasReserve && now.exists) RemoveFile(path);
            m_session.Config().RestoreConfigFile(path);
            m_manifest.Forget(path);
        }
        Tell(target, path, hasReserve ? "restored" : "removed",
             std::string(m_isDryRun ? "would be " : "") +
                 (hasReserve ? "put back as it was" : "removed, as there was none before"),
             diff);
    }

    /// Whether the file is what the product wrote: as it was recorded, or, where a run was cut short before
    /// it could record, as it renders.
    bool IsOwnWork(const Target& target, const std::string& path) {
        if (m_manifest.Has(path)) return m_manifest.IsUntouched(path);
        if (!StateOf(path).IsRegular()) return false;
        if (!CheckTemplateFile(m_session, target.templateName, m_session.Config().TemplatesValues()).empty())
            return false;
        return HaveSameBytes(path, RenderStaged(m_session, m_staging, target.templateName));
    }

    void Tell(const Target& target, const std::string& path, const char* change, const std::string& text,
              const std::string& diff) {
        m_report.Line(path + ": " + text);
        m_report.Diff(diff);
        Fields fields = {{"template", target.templateName}, {"path", path}, {"change", change}};
        if (m_session.Asked().diff) fields.emplace_back("diff", diff);
        m_report.Add("targets", std::move(fields));
    }

    void RemoveStatus() {
        m_session.Config().RemoveConfigStatus(m_session.Role());
        if (m_session.Role() == "client") m_session.Config().RemoveFileServerStatus();
    }

    Session& m_session;
    Report& m_report;
    bool m_isDryRun;
    Manifest m_manifest;
    Staging m_staging;
    bool m_kept = false;     ///< something was edited and stays
    bool m_changed = false;  ///< something was, or would be, put back
};

}  // namespace

int RunRollbackConfig(Session& session) {
    return Rollback(session).Run();
}

}  // namespace ZET
