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

/// A directory that is held open: the descriptor leads to it even if its name leads elsewhere later.
struct HeldDirectory {
    Descriptor descriptor;  ///< for looking names up and changing into it, not for reading
    std::string name;       ///< its path without links
    struct stat status = {};
    bool hasOtherWriters = false;
};

/// The state of a walk before its last component: the directories from the start on, and how they were
/// judged.
struct WalkedWay {
    std::vector<std::shared_ptr<const HeldDirectory>> walked;
    PathJudge judge;
};

/// Directories that were walked through, and the ways to them that contain no link, remembered for the run.
struct HeldDirectories {
    std::map<std::string, std::shared_ptr<const HeldDirectory>> byName;
    std::map<std::string, WalkedWay, std::less<>> ways;
};

/// What a path leads to once its links are followed.
struct FoundFile {
    std::string path;                                ///< the only path without links
    std::string name;                                ///< the name in its directory
    std::shared_ptr<const HeldDirectory> directory;  ///< null if that does not exist
    std::optional<struct stat> status;               ///< none if there is no such file
    bool isThroughLink = false;                      ///< also through a link among the directories
    bool endsInLink = false;                         ///< the last component is a link
    PathJudge judge;                                 ///< has judged the way
};

/// Walks a path component by component. Each is looked up in the directory reached before, and the system
/// follows no link: so no link leads out of the directory where the walk begins, and nobody can change the
/// way meanwhile.
class PathWalk {
  public:
    /// What to do where this user may not look: fail, or take the rest of the path as it is written.
    enum class Unseen { Fails, IsTakenAsWritten };

    /// `root` is the path of the directory that "/" stands for, without a final "/"; empty for the host.
    PathWalk(HeldDirectories& known, const std::string& root, PathJudge judge, Unseen unseen);

    /// Takes what does not exist yet as it is written. Throws a `Failure` if there are too many links, or
    /// something cannot be looked at.
    FoundFile To(const std::string& path);

    /// The same, but does not follow a link at the end of the path.
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
    std::vector<std::string> m_toWalk;  ///< in reverse order: the next component comes last
    std::vector<std::shared_ptr<const HeldDirectory>> m_walked;
    std::vector<std::string> m_beyond;  ///< components after the last directory that exists
    std::optional<struct stat> m_end;   ///< status of what ends the walk, if it is no directory
    int m_links = 0;
    bool m_endsInLink = false;
    bool m_followsLast = true;
};

}  // namespace ZET::Deploy

#endif
