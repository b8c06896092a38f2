#include "deploy/targets/Commit.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/state/Recording.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/NewOwner.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/TemplateFiles.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"
#include "zet/ZETHost.h"

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

std::string FateOfOthersWork(const PlannedTarget& planned, bool isDryRun) {
    if (!planned.before.exists) return DescribeOthersWork(planned);
    const std::string verb = isDryRun ? " would be " : " are ";
    return DescribeOthersWork(planned) + (planned.isTouched ? "; the edits" : "; they") + verb +
           (planned.isMerged ? "merged" : "overwritten");
}

void WarnOfOthersWork(Host& host, const PlannedTarget& planned) {
    if (planned.before.links > 1 && planned.IsChange()) {
        host.Out().Warning(planned.path + ": has " + std::to_string(planned.before.links) +
                           " names (hard links); the others keep the former text");
    }
    if (!planned.IsOthersWork()) return;
    const std::string text = planned.path + ": " + FateOfOthersWork(planned, host.Wanted().dryRun);
    planned.isMerged ? host.Out().Remark(text) : host.Out().Warning(text);
}

void WarnOfOthersWork(Host& host, const PlannedEdits& planned) {
    if (planned.isMerged) {
        host.Out().Remark(planned.file.path + ": a line that the last commit set was changed since; it " +
                          (host.Wanted().dryRun ? "would stay" : "stays"));
    }
    if (!planned.isEdited) return;
    host.Out().Warning(planned.file.path + ": a line that the last commit set was changed since; it " +
                       (host.Wanted().dryRun ? "would be" : "is") + " set again");
}

/// One commit, from the plan to the status.
class Execution {
  public:
    Execution(Deployment& product, CommitPlan& plan)
        : m_product(product),
          m_plan(plan),
          m_recording(product, Recording::Use::OfTheProduct, true),
          m_longest(product.HostHistory().Limits().largestText) {}

    void Run() {
        Expect();
        m_recording.Begin();
        try {
            WriteTargets();
            if (m_plan.Edits() != nullptr) SetLines(*m_plan.Edits());
            for (const TakeBackStep& step : m_plan.TakenBack())
                PutBack(step);
            RememberUnchanged();
            RecordStatus();
        } catch (...) {
            TellBreakOff();
            throw;
        }
        m_recording.Complete();
        RememberShipped();
        m_plan.ServicesOf(m_plan.Targets()).Tell(m_product.Out());
    }

  private:
    /// What it is going to write. The status tells when the last commit was, which alone is no change.
    void Expect() {
        for (const PlannedTarget& planned : m_plan.Targets()) {
            if (planned.IsChange()) m_recording.Expect(Expected(planned));
            ExpectWorkingCopy(m_recording, m_product, planned.target.templateName);
        }
        if (m_plan.Edits() != nullptr) ExpectLines(*m_plan.Edits());
        for (const TakeBackStep& step : m_plan.TakenBack())
            if (step.action != TakeBackStep::Action::Nothing)
                m_recording.Expect(m_plan.Ways().Expected(step));
        if (m_recording.IsEmpty()) return;
        ExpectUnchanged();
        for (const std::string& path : m_product.State().StatusesOf(m_product.Role()))
            m_recording.Expect({.path = path, .kind = FileKind::Status});
    }

    /// An entry that is taken back takes back what was known of these, too.
    void ExpectUnchanged() {
        for (const PlannedTarget& planned : m_plan.Targets()) {
            if (planned.IsChange() || IsKnown(planned)) continue;
            ExpectedFile file;
            file.path = planned.path;
            file.kind = FileKind::Target;
            file.knowledge = KnowledgeOf(planned);
            file.base = BaseOf(planned);
            m_recording.Expect(file);
        }
    }

    ExpectedFile Expected(const PlannedTarget& planned) const {
        ExpectedFile file;
        file.path = planned.path;
        file.kind = FileKind::Target;
        file.companions = ExpectedFile::Companions::MayCome;
        file.after = Staged(planned);
        file.knowledge = KnowledgeOf(planned);
        file.base = BaseOf(planned);
        file.wasEdited = planned.IsOthersWork();
        return file;
    }

    /// As it will be in its place.
    CapturedFile Staged(const PlannedTarget& planned) const {
        constexpr mode_t kModeBits = 07777;
        CapturedFile file = Capture(planned.staged, m_longest);
        file.state.mode = planned.after.mode & kModeBits;
        file.state.owner = planned.after.owner;
        file.state.group = planned.after.group;
        return file;
    }

