#include "deploy/targets/TakeBack.h"

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/state/OwnText.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/EditRollback.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TargetCheck.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

using Result = FileOutcome::Result;

TakeBackStep TakeBack::Decide(const WrittenFile& file) {
    if (file.trouble) throw Failure(*file.trouble);
    TakeBackStep step{file};
    DecideByReserve(step);
    return step;
}

void TakeBack::DecideByReserve(TakeBackStep& step) {
    const WrittenFile& file = step.file;
    step.version = VersionOf(file.path);
    const FileState reserve = StateOf(file.Reserve());
    const FileState now = StateOf(file.path);
    step.hasReserve = reserve.exists;
    if (file.isEdit && DecideEdit(step)) return;
    if (!reserve.exists && !StateOf(file.Record()).exists) {
        step.action = TakeBackStep::Action::LeaveToOtherRole;
        step.outcome = OutcomeOf(file, Result::Unchanged,
                                 now.exists ? "has no reserve, stays as it is" : "is not there");
        return;
    }
    if (reserve.exists && !reserve.IsRegular())
        throw Failure({.file = file.Reserve(), .text = "is no regular file", .remedy = "move it away"});
    if (now.exists && !m_ways.isForced && !IsOwnWork(file)) {
        KeepEdit(step);
    } else if (m_known.IsUnusable() && file.isOfBoth && !m_ways.isForced) {
        Keep(step, std::string("may have been committed by the role ") + NameOf(m_otherRole) +
                       ", too, and stays (--force puts it back)");
    } else if (m_known.Has(file.path, m_otherRole)) {
        step.action = TakeBackStep::Action::LeaveToOtherRole;
        step.outcome =
            OutcomeOf(file, Result::Kept,
                      std::string("stays for the role ") + NameOf(m_otherRole) + ", which has committed it");
    } else {
        step.isChange = true;
        step.outcome = Describe(file, now, reserve);
        step.action = file.IsAsReserved(now, reserve) ? TakeBackStep::Action::DropReserve
                                                      : TakeBackStep::Action::PutBack;
    }
}

/// False when the file goes back to its reserve, as a target does.
bool TakeBack::DecideEdit(TakeBackStep& step) {
    EditToTakeBack edit = LookAtEdit(m_known, step.file, m_ways.isForced);
    switch (edit.way) {
        case EditToTakeBack::Way::Reserve:
            return false;
        case EditToTakeBack::Way::Keep:
            Keep(step, edit.remark);
            return true;
        case EditToTakeBack::Way::Forget:
            step.action = TakeBackStep::Action::LeaveToOtherRole;
            step.outcome = OutcomeOf(step.file, Result::Unchanged, edit.remark);
            return true;
        case EditToTakeBack::Way::Blocks:
            break;
    }
    step.isChange = true;
    step.action = TakeBackStep::Action::TakeOutBlocks;
    step.outcome = OutcomeOf(step.file, Result::Changed, edit.remark);
    step.outcome.before = step.outcome.after = StateOf(step.file.path);
    step.text = std::move(edit.text);
    const std::string staged = Room().PathOf("without-blocks");
    WriteStagedFile(staged, step.text, step.outcome.before.mode);
    step.outcome.diff = DiffToShow(m_product, step.file.path, staged, step.file.path);
    return true;
}

void TakeBack::TakeOutBlocks(const TakeBackStep& step) const {
    const FileInPlace place = step.file.PlaceIn(m_product.HostPaths());
    Replacement replacement(m_product, place, step.version);
    const mode_t mode = replacement.Former().mode;
    replacement.Make(
        mode, [&](const std::string& name) { SaveOwnText(name, step.text, mode); },
        [](const std::string&) {});
}

void TakeBack::Do(const TakeBackStep& step) const {
    if (step.action == TakeBackStep::Action::TakeOutBlocks) return TakeOutBlocks(step);
    if (step.action != TakeBackStep::Action::PutBack && step.action != TakeBackStep::Action::DropReserve)
        return;
    const FileInPlace place = step.file.PlaceIn(m_product.HostPaths());
    if (step.action == TakeBackStep::Action::PutBack) return PutBackAsItWas(m_product, place, step.version);
    // What cannot be replaced, like a mount point, can be as it was all the same.
    place.Within([&](const std::string& name) { m_product.Config().RemoveConfigFileReserve(name); });
}

FileOutcome TakeBack::OutcomeOf(const WrittenFile& file, Result result, const std::string& remark) {
    FileOutcome outcome;
    outcome.file = file.named;
    outcome.path = file.path;
    outcome.templateName = file.templateName;
    outcome.result = result;
    outcome.remark = remark;
    return outcome;
}

