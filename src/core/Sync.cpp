#include "Sync.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "Batch.h"
#include "Message.h"
#include "posix/PathNames.h"

namespace ZET::Core {

namespace {

std::atomic<int> votes = 0;
std::atomic<int> votesAgainst = 0;

}  // namespace

/// A file system without syncing fails with EINVAL.
bool SyncQuietly(const Descriptor& file) {
    return TEMP_FAILURE_RETRY(::fsync(file.Number())) == 0 || errno == EINVAL;
}

bool IsSyncing() {
    const int against = votesAgainst;
    return against == 0 || against < votes;
}

SyncVote::SyncVote() {
    votes++;
}

SyncVote::~SyncVote() {
    Set(true);
    votes--;
}

void SyncVote::Set(bool on) {
    if (on != m_isOn) votesAgainst += on ? -1 : 1;
    m_isOn = on;
}

void SyncFile(const Descriptor& file, const std::string& path) {
    if (!IsSyncing()) return;
    if (!file.IsOpen())
        ::sync();
    else if (!SyncQuietly(file))
        FailSystem(path, "Failed to sync file '%s': %m.", path.c_str());
}

ParentDirectory::ParentDirectory(const std::string& path) : m_path(DirectoryOf(path)) {
    if (!IsSyncing()) return;
    m_descriptor.Reset(::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_descriptor.IsOpen() && errno != EACCES)
        FailSystem(m_path, "Failed to open directory '%s': %m.", m_path.c_str());
}

void ParentDirectory::Sync() const {
    if (!IsSyncing()) return;
    if (!m_descriptor.IsOpen()) {
        ::sync();
        return;
    }
    if (Core::Batch* const batch = Core::Batch::Present())
        return batch->SyncLater(m_descriptor.Number(), m_path);
    if (!SyncQuietly(m_descriptor)) FailSystem(m_path, "Failed to sync directory '%s': %m.", m_path.c_str());
}

}  // namespace ZET::Core
