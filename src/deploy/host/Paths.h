#ifndef ZET_PATHS_H
#define ZET_PATHS_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/host/PathWalk.h"

namespace ZET::Deploy {

/// The path as it is from wherever; a relative one begins in the current directory, and is a `Failure` where
/// that is gone.
std::string AbsolutePath(const std::string& path);

/// Where the files of a host are: under "/", or under the root directory of a host tree that is worked on
/// from outside.
class Paths {
  public:
    /// `root` is empty for the host itself. A root that is no directory is a `Failure`.
    explicit Paths(const std::string& root);

    /// The file that a path of the host leads to, its links followed. Under a root, no link leads out of it:
    /// one that is absolute or climbs too far ends at the root. What is not there yet is taken as it is
    /// written. On the host itself a path whose last component is no link is returned as it is. Too many
    /// links, and what cannot be looked at, are a `Failure`.
    std::string Resolved(const std::string& path) const;

    /// The same of a path that was found.
    std::string Resolved(const std::string& path, const FoundFile& found) const;

    /// The same, with its directory held and the way there judged. `trusted` is a user whose directories
    /// count as root's.
    FoundFile Find(const std::string& path, const std::string& trusted = "") const;

    /// The same for a path that can be opened; and of one whose last component was followed already.
    FoundFile FindOpened(const std::string& path) const { return Find(NameInside(path)); }
    FoundFile FindReal(const std::string& path, const std::string& trusted = "") const;

    /// The one name of the file, all links followed, whatever way leads to it: fit to be compared. Where this
    /// user may not look, it is taken as it is written.
    std::string Canonical(const std::string& path) const;

    /// The same for a path that can be opened, as `Resolved` returns it, to be told to a program; where that
    /// cannot be found out, the path itself.
    std::string RealName(const std::string& path) const;

    /// The one name of the file for a path that can be opened, but a link in the last component is not
    /// followed: fit to keep what is known of a file. A path under a root, where `Resolved` follows every
    /// link, is returned as it is.
    std::string WithRealDirectory(const std::string& path,
                                  PathWalk::Unseen unseen = PathWalk::Unseen::Fails) const;

    /// The name inside of what `WithRealDirectory` returns: the history knows the file by it.
    std::string NameOfReal(const std::string& path) const { return NameInside(WithRealDirectory(path)); }

    /// Where the directory is that had this name inside the root, and by which it is reached through links
    /// that only root can have laid; none where it has that name yet, or is not there.
    std::optional<std::string> NewNameOf(const std::string& directory) const;

    /// Whether the system, which knows nothing of the root, is led to a file inside it by this path, which
    /// begins with the root. Without a root every path stays inside.
    bool StaysInside(const std::string& path) const;

    /// The name that a file has for the host itself, without the root before it; and back.
    std::string NameInside(const std::string& path) const;
    std::string FromInside(const std::string& name) const { return m_root + name; }

    /// What was found is forgotten; until then, a directory is looked for once, and held.
    void LetGo() { m_known = {}; }

    bool HasRoot() const { return !m_root.empty(); }

  private:
    PathJudge Judge(const std::string& trusted) const;
    PathWalk Walk(const std::string& root, PathWalk::Unseen unseen, const std::string& trusted = "") const;
    std::string StartOf(const std::string& path) const;

    std::string m_root;                ///< without a final "/"; empty for the host itself
    std::vector<uid_t> m_rootsOwners;  ///< who made the tree is who works on it
    PathJudge m_judge;                 ///< of the way to what no user is trusted for
    mutable HeldDirectories m_known;
};

}  // namespace ZET::Deploy

#endif
