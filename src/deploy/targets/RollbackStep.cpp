#include "deploy/targets/RollbackStep.h"

#include <algorithm>
#include <utility>

#include "deploy/targets/EditRollback.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TargetCheck.h"

namespace ZET::Deploy {

namespace {

using Result = FileOutcome::Result;
using Action = RollbackStep::Action;

void Miss(RollbackStep& step, const std::string& remark) {
    step.isMissed = true;
    step.Tell(Result::Kept, remark);
}

}  // namespace

void RollbackStep::Tell(Result result, const std::string& remark) {
    outcome = {};
    outcome.file = file.named;
    outcome.path = file.path;
    outcome.templateName = file.templateName;
    outcome.result = result;
    outcome.remark = remark;
}

RollbackDecision::RollbackDecision(Deployment& product, const KnownFiles& known,
                                   const RollBackToOptions& options)
    : m_product(product), m_known(known), m_options(options), m_otherRole(OtherRole(product.Role())) {}

void RollbackDecision::Decide(RollbackStep& step) {
    step.version = VersionOf(step.file.path);
    if (!step.file.isEdit || !DecideEdit(step)) DecideTarget(step);
}

void RollbackDecision::DecideTarget(RollbackStep& step) {
    const WrittenFile& file = step.file;
    const FileState reserve = StateOf(file.Reserve());
    const FileState now = StateOf(file.path);
    step.hasReserve = reserve.exists;
    if (!reserve.exists && !StateOf(file.Record()).exists) {
        step.action = Action::LeaveToOtherRole;
        step.Tell(Result::Unchanged, now.exists ? "has no reserve, stays as it is" : "is not there");
        return;
    }
    if (reserve.exists && !reserve.IsRegular())
        throw Failure({.file = file.Reserve(), .text = "is no regular file", .remedy = "move it away"});
    // What cannot be read is not told as edited.
    if (now.IsRegular()) RequireReadableFile(file.path);
    if (now.exists && !m_options.force && !IsOwnWork(file)) {
        KeepEdited(step);
    } else if (m_known.IsUnusable() && file.isOfBoth && !m_options.force) {
        Miss(step, std::string("may have been committed by the role ") + NameOf(m_otherRole) +
                       ", too, and stays (--force puts it back)");
    } else if (m_known.Has(file.path, m_otherRole)) {
        step.action = Action::LeaveToOtherRole;
        step.Tell(Result::Kept,
                  std::string("stays for the role ") + NameOf(m_otherRole) + ", which has committed it");
    } else {
        PutBack(step, now, reserve);
    }
}

/// False when the file goes back to its reserve, as a target does.
bool RollbackDecision::DecideEdit(RollbackStep& step) {
    EditToTakeBack edit = LookAtEdit(m_known, step.file, m_options.force);
    switch (edit.way) {
        case EditToTakeBack::Way::Reserve:
            return false;
        case EditToTakeBack::Way::Keep:
            Miss(step, edit.remark);
            break;
        case EditToTakeBack::Way::Forget:
            step.action = Action::LeaveToOtherRole;
            step.Tell(Result::Unchanged, edit.remark);
            break;
        case EditToTakeBack::Way::Blocks:
            TakeOutBlocks(step, std::move(edit.text), edit.remark);
            break;
    }
    return true;
}

void RollbackDecision::TakeOutBlocks(RollbackStep& step, std::string text, const std::string& remark) {
    step.action = Action::TakeOutBlocks;
    step.Tell(Result::Changed, remark);
    step.outcome.before = step.outcome.after = StateOf(step.file.path);
    step.text = std::move(text);
    const std::string staged = Room().PathOf("without-blocks");
    WriteStagedFile(staged, step.text, step.outcome.before.mode);
    step.outcome.diff = DiffToShow(m_product, step.file.path, staged, step.file.path);
}

void RollbackDecision::PutBack(RollbackStep& step, const FileState& now, const FileState& reserve) const {
    const std::string tense = m_product.Wanted().dryRun ? "would be " : "";
    if (reserve.exists) {
        const std::string attributes = now.exists ? DescribeChange(now, reserve) : "";
        step.Tell(Result::Restored,
                  tense + "put back as it was" + (attributes.empty() ? "" : ", " + attributes));
    } else if (now.exists) {
        step.Tell(Result::Removed, tense + "removed, as there was none before");
    } else {
        step.Tell(Result::Unchanged, "is not there, as before");
    }
    step.outcome.before = now;
    step.outcome.after = reserve;
    step.outcome.diff = DiffOf(step.file, now, reserve);
    step.action = step.file.IsAsReserved(now, reserve) ? Action::DropReserve : Action::PutBack;
    if (step.action != Action::PutBack) return;
    for (const std::string& path : {step.file.path, step.file.Reserve()})
        RequireReplaceable(path);
}

void RollbackDecision::KeepEdited(RollbackStep& step) const {
    const char* const remark = "edited, stays as it is";
    if (m_options.keepEdits) return step.Tell(Result::Kept, remark);
    m_product.Out().Warning(
        step.file.path +
        ": was edited since it was committed and stays (--force puts back what was there before)");
    Miss(step, remark);
}

/// Whether nothing but the product's work is lost when the file is replaced: it is what the product wrote, or
/// what was there before, where a run was cut short in between.
bool RollbackDecision::IsOwnWork(const WrittenFile& file) {
    if (m_known.IsAsLeft(file.path)) return true;
    if (!StateOf(file.path).IsRegular()) return false;
    if (IsFileExist(file.Reserve()) && HaveSameModeAndBytes(file.path, file.Reserve())) return true;
    if (file.templateName.empty()) return false;
    if (!CheckTemplateFile(m_product, file.templateName, m_product.Config().TemplatesValues()).empty())
        return false;
    return std::any_of(std::begin(kRoles), std::end(kRoles), [&](Role role) {
        return HaveSameModeAndBytes(file.path, RenderQuietly(m_product, Room(), file.templateName, role));
    });
}

ShownDiff RollbackDecision::DiffOf(const WrittenFile& file, const FileState& now,
                                   const FileState& reserve) const {
    const bool isShown = now.exists ? now.IsRegular() : reserve.exists;
    if (!isShown) return {};
    return DiffToShow(m_product, now.exists ? file.path : "", reserve.exists ? file.Reserve() : "",
                      file.path);
}

/// Made when it is needed: most rollbacks compare nothing, and work where there is no room left.
const Staging& RollbackDecision::Room() {
    if (!m_staging)
        m_staging =
            std::make_unique<Staging>(m_product.Wanted().dryRun ? "" : m_product.Param("ZET_VAR_LIB_DIR"));
    return *m_staging;
}

}  // namespace ZET::Deploy
