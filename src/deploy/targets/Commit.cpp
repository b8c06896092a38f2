#include "deploy/targets/Commit.h"

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/state/PendingRecord.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/Render.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

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

std::string DescribeOthersWork(const PlannedTarget& planned, bool isDryRun) {
    if (!planned.before.exists) return "was removed since the last commit";
    const std::string end = (isDryRun ? " would be" : " are") + std::string(" overwritten");
    return planned.isTouched ? "was edited since the last commit; the edits" + end
                             : "holds changes that are kept nowhere; they" + end;
}

void WarnOfOthersWork(Host& host, const PlannedTarget& planned) {
    if (planned.before.links > 1 && planned.IsChange()) {
        host.Out().Warning(planned.path + ": has " + std::to_string(planned.before.links) +
                           " names (hard links); the others keep the former text");
    }
    if (planned.IsOthersWork())
        host.Out().Warning(planned.path + ": " + DescribeOthersWork(planned, host.Wanted().dryRun));
}

/// One commit, from the plan to the status.
class Execution {
  public:
    Execution(Deployment& product, CommitPlan& plan)
        : m_product(product), m_plan(plan), m_manifest(plan.Recorded()) {}

    void Run() {
        const PendingRecord pending(m_product.State(), m_product.HostPaths(), FilesToWrite());
        try {
            std::size_t done = 0;
            for (const PlannedTarget& planned : m_plan.Targets()) {
                m_product.RequireGoOn();
                m_product.Out().Progress(done++, m_plan.Targets().size());
                Write(planned);
            }
            m_manifest.Save();
            RecordStatus();
        } catch (...) {
            TellBreakOff();
            throw;
        }
        m_product.Out().Restarts(m_plan.RestartsOf(m_plan.Targets()));
    }

  private:
    std::vector<std::string> FilesToWrite() {
        std::vector<std::string> files;
        for (const PlannedTarget& planned : m_plan.Targets()) {
            if (planned.IsChange()) files.push_back(planned.path);
            const std::string workingCopy = WorkingCopy(m_product, planned.target.templateName);
            if (!IsFileExist(workingCopy)) files.push_back(workingCopy);
        }
        return files;
    }

    void Write(const PlannedTarget& planned) {
        WarnOfOthersWork(m_product, planned);
        // The diff has to be made before its one side is gone.
        FileOutcome outcome = OutcomeOf(m_product, planned);
        if (planned.IsChange()) {
            Render(planned);
        } else if (!IsFileExist(WorkingCopy(m_product, planned.target.templateName))) {
            // The notice in the file tells its reader to edit the working copy.
            m_product.Config().InstallConfigFileTemplate(planned.target.templateName);
        }
        if (!planned.IsChange() && VersionOf(planned.path) != planned.version) {
            throw Failure(
                planned.path +
                ": another program wrote it after it was looked at (look at it, and run the command again)");
        }
        m_manifest.Record(planned.path);
        if (planned.change == FileOutcome::Result::Changed) outcome.reserve = ReserveOf(planned.path);
        m_product.Out().Done(outcome);
    }

    void Render(const PlannedTarget& planned) {
        const FileInPlace place(m_product.HostPaths().Find(planned.target.path, planned.target.trusted),
                                planned.path);
        RenderTarget(m_product,
                     {planned.target.templateName, place, planned.staged, planned.version, m_product.Role()});
    }

    /// What stopped the run is on its way to the reader; what goes wrong in here comes on top of it.
    void TellBreakOff() {
        try {
            std::vector<std::string> written;
            std::vector<std::string> notWritten;
            std::vector<std::string> others;
            std::vector<PlannedTarget> done;
            for (const PlannedTarget& planned : m_plan.Targets()) {
                const bool isWritten = IsWritten(planned);
                if (isWritten) {
                    m_manifest.Record(planned.path);
                    done.push_back(planned);
                }
                if (!planned.IsChange()) continue;
                const bool isAsItWas = VersionOf(planned.path) == planned.version;
                (isWritten ? written : isAsItWas ? notWritten : others).push_back(planned.path);
            }
            m_product.Out().Error(
                "the commit did not come to its end, its status is not recorded (run it again to complete "
                "it). Written: " +
                Joined(written) + ". Not written: " + Joined(notWritten) +
                (others.empty() ? "" : ". Written by another program: " + Joined(others)));
            m_product.Out().Restarts(m_plan.RestartsOf(done));
            m_manifest.Save();
        } catch (const std::exception& error) {
            m_product.Out().Error(WithRemedy(error.what()));
        }
    }

    void RecordStatus() {
        IZETConfig& config = m_product.Config();
        const StateDirectory state = m_product.State();
        std::string file = state.Status(m_product.Role());
        try {
            config.SaveConfigStatus(NameOf(m_product.Role()));
            if (m_product.Role() != Role::Client) return;
            file = state.FileServerStatus();
            config.SaveFileServerStatus();
        } catch (const EZETError& error) {
            throw Failure(file + ": cannot be written: " + error.GetMessage() +
                          " (make room, or allow it; then commit again)");
        }
        if (config.GetFileServerStatus() != m_product.Param("NETWORK_FS_TYPE"))
            throw Failure(file + ": could not be written whole (make room, then commit again)");
    }

    Deployment& m_product;
    CommitPlan& m_plan;
    Manifest& m_manifest;
};

}  // namespace

bool Preview(Deployment& product, const CommitPlan& plan) {
    bool wouldChange = false;
    for (const PlannedTarget& planned : plan.Targets()) {
        WarnOfOthersWork(product, planned);
        product.Out().Done(OutcomeOf(product, planned));
        wouldChange = wouldChange || planned.IsChange();
    }
    product.Out().Restarts(plan.RestartsOf(plan.Targets()));
    return wouldChange;
}

void Commit(Deployment& product, CommitPlan& plan) {
    Execution(product, plan).Run();
}

}  // namespace ZET::Deploy
