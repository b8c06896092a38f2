#ifndef ZET_CORE_SYNC_H
#define ZET_CORE_SYNC_H

#include <string>

#include "posix/Descriptor.h"

/// Makes changes durable. Everything here does nothing while syncing is off, which is a switch for the whole
/// process, as the file helpers are.
namespace ZET::Core {

bool IsSyncing();

/// A host's vote: syncing is off while every host wants it off.
class SyncVote {
  public:
    SyncVote();
    ~SyncVote();
    SyncVote(const SyncVote&) = delete;
    SyncVote& operator=(const SyncVote&) = delete;

    void Set(bool on);

  private:
    bool m_isOn = true;
};

/// Makes the bytes and attributes of an open file durable; `path` is for the message. If the file could not
/// be opened, syncs everything instead.
void SyncFile(const Descriptor& file, const std::string& path);

/// Syncs the file; false, with `errno`, on failure. A file system without syncing counts as success.
bool SyncQuietly(const Descriptor& file);

/// The directory that contains a path. It is opened before the change, so that as little as possible can fail
/// afterwards.
class ParentDirectory {
  public:
    explicit ParentDirectory(const std::string& path);

    /// Makes the directory's entries durable, or leaves that to the batch of this thread.
    void Sync() const;

    /// Not open if it could not be opened, or if nothing is synced.
    const Descriptor& Opened() const { return m_descriptor; }

  private:
    std::string m_path;
    Descriptor m_descriptor;
};

}  // namespace ZET::Core

#endif
