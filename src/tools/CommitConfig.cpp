#include <algorithm>
#include <memory>
#include <set>

#include "Assignments.h"
#include "Commands.h"
#include "CommitPlan.h"
#include "ExitStatus.h"
#include "Lock.h"
#include "PendingRecord.h"
#include "Render.h"
#include "Signals.h"
#include "TargetCheck.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

using Change = PlannedTarget::Change;

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
            lock = std::make_unique<WriteLock>(m_session);
            PendingRecord::ClearLeftOvers(m_session);
        }
        const std::vector<Target> targets = SelectTargets(m_session, m_session.Asked().names);
        if (!CheckAll(targets)) return kFailed;
        const Staging staging(m_isDryRun ? "" : m_session.Param("ZET_VAR_LIB_DIR"));
        Manifest manifest(m_session);
        const std::vector<PlannedTarget> plan = PlanTargets(m_session, staging, targets, manifest);
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
            m_session.Core().UpdateParam(name, value);
        m_session.Config().RecreateTemplatesMap();
    }

    bool CheckAll(const std::vector<Target>& targets) {
        const std::vector<Problem> problems = CheckTargets(m_session, targets);
        for (const Problem& problem : problems) {
            m_report.Error(problem.Describe());
            m_report.Add("problems", problem.ToFields());
        }
        if (!problems.empty()) m_report.Remark("nothing was changed");
        return problems.empty();
    }

    int ReportPlan(const std::vector<PlannedTarget>& plan) {
        bool wouldChange = false;
        for (const PlannedTarget& planned : plan) {
            ReportTarget(planned);
            wouldChange = wouldChange || planned.change != Change::None;
        }
        ReportRestarts(plan);
        return wouldChange ? kNotInSync : kDone;
    }

    int Execute(const std::vector<PlannedTarget>& plan, Manifest& manifest) {
        std::vector<std::string> toWrite;
        for (const PlannedTarget& planned : plan) {
            if (planned.change != Change::None) toWrite.push_back(planned.path);
        }
        const PendingRecord pending(m_session, toWrite);
        std::size_t done = 0;
        try {
            for (; done < plan.size(); ++done) {
                SignalGuard::Check();
                Write(plan[done], manifest);
            }
        } catch (...) {
            ReportUnwritten(plan, done);
            manifest.Save();
            throw;
        }
        manifest.Save();
        RecordStatus();
        ReportRestarts(plan);
        return kDone;
    }

    void Write(const PlannedTarget& planned, Manifest& manifest) {
        if (planned.isEdited) {
            m_report.Warning(planned.path + ": was edited since the last commit; the edits are overwritten");
        }
        // The diff has to be made before its one side is gone.
        const std::string diff = m_session.Asked().diff ? DiffOf(planned) : "";
        if (planned.change != Change::None) {
            RenderTarget(m_session, planned.target.templateName, planned.path, planned.staged);
        } else if (!IsFileExist(WorkingCopy(m_session, planned.target.templateName))) {
            // The notice in the file tells its reader to edit the working copy.
            m_session.Config().InstallConfigFileTemplate(planned.target.templateName);
        }
        manifest.Record(planned.path);
        ReportTarget(planned, diff);
    }

    void ReportTarget(const PlannedTarget& planned) {
        ReportTarget(planned, m_session.Asked().diff ? DiffOf(planned) : "");
    }

    void ReportTarget(const PlannedTarget& planned, const std::string& diff) {
        Fields fields = {{"template", planned.target.templateName},
                         {"path", planned.path},
                         {"change", NameOf(planned.change)},
                         {"edited", planned.isEdited},
                         {"secret", planned.target.isSecret}};
        if (planned.change != Change::None) {
            for (auto& field : ChangeFields(planned.before, planned.after))
                fields.push_back(std::move(field));
        }
        if (m_session.Asked().diff) fields.emplace_back("diff", diff);
        m_report.Add("targets", std::move(fields));
        m_report.Line(planned.path + ": " + Describe(planned));
        m_report.Diff(diff);
    }

    static const char* NameOf(Change change) {
        if (change == Change::None) return "unchanged";
        return change == Change::Create ? "created" : "changed";
    }

    std::string Describe(const PlannedTarget& planned) const {
        if (planned.change == Change::None) return "unchanged";
        std::string text = std::string(m_isDryRun ? "would be " : "") + NameOf(planned.change);
        const std::string attributes =
            planned.change == Change::Modify ? DescribeChange(planned.before, planned.after) : "";
        if (!attributes.empty()) text += ", " + attributes;
        if (m_isDryRun) return text;
        const std::string reserve = planned.path + ZETReserveSuffix;
        if (planned.change == Change::Modify && IsFileExist(reserve))
            text += ", the original is kept as " + reserve;
        return text;
    }

    void ReportUnwritten(const std::vector<PlannedTarget>& plan, std::size_t done) {
        const auto list = [&](std::size_t from, std::size_t to) {
            std::string paths;
            for (std::size_t i = from; i < to; ++i)
                paths += (paths.empty() ? "" : ", ") + plan[i].path;
            return paths.empty() ? std::string("none") : paths;
        };
        m_report.Error("the commit did not come to its end; run it again to complete it. Done: " +
                       list(0, done) + ". Not done: " + list(done, plan.size()));
    }

    void RecordStatus() {
        IZETConfig& config = m_session.Config();
        config.SaveConfigStatus(m_session.Role());
        if (m_session.Role() != "client") return;
        config.SaveFileServerStatus();
        if (config.GetFileServerStatus() != m_session.Param("NETWORK_FS_TYPE")) {
            throw Failure(m_session.Param("ZET_VAR_LIB_DIR") +
                          "/zet-client-fs.status: could not be written whole (make room, then commit again)");
        }
    }

    void ReportRestarts(const std::vector<PlannedTarget>& plan) {
        std::set<std::string> named;
        for (const PlannedTarget& planned : plan) {
            const std::string& services = planned.target.restart;
            if (planned.change == Change::None || services.empty() || !named.insert(services).second)
                continue;
            m_report.Line((m_isDryRun ? "would have to be restarted: " : "to be restarted: ") + services);
            m_report.Add("restart", services);
        }
    }

    Session& m_session;
    Report& m_report;
    bool m_isDryRun;
};

}  // namespace

int RunCommitConfig(Session& session) {
    return Commit(session).Run();
}

}  // namespace ZET
