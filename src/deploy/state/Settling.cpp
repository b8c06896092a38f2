#include "deploy/state/Settling.h"

#include <utility>

namespace ZET::Deploy {

namespace {

/// Whether the command made what is there. If nothing was planned and the ending is unknown, only a file that
/// nobody else makes counts. Nobody else makes a companion, whatever its text is.
bool IsOfTheCommand(const RecordedFile& file, const CapturedFile& now, Ending ending) {
    if (file.kind == FileKind::Companion) return true;
    if (file.IsPlanned()) return HaveSameText(now.state, file.after);
    return ending != Ending::Unknown || file.kind == FileKind::Status;
}

FileToRecord AsItIs(const FileToRecord& planned, const CapturedFile& now) {
    FileToRecord settled = planned;
    settled.isPlanned = true;
    settled.file.after = now.state;
    settled.file.after.knowledge = planned.file.after.knowledge;
    settled.textAfter = now.text;
    return settled;
}

/// The file stays known as the product left it, although somebody has edited it since.
void KeepKnownAs(const FileToRecord& planned, Settlement& settlement) {
    if (!planned.knownAs) return;
    FileToRecord known = planned;
    known.file.after = *planned.knownAs;
    known.file.after.knowledge = planned.file.after.knowledge;
    known.textAfter.clear();
    settlement.known.push_back(std::move(known));
}

/// Whether a text that was there before may have been replaced by what the command was going to write.
bool MayBeReplaced(const RecordedFile& file) {
    if (file.kind == FileKind::Companion) return file.before.exists;
    return file.kind != FileKind::Status && file.before.exists && file.IsPlanned() &&
           !HaveSameText(file.before, file.after);
}

/// Whether what is there tells nothing of the command. A companion is its work in any case.
bool IsUnclear(const RecordedFile& file, const CapturedFile& now) {
    return file.kind != FileKind::Companion && MayBeReplaced(file) && !HaveSameText(now.state, file.before) &&
           !HaveSameText(now.state, file.after);
}

/// Whether the file was known already by `knownAs` or, without that, by what was there before.
bool IsKnownSo(const FileToRecord& planned) {
    const RecordedFile& file = planned.file;
    return HaveSameTextAndMode(file.KnownBefore(), planned.knownAs.value_or(file.before));
}

}  // namespace

FileToRecord PlanOf(const RecordedFile& file) {
    FileToRecord planned;
    planned.file = file;
    planned.isPlanned = file.IsPlanned();
    if (file.staysKnown) planned.knownAs = file.KnownBefore();
    return planned;
}

void SettleFile(const FileToRecord& planned, const CapturedFile& now, Ending ending, Written written,
                Settlement& settlement) {
    const RecordedFile& file = planned.file;
    if (written == Written::Maybe && IsUnclear(file, now)) return settlement.unclear.push_back(file.path);
    const bool isAsWanted = !file.IsPlanned() || HaveSameText(now.state, file.after);
    const bool isUntouched = now.IsAs(file.before) || !IsOfTheCommand(file, now, ending);
    if (isAsWanted && (ending != Ending::Unknown || !isUntouched)) KeepKnownAs(planned, settlement);
    if (isUntouched) {
        const bool isKnownAnew = planned.isKnownAnew && ending != Ending::Unknown && isAsWanted;
        const bool isNothingNew = IsKnownSo(planned) && !planned.base && file.kind == file.kindBefore &&
                                  file.before.knowledge == file.after.knowledge;
        if (isKnownAnew && !isNothingNew) return settlement.changed.push_back(AsItIs(planned, now));
        settlement.untouched.push_back(file.path);
        return;
    }
    const bool isAsPlanned = file.IsPlanned() && now.IsAs(file.after);
    if (!isAsPlanned) settlement.changed.push_back(AsItIs(planned, now));
}

void SettleUnseen(const RecordedFile& file, Settlement& settlement) {
    (MayBeReplaced(file) ? settlement.unclear : settlement.untouched).push_back(file.path);
}

}  // namespace ZET::Deploy
