#ifndef ZET_CORE_BATCH_H
#define ZET_CORE_BATCH_H

#include <sys/stat.h>
#include <sys/types.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "posix/Descriptor.h"

namespace ZET::Core {

/// A file that is written, but not yet synced, and possibly not yet under its final name.
struct WaitingFile {
    Descriptor file;
    std::string name{};   ///< its present name in its directory
    std::string final{};  ///< its final name; empty if it already has it
};

/// Work that the file helpers postpone while a batch of this thread exists.
class Batch {
  public:
    Batch();
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    /// The calling thread's batch, if work is to be postponed; else null. Nothing is postponed while the
    /// thread acts with another user's rights.
    static Batch* Present();

    /// Whether new files are collected to be synced together.
    bool IsCollecting() const { return m_isCollecting; }

    /// Adds a file. `directory` is its open directory; `path` is its name as the file helper's caller gave
    /// it.
    void Collect(WaitingFile file, int directory, const std::string& path);

    /// Syncs the directory `name` when the collected files get their names, or at the end.
    void SyncLater(int directory, const std::string& name);

    void SetSubject(const std::string& path) { m_subject = path; }
    void NameFiles();
    void Finish();

  private:
    struct Held {
        Descriptor descriptor;
        std::string path;  ///< for messages
        bool isToSync = false;
    };
    struct Collected {
        WaitingFile file;
        const Held* directory;
        std::string path;  ///< for messages
    };

    std::string Readable(const std::string& directory) const;
    Held& Hold(int directory, const std::string& name);
    void SyncFiles() const;
    void SyncDirectories();

    const uid_t m_user;
    bool m_isCollecting = true;
    std::string m_subject;
    std::map<std::pair<dev_t, ino_t>, Held> m_directories;
    std::vector<Collected> m_files;
};

}  // namespace ZET::Core

#endif
