#include "deploy/targets/Rollback.h"

#include <algorithm>
#include <memory>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/state/CutShort.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/Lock.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnText.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/EditRollback.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/Targets.h"
#include "deploy/targets/WrittenFile.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

using Result = FileOutcome::Result;

/// What is done to one file.
struct Step {
    enum class Action { Nothing, PutBack, DropReserve, LeaveToOtherRole, TakeOutBlocks };

    WrittenFile file;
    FileOutcome outcome;
    Action action = Action::Nothing;
    FileVersion version;  ///< before it was looked at
    bool hasReserve = false;
    std::string text{};  ///< what is left without the blocks
};

/// One rollback, under the lock: first it is known what becomes of every file, which is recorded, then it is
/// done.
class Rollback {
  public:
    Rollback(Deployment& product, const std::vector<std::string>& names, const RollBackToOptions& options)
        : m_product(product),
          m_names(names),
          m_isForced(options.force),
          m_keepsEdits(options.keepEdits),
          m_isDryRun(product.Wanted().dryRun),
          m_otherRole(OtherRole(product.Role())),
          m_recording(product, Recording::Use::OfTheProduct, true, true),
          m_known(product, KnownFiles::Unusable::IsTold) {}

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
            files.push_back(Written(target));
        for (const std::string& path : m_known.PathsOf(m_product.Role())) {
            const bool isListed = std::any_of(files.begin(), files.end(),
                                              [&](const WrittenFile& file) { return file.path == path; });
            if (!isListed) AddRecorded(path, files);
        }
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

    WrittenFile Written(const Target& target) const {
        WrittenFile file{target.templateName,
                         m_product.HostPaths().FromInside(target.path),
                         target.ServicesFor(m_product.Role()),
                         target.path,
                         target.trusted,
                         target.roles.size() > 1,
                         {},
                         false};
        try {
            file.path = m_product.HostPaths().WithRealDirectory(m_product.FilePath(target.path));
        } catch (const Failure& failure) {
            file.trouble = failure;
        }
        return file;
    }