    Knowledge KnowledgeOf(const PlannedTarget& planned) const {
        Knowledge knowledge;
        if (const KnownFile* const known = m_plan.Known().Find(planned.path))
            knowledge = known->state.knowledge;
        knowledge.roles.insert(m_product.Role());
        knowledge.namedRole = planned.namedRole;
        knowledge.templateName = planned.target.templateName;
        knowledge.ForgetBase();
        return knowledge;
    }

    static std::optional<std::string> BaseOf(const PlannedTarget& planned) {
        return planned.rendering.empty() ? std::nullopt : std::optional(ReadFileBytes(planned.rendering));
    }

    /// A target that is as it would be rendered is a committed one from now on. Where others were changed,
    /// the entry says so. It is known before there is a status: one without a target would never go.
    void RememberUnchanged() {
        if (!m_recording.IsOn() || m_recording.Number()) return;
        std::vector<FileToRecord> files;
        for (const PlannedTarget& planned : m_plan.Targets())
            if (!planned.IsChange() && !IsKnown(planned)) files.push_back(Remembered(planned));
        if (!files.empty()) m_product.HostHistory().ToRecord().Remember(files);
    }

    /// Working copies from before there was a history, or that came there by hand.
    void RememberShipped() {
        if (!m_recording.IsOn()) return;
        for (const PlannedTarget& planned : m_plan.Targets()) {
            const TemplateFiles files = FilesOfTemplate(m_product, planned.target.templateName);
            const KnownFile* const known = m_plan.Known().Find(files.workingCopy);
            const bool hasBase = known != nullptr && known->state.knowledge.base;
            if (!hasBase) RememberShippedBase(m_product, files);
        }
    }

    bool IsKnown(const PlannedTarget& planned) const {
        const KnownFile* const known = m_plan.Known().Find(planned.path);
        return known != nullptr && known->state.knowledge.roles.count(m_product.Role()) != 0 &&
               known->state.knowledge.templateName == planned.target.templateName && !planned.isTouched &&
               !planned.isRenderingNew;
    }

    FileToRecord Remembered(const PlannedTarget& planned) const {
        CapturedFile now = Capture(planned.path, m_longest);
        FileToRecord file;
        file.file.path = m_product.HostPaths().NameInside(planned.path);
        file.file.kind = FileKind::Target;
        file.file.after = now.state;
        file.file.after.knowledge = KnowledgeOf(planned);
        file.textAfter = std::move(now.text);
        file.base = BaseOf(planned);
        return file;
    }

    using Renderings = std::vector<std::unique_ptr<TargetRendering>>;  ///< null: nothing to be written

    /// So many at once, that each may be in a directory of its own, which is held.
    void WriteTargets() {
        constexpr std::size_t kGroup = 64;
        const std::vector<PlannedTarget>& targets = m_plan.Targets();
        for (std::size_t first = 0; first < targets.size(); first += kGroup)
            WriteGroup(first, std::min(first + kGroup, targets.size()));
    }

    void WriteGroup(std::size_t first, std::size_t end) {
        const std::vector<PlannedTarget>& targets = m_plan.Targets();
        Renderings renderings;
        CZETBatch batch;
        for (std::size_t i = first; i < end; ++i)
            renderings.push_back(WithOriginalKept(targets[i], batch));
        batch.NameFiles();
        for (std::size_t i = first; i < end; ++i) {
            m_product.RequireGoOn();
            m_product.Out().Progress(i, targets.size());
            batch.SetSubject(targets[i].path);
            Write(targets[i], renderings[i - first].get());
            renderings[i - first].reset();
        }
        batch.Finish();
    }

    std::unique_ptr<TargetRendering> WithOriginalKept(const PlannedTarget& planned, CZETBatch& batch) {
        if (!planned.IsChange()) return nullptr;
        m_product.RequireGoOn();
        batch.SetSubject(planned.path);
        FileInPlace place(m_product.HostPaths().Find(planned.target.path, planned.target.trusted),
                          planned.path);
        auto rendering = std::make_unique<TargetRendering>(
            m_product, std::move(place),
            TargetToRender{planned.target.templateName, planned.staged, planned.version, planned.namedRole,
                           !planned.rendering.empty(), NewOwnerOf(planned.target)});
        rendering->KeepOriginal();
        return rendering;
    }

