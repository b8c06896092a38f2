#include "deploy/targets/Commit.h"

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/state/Recording.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/TemplateFiles.h"
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
        : m_product(product),
          m_plan(plan),
          m_recording(product, Recording::Use::OfTheProduct, true),
          m_longest(product.HostHistory().Limits().largestText) {}

    void Run() {
        Expect();
        m_recording.Begin();
        try {
            std::size_t done = 0;
            for (const PlannedTarget& planned : m_plan.Targets()) {
                m_product.RequireGoOn();
                m_product.Out().Progress(done++, m_plan.Targets().size());
                Write(planned);
            }
            RecordStatus();
        } catch (...) {
            TellBreakOff();
            throw;
        }
        m_recording.Complete();
        RememberUnchanged();
        RememberShipped();
        m_product.Out().Restarts(m_plan.RestartsOf(m_plan.Targets()));
    }

  private:
    /// What it is going to write. The status tells when the last commit was, which alone is no change.
    void Expect() {
        for (const PlannedTarget& planned : m_plan.Targets()) {
            if (planned.IsChange()) m_recording.Expect(Expected(planned));
            ExpectWorkingCopy(m_recording, m_product, planned.target.templateName);
        }
        if (m_recording.IsEmpty()) return;
        ExpectUnchanged();
        ExpectedFile status;
        status.kind = FileKind::Status;
        status.path = m_product.State().Status(m_product.Role());
        m_recording.Expect(status);
        if (m_product.Role() != Role::Client) return;
        status.path = m_product.State().FileServerStatus();
        m_recording.Expect(status);
    }

    /// An entry that is taken back takes back what was known of these, too.
    void ExpectUnchanged() {
        for (const PlannedTarget& planned : m_plan.Targets()) {
            if (planned.IsChange() || IsKnown(planned)) continue;
            ExpectedFile file;
            file.path = planned.path;
            file.kind = FileKind::Target;
            file.knowledge = KnowledgeOf(planned);
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
        knowledge.base.reset();
        return knowledge;
    }

    /// A target that is as it would be rendered is a committed one from now on. Where others were changed,
    /// the entry says so.
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
               known->state.knowledge.templateName == planned.target.templateName && !planned.isTouched;
    }

    FileToRecord Remembered(const PlannedTarget& planned) const {
        CapturedFile now = Capture(planned.path, m_longest);
        FileToRecord file;
        file.file.path = m_product.HostPaths().NameInside(planned.path);
        file.file.kind = FileKind::Target;
        file.file.after = now.state;
        file.file.after.knowledge = KnowledgeOf(planned);
        file.textAfter = std::move(now.text);
        return file;
    }

    void Write(const PlannedTarget& planned) {
        WarnOfOthersWork(m_product, planned);
        TellWhereKept(planned);
        // The diff has to be made before its one side is gone.
        FileOutcome outcome = OutcomeOf(m_product, planned);
        if (planned.IsChange()) {
            Render(planned);
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

    void Render(const PlannedTarget& planned) {
        const FileInPlace place(m_product.HostPaths().Find(planned.target.path, planned.target.trusted),
                                planned.path);
        RenderTarget(m_product, {planned.target.templateName, place, planned.staged, planned.version,
                                 planned.namedRole});
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
            m_product.Out().Restarts(m_plan.RestartsOf(done));
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