    void AddRecorded(const std::string& path, std::vector<WrittenFile>& files) {
        WrittenFile file{"", path, {}, "", "", true, {}, false};
        try {
            if (!m_product.HostPaths().StaysInside(path)) {
                m_product.Out().Warning(path +
                                        ": leads out of the root directory by a link, and is left alone");
                return;
            }
        } catch (const Failure& failure) {
            file.trouble = failure;
        }
        files.push_back(std::move(file));
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
            steps.push_back(
                Tried({file, {}, Step::Action::Nothing, {}, false}, [&](Step& step) { Decide(step); }));
        }
        return steps;
    }

    /// A file that cannot be put back does not keep the others from it.
    template <typename Call>
    Step Tried(Step step, Call call) {
        try {
            if (step.file.trouble) throw Failure(*step.file.trouble);
            call(step);
        } catch (const Interrupted&) {
            throw;
        } catch (const std::exception& error) {
            m_result.isKept = true;
            m_product.Out().Error(step.file.path + ": could not be put back: " + FailureOf(error).what());
            step.outcome = OutcomeOf(step.file, Result::Failed, "could not be put back");
            step.action = Step::Action::Nothing;
        }
        return step;
    }

    void Do(Step& step) {
        if (!m_isDryRun && step.action != Step::Action::Nothing)
            step = Tried(step, [&](Step& tried) { Act(tried); });
        if (step.outcome.result == Result::Restored || step.outcome.result == Result::Removed)
            m_restarts.Add(step.file.services);
        m_product.Out().Done(step.outcome);
    }

    void Decide(Step& step) {
        const WrittenFile& file = step.file;
        step.version = VersionOf(file.path);
        const FileState reserve = StateOf(file.Reserve());
        const FileState now = StateOf(file.path);
        step.hasReserve = reserve.exists;
        if (file.isEdit && DecideEdit(step)) return;
        if (!reserve.exists && !StateOf(file.Record()).exists) {
            step.action = Step::Action::LeaveToOtherRole;
            step.outcome = OutcomeOf(file, Result::Unchanged,
                                     now.exists ? "has no reserve, stays as it is" : "is not there");
            return;
        }
        if (reserve.exists && !reserve.IsRegular())
            throw Failure({.file = file.Reserve(), .text = "is no regular file", .remedy = "move it away"});
        if (now.exists && !m_isForced && !IsOwnWork(file)) {
            step.outcome = KeepEdit(file);
        } else if (m_known.IsUnusable() && file.isOfBoth && !m_isForced) {
            step.outcome = Keep(file, std::string("may have been committed by the role ") +
                                          NameOf(m_otherRole) + ", too, and stays (--force puts it back)");
        } else if (m_known.Has(file.path, m_otherRole)) {
            step.action = Step::Action::LeaveToOtherRole;
            step.outcome = OutcomeOf(
                file, Result::Kept,
                std::string("stays for the role ") + NameOf(m_otherRole) + ", which has committed it");
        } else {
            m_result.isChanged = true;
            step.outcome = Describe(file, now, reserve);
            step.action = file.IsAsReserved(now, reserve) ? Step::Action::DropReserve : Step::Action::PutBack;
        }
    }

    /// False when the file goes back to its reserve, as a target does.
    bool DecideEdit(Step& step) {
        EditToTakeBack edit = LookAtEdit(m_known, step.file, m_isForced);
        switch (edit.way) {
            case EditToTakeBack::Way::Reserve:
                return false;
            case EditToTakeBack::Way::Keep:
                step.outcome = Keep(step.file, edit.remark);
                return true;
            case EditToTakeBack::Way::Forget:
                step.action = Step::Action::LeaveToOtherRole;
                step.outcome = OutcomeOf(step.file, Result::Unchanged, edit.remark);
                return true;
            case EditToTakeBack::Way::Blocks:
                break;
        }
        m_result.isChanged = true;
        step.action = Step::Action::TakeOutBlocks;
        step.outcome = OutcomeOf(step.file, Result::Changed, edit.remark);
        step.outcome.before = step.outcome.after = StateOf(step.file.path);
        step.text = std::move(edit.text);
        const std::string staged = Room().PathOf("without-blocks");
        WriteStagedFile(staged, step.text, step.outcome.before.mode);
        step.outcome.diff = DiffToShow(m_product, step.file.path, staged, step.file.path);
        return true;
    }

    void TakeOutBlocks(const Step& step) {
        const FileInPlace place = step.file.PlaceIn(m_product.HostPaths());
        Replacement replacement(m_product, place, step.version);
        const mode_t mode = replacement.Former().mode;
        replacement.Make(
            mode, [&](const std::string& name) { SaveOwnText(name, step.text, mode); },
            [](const std::string&) {});
    }

    void Act(const Step& step) {
        if (step.action == Step::Action::TakeOutBlocks) return TakeOutBlocks(step);
        if (step.action != Step::Action::PutBack && step.action != Step::Action::DropReserve) return;
        const FileInPlace place = step.file.PlaceIn(m_product.HostPaths());
        if (step.action == Step::Action::PutBack) return PutBackAsItWas(m_product, place, step.version);
        // What cannot be replaced, like a mount point, can be as it was all the same.
        place.Within([&](const std::string& name) { m_product.Config().RemoveConfigFileReserve(name); });
    }

    static FileOutcome OutcomeOf(const WrittenFile& file, Result result, const std::string& remark) {
        FileOutcome outcome;
        outcome.file = file.named;
        outcome.path = file.path;
        outcome.templateName = file.templateName;
        outcome.result = result;
        outcome.remark = remark;
        return outcome;
    }

    FileOutcome KeepEdit(const WrittenFile& file) {
        const char* const remark = "edited, stays as it is";
        if (m_keepsEdits) return OutcomeOf(file, Result::Kept, remark);
        m_product.Out().Warning(
            file.path +
            ": was edited since it was committed and stays (--force puts back what was there before)");
        return Keep(file, remark);
    }

    FileOutcome Keep(const WrittenFile& file, const std::string& remark) {
        m_result.isKept = true;
        return OutcomeOf(file, Result::Kept, remark);
    }

    FileOutcome Describe(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
        const std::string tense = m_isDryRun ? "would be " : "";
        FileOutcome outcome = OutcomeOf(file, Result::Removed, tense + "removed, as there was none before");
        if (reserve.exists) {
            const std::string attributes = now.exists ? DescribeChange(now, reserve) : "";
            outcome = OutcomeOf(file, Result::Restored,
                                tense + "put back as it was" + (attributes.empty() ? "" : ", " + attributes));
        } else if (!now.exists) {
            outcome = OutcomeOf(file, Result::Unchanged, "is not there, as before");
        }
        outcome.before = now;
        outcome.after = reserve;
        outcome.diff = DiffOf(file, now, reserve);
        return outcome;
    }

    ShownDiff DiffOf(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
        const bool isShown = now.exists ? now.IsRegular() : reserve.exists;
        if (!isShown) return {};
        return DiffToShow(m_product, now.exists ? file.path : "", reserve.exists ? file.Reserve() : "",
                          file.path);
    }

    /// Whether nothing but the product's work is lost when the file is replaced: it is what the product
    /// wrote, or what was there before, where a run was cut short in between.
    bool IsOwnWork(const WrittenFile& file) {
        if (m_known.IsAsLeft(file.path)) return true;
        if (!StateOf(file.path).IsRegular()) return false;
        if (IsFileExist(file.Reserve()) && HaveSameModeAndBytes(file.path, file.Reserve())) return true;
        if (file.templateName.empty()) return false;
        if (!CheckTemplateFile(m_product, file.templateName, m_product.TemplateValues()).empty())
            return false;
        return std::any_of(std::begin(kRoles), std::end(kRoles), [&](Role role) {
            return HaveSameModeAndBytes(file.path, RenderQuietly(m_product, Room(), file.templateName, role));
        });
    }

    /// Whether no target of the role is left when all steps are done.
    bool IsLast(const std::vector<WrittenFile>& all, const std::vector<Step>& steps) const {
        return std::all_of(all.begin(), all.end(), [&](const WrittenFile& file) {
            if (file.isEdit) return true;
            const auto step = std::find_if(steps.begin(), steps.end(),
                                           [&](const Step& each) { return each.file.path == file.path; });
            const bool isTakenBack = step != steps.end() && step->action != Step::Action::Nothing;
            const bool isLeft = file.IsLeft() && !m_known.Has(file.path, m_otherRole);
            return isTakenBack || (!isLeft && !m_known.Has(file.path, m_product.Role()));
        });
    }

    /// What is going to be changed.
    void Expect(const std::vector<Step>& steps, bool isLast) {
        for (const Step& step : steps) {
            if (step.action != Step::Action::Nothing) m_recording.Expect(Expected(step));
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

    ExpectedFile Expected(const Step& step) const {
        ExpectedFile file;
        file.path = step.file.path;
        file.kind = FileKind::Original;
        if (const KnownFile* const known = m_known.Find(file.path)) file.knowledge = known->state.knowledge;
        if (file.knowledge) file.knowledge->roles.erase(m_product.Role());
        const std::uint64_t longest = m_product.HostHistory().Limits().largestText;
        if (step.action == Step::Action::LeaveToOtherRole) {
            // What somebody else makes of it meanwhile is not the product's work.
            file.after = Capture(file.path, longest);
            const KnownFile* const known = m_known.Find(file.path);
            if (!m_known.Has(file.path, m_otherRole)) return file;
            file.kind = FileKind::Target;
            // Somebody may have edited it since.
            file.left = known->state;
            return file;
        }
        if (step.action == Step::Action::TakeOutBlocks) {
            file.after = Capture(file.path, longest);
            file.after->SetText(step.text);
            return file;
        }
        file.after = step.hasReserve ? Capture(step.file.Reserve(), longest) : CapturedFile();
        file.companions = ExpectedFile::Companions::MayGo;
        return file;
    }

    /// Made when it is needed: most rollbacks compare nothing, and work where there is no room left.
    const Staging& Room() {
        if (!m_staging)
            m_staging = std::make_unique<Staging>(m_isDryRun ? "" : m_product.Param("ZET_VAR_LIB_DIR"));
        return *m_staging;
    }

    void RemoveStatus() {
        m_product.Config().RemoveConfigStatus(NameOf(m_product.Role()));
        if (m_product.Role() == Role::Client) m_product.Config().RemoveFileServerStatus();
    }

    Deployment& m_product;
    const std::vector<std::string>& m_names;
    bool m_isForced;
    bool m_keepsEdits;
    bool m_isDryRun;
    const Role m_otherRole;
    Recording m_recording;
    const KnownFiles m_known;
    std::unique_ptr<Staging> m_staging;
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
