#include "deploy/targets/Rollback.h"

#include <algorithm>
#include <memory>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/state/CutShort.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/Lock.h"
#include "deploy/state/Recording.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/Targets.h"
#include "deploy/targets/WrittenFile.h"

namespace ZET::Deploy {

namespace {

using Result = FileOutcome::Result;

using Step = TakeBackStep;

/// One rollback, under the lock: first it is known what becomes of every file, which is recorded, then it is
/// done.
class Rollback {
  public:
    Rollback(Deployment& product, const std::vector<std::string>& names, const RollBackToOptions& options)
        : m_product(product),
          m_names(names),
          m_isDryRun(product.Wanted().dryRun),
          m_otherRole(OtherRole(product.Role())),
          m_recording(product, Recording::Use::OfTheProduct, true, true),
          m_known(product, KnownFiles::Unusable::IsTold),
          m_takeBack(product, m_known, {options.force, options.keepEdits, "--force"}) {}

    RollbackResult Run() {
        const std::vector<WrittenFile> all = WrittenFiles();
        std::vector<Step> steps = Steps(Named(all));
        const bool isLast = IsLast(all, steps);
        Expect(steps, isLast);
        m_recording.Begin();
        try {
            std::size_t done = 0;
            for (Step& step : steps) {
                m_product.RequireGoOn();
                m_product.Out().Progress(done++, steps.size());
                Do(step);
            }
        } catch (const Interrupted&) {
            m_restarts.Tell(m_product.Out());
            throw;
        }
        m_restarts.Tell(m_product.Out());
        if (m_isDryRun) return m_result;
        // What could not be put back is none of those that are taken back any more.
        if (isLast && IsLast(all, steps)) RemoveStatus();
        m_recording.Complete(Ending::DoneInPart);
        return m_result;
    }

  private:
    std::vector<WrittenFile> WrittenFiles() {
        std::vector<WrittenFile> files;
        for (const Target& target : ListedTargets())
            files.push_back(WrittenTarget(m_product, target));
        std::set<std::string> listed;
        for (const WrittenFile& file : files)
            listed.insert(file.path);
        for (const std::string& path : m_known.PathsOf(m_product.Role()))
            if (!listed.contains(path)) AddRecorded(path, files);
        if (m_names.empty()) AddEdits(files);
        return files;
    }

    /// Of whichever role: a line has none.
    void AddEdits(std::vector<WrittenFile>& files) {
        for (const std::string& path : m_known.EditedPaths()) {
            const std::size_t count = files.size();
            AddRecorded(path, files);
            if (files.size() > count) files.back().isEdit = true;
        }
    }

    /// None when there is no list that can be used. What was recorded goes back all the same.
    std::vector<Target> ListedTargets() {
        try {
            return SelectTargets(m_product, {});
        } catch (const Failure& failure) {
            if (m_known.PathsOf(m_product.Role()).empty()) throw;
            m_result.isKept = true;
            m_product.Out().Error(failure.what(), failure.Lines());
            m_product.Out().Remark("only the files that the last commit recorded are put back");
            return {};
        }
    }

    void AddRecorded(const std::string& path, std::vector<WrittenFile>& files) {
        if (std::optional<WrittenFile> file = WrittenByRecord(m_product, path))
            files.push_back(std::move(*file));
    }

    /// The files that were asked for; all when none was.
    std::vector<WrittenFile> Named(const std::vector<WrittenFile>& all) {
        if (m_names.empty()) return all;
        std::vector<WrittenFile> named;
        for (const std::string& name : m_names) {
            const std::string path = m_product.HostPaths().Canonical(name);
            const auto file = std::find_if(all.begin(), all.end(),
                                           [&](const WrittenFile& each) { return IsAt(each, path); });
            if (file == all.end()) {
                throw UsageError(name + ": is no target of the role " + NameOf(m_product.Role()) +
                                 " (\"status\" lists them; \"file restore\" puts any other file back)");
            }
            named.push_back(*file);
        }
        return named;
    }

