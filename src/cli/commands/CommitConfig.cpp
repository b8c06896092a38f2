#include <memory>
#include <set>

#include "cli/Assignments.h"
#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/Lock.h"
#include "deploy/state/PendingRecord.h"
#include "deploy/targets/CommitPlan.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/Secrets.h"
#include "deploy/targets/TargetCheck.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET {

namespace {

using Change = PlannedTarget::Change;

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : ", ") + text;
    return joined.empty() ? "none" : joined;
}

/// Whether the target is, by now, what it was to become.
bool IsWritten(const PlannedTarget& planned) {
    const FileState now = StateOf(planned.path);
    return now.IsRegular() && now.mode == planned.after.mode && HaveSameBytes(planned.path, planned.staged);
}

/// One run of the command. A dry run goes the same way up to the plan and reports it.
class Commit {
  public:
    explicit Commit(Session& session)
        : m_session(session), m_report(session.Out()), m_isDryRun(session.Asked().dryRun) {
        m_report.Set("role", session.Role());
        m_report.Set("dry_run", m_isDryRun);
        m_report.AddList("targets");
        m_report.AddList("restart");
    }

    int Run() {
        const SignalGuard signals;
        AssumeParameters();
        std::unique_ptr<WriteLock> lock;
        if (!m_isDryRun) {
            RequireOwnInstructions(m_session);
            lock = std::make_unique<WriteLock>(m_session);
            m_cutShort = PendingRecord::ClearLeftOvers(m_session);
        }
        const CheckedTargets checked = CheckTargets(m_session, m_session.Asked().names);
        if (!checked.problems.empty()) return ReportProblems(checked.problems);
        const Staging staging(m_isDryRun ? "" : m_session.Param("ZET_VAR_LIB_DIR"),
                              SizeOfTemplates(m_session, checked.targets));
        Manifest manifest(m_session);
        const std::vector<PlannedTarget> plan = PlanTargets(m_session, staging, checked.targets, manifest);
        return m_isDryRun ? ReportPlan(plan) : Execute(plan, manifest);
    }

  private:
    /// "-n --set": what would change if.
    void AssumeParameters() {
        const StringMap assumed = ParseAssignments(m_session.Asked().assignments, "--set");
        if (assumed.empty()) return;
        if (!m_isDryRun)
            throw UsageError(
                "--set only asks what would change: use it with -n (\"option set\" sets a parameter)");
        for (const auto& [name, value] : assumed)
            Assume(name, value);
        m_session.Config().RecreateTemplatesMap();
    }

    void Assume(const std::string& name, const std::string& value) {
        const bool isDirectory =
            name == "ZET_CFG_DIR" || name == "ZET_CFG_TEMPL_DIR" || name == "ZET_VAR_LIB_DIR";
        if (isDirectory && value.empty())
            throw UsageError("--set: " + name + " is empty (give it a directory)");
        if (const std::string problem = ProblemOfParam(name, value); !problem.empty())
            throw UsageError("--set: " + problem);
        try {
            m_session.Core().GetParam(name);  // the core warns of a name that it does not know
            m_session.Core().UpdateParam(name, isDirectory ? m_session.FilePath(value) : value);
        } catch (const EZETCheckError& error) {
            const char* remedy =
                name == "ZET_CFG" ? "name another file with --config" : "write one of the two";
            throw UsageError("--set: " + WithRemedy(error.GetMessage(), remedy));
        }
    }

    int ReportProblems(const std::vector<Problem>& problems) {
        for (const Problem& problem : problems) {
            m_report.Error(problem.Describe());
            m_report.Add("problems", problem.ToFields());
        }
        m_report.Remark("nothing was changed");
        return kFailed;
    }

    int ReportPlan(const std::vector<PlannedTarget>& plan) {
        bool wouldChange = false;
        for (const PlannedTarget& planned : plan) {
            WarnOfOthersWork(planned);
            ReportTarget(planned, DiffOf(m_session, planned));
            wouldChange = wouldChange || planned.change != Change::None;
        }
        ReportRestarts(plan);
        return wouldChange ? kNotInSync : kDone;
    }

    int Execute(const std::vector<PlannedTarget>& plan, Manifest& manifest) {
        const PendingRecord pending(m_session, FilesToWrite(plan));
        try {
            for (const PlannedTarget& planned : plan) {
                SignalGuard::Check();
                Write(planned, manifest);
            }
            manifest.Save();
            RecordStatus();
        } catch (...) {
            ReportBreakOff(plan, manifest);
            throw;
        }
        ReportRestarts(plan);
        return kDone;
    }

    std::vector<std::string> FilesToWrite(const std::vector<PlannedTarget>& plan) {
        std::vector<std::string> files;
        for (const PlannedTarget& planned : plan) {
            if (planned.change != Change::None) files.push_back(planned.path);
            const std::string workingCopy = WorkingCopy(m_session, planned.target.templateName);
            if (!IsFileExist(workingCopy)) files.push_back(workingCopy);
        }
        return files;
    }

    void Write(const PlannedTarget& planned, Manifest& manifest) {
        WarnOfOthersWork(planned);
        // The diff has to be made before its one side is gone.
        const ShownDiff diff = DiffOf(m_session, planned);
        if (planned.change != Change::None) {
            const FileInPlace place(m_session.HostPaths().Find(planned.target.path, planned.target.trusted),
                                    planned.path);
            RenderTarget(m_session, {planned.target.templateName, place, planned.staged, planned.version,
                                     m_session.Role()});
        } else if (!IsFileExist(WorkingCopy(m_session, planned.target.templateName))) {
            // The notice in the file tells its reader to edit the working copy.
            m_session.Config().InstallConfigFileTemplate(planned.target.templateName);
        }
        if (planned.change == Change::None && VersionOf(planned.path) != planned.version) {
            throw Failure(
                planned.path +
                ": another program wrote it after it was looked at (look at it, and run the command again)");
        }
        manifest.Record(planned.path);
        ReportTarget(planned, diff);
    }

