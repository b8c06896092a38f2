#include "deploy/state/Settling.h"

#include <utility>

namespace ZET::Deploy {

namespace {

/// Of a file that was not planned, only one that nobody else makes is taken for the command's work. Nobody
/// else makes a companion, whatever its text is.
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

/// It is known as the product had left it, whoever edited it since.
void KeepLeft(const FileToRecord& planned, Settlement& settlement) {
    if (!planned.left) return;
    FileToRecord known = planned;
    known.file.after = *planned.left;
    known.file.after.knowledge = planned.file.after.knowledge;
    known.textAfter.clear();
    settlement.known.push_back(std::move(known));
}

/// What somebody edited is known as the product's own from now on, unless it is known as it was left.
bool IsKnownSo(const FileToRecord& planned) {
    const RecordedFile& file = planned.file;
    return HaveSameTextAndMode(file.KnownBefore(), planned.left.value_or(file.before));
}

}  // namespace

FileToRecord PlanOf(const RecordedFile& file) {
    FileToRecord planned;
    planned.file = file;
    planned.isPlanned = file.IsPlanned();
    if (file.staysKnown) planned.left = file.KnownBefore();
    return planned;
}

void SettleFile(const FileToRecord& planned, const CapturedFile& now, Ending ending, Settlement& settlement) {
    const RecordedFile& file = planned.file;
    const bool isAsWanted = !file.IsPlanned() || HaveSameText(now.state, file.after);
    const bool isUntouched = now.IsAs(file.before) || !IsOfTheCommand(file, now, ending);
    if (isAsWanted && (ending != Ending::Unknown || !isUntouched)) KeepLeft(planned, settlement);
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

}  // namespace ZET::Deploy
