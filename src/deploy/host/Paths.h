#ifndef ZET_PATHS_H
#define ZET_PATHS_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/host/PathWalk.h"

namespace ZET::Deploy {

/// Makes a path absolute. A relative one begins in the current directory; throws a `Failure` if that no
/// longer exists.
std::string AbsolutePath(const std::string& path);

/// Where the files of a host are: under "/", or under the root directory of a host tree that is worked on
/// from outside.
class Paths {
  public:
    /// `root` is empty for the host itself. Throws a `Failure` if it is no directory.
    explicit Paths(const std::string& root);

    /// The file that a path of the host leads to, following links. Under a root, no link leads out of it: an
    /// absolute link begins at the root, and one that climbs too far stays there. What does not exist yet is
    /// taken as it is written. On the host itself, a path whose last component is no link is returned
    /// unchanged. Throws a `Failure` if there are too many links, or something cannot be looked at.
    std::string Resolved(const std::string& path) const;

    /// The same for a path that was found already.
    std::string Resolved(const std::string& path, const FoundFile& found) const;

    /// The same, but returns the file with its directory held open and the way there judged. `trusted` is a
    /// user whose directories count as root's.
    FoundFile Find(const std::string& path, const std::string& trusted = "") const;

    /// The same for a path that can be opened. `FindReal` does not follow a link in the last component.
    FoundFile FindOpened(const std::string& path) const { return Find(NameInside(path)); }
    FoundFile FindReal(const std::string& path, const std::string& trusted = "") const;

    /// The canonical name of the file, whatever way leads to it, for comparisons. Where this user may not
    /// look, the path is taken as it is written.
    std::string Canonical(const std::string& path) const;

    /// The canonical name for a path that can be opened, as `Resolved` returns it, to be handed to a program;
    /// the path itself if its canonical name cannot be found out.
    std::string RealName(const std::string& path) const;

    /// For a path that can be opened, the name under which to keep what is known of the file: links among the
    /// directories are followed, but not one in the last component. Under a root, where `Resolved` follows
    /// every link, the path is returned unchanged.
    std::string WithRealDirectory(const std::string& path,
                                  PathWalk::Unseen unseen = PathWalk::Unseen::Fails) const;

    /// The name inside the root of what `WithRealDirectory` returns; the history knows the file by it.
    std::string NameOfReal(const std::string& path) const { return NameInside(WithRealDirectory(path)); }

    /// The present name of a directory that had this name inside the root, and is now reached through links
    /// that only root can have made; none if it still has that name, or does not exist.
    std::optional<std::string> NewNameOf(const std::string& directory) const;

    /// Whether this path, which begins with the root, stays inside the root if the system, which knows
    /// nothing of the root, follows its links. Always true without a root.
    bool StaysInside(const std::string& path) const;

    /// The name that a file has on the host itself, without the root in front, and the other way round.
    std::string NameInside(const std::string& path) const;
    std::string FromInside(const std::string& name) const { return m_root + name; }

    /// Forgets what was found. Until then, each directory is looked up only once, and held open.
    void LetGo() { m_known = {}; }

    bool HasRoot() const { return !m_root.empty(); }

  private:
    PathJudge Judge(const std::string& trusted) const;
    PathWalk Walk(const std::string& root, PathWalk::Unseen unseen, const std::string& trusted = "") const;
    std::string StartOf(const std::string& path) const;

    std::string m_root;                ///< without a final "/"; empty for the host itself
    std::vector<uid_t> m_rootsOwners;  ///< the tree's owner counts as root in it
    PathJudge m_judge;                 ///< for a way on which no user is trusted
    mutable HeldDirectories m_known;
};

}  // namespace ZET::Deploy

#endif
