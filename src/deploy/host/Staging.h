#ifndef ZET_STAGING_H
#define ZET_STAGING_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "posix/Descriptor.h"

namespace ZET::Deploy {

/// A private directory (mode 0700, owned by the caller) for files on their way; it is removed with its
/// contents when the object ends. While the object lives, a lock tells it from one that a killed run left.
class Staging {
  public:
    static constexpr std::uintmax_t kUnknownSize = UINTMAX_MAX;

    /// Makes "PLACE/zet-staging.XXXXXX": in memory if this host has such a place with room for `size` bytes,
    /// else in `lastResort`, or in /tmp if that is empty. With an empty `lastResort`, a directory named by
    /// TMPDIR is taken instead of all these, unless root runs the command and another user could change it.
    /// What killed runs left in the place is removed first. Throws a `Failure` if no directory can be made.
    explicit Staging(const std::string& lastResort = "", std::uintmax_t size = kUnknownSize);
    ~Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    /// The path of a file in it. Makes the directories in `name`. No name leads out of the staging directory.
    std::string PathOf(const std::string& name) const;

    /// Whether a text of that size may be kept in memory instead of in a file. If so, it is counted as kept.
    bool TakeIntoMemory(std::size_t size) const;

    /// Removes the directories that killed runs of this user left, wherever they may have been made. A place
    /// with very many names is searched only if a run may have been killed.
    static void RemoveLeftOvers(const std::string& lastResort, bool mayFollowOneCutShort);

    /// What to report of a directory that this process could not remove; empty if there is none.
    static std::string LeftBehind();
    static bool HasLeftAny() noexcept;

  private:
    void Make(const std::string& place);

    Descriptor m_place;
    std::string m_directory;
    mutable std::string m_made;  ///< the last directory that was made in it
    Descriptor m_lock;
    mutable std::size_t m_inMemory = 0;
};

}  // namespace ZET::Deploy

#endif
