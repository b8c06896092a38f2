#ifndef ZET_KNOWN_FILES_H
#define ZET_KNOWN_FILES_H

#include <map>
#include <string>
#include <vector>

#include "deploy/state/Host.h"
#include "deploy/state/SeenFile.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// What the history knows of the host's files, for either role, read at once. Files of runs that were killed
/// or still go on are judged by content, as the next command would judge them. Paths are those of real files:
/// links among the directories are followed.
class KnownFiles {
  public:
    /// `IsTold`: an unusable history is reported as a warning, and nothing is known. For callers that take
    /// back what was written, and find what they need beside the files.
    enum class Unusable { IsFailure, IsTold };

    explicit KnownFiles(Host& host, Unusable unusable = Unusable::IsFailure);

    bool IsUnusable() const { return m_isUnusable; }

    /// Null if nothing is known of the file.
    const KnownFile* Find(const std::string& path) const;

    /// Whether a commit of the role wrote the file, and it was not taken back since.
    bool Has(const std::string& path, Role role) const;

    /// Whether the file has the text and mode that the product left; a link in its place has not.
    bool IsAsLeft(const std::string& path) const;
    bool IsAsLeft(const SeenFile& file) const;

    /// The same, and the text is the product's alone: that of a merged target also holds others' work.
    bool IsOwnWork(const std::string& path) const;

    /// The files that the role has committed.
    std::vector<std::string> PathsOf(Role role) const;

    /// The files that were edited in place.
    std::vector<std::string> EditedPaths() const;

  private:
    std::string NameOf(const std::string& path) const { return m_host.HostPaths().NameInside(path); }

    void Read(Store& store);
    void Settle(const RecordedFile& file, std::int64_t entry);
    bool IsBeingMade(const std::string& path) const;

    Host& m_host;
    bool m_isUnusable = false;
    std::map<std::string, KnownFile> m_files;          ///< by their names inside the root
    std::map<std::string, RecordedState> m_beingMade;  ///< what an open entry makes of a file
};

/// Whether the file has the recorded text and mode; a link in its place has not.
bool IsAsRecorded(const std::string& path, const RecordedState& state);

}  // namespace ZET::Deploy

#endif
