#include "deploy/state/KnownFiles.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/Settling.h"
#include "posix/ModeBits.h"

namespace ZET::Deploy {

KnownFiles::KnownFiles(Host& host, Unusable unusable) : m_host(host) {
    History& history = host.HostHistory();
    const bool isTold = unusable == Unusable::IsTold || !history.IsNeeded();
    Store* const store = isTold ? history.ToLookIfUsable() : history.ToLook();
    m_isUnusable = history.IsUnusable() || history.IsDenied();
    history.TellDenied();
    if (store == nullptr) return;
    try {
        Read(*store);
    } catch (const Failure& failure) {
        if (!isTold) throw;
        history.TellUnusable(failure);
        m_isUnusable = true;
        m_files.clear();
        m_beingMade.clear();
    }
}

void KnownFiles::Read(Store& store) {
    std::vector<std::pair<std::int64_t, RecordedFile>> open;
    {
        const auto look = store.LookUnlessOpen();
        for (KnownFile& file : store.KnownFiles())
            m_files.emplace(file.path, std::move(file));
        for (const RecordedEntry& entry : store.OpenEntries())
            for (RecordedFile& file : store.FilesOf(entry.number))
                open.emplace_back(entry.number, std::move(file));
    }
    for (const auto& [entry, file] : open)
        if (file.IsPlanned() && file.kind != FileKind::Companion) Settle(file, entry);
}

/// A file that cannot be looked at stays as it is known.
void KnownFiles::Settle(const RecordedFile& file, std::int64_t entry) {
    // An edit that the command keeps stays an edit.
    if (!file.staysKnown) m_beingMade.insert_or_assign(file.path, file.after);
    const std::string path = m_host.HostPaths().FromInside(file.path);
    if (!m_host.HostPaths().StaysInside(path)) return;
    Settlement settlement;
    try {
        SettleFile(PlanOf(file), Capture(path, 0), Ending::Unknown, Written::Maybe, settlement);
    } catch (const Failure&) {
        return;
    }
    if (!settlement.untouched.empty() || !settlement.unclear.empty()) return;
    const std::vector<FileToRecord>& settled =
        settlement.known.empty() ? settlement.changed : settlement.known;
    const RecordedState& state = settled.empty() ? file.after : settled[0].file.after;
    m_files.erase(file.path);
    if (file.kind != FileKind::Original)
        m_files.emplace(file.path, KnownFile{file.path, file.kind, state, entry});
}

const KnownFile* KnownFiles::Find(const std::string& path) const {
    const auto found = m_files.find(NameOf(path));
    return found == m_files.end() ? nullptr : &found->second;
}

bool KnownFiles::Has(const std::string& path, Role role) const {
    const KnownFile* const file = Find(path);
    return file != nullptr && file->state.knowledge.roles.count(role) != 0;
}

bool KnownFiles::IsAsLeft(const std::string& path) const {
    const KnownFile* const file = Find(path);
    return file != nullptr && (IsAsRecorded(path, file->state) || IsBeingMade(path));
}

bool KnownFiles::IsAsLeft(const SeenFile& file) const {
    const KnownFile* const known = Find(file.Path());
    return known != nullptr && (file.IsAs(known->state) || IsBeingMade(file.Path()));
}

bool KnownFiles::IsOwnWork(const std::string& path) const {
    return IsAsLeft(path) && !Find(path)->HoldsMerge();
}

/// The file may have become so since the history was read.
bool KnownFiles::IsBeingMade(const std::string& path) const {
    const auto found = m_beingMade.find(NameOf(path));
    return found != m_beingMade.end() && IsAsRecorded(path, found->second);
}

std::vector<std::string> KnownFiles::PathsOf(Role role) const {
    std::vector<std::string> paths;
    for (const auto& [name, file] : m_files)
        if (file.state.knowledge.roles.count(role) != 0) paths.push_back(m_host.HostPaths().FromInside(name));
    return paths;
}

std::vector<std::string> KnownFiles::EditedPaths() const {
    std::vector<std::string> paths;
    for (const auto& [name, file] : m_files)
        if (file.kind == FileKind::Edit) paths.push_back(m_host.HostPaths().FromInside(name));
    return paths;
}

bool IsAsRecorded(const std::string& path, const RecordedState& state) {
    const FileState now = StateOf(path);
    if (now.exists != state.exists) return false;
    if (!now.exists) return true;
    if (!now.IsRegular() || (now.mode & kModeBits) != state.mode) return false;
    return HasRecordedText(path, state);
}

}  // namespace ZET::Deploy
