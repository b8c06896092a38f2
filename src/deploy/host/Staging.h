#ifndef ZET_STAGING_H
#define ZET_STAGING_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "posix/Descriptor.h"

namespace ZET::Deploy {

/// A private directory (mode 0700, the caller's) for files on their way, removed with all it holds when the
/// object ends. As long as the object lives, a lock tells it from one that a killed run left.
class Staging {
  public:
    static constexpr std::uintmax_t kUnknownSize = UINTMAX_MAX;

    /// "PLACE/zet-staging.XXXXXX", in memory where this host has such a place with room for `size` bytes;
    /// else PLACE is `lastResort`. An empty `lastResort` is the directory for temporary files; one that the
    /// caller named with TMPDIR comes before those in memory, unless he is root and another user could change
    /// it. What killed runs left in the place is removed first. A directory that cannot be made is a
    /// `Failure`.
    explicit Staging(const std::string& lastResort = "", std::uintmax_t size = kUnknownSize);
    ~Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    /// The path of a file in it; the directories that `name` has are made. No name leads out of it.
    std::string PathOf(const std::string& name) const;

    /// Whether a text of that size may be kept in memory instead of in a file; what is kept is counted.
    bool TakeIntoMemory(std::size_t size) const;

    /// Removes the directories that this user's killed runs left, wherever they may have been made. A place
    /// with very many names is only searched where there is reason to think that a run was killed.
    static void RemoveLeftOvers(const std::string& lastResort, bool mayFollowOneCutShort);

    /// What there is to say of a directory that this process could not remove; empty: of none.
    static std::string LeftBehind();
    static bool HasLeftAny() noexcept;

  private:
    void Make(const std::string& place);

    Descriptor m_place;
    std::string m_directory;
    mutable std::string m_made;  ///< the directory in it that was asked for last
    Descriptor m_lock;
    mutable std::size_t m_inMemory = 0;
};

}  // namespace ZET::Deploy

#endif