    void WarnOfOthersWork(const PlannedTarget& planned) {
        if (planned.before.links > 1 && planned.change != Change::None) {
            m_report.Warning(planned.path + ": has " + std::to_string(planned.before.links) +
                             " names (hard links); the others keep the former text");
        }
        if (!planned.IsOthersWork()) return;
        m_report.Warning(planned.path + ": " + DescribeOthersWork(planned));
    }

    std::string DescribeOthersWork(const PlannedTarget& planned) const {
        if (!planned.before.exists) return "was removed since the last commit";
        const std::string end = (m_isDryRun ? " would be" : " are") + std::string(" overwritten");
        return planned.isTouched ? "was edited since the last commit; the edits" + end
                                 : "holds changes that are kept nowhere; they" + end;
    }

    void ReportTarget(const PlannedTarget& planned, const ShownDiff& diff) {
        Fields fields = {{"template", planned.target.templateName},
                         {"path", m_session.HostPaths().RealName(planned.path)},
                         {"change", NameOf(planned.change)},
                         {"edited", planned.IsOthersWork()},
                         {"secret", m_session.Asked().json && IsPrivate(m_session, planned)}};
        if (planned.change != Change::None) {
            for (auto& field : ChangeFields(planned.before, planned.after))
                fields.push_back(std::move(field));
        }
        if (m_session.Asked().diff) diff.AddTo(fields);
        m_report.Add("targets", std::move(fields));
        if (!m_session.Asked().quiet) m_report.Line(planned.path + ": " + Describe(planned));
        diff.Tell(m_report);
    }

    static const char* NameOf(Change change) {
        if (change == Change::None) return "unchanged";
        return change == Change::Create ? "created" : "changed";
    }

    std::string Describe(const PlannedTarget& planned) const {
        if (planned.change == Change::None) return "unchanged";
        std::string text = std::string(m_isDryRun ? "would be " : "") + NameOf(planned.change);
        const std::string attributes = DescribeChange(planned.before, planned.after);
        if (!attributes.empty()) text += ", " + attributes;
        if (m_isDryRun) return text;
        const std::string reserve = planned.path + ZETReserveSuffix;
        if (planned.change == Change::Modify && IsFileExist(reserve))
            text += ", the original is kept as " + reserve;
        return text;
    }

    /// What stopped the run is on its way to the reader; what goes wrong in here comes on top of it.
    void ReportBreakOff(const std::vector<PlannedTarget>& plan, Manifest& manifest) {
        try {
            std::vector<std::string> written;
            std::vector<std::string> notWritten;
            std::vector<std::string> others;
            std::vector<PlannedTarget> done;
            for (const PlannedTarget& planned : plan) {
                const bool isWritten = IsWritten(planned);
                if (isWritten) {
                    manifest.Record(planned.path);
                    done.push_back(planned);
                }
                if (planned.change == Change::None) continue;
                const bool isAsItWas = VersionOf(planned.path) == planned.version;
                (isWritten ? written : isAsItWas ? notWritten : others).push_back(planned.path);
            }
            m_report.Error(
                "the commit did not come to its end, its status is not recorded (run it again to complete "
                "it). Written: " +
                Joined(written) + ". Not written: " + Joined(notWritten) +
                (others.empty() ? "" : ". Written by another program: " + Joined(others)));
            ReportRestarts(done);
            manifest.Save();
        } catch (const std::exception& error) {
            m_report.Error(WithRemedy(error.what()));
        }
    }

    void RecordStatus() {
        IZETConfig& config = m_session.Config();
        const std::string directory = m_session.Param("ZET_VAR_LIB_DIR");
        std::string file = directory + "/zet-" + m_session.Role() + ".status";
        try {
            config.SaveConfigStatus(m_session.Role());
            if (m_session.Role() != "client") return;
            file = directory + "/zet-client-fs.status";
            config.SaveFileServerStatus();
        } catch (const EZETError& error) {
            throw Failure(file + ": cannot be written: " + error.GetMessage() +
                          " (make room, or allow it; then commit again)");
        }
        if (config.GetFileServerStatus() != m_session.Param("NETWORK_FS_TYPE"))
            throw Failure(file + ": could not be written whole (make room, then commit again)");
    }

    /// A run that was cut short could tell and record nothing of what it had written; the commands that came
    /// after it may have cleared away what it left.
    bool NeedsRestart(const PlannedTarget& planned) const {
        return planned.change != Change::None || planned.isTouched || planned.isUnrecorded ||
               m_cutShort.count(planned.path) != 0;
    }

    void ReportRestarts(const std::vector<PlannedTarget>& plan) {
        Restarts restarts;
        for (const PlannedTarget& planned : plan) {
            if (NeedsRestart(planned)) restarts.Add(planned.target.restart);
        }
        restarts.Tell(m_session);
    }

    Session& m_session;
    Report& m_report;
    bool m_isDryRun;
    std::set<std::string> m_cutShort;  ///< what a run that was cut short may have written
};

}  // namespace

int RunCommitConfig(Session& session) {
    return Commit(session).Run();
}

}  // namespace ZET
