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

/// A file that is written, but neither synced nor known by its name yet.
struct WaitingFile {
    Descriptor file;
    std::string name{};   ///< the one that it has, in its directory
    std::string final{};  ///< the one that it is to have; empty: the one that it has
};

/// What the file helpers put off while a batch of this thread lives.
class Batch {
  public:
    Batch();
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    /// That of the calling thread, while things are to be put off; else null. In another user's directory,
    /// with his rights, nothing is put off.
    static Batch* Present();

    /// Whether new files are collected, to be synced all at once.
    bool IsCollecting() const { return m_isCollecting; }

    /// `directory` is the open directory of the file, which the caller of the helper calls `path`.
    void Collect(WaitingFile file, int directory, const std::string& path);

    /// The directory, called `name`, is synced when the collected files are named, or at the end.
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
