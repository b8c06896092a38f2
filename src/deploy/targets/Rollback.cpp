#include "deploy/targets/Rollback.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/CutShort.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/Lock.h"
#include "deploy/state/Recording.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/RememberedLines.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/TakeBackWork.h"
#include "deploy/targets/WrittenFiles.h"

namespace ZET::Deploy {

namespace {

using Result = FileOutcome::Result;
using Step = TakeBackStep;
using Action = TakeBackStep::Action;

/// One rollback, under the lock: what becomes of every file is decided, then recorded, then done.
class Rollback {
  public:
    Rollback(Deployment& product, const std::vector<std::string>& names, const RollBackToOptions& options,
             bool isLocked)
        : m_product(product),
          m_names(names),
          m_isDryRun(product.Wanted().dryRun),
          m_otherRole(OtherRole(product.Role())),
          m_isLocked(isLocked),
          m_recording(product, Recording::Use::OfTheProduct, isLocked, Purpose::GoesBack),
          m_known(product, KnownFiles::Unusable::IsTold),
          m_takeBack(product, m_known, {options.force, options.keepEdits}) {}

    RollbackResult Run() {
        const WrittenFiles all = FindWrittenFiles(m_product, m_known);
        std::vector<Step> steps = Steps(all.files);
        RollbackResult result;
        const bool changesFiles =
            std::any_of(steps.begin(), steps.end(), [](const Step& step) { return step.IsChange(); });
        const bool isLast = IsLast(all.files, steps);
        result.isChanged = changesFiles || ForgetsAny(steps, isLast);
        Expect(steps, isLast);
        m_recording.Begin();
        DoAll(steps);
        result.isKept = all.isListMissing ||
                        std::any_of(steps.begin(), steps.end(), [](const auto& step) { return step.isKept; });
        if (m_isDryRun) {
            if (result.isChanged && !changesFiles)
                m_product.Out().Remark(_("no file would change, but what is on record would"));
            return result;
        }
        // A file that could not be put back does not count as taken back any more.
        if (isLast && IsLast(all.files, steps)) RemoveStatusIfPossible();
        m_recording.Complete(Ending::DoneInPart);
        if (!m_recording.IsOn() && IsStillOnRecord(steps, isLast)) {
            TellStillOnRecord();
            result.isKept = true;
        }
        return result;
    }

  private:
    bool ForgetsAny(const std::vector<Step>& steps, bool isLast) const {
        if (isLast && m_product.HasCommitted(m_product.Role())) return true;
        return std::any_of(steps.begin(), steps.end(), [&](const Step& step) {
            const KnownFile* const known = m_known.Find(step.file.path);
            return step.action == Action::OnlyRecord && known != nullptr &&
                   (known->kind != FileKind::Target || m_known.Has(step.file.path, m_product.Role()));
        });
    }

    bool IsStillOnRecord(const std::vector<Step>& steps, bool isLast) const {
        const bool hasStatus = isLast && StateOf(m_product.State().Status(m_product.Role())).exists;
        return hasStatus || std::any_of(steps.begin(), steps.end(), [&](const Step& step) {
                   return step.action != Action::Nothing && m_known.Find(step.file.path) != nullptr;
               });
    }

    void TellStillOnRecord() const {
        const bool isLockTheCause = !m_isLocked && m_product.HostHistory().CanRecord();
        m_product.Out().Error(
            isLockTheCause ? Words("what was put back is still on record as committed (run the command "
                                   "again once %s can be locked)",
                                   m_product.State().Lock())
                           : _("what was put back is still on record as committed (run the command again "
                               "once ZET_VAR_LIB_DIR can be written)"));
    }

    /// The steps for the files that were asked for or, if none was, for all, including those edited in place.
    std::vector<Step> Steps(const std::vector<WrittenFile>& written) {
        std::vector<WrittenFile> files = written;
        // Going back twice is no mistake.
        const bool isNamed = !m_names.empty();
        for (WrittenFile& file : FindEditedFiles(m_product, m_known, written, isNamed))
            files.push_back(std::move(file));
        if (isNamed) files = Named(m_product, files, m_names);
        std::vector<Step> steps;
        for (WrittenFile& file : files) {
            m_product.RequireGoOn();
            steps.push_back({std::move(file)});
            Try(steps.back(), [&](Step& step) { m_takeBack.Decide(step); });
        }
        return steps;
    }