void TakeBack::KeepEdit(TakeBackStep& step) const {
    const WrittenFile& file = step.file;
    const char* const remark = "edited, stays as it is";
    if (m_ways.keepsEdits) {
        step.outcome = OutcomeOf(file, Result::Kept, remark);
        return;
    }
    m_product.Out().Warning(file.path + ": was edited since it was committed and stays (" + m_ways.force +
                            " puts back what was there before)");
    Keep(step, remark);
}

void TakeBack::Keep(TakeBackStep& step, const std::string& remark) {
    step.isKept = true;
    step.outcome = OutcomeOf(step.file, Result::Kept, remark);
}

FileOutcome TakeBack::Describe(const WrittenFile& file, const FileState& now,
                               const FileState& reserve) const {
    const std::string tense = m_product.Wanted().dryRun ? "would be " : "";
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

ShownDiff TakeBack::DiffOf(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
    const bool isShown = now.exists ? now.IsRegular() : reserve.exists;
    if (!isShown) return {};
    return DiffToShow(m_product, now.exists ? file.path : "", reserve.exists ? file.Reserve() : "",
                      file.path);
}

/// Whether nothing but the product's work is lost when the file is replaced: it is what the product
/// wrote, or what was there before, where a run was cut short in between.
bool TakeBack::IsOwnWork(const WrittenFile& file) {
    if (m_known.IsAsLeft(file.path)) return true;
    if (!StateOf(file.path).IsRegular()) return false;
    if (IsFileExist(file.Reserve()) && HaveSameModeAndBytes(file.path, file.Reserve())) return true;
    if (file.templateName.empty()) return false;
    if (!CheckTemplateFile(m_product, file.templateName, m_product.TemplateValues()).empty()) return false;
    return std::any_of(std::begin(kRoles), std::end(kRoles), [&](Role role) {
        return HaveSameModeAndBytes(file.path, RenderQuietly(m_product, Room(), file.templateName, role));
    });
}

ExpectedFile TakeBack::Expected(const TakeBackStep& step) const {
    ExpectedFile file;
    file.path = step.file.path;
    file.kind = FileKind::Original;
    if (const KnownFile* const known = m_known.Find(file.path)) file.knowledge = known->state.knowledge;
    if (file.knowledge) file.knowledge->roles.erase(m_product.Role());
    const std::uint64_t longest = m_product.HostHistory().Limits().largestText;
    if (step.action == TakeBackStep::Action::LeaveToOtherRole) {
        // What somebody else makes of it meanwhile is not the product's work.
        file.after = Capture(file.path, longest);
        const KnownFile* const known = m_known.Find(file.path);
        if (!m_known.Has(file.path, m_otherRole)) return file;
        file.kind = FileKind::Target;
        // Somebody may have edited it since.
        file.left = known->state;
        return file;
    }
    if (step.action == TakeBackStep::Action::TakeOutBlocks) {
        file.after = Capture(file.path, longest);
        file.after->SetText(step.text);
        return file;
    }
    file.after = step.hasReserve ? Capture(step.file.Reserve(), longest) : CapturedFile();
    file.companions = ExpectedFile::Companions::MayGo;
    return file;
}

/// Made when it is needed: most rollbacks compare nothing, and work where there is no room left.
const Staging& TakeBack::Room() {
    if (!m_staging)
        m_staging =
            std::make_unique<Staging>(m_product.Wanted().dryRun ? "" : m_product.Param("ZET_VAR_LIB_DIR"));
    return *m_staging;
}

WrittenFile WrittenTarget(const Host& host, const Target& target) {
    WrittenFile file{target.templateName,
                     host.HostPaths().FromInside(target.path),
                     target.ServicesFor(host.Role()),
                     target.path,
                     target.trusted,
                     target.roles.size() > 1,
                     {},
                     false};
    try {
        file.path = host.HostPaths().WithRealDirectory(host.FilePath(target.path));
    } catch (const Failure& failure) {
        file.trouble = failure;
    }
    return file;
}

static std::optional<WrittenFile> WrittenByList(Deployment& product, const std::string& path) {
    try {
        const Target* const target = product.Lists().TargetNamed(product.Lists().NameOf(path));
        if (target == nullptr || !target->IsFor(product.Role())) return std::nullopt;
        WrittenFile file = WrittenTarget(product, *target);
        return file.path == path ? std::optional(file) : std::nullopt;
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure&) {
        return std::nullopt;  // a record is enough
    }
}

std::optional<WrittenFile> WrittenByRecord(Deployment& product, const std::string& path) {
    WrittenFile file{"", path, {}, "", "", true, {}, false};
    try {
        if (!product.HostPaths().StaysInside(path)) {
            product.Out().Warning(path + ": leads out of the root directory by a link, and is left alone");
            return std::nullopt;
        }
        if (std::optional<WrittenFile> listed = WrittenByList(product, path)) return listed;
    } catch (const Failure& failure) {
        file.trouble = failure;
    }
    return file;
}

}  // namespace ZET::Deploy