    /// A file of which nobody can tell where it is, is at no path.
    bool IsAt(const WrittenFile& file, const std::string& path) const {
        const Paths& paths = m_product.HostPaths();
        try {
            return paths.Canonical(paths.NameInside(file.path)) == path;
        } catch (const Failure&) {
            return false;
        }
    }

    std::vector<Step> Steps(const std::vector<WrittenFile>& files) {
        std::vector<Step> steps;
        for (const WrittenFile& file : files) {
            m_product.RequireGoOn();
            steps.push_back(Tried({file}, [&](Step& step) { step = m_takeBack.Decide(step.file); }));
            m_result.isKept = m_result.isKept || steps.back().isKept;
            m_result.isChanged = m_result.isChanged || steps.back().isChange;
        }
        return steps;
    }

    /// A file that cannot be put back does not keep the others from it.
    template <typename Call>
    Step Tried(Step step, Call call) {
        try {
            call(step);
        } catch (const Interrupted&) {
            throw;
        } catch (const std::exception& error) {
            m_result.isKept = true;
            m_product.Out().Error(step.file.path + ": could not be put back: " + FailureOf(error).what());
            step.outcome = TakeBack::OutcomeOf(step.file, Result::Failed, "could not be put back");
            step.action = Step::Action::Nothing;
        }
        return step;
    }

    void Do(Step& step) {
        if (!m_isDryRun && step.action != Step::Action::Nothing)
            step = Tried(step, [&](Step& tried) { m_takeBack.Do(tried); });
        if (step.outcome.result == Result::Restored || step.outcome.result == Result::Removed)
            m_restarts.Add(step.file.services);
        m_product.Out().Done(step.outcome);
    }

    /// Whether no target of the role is left when all steps are done.
    bool IsLast(const std::vector<WrittenFile>& all, const std::vector<Step>& steps) const {
        std::set<std::string> takenBack;
        for (const Step& step : steps)
            if (step.action != Step::Action::Nothing) takenBack.insert(step.file.path);
        return std::all_of(all.begin(), all.end(), [&](const WrittenFile& file) {
            if (file.isEdit) return true;
            const bool isTakenBack = takenBack.contains(file.path);
            const bool isLeft = file.IsLeft() && !m_known.Has(file.path, m_otherRole);
            return isTakenBack || (!isLeft && !m_known.Has(file.path, m_product.Role()));
        });
    }

    /// What is going to be changed.
    void Expect(const std::vector<Step>& steps, bool isLast) {
        for (const Step& step : steps) {
            if (step.action != Step::Action::Nothing) m_recording.Expect(m_takeBack.Expected(step));
        }
        if (!isLast || m_recording.IsEmpty()) return;
        ExpectedFile status;
        status.kind = FileKind::Status;
        status.after = CapturedFile();
        status.path = m_product.State().Status(m_product.Role());
        m_recording.Expect(status);
        if (m_product.Role() != Role::Client) return;
        status.path = m_product.State().FileServerStatus();
        m_recording.Expect(status);
    }

    void RemoveStatus() {
        m_product.Config().RemoveConfigStatus(NameOf(m_product.Role()));
        if (m_product.Role() == Role::Client) m_product.Config().RemoveFileServerStatus();
    }

    Deployment& m_product;
    const std::vector<std::string>& m_names;
    bool m_isDryRun;
    const Role m_otherRole;
    Recording m_recording;
    const KnownFiles m_known;
    TakeBack m_takeBack;
    Restarts m_restarts;
    RollbackResult m_result;
};

}  // namespace

RollbackResult RollBack(Deployment& product, const std::vector<std::string>& names,
                        const RollBackToOptions& options) {
    const SignalGuard signals;
    std::unique_ptr<WriteLock> lock;
    if (!product.Wanted().dryRun) {
        RequireOwnInstructions(product);
        lock = std::make_unique<WriteLock>(product.State(), LockSeeker{product.Caller(), product.Out()});
        Staging::RemoveLeftOvers(product.State().Path());
        SettleCutShort(product, true);
    }
    return Rollback(product, names, options).Run();
}

}  // namespace ZET::Deploy
