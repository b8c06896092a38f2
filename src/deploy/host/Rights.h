#ifndef ZET_RIGHTS_H
#define ZET_RIGHTS_H

#include <sys/types.h>

#include <vector>

namespace ZET::Deploy {

/// Between `Take` and `Drop`, the thread that calls them, which runs as root, has the rights of another user
/// on files and no more: in a directory of his, whatever he puts in the way leads only to what is his own
/// already. What he has is found as he would find it, and what is made is his.
class RightsOf {
  public:
    /// Of a user whom the system does not know, only the group of his file is known.
    RightsOf(uid_t user, gid_t groupOfFile);

    /// Asks for no memory. A `Failure` when the system refuses.
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
