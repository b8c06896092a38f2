#ifndef ZET_PATH_JUDGE_H
#define ZET_PATH_JUDGE_H

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Judges each step on the way to a file: whether another user could lead root, who takes it, to a file that
/// does not belong to that user. Root's own directories that only root may write are safe. From the first
/// step on that belongs to another user, everything must: what belongs to one user alone may be edited, and
/// stays that user's.
class PathJudge {
  public:
    /// These users are taken for harmless, as are root and the user who runs the command.
    explicit PathJudge(std::vector<uid_t> harmless = {});

    struct Directory {
        const std::string& name;
        const struct stat& status;
        bool hasOtherWriters;  ///< besides its owner and root's group
    };

    /// Judges the step from a directory to one of its entries. `entry` is null if it does not exist yet; root
    /// would then own it. In the last directory, other names are made beside the entry.
    void Step(const Directory& from, const std::string& entryName, const struct stat* entry, bool isLast);

    /// Whether both take the same users for harmless.
    bool JudgesAs(const PathJudge& other) const { return m_harmless == other.m_harmless; }

    /// Why root must not take this way to write; none if it may.
    const std::optional<Problem>& Objection() const { return m_objection; }

    /// The same for files that tell root what to do: nobody else may have a hand in the way, nor, for
    /// `ObjectionToRead`, in the file itself. `path` is for the message.
    std::optional<Problem> ObjectionToOwn(const std::string& path) const;
    std::optional<Problem> ObjectionToRead(const std::string& path, const struct stat& status) const;

    /// The user to whom the end of the way belongs; none if that is root, or harmless.
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
    std::string m_link;  ///< the last link of the holder that was followed
    std::optional<Problem> m_objection;
};

/// Whether others than the owner and root's group may write what `path` leads to.
bool HasOtherWriters(const std::string& path, const struct stat& status);

/// The user's name; the number of a user who has none.
std::string NameOfUser(uid_t user);

/// The same as a word for the command line, after "sudo -u".
std::string WordOfUser(uid_t user);

}  // namespace ZET::Deploy

#endif
