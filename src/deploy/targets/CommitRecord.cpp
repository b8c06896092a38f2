#include "deploy/targets/CommitRecord.h"

#include <utility>
#include <vector>

#include "deploy/host/FileVersion.h"
#include "deploy/state/History.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/LinesPlan.h"
#include "deploy/targets/TakeBackWork.h"
#include "deploy/targets/TemplateHistory.h"

namespace ZET::Deploy {

namespace {

std::optional<std::string> BaseOf(const PlannedTarget& planned) {
    return planned.rendering == nullptr ? std::nullopt : std::optional(planned.rendering->Text());
}

}  // namespace

CommitRecord::CommitRecord(Deployment& product, CommitPlan& plan)
    : m_product(product),
      m_plan(plan),
      m_recording(product, Recording::Use::OfTheProduct, true),
      m_longest(product.HostHistory().Limits().largestText) {}

void CommitRecord::Begin() {
    m_recording.ExpectTogether([&] { Expect(); });
    m_recording.Begin();
}

void CommitRecord::Complete() {
    m_recording.Complete();
    RememberShipped();
}

/// Expects what the commit is going to write. A new status alone is no change: it says when the last commit
/// was.
void CommitRecord::Expect() {
    if (!m_plan.IsRecorded()) return;
    for (PlannedTarget& planned : m_plan.Targets()) {
        if (planned.IsChange()) m_recording.Expect(Expected(planned));
        if (!planned.hasWorkingCopy) ExpectWorkingCopy(m_recording, m_product, planned.target.templateName);
    }
    if (m_plan.Lines() != nullptr) {
        for (const PlannedLines& planned : m_plan.Lines()->Files())
            if (planned.IsChange()) m_recording.Expect(m_plan.Lines()->Expected(planned));
    }
    for (const TakeBackStep& step : m_plan.TakenBack())
        if (step.action != TakeBackStep::Action::Nothing)
            m_recording.Expect(ExpectedOf(m_product, m_plan.Known(), step));
    // If the entry is taken back, what is known of these is taken back, too.
    ForEachUnchanged([&](const ExpectedFile& file) { m_recording.Expect(file); });
    for (const std::string& path : m_product.State().StatusesOf(m_product.Role()))
        m_recording.Expect({.path = path, .kind = FileKind::Status});
}

/// Calls `call` for what is already as it should be, but not on record as such.
template <typename Call>
void CommitRecord::ForEachUnchanged(Call call) const {
    for (const PlannedTarget& planned : m_plan.Targets())
        if (!planned.IsChange() && !IsKnown(planned)) call(ExpectedUnchanged(planned));
    if (m_plan.Lines() == nullptr) return;
    for (const PlannedLines& planned : m_plan.Lines()->Files())
        if (!planned.IsChange() && !m_plan.Lines()->IsKnown(planned))
            call(m_plan.Lines()->ExpectedUnchanged(planned));
}

ExpectedFile CommitRecord::ExpectedUnchanged(const PlannedTarget& planned) const {
    return {.path = planned.path,
            .kind = FileKind::Target,
            .knowledge = KnowledgeOf(planned),
            .base = BaseOf(planned)};
}

/// Takes what was captured out of the plan.
ExpectedFile CommitRecord::Expected(PlannedTarget& planned) const {
    ExpectedFile file = ExpectedUnchanged(planned);
    if (!planned.isOriginalLost) file.companions = ExpectedFile::Companions::MayCome;
    // What others did after the plan looked at the file is not the commit's work, and the commit will refuse
    // it.
    if (VersionOf(planned.path) == planned.version) file.before = std::move(planned.captured);
    planned.captured.reset();
    file.after = CapturedOf(planned.after, planned.staged->Text(), m_longest);
    file.wasEdited = planned.IsOthersWork();
    return file;
}

Knowledge CommitRecord::KnowledgeOf(const PlannedTarget& planned) const {
    Knowledge knowledge;
    if (const KnownFile* const known = m_plan.Known().Find(planned.path)) knowledge = known->state.knowledge;
    knowledge.roles.insert(m_product.Role());
    knowledge.namedRole = planned.namedRole;
    knowledge.templateName = planned.target.templateName;
    knowledge.ForgetBase();
    return knowledge;
}

void CommitRecord::RememberUnchanged() {
    if (!m_recording.IsOn() || m_recording.Number()) return;
    std::vector<FileToRecord> files;
    ForEachUnchanged([&](const ExpectedFile& file) { files.push_back(Remembered(file)); });
    if (!files.empty()) m_product.HostHistory().ToRecord().Remember(files);
}

/// For working copies that are older than the history, or came there by hand.
void CommitRecord::RememberShipped() {
    if (!m_recording.IsOn()) return;
    std::vector<TemplateFiles> withoutBase;
    for (const PlannedTarget& planned : m_plan.Targets()) {
        TemplateFiles files = FilesOfTemplate(m_product, planned.target.templateName);
        // With one directory for both, there is no copy that could fall behind.
        if (files.workingCopy == files.shipped) continue;
        const KnownFile* const known = m_plan.Known().Find(files.workingCopy);
        if (known == nullptr || !known->state.knowledge.base) withoutBase.push_back(std::move(files));
    }
    if (withoutBase.empty()) return;
    // Recording them one by one would write the same few pages of the store each time.
    m_product.HostHistory().ToRecord().RememberTogether([&] {
        for (const TemplateFiles& files : withoutBase)
            RememberShippedBase(m_product, files);
    });
}

bool CommitRecord::IsKnown(const PlannedTarget& planned) const {
    const KnownFile* const known = m_plan.Known().Find(planned.path);
    return known != nullptr && known->state.knowledge.roles.count(m_product.Role()) != 0 &&
           known->state.knowledge.templateName == planned.target.templateName &&
           planned.foundAs != FoundAs::Edited && !planned.isRenderingNew;
}

FileToRecord CommitRecord::Remembered(const ExpectedFile& expected) const {
    CapturedFile now = Capture(expected.path, m_longest);
    FileToRecord file;
    file.file.path = m_product.HostPaths().NameInside(expected.path);
    file.file.kind = expected.kind;
    file.file.after = expected.knownAs.value_or(now.state);
    file.file.after.knowledge = *expected.knowledge;
    if (!expected.knownAs) file.textAfter = std::move(now.text);
    file.base = expected.base;
    return file;
}

}  // namespace ZET::Deploy
