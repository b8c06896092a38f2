#include "deploy/undo/KnownThen.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "deploy/targets/RememberedLines.h"

namespace ZET::Deploy {

namespace {

using Lines = std::vector<RememberedLine>;

KnownThen KnownBefore(const RecordedChange& change) {
    const RecordedFile& row = *change.file;
    KnownThen then{row.kindBefore, row.before.knowledge, row.knownAsBefore};
    // A status file that goes away stays known as one: what a killed run leaves of it is still the product's.
    if (row.kind == FileKind::Status && !row.before.exists) then.kind = FileKind::Status;
    if (then.kind == FileKind::Original) then.knownAs.reset();
    // If the entry changed only what is known of the file, an edit by hand still counts as an edit.
    else if (!change.isWritten && !then.knownAs)
        then.knownAs = row.before;
    return then;
}

/// True if the file is still known as those entries left it: no newer entry left another text.
bool IsKnownAsLeft(Store& store, const RecordedChange& change, const KnownFile& now) {
    if (now.entry <= change.newest) return true;
    const std::optional<RecordedFile> next = store.FirstChangeAfter(change.name, change.newest);
    return !next || (now.kind == next->kindBefore && HaveSameTextAndMode(now.state, next->KnownBefore()));
}

std::set<Role> RolesWithout(const RecordedFile& row, std::set<Role> now) {
    const std::set<Role>& before = row.before.knowledge.roles;
    const std::set<Role>& after = row.after.knowledge.roles;
    for (const Role role : kRoles) {
        if (before.contains(role) == after.contains(role)) continue;
        if (before.contains(role))
            now.insert(role);
        else
            now.erase(role);
    }
    return now;
}

bool Has(const Lines& lines, const RememberedLine& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

Lines LinesWithout(const Lines& before, const Lines& after, Lines now) {
    std::erase_if(now, [&](const RememberedLine& line) { return Has(after, line) && !Has(before, line); });
    for (const RememberedLine& line : before)
        if (!Has(after, line) && !Has(now, line)) now.push_back(line);
    return now;
}

/// In a file of listed edits the roles belong to its lines, so the lines are what is taken back.
void TakeLinesBack(Store& store, const RecordedFile& row, const KnownFile& now, KnownThen& then) {
    if (then.kind != FileKind::Edit) return;
    const Lines before = LinesSetIn(store, row.kindBefore, row.before.knowledge);
    const Lines after = LinesSetIn(store, row.kind, row.after.knowledge);
    const Lines wanted = LinesWithout(before, after, LinesSetIn(store, now.kind, now.state.knowledge));
    if (wanted != LinesSetIn(store, then.kind, then.knowledge)) then.base = TextOf(wanted);
}

/// For a file that is no longer known and whose text stays: gives back the roles and lines that the entry
/// took.
KnownThen KnownAgain(Store& store, const RecordedFile& row, KnownThen then) {
    const bool wasCommitted = !CommittersOf(store, then).empty();
    then.knowledge.roles = RolesWithout(row, {});
    TakeLinesBack(store, row, {}, then);
    return wasCommitted && CommittersOf(store, then).empty() ? KnownThen() : then;
}

}  // namespace

std::set<Role> CommittersOf(Store& store, const KnownThen& then) {
    if (then.kind == FileKind::Edit && then.base)
        return WithRolesOf(RememberedIn(*then.base), then.knowledge.roles);
    return CommittersOf(store, then.kind, then.knowledge);
}

KnownThen KnownOnceBack(Store& store, const RecordedChange& change, const std::optional<KnownFile>& now,
                        bool isTextBack) {
    const RecordedFile& row = *change.file;
    KnownThen then = KnownBefore(change);
    if (!change.isOfOneEntry || row.kind == FileKind::Status) return then;
    if (!now) return isTextBack ? then : KnownAgain(store, row, std::move(then));
    const bool isBack = isTextBack || IsKnownAsLeft(store, change, *now);
    if (isBack && then.kind == FileKind::Original) return then;
    if (!isBack) then = {now->kind, now->state.knowledge, now->state};
    then.knowledge.roles = RolesWithout(row, now->state.knowledge.roles);
    TakeLinesBack(store, row, *now, then);
    return then;
}

KnownThen KnownAsNow(const KnownFile& now, const CapturedFile& file) {
    KnownThen then{now.kind, now.state.knowledge};
    // If nobody else has written the file since, what it holds now is the product's.
    if (!file.IsAs(now.state)) then.knownAs = now.state;
    return then;
}

KnownThen KnownAsEditedBetween(const RecordedChange& change, const KnownFile& now) {
    const RecordedState& left = change.between.back().left;
    KnownThen then{now.kind, left.knowledge, left};
    then.knowledge.roles = now.state.knowledge.roles;
    return then;
}

}  // namespace ZET::Deploy
