#ifndef ZET_CORE_SYNC_H
#define ZET_CORE_SYNC_H

#include <string>

#include "posix/Descriptor.h"

/// Makes what was done durable. All of it does nothing while syncing is off, which is a switch of the whole
/// process, as the file helpers are.
namespace ZET::Core {

bool IsSyncing();

/// A host's say in it: syncing is off while every host wants it off.
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

/// Makes the bytes and attributes of an open file durable; `path` is for the message. What could not be
/// opened cannot be synced by itself: then everything is.
void SyncFile(const Descriptor& file, const std::string& path);

/// False, with `errno`. A file system that knows no syncing counts as done.
bool SyncQuietly(const Descriptor& file);

/// The directory in which a path stands. It is opened before the change, so that as little as possible can
/// fail after it.
class ParentDirectory {
  public:
    explicit ParentDirectory(const std::string& path);

    /// Makes the directory's names durable, or leaves that to the batch of this thread.
    void Sync() const;

    /// None when it could not be opened, or nothing is synced.
    const Descriptor& Opened() const { return m_descriptor; }

  private:
    std::string m_path;
    Descriptor m_descriptor;
};

}  // namespace ZET::Core

#endif
