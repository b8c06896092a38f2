#include "deploy/targets/Commit.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/state/StateFile.h"
#include "deploy/targets/CommitRecord.h"
#include "deploy/targets/OthersWork.h"
#include "deploy/targets/TakeBackWork.h"
#include "deploy/targets/TargetWriting.h"
#include "zet/ZETErrors.h"

namespace ZET::Deploy {

namespace {

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : ", ") + text;
    return joined.empty() ? _("none") : joined;
}

/// Whether the target is by now what it was to become.
bool IsWritten(const PlannedTarget& planned) {
    if (planned.staged == nullptr) return VersionOf(planned.path) == planned.version;
    const FileState now = StateOf(planned.path);
    return now.IsRegular() && now.mode == planned.after.mode && planned.staged->IsIn(planned.path);
}

/// One commit, from the plan to the status.
class Execution {
  public:
    Execution(Deployment& product, CommitPlan& plan)
        : m_product(product), m_plan(plan), m_record(product, plan) {}

    void Run() {
        m_record.Begin();
        try {
            WriteTargets(m_product, m_plan, m_record);
            if (m_plan.Lines() != nullptr) SetLines(*m_plan.Lines());
            for (const TakeBackStep& step : m_plan.TakenBack())
                PutBack(step);
            m_record.RememberUnchanged();
            RecordStatus();
        } catch (...) {
            TellBreakOff();
            throw;
        }
        m_record.Complete();
        m_plan.Services().Tell(m_product.Out());
    }

  private:
    void SetLines(const LinesPlan& lines) {
        for (const PlannedLines& planned : lines.Files()) {
            m_product.RequireGoOn();
            lines.TellLines(planned);
            WarnOfOthersWork(m_product, planned);
            if (planned.isEdited && m_record.Number())
                TellWhereKept(m_product, *m_record.Number(),
                              m_product.HostPaths().NameInside(planned.file.path), planned.file.version);
            // The diff has to be made before one of its sides is gone.
            FileOutcome outcome = lines.OutcomeOf(planned);
            if (planned.IsChange()) lines.Write(planned);
            if (planned.IsChange()) outcome.reserve = ReserveOf(planned.file.path);
            m_product.Out().Done(outcome);
        }
    }

    void PutBack(const TakeBackStep& step) {
        m_product.RequireGoOn();
        DoStep(m_product, step);
        m_product.Out().Done(step.outcome);
    }

    /// The caller reports what stopped the run; what goes wrong in here is reported besides.
    void TellBreakOff() {
        try {
            std::vector<std::string> written;
            std::vector<std::string> notWritten;
            std::vector<std::string> others;
            std::set<const PlannedTarget*> done;
            for (const PlannedTarget& planned : m_plan.Targets()) {
                const bool isWritten = IsWritten(planned);
                if (isWritten) done.insert(&planned);
                if (!planned.IsChange()) continue;
                const bool isAsItWas = VersionOf(planned.path) == planned.version;
                (isWritten ? written : isAsItWas ? notWritten : others).push_back(planned.path);
            }
            m_product.Out().Error(
                others.empty()
                    ? Words("the commit did not come to its end, its status is not recorded (run it again to "
                            "complete it). Written: %s. Not written: %s",
                            Joined(written), Joined(notWritten))
                    : Words("the commit did not come to its end, its status is not recorded (run it again to "
                            "complete it). Written: %s. Not written: %s. Written by another program: %s",
                            Joined(written), Joined(notWritten), Joined(others)));
            m_plan.ServicesOf([&](const PlannedTarget& planned) { return done.contains(&planned); })
                .Tell(m_product.Out());
        } catch (const std::exception& error) {
            m_product.Out().Error(FailureOf(error).what());
        }
    }

    void RecordStatus() {
        IZETConfig& config = m_product.Config();
        const StateDirectory state = m_product.State();
        std::string file = state.Status(m_product.Role());
        try {
            SaveStateFile(file, [&] { config.SaveConfigStatus(NameOf(m_product.Role())); });
            if (m_product.Role() != Role::Client) return;
            file = state.FileServerStatus();
            SaveStateFile(file, [&] {
                config.SaveFileServerStatus();
                // The module does not report that only a part could be written.
                if (config.GetFileServerStatus() != m_product.Param("NETWORK_FS_TYPE"))
                    throw Failure({.file = file,
                                   .text = _("could not be written whole"),
                                   .remedy = _("make room, then commit again")});
            });
        } catch (const EZETError& error) {
            throw Failure({.file = file,
                           .text = Words("cannot be written: %s", error.GetMessage()),
                           .remedy = _("make room, or allow it; then commit again")},
                          ErrorNumberOf(error));
        }
    }

    Deployment& m_product;
    CommitPlan& m_plan;
    CommitRecord m_record;
};

}  // namespace

bool Preview(Deployment& product, const CommitPlan& plan) {
    constexpr std::size_t kDiffsInMemory = 64;
    for (std::span<const PlannedTarget> left = plan.Targets(); !left.empty();) {
        const std::span<const PlannedTarget> group = left.first(std::min(kDiffsInMemory, left.size()));
        left = left.subspan(group.size());
        const std::vector<FileOutcome> outcomes = OutcomesOf(product, group);
        for (std::size_t i = 0; i < group.size(); ++i) {
            WarnOfOthersWork(product, group[i]);
            product.Out().Done(outcomes[i]);
        }
    }
    if (plan.Lines() != nullptr) {
        for (const PlannedLines& planned : plan.Lines()->Files()) {
            plan.Lines()->TellLines(planned);
            WarnOfOthersWork(product, planned);
            product.Out().Done(plan.Lines()->OutcomeOf(planned));
        }
    }
    for (const TakeBackStep& step : plan.TakenBack())
        product.Out().Done(step.outcome);
    plan.Services().Tell(product.Out());
    if (plan.IsRecorded() && !plan.IsChange())
        product.Out().Remark(_("no target would change, but a working copy or what is on record would"));
    return plan.IsRecorded();
}

void Commit(Deployment& product, CommitPlan& plan) {
    Execution(product, plan).Run();
}

}  // namespace ZET::Deploy
