#ifndef ZET_RIGHTS_H
#define ZET_RIGHTS_H

#include <sys/types.h>

#include <vector>

namespace ZET {

/// For as long as the object lives, the thread that made it, which runs as root, has the rights of another
/// user on files and no more: in a directory of his, whatever he puts in the way leads only to what is his
/// own already. What he has is found as he would find it, and what is made is his.
class RightsOf {
  public:
    /// Of a user whom the system does not know, only the group of his file is known. A `Failure` when the system
    /// refuses.
    RightsOf(uid_t user, gid_t groupOfFile);
    ~RightsOf();
    RightsOf(const RightsOf&) = delete;
    RightsOf& operator=(const RightsOf&) = delete;

  private:
    std::vector<gid_t> m_formerGroups;
    gid_t m_formerGroup = 0;
    uid_t m_formerUser = 0;
};

}  // namespace ZET

#endif
