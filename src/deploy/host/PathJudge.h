#ifndef ZET_PATH_JUDGE_H
#define ZET_PATH_JUDGE_H

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Looks at each step on the way to a file for somebody who could lead root, who takes that way, to a file
/// that is not his. Root's own directories that only root may write are safe. From the first step on that
/// lies with another user, everything has to lie with him: what he owns wholly is edited, and stays his.
class PathJudge {
  public:
    /// Beside root and whoever runs the command, these users are taken for harmless.
    explicit PathJudge(std::vector<uid_t> harmless = {});

    struct Directory {
        const std::string& name;
        const struct stat& status;
        bool hasOtherWriters;  ///< beside its owner and root's group
    };

    /// From a directory to an entry of it; null when there is none yet, which then would be root's. In the
    /// `last` directory, names are made beside the entry.
    void Step(const Directory& from, const std::string& entryName, const struct stat* entry, bool isLast);

    /// Whether it takes the same users for harmless.
    bool JudgesAs(const PathJudge& other) const { return m_harmless == other.m_harmless; }

    /// Whether the way is one that root must not take to write, and why. `path` is for the message.
    const std::optional<Problem>& Objection() const { return m_objection; }

    /// The same of what tells root what to do: nobody else may have a hand in the way, nor in the file
    /// itself.
    std::optional<Problem> ObjectionToOwn(const std::string& path) const;
    std::optional<Problem> ObjectionToRead(const std::string& path, const struct stat& status) const;

    /// The user with whom the end of the way lies; none: with root.
    const std::optional<uid_t>& Holder() const { return m_holder; }

  private:
    bool IsHarmless(uid_t user) const;
    void Object(const std::string& file, const std::string& text, const std::string& remedy);
    void RequireClosed(const Directory& directory, const std::string& entryName, bool isLast);
    void Follow(uid_t owner, const Directory& from);
    void RequireHoldersEntry(const Directory& from, const std::string& entryName, const struct stat* entry,
                             bool isLast);

    std::vector<uid_t> m_harmless;
    std::optional<uid_t> m_holder;
    std::string m_link;  ///< his, the last one that was followed
    std::optional<Problem> m_objection;
};

/// Whether others than its owner and root's group may make names in the directory; `path` leads to it.
bool HasOtherWriters(const std::string& path, const struct stat& status);

/// The user's name, or the number of one who has none.
std::string NameOfUser(uid_t user);

/// The same as a word behind "sudo -u".
std::string WordOfUser(uid_t user);

}  // namespace ZET::Deploy

#endif
