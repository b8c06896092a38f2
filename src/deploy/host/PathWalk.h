#ifndef ZET_PATH_WALK_H
#define ZET_PATH_WALK_H

#include <sys/stat.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "deploy/host/PathJudge.h"
#include "posix/Descriptor.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// A directory that is held: whatever its name leads to later, the descriptor leads to it.
struct HeldDirectory {
    Descriptor descriptor;  ///< to look names up and to go there, not to read
    std::string name;       ///< without links
    struct stat status = {};
    bool hasOtherWriters = false;
};

/// Where a walk stood before its last component: the directories from the start on, and what was judged of
/// them.
struct WalkedWay {
    std::vector<std::shared_ptr<const HeldDirectory>> walked;
    PathJudge judge;
};

/// Directories that were walked through, and the ways to them that no link is on, remembered for the run.
struct HeldDirectories {
    std::map<std::string, std::shared_ptr<const HeldDirectory>> byName;
    std::map<std::string, WalkedWay, std::less<>> ways;
};

/// What a path leads to, its links followed.
struct FoundFile {
    std::string path;                                ///< the one name of the file
    std::string name;                                ///< in its directory
    std::shared_ptr<const HeldDirectory> directory;  ///< null when that is not there
    std::optional<struct stat> status;               ///< none when there is no such file
    bool isThroughLink = false;                      ///< also a link among the directories
    bool endsInLink = false;                         ///< its last name is one
    PathJudge judge;                                 ///< of the way
};

/// Walks a path, component by component, each looked up in the directory that was reached before and never
/// followed by the system: so no link leads out of the directory where the walk begins, and nobody can change
/// the way behind its back.
class PathWalk {
  public:
    /// What to do where this user may not look: fail, or take what is there for what is written.
    enum class Unseen { Fails, IsTakenAsWritten };

    /// `root` is the name of the directory in which "/" is, without a final "/"; empty for the host's own.
    PathWalk(HeldDirectories& known, const std::string& root, PathJudge judge, Unseen unseen);

    /// What is not there yet is taken as it is written. Too many links, and what cannot be looked at, are a
    /// `Failure`.
    FoundFile To(const std::string& path);

    /// The same, but when a link is at the end of the path, it is what was to be found.
    FoundFile ToLink(const std::string& path);

  private:
    bool IsEnd() const { return m_toWalk.empty(); }
    bool GoKnownWay(std::string_view directory);
    void RememberWay(std::string_view directory);
    void Take(const std::string& component);
    void GoUp();
    bool EndAtFile(const std::string& component);
    bool EndAtNothing(const std::string& component);
    void GoInto(const std::string& component);
    bool GoIntoKnown(const std::string& component);
    void Follow(const std::string& component, const Descriptor& link, const struct stat& status);
    void JudgeStep(const std::string& entryName, const struct stat* entry, bool isLast);
    std::shared_ptr<const HeldDirectory> Remember(std::shared_ptr<const HeldDirectory> directory);
    std::string NameOf(const std::string& component) const;
    FoundFile Result() const;

    HeldDirectories& m_known;
    PathJudge m_judge;
    Unseen m_unseen;
    std::string m_path;                 ///< for messages
    std::vector<std::string> m_toWalk;  ///< the next one last
    std::vector<std::shared_ptr<const HeldDirectory>> m_walked;
    std::vector<std::string> m_beyond;  ///< components after the last directory that is there
    std::optional<struct stat> m_end;   ///< of what is no directory and ends the walk
    int m_links = 0;
    bool m_endsInLink = false;
    bool m_followsLast = true;
};

}  // namespace ZET::Deploy

#endif
