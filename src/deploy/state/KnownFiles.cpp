#include "deploy/state/KnownFiles.h"

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/state/CapturedFile.h"
#include "posix/ModeBits.h"

namespace ZET::Deploy {

KnownFiles::KnownFiles(Host& host, Unusable unusable) : m_host(host) {
    History& history = host.HostHistory();
    const bool isTold = unusable == Unusable::IsTold || !history.IsNeeded();
    Store* const store = isTold ? history.ToLookIfUsable() : history.ToLook();
    m_isUnusable = history.IsUnusable() || history.IsDenied();
    if (store == nullptr) return;
    try {
        for (KnownFile& file : store->KnownFiles())
            m_files.emplace(file.path, std::move(file));
    } catch (const Failure& failure) {
        if (!isTold) throw;
        history.TellUnusable(failure);
        m_isUnusable = true;
        m_files.clear();
    }
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
    return file != nullptr && IsAsRecorded(path, file->state);
}

bool KnownFiles::IsAsLeft(const SeenFile& file) const {
    const KnownFile* const known = Find(file.Path());
    return known != nullptr && file.IsAs(known->state);
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
