#include "deploy/undo/RecordedChanges.h"

#include <algorithm>

#include "deploy/host/Companions.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// Puts the former state of `older` into `newer`, which keeps its own later one.
void Precede(std::optional<RecordedFile>& newer, const RecordedFile& older) {
    if (!newer) {
        newer = older;
        return;
    }
    newer->before = older.before;
    newer->kindBefore = older.kindBefore;
    newer->knownAsBefore = older.knownAsBefore;
}

/// Notes what others did between the state an older entry left and the one that these entries found. A change
/// of owner or attributes alone does not count.
void NoteWorkBetween(RecordedChange& change, const RecordedState& left) {
    const RecordedState& found = change.file->before;
    if (HaveSameTextAndMode(left, found)) return;
    change.between.push_back({left, found, change.oldest});
    change.isWritten = true;
}

/// The roles whose services the file concerns. If a former state was put back, these are the roles that have
/// the file, whichever role put it back.
std::set<Role> RolesOf(const RecordedEntry& entry, const RecordedFile& file) {
    std::set<Role> roles = file.before.knowledge.roles;
    roles.insert(file.after.knowledge.roles.begin(), file.after.knowledge.roles.end());
    const bool isOwn = !file.isPutBack && roles.contains(entry.role);
    return roles.empty() || isOwn ? std::set{entry.role} : roles;
}

}  // namespace

void RecordedChanges::Add(const RecordedEntry& entry, const std::vector<RecordedFile>& files) {
    for (const RecordedFile& file : files) {
        const std::string name = file.kind == FileKind::Companion ? FileBeside(file.path) : file.path;
        const bool isBeside = name != file.path;
        RecordedChange& change = Of(name);
        change.newest = std::max(change.newest, entry.number);
        if (isBeside) {
            Precede(file.path.ends_with(ZETReserveSuffix) ? change.reserve : change.absence, file);
            continue;
        }
        change.roles.merge(RolesOf(entry, file));
        change.isWritten = change.isWritten || !IsSameFile(file.before, file.after);
        const bool isTold = file.kind != FileKind::Status && file.IsPlanned();
        if (change.file && isTold) NoteWorkBetween(change, file.after);
        change.oldest = entry.number;
        Precede(change.file, file);
    }
}

void RecordedChanges::AddLeft(RecordedChange& change, const RecordedState& left) {
    RecordedFile& file = *change.file;
    NoteWorkBetween(change, left);
    if (HaveSameTextAndMode(left, file.before)) return;
    const Knowledge knowledge = file.before.knowledge;
    file.before = left;
    file.before.knowledge = knowledge;
    if (file.knownAsBefore && HaveSameTextAndMode(*file.knownAsBefore, left)) file.knownAsBefore.reset();
}

void RecordedChanges::AddOthersAlone(std::int64_t entry, const RecordedFile& file) {
    RecordedChange& change = Of(file.path);
    if (change.roles.empty()) change.roles = file.before.knowledge.roles;
    change.newest = std::max(change.newest, entry);
    change.isWritten = change.isOthersAlone = true;
    change.file = file;
}

bool RecordedChanges::HasFile(const std::string& name) const {
    const auto found = m_byName.find(name);
    return found != m_byName.end() && found->second->file;
}

RecordedChange& RecordedChanges::Of(const std::string& name) {
    RecordedChange*& change = m_byName[name];
    if (change == nullptr) {
        m_changes.push_back({.name = name});
        change = &m_changes.back();
    }
    return *change;
}

}  // namespace ZET::Deploy
