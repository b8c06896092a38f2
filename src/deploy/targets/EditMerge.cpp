#include "deploy/targets/EditMerge.h"

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/StagedOwner.h"
#include "deploy/host/Words.h"
#include "deploy/state/MergedFile.h"
#include "posix/ModeBits.h"

namespace ZET::Deploy {

namespace {

constexpr char kBaseIsErased[] = ZET_TEXT(
    "holds edits that cannot be merged again, as the text that they were merged with was erased from the "
    "history");
constexpr char kWayOfErased[] =
    ZET_TEXT("put them into its template; --on-edit=overwrite takes them out, and the history keeps them");

/// The text that the known text of a file was made from.
std::optional<TextNumber> BaseOf(const KnownFile& known) {
    return known.HoldsMerge() ? known.state.knowledge.base : known.state.text;
}

bool CanBeKept(Host& host, const PlannedTarget& planned) {
    const StoreLimits limits = host.HostHistory().Limits();
    const std::uint64_t rendered = planned.staged->Text().size();
    const auto size = static_cast<std::uint64_t>(planned.version.size);
    return limits.KeepEdit(size) && limits.Keep(rendered);
}

/// The mode is the template's, but one that somebody gave the file may keep others from reading it.
bool HasOtherMode(const PlannedTarget& planned, const KnownFile& known) {
    return planned.before.mode != planned.after.mode && (planned.before.mode & kModeBits) != known.state.mode;
}

}  // namespace

OnEdit ConfiguredOnEdit(Host& host) {
    const std::string wanted = host.Param("ZET_ON_EDIT");
    if (wanted == "merge") return OnEdit::Merge;
    return wanted == "refuse" ? OnEdit::Refuse : OnEdit::AsConfigured;
}

FileOutcome::Result ChangeOf(const PlannedTarget& planned) {
    if (!planned.before.exists) return FileOutcome::Result::Created;
    const bool isSame = planned.before.mode == planned.after.mode && planned.staged->IsIn(planned.path);
    return isSame ? FileOutcome::Result::Unchanged : FileOutcome::Result::Changed;
}

bool IsMergedWith(Host& host, const KnownFile& known, const std::string& rendered) {
    const std::optional<TextNumber>& base = known.state.knowledge.base;
    if (!base) return false;
    Store* const store = host.HostHistory().ToLookForWriting();
    return store != nullptr && store->Text(*base) == rendered;
}

bool WasLeftAs(Host& host, const KnownFile& known, const std::string& rendered) {
    if (IsRecordedText(rendered, known.state)) return true;
    Store* const store = host.HostHistory().ToLookForWriting();
    if (store == nullptr) return false;
    for (const RecordedEntry& entry : store->EntriesOf(known.path)) {
        const std::vector<RecordedFile> files = store->FilesOf(entry.number);
        const bool isCommit = std::any_of(files.begin(), files.end(), [](const RecordedFile& file) {
            return file.kind == FileKind::Status;
        });
        if (isCommit) return false;
        for (const RecordedFile& file : files)
            if (file.path == known.path && IsRecordedText(rendered, file.KnownBefore())) return true;
    }
    return false;
}

void EditMerge::KeepMerged(PlannedTarget& planned) const {
    const KnownFile* const known = m_known.Find(planned.path);
    if (known == nullptr || !planned.before.exists) return;
    planned.holdsMerge = known->HoldsMerge();
    if (!planned.holdsMerge) return;
    planned.isRenderingNew = !IsMergedWith(m_host, *known, planned.staged->Text());
    if (planned.foundAs != FoundAs::Edited && !planned.isRenderingNew)
        Take(planned, ReadFileBytes(planned.path));
}

std::vector<Problem> EditMerge::Merge(PlannedTarget& planned) const {
    const auto refuse = [&](const std::string& text, const char* way) {
        return std::vector<Problem>{{.file = planned.path, .text = text, .remedy = way}};
    };
    const KnownFile* const known = m_known.Find(planned.path);
    if (!planned.before.exists)
        return refuse(_("was removed since the last commit, which cannot be merged"), _(kLastWay));
    if (!CanBeKept(m_host, planned))
        return refuse(_("was edited since the last commit, and the history cannot keep the edit"),
                      _(kLastWay));
    if (known != nullptr && known->HoldsMerge() && known->state.knowledge.isBaseErased)
        return refuse(_(kBaseIsErased), _(kWayOfErased));
    if (known == nullptr || !BaseOf(*known))
        return refuse(_("cannot be merged, as the text of the last commit is not kept"), _(kOtherWay));
    if (HasOtherMode(planned, *known)) {
        return refuse(Words("has another mode (%s) than the last commit gave it, which cannot be merged",
                            ModeText(planned.before)),
                      _("give its template that mode, or the file its former one"));
    }
    try {
        return MergeWith(planned, *BaseOf(*known));
    } catch (const Failure& failure) {
        return {failure.Facts()};
    }
}

std::vector<Problem> EditMerge::MergeWith(PlannedTarget& planned, TextNumber base) const {
    const std::string former = m_host.HostHistory().ToLook()->Text(base);
    const std::string rendered = planned.staged->Text();
    MergedFile merged =
        MergeFile({ReadFileBytes(planned.path), former, rendered}, {planned.path, _(kOtherWay)});
    if (!merged.conflicts.empty()) return merged.conflicts;
    planned.isMerged = true;
    planned.isRenderingNew = true;
    if (merged.text != rendered) Take(planned, merged.text);
    return {};
}

void EditMerge::Take(PlannedTarget& planned, const std::string& text) const {
    planned.rendering = planned.staged;
    planned.staged = std::make_shared<const StagedText>(m_staging, "merged/" + planned.target.templateName,
                                                        text, planned.after.mode & kModeBits);
    planned.after = GiveOwnerInPlace(planned.path, *planned.staged, planned.before);
    planned.change = ChangeOf(planned);
}

}  // namespace ZET::Deploy
