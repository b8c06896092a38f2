#ifndef ZET_MANIFEST_H
#define ZET_MANIFEST_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "deploy/host/Paths.h"
#include "deploy/state/StateDirectory.h"
#include "zet/deploy/Observer.h"

namespace ZET::Deploy {

/// What the product wrote for a role, file by file: so that a file that was edited since is told from one
/// whose template changed. Kept in ZET_VAR_LIB_DIR/zet-ROLE.manifest, one line a file: INODE SIZE MTIME MODE
/// PATH, the time in nanoseconds, the mode in octal, the path as the host itself knows it.
class Manifest {
  public:
    /// Reads it; a missing one is empty. A broken line is a `Failure` that names it.
    Manifest(const StateDirectory& state, Role role, const Deploy::Paths& hostPaths);

    /// For who takes back what was written, which stands beside the files: one that cannot be read is told to
    /// `observer`, is empty, and stays.
    Manifest(const StateDirectory& state, Role role, const Deploy::Paths& hostPaths, Observer& observer);

    bool IsDamaged() const { return m_isDamaged; }

    /// Paths are those of real files, links followed, also those among the directories.
    bool Has(const std::string& path) const { return m_entries.count(path) != 0; }
    bool IsEmpty() const { return m_entries.empty(); }
    std::vector<std::string> Paths() const;

    /// Whether the file is still the one that was recorded; a link in its place is not.
    bool IsUntouched(const std::string& path) const;

    /// Whether a commit of any role recorded the file, and none did as it is now.
    static bool IsEdited(const StateDirectory& state, const Deploy::Paths& hostPaths,
                         const std::string& path);

    /// Records the file as it is now.
    void Record(const std::string& path);
    void Forget(const std::string& path) { m_entries.erase(path); }

    /// Writes it, durably; an empty one is removed.
    void Save() const;

  private:
    struct Entry {
        std::uint64_t inode = 0;
        std::uint64_t size = 0;
        std::int64_t time = 0;
        std::uint32_t mode = 0;
        bool operator==(const Entry&) const = default;
    };

    static Entry EntryOf(const std::string& path);
    void Add(const std::string& path, const Entry& entry);
    void Read();

    const Deploy::Paths& m_hostPaths;
    std::string m_file;
    bool m_isDamaged = false;
    std::map<std::string, Entry> m_entries;
};

}  // namespace ZET::Deploy

#endif