    void Write(const PlannedTarget& planned, TargetRendering* rendering) {
        WarnOfOthersWork(m_product, planned);
        TellWhereKept(planned);
        // The diff has to be made before its one side is gone.
        FileOutcome outcome = OutcomeOf(m_product, planned);
        if (rendering != nullptr) {
            rendering->Write();
        } else if (!IsFileExist(WorkingCopy(m_product, planned.target.templateName))) {
            // The notice in the file tells its reader to edit the working copy.
            m_product.Config().InstallConfigFileTemplate(planned.target.templateName);
        }
        if (!planned.IsChange() && VersionOf(planned.path) != planned.version) {
            throw Failure({.file = planned.path,
                           .text = "another program wrote it after it was looked at",
                           .remedy = "look at it, and run the command again"});
        }
        if (planned.change == FileOutcome::Result::Changed) outcome.reserve = ReserveOf(planned.path);
        m_product.Out().Done(outcome);
    }

    void ExpectLines(const ListedEdits& edits) {
        for (const PlannedEdits& planned : edits.Files())
            if (planned.IsChange()) m_recording.Expect(edits.Expected(planned));
    }

    void SetLines(const ListedEdits& edits) {
        for (const PlannedEdits& planned : edits.Files()) {
            m_product.RequireGoOn();
            WarnOfOthersWork(m_product, planned);
            // The diff has to be made before its one side is gone.
            FileOutcome outcome = edits.OutcomeOf(planned);
            if (planned.IsChange()) edits.Write(planned);
            if (planned.IsChange()) outcome.reserve = ReserveOf(planned.file.path);
            m_product.Out().Done(outcome);
        }
    }

    void PutBack(const TakeBackStep& step) {
        m_product.RequireGoOn();
        if (step.action != TakeBackStep::Action::Nothing) m_plan.Ways().Do(step);
        m_product.Out().Done(step.outcome);
    }

    void TellWhereKept(const PlannedTarget& planned) const {
        if (!planned.IsOthersWork() || !planned.before.exists || !m_recording.Number()) return;
        if (!m_product.HostHistory().KeepsTexts()) return;
        const auto size = static_cast<std::uint64_t>(planned.version.size);
        if (size > m_product.HostHistory().Limits().largestText)
            return m_product.Out().Remark("what " + planned.target.path +
                                          " held is larger than ZET_HISTORY_MAX_FILE, and not kept");
        m_product.Out().Remark("\"history show " + std::to_string(*m_recording.Number()) + " " +
                               planned.target.path + "\" shows what it held");
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
                if (isWritten) done.push_back(planned);
                if (!planned.IsChange()) continue;
                const bool isAsItWas = VersionOf(planned.path) == planned.version;
                (isWritten ? written : isAsItWas ? notWritten : others).push_back(planned.path);
            }
            m_product.Out().Error(
                "the commit did not come to its end, its status is not recorded (run it again to complete "
                "it). Written: " +
                Joined(written) + ". Not written: " + Joined(notWritten) +
                (others.empty() ? "" : ". Written by another program: " + Joined(others)));
            m_plan.ServicesOf(done).Tell(m_product.Out());
        } catch (const std::exception& error) {
            m_product.Out().Error(FailureOf(error).what());
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
            throw Failure({.file = file,
                           .text = "cannot be written: " + error.GetMessage(),
                           .remedy = "make room, or allow it; then commit again"},
                          ErrorNumberOf(error));
        }
        if (config.GetFileServerStatus() != m_product.Param("NETWORK_FS_TYPE"))
            throw Failure({.file = file,
                           .text = "could not be written whole",
                           .remedy = "make room, then commit again"});
    }

    Deployment& m_product;
    CommitPlan& m_plan;
    Recording m_recording;
    const std::uint64_t m_longest;
};

}  // namespace

bool Preview(Deployment& product, const CommitPlan& plan) {
    for (const PlannedTarget& planned : plan.Targets()) {
        WarnOfOthersWork(product, planned);
        product.Out().Done(OutcomeOf(product, planned));
    }
    if (plan.Edits() != nullptr) {
        for (const PlannedEdits& planned : plan.Edits()->Files()) {
            WarnOfOthersWork(product, planned);
            product.Out().Done(plan.Edits()->OutcomeOf(planned));
        }
    }
    for (const TakeBackStep& step : plan.TakenBack())
        product.Out().Done(step.outcome);
    plan.ServicesOf(plan.Targets()).Tell(product.Out());
    return plan.IsChange();
}

void Commit(Deployment& product, CommitPlan& plan) {
    Execution(product, plan).Run();
}

}  // namespace ZET::Deploy
