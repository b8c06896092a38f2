#ifndef ZET_RIGHTS_H
#define ZET_RIGHTS_H

#include <sys/types.h>

#include <vector>

namespace ZET::Deploy {

/// Between `Take` and `Drop`, the calling thread, which runs as root, has only the rights of another user on
/// files. In a directory of that user, whatever the user puts in the way leads only to what belongs to the
/// user already. Files are found as the user would find them, and new ones belong to the user.
class RightsOf {
  public:
    /// `groupOfFile` is the group to take if the system does not know the user.
    RightsOf(uid_t user, gid_t groupOfFile);

    /// Allocates no memory. Throws a `Failure` if the system refuses.
    void Take() const;
    void Drop() const noexcept;

  private:
    const uid_t m_user;
    const std::vector<gid_t> m_groups;
    const std::vector<gid_t> m_formerGroups;
    const gid_t m_formerGroup;
    const uid_t m_formerUser;
};

}  // namespace ZET::Deploy

#endif