    /// A file that cannot be put back does not stop the others.
    template <typename Call>
    void Try(Step& step, Call call) {
        try {
            call(step);
        } catch (const Interrupted&) {
            throw;
        } catch (const std::exception& error) {
            m_product.Out().Error(
                Words("%s: could not be put back: %s", step.file.path, FailureOf(error).what()));
            step.Tell(Result::Failed, _("could not be put back"));
            step.action = Action::Nothing;
            step.isKept = true;
        }
    }

    void DoAll(std::vector<Step>& steps) {
        Restarts restarts;
        try {
            std::size_t done = 0;
            for (Step& step : steps) {
                m_product.RequireGoOn();
                m_product.Out().Progress(done++, steps.size());
                Do(step);
                if (step.outcome.result == Result::Restored || step.outcome.result == Result::Removed)
                    restarts.Add(step.file.services);
                m_product.Out().Done(step.outcome);
            }
        } catch (const Interrupted&) {
            restarts.Tell(m_product.Out());
            throw;
        }
        restarts.Tell(m_product.Out());
    }

    void Do(Step& step) {
        if (m_isDryRun || !step.IsChange()) return;
        Try(step, [&](const Step& tried) { DoStep(m_product, tried); });
    }

    /// Whether no targets and no lines of the role are left after all steps.
    bool IsLast(const std::vector<WrittenFile>& all, const std::vector<Step>& steps) const {
        // What was edited in place belongs to no role.
        const auto isRoles = [&](const Step& step) { return !step.file.isEdit || HasLines(step.file.path); };
        if (!m_names.empty() && std::none_of(steps.begin(), steps.end(), isRoles)) return false;
        std::set<std::string_view> takenBack;
        for (const Step& step : steps)
            if (step.action != Action::Nothing) takenBack.insert(step.file.path);
        const bool isTargetLeft = std::any_of(all.begin(), all.end(), [&](const WrittenFile& file) {
            const bool mayGoBack = file.MayGoBack() && !m_known.Has(file.path, m_otherRole);
            return !takenBack.contains(file.path) && (mayGoBack || m_known.Has(file.path, m_product.Role()));
        });
        const std::vector<std::string> edited = m_known.EditedPaths();
        return !isTargetLeft && std::none_of(edited.begin(), edited.end(), [&](const std::string& path) {
            return !takenBack.contains(path) && HasLines(path);
        });
    }

    /// Whether a commit of the role has set lines in the file.
    bool HasLines(const std::string& path) const {
        Store* const store = m_product.HostHistory().ToLookIfUsable();
        const KnownFile* const file = m_known.Find(path);
        return store != nullptr && file != nullptr &&
               CommittersOf(*store, file->kind, file->state.knowledge).contains(m_product.Role());
    }

    /// Expects what is going to be changed.
    void Expect(const std::vector<Step>& steps, bool isLast) {
        for (const Step& step : steps) {
            if (step.action != Action::Nothing) m_recording.Expect(ExpectedOf(m_product, m_known, step));
        }
        if (!isLast || m_recording.IsEmpty()) return;
        for (const std::string& path : m_product.State().StatusesOf(m_product.Role()))
            m_recording.Expect({.path = path, .kind = FileKind::Status, .after = CapturedFile()});
    }

    /// If its directory is missing, there is no status. One that cannot be removed keeps no file from going
    /// back.
    void RemoveStatusIfPossible() {
        if (m_isLocked) return RemoveStatus();
        try {
            if (StateOf(m_product.State().Status(m_product.Role())).exists) RemoveStatus();
        } catch (const std::exception& error) {
            m_product.Out().Warning(Words("the status stays: %s", FailureOf(error).what()));
        }
    }

    void RemoveStatus() {
        m_product.Config().RemoveConfigStatus(NameOf(m_product.Role()));
        if (m_product.Role() == Role::Client) m_product.Config().RemoveFileServerStatus();
    }

    Deployment& m_product;
    const std::vector<std::string>& m_names;
    bool m_isDryRun;
    const Role m_otherRole;
    const bool m_isLocked;
    Recording m_recording;
    const KnownFiles m_known;
    TakeBack m_takeBack;
};

}  // namespace

RollbackResult RollBack(Deployment& product, const std::vector<std::string>& names,
                        const RollBackToOptions& options) {
    const SignalGuard signals;
    std::unique_ptr<WriteLock> lock;
    RequireOwnInstructions(product);
    if (!product.Wanted().dryRun) {
        lock = LockToGoBack(product.State(), product.Seeker());
        if (lock) {
            Staging::RemoveLeftOvers(product.State().Path(), lock->MayFollowOneCutShort());
            SettleCutShort(product, *lock, Purpose::GoesBack);
        }
    }
    return Rollback(product, names, options, lock != nullptr).Run();
}

}  // namespace ZET::Deploy
