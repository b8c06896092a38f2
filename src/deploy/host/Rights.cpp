#include "deploy/host/Rights.h"

#include <grp.h>
#include <pwd.h>
#include <sys/fsuid.h>
#include <sys/syscall.h>  // IWYU pragma: keep, it would name another header of the same numbers
#include <unistd.h>

#include <cerrno>

#include "deploy/host/PathJudge.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

namespace {

constexpr gid_t kNoGroup = 65534;
constexpr auto kAsk = static_cast<uid_t>(-1);  // changes nothing, and returns the present one

[[noreturn]] void Fail(uid_t user) {
    const int error = errno;  // looking up the user's name may change it
    throw SystemFailure({.text = Words("the rights of %s cannot be taken", NameOfUser(user)),
                         .remedy = Words("run the command as that user: sudo -u %s ...", WordOfUser(user))},
                        error);
}

/// Sets those of this thread alone; the library's function sets those of all.
bool SetGroups(const std::vector<gid_t>& groups) {
    return syscall(SYS_setgroups, groups.size(), groups.data()) == 0;
}

std::vector<gid_t> PresentGroups(uid_t user) {
    std::vector<gid_t> groups(static_cast<std::size_t>(getgroups(0, nullptr)));
    if (getgroups(static_cast<int>(groups.size()), groups.data()) < 0) Fail(user);
    return groups;
}

/// The first one is the group of the files that the user makes.
std::vector<gid_t> GroupsOf(uid_t user, gid_t groupOfFile) {
    const struct passwd* entry = getpwuid(user);
    if (entry == nullptr) return {groupOfFile != 0 ? groupOfFile : kNoGroup};
    int count = 64;
    std::vector<gid_t> groups(static_cast<std::size_t>(count));
    if (getgrouplist(entry->pw_name, entry->pw_gid, groups.data(), &count) < 0) {
        groups.resize(static_cast<std::size_t>(count));
        if (getgrouplist(entry->pw_name, entry->pw_gid, groups.data(), &count) < 0) Fail(user);
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
}

}  // namespace

RightsOf::RightsOf(uid_t user, gid_t groupOfFile)
    : m_user(user),
      m_groups(GroupsOf(user, groupOfFile)),
      m_formerGroups(PresentGroups(user)),
      m_formerGroup(static_cast<gid_t>(setfsgid(kAsk))),
      m_formerUser(static_cast<uid_t>(setfsuid(kAsk))) {}

void RightsOf::Take() const {
    if (!SetGroups(m_groups)) Fail(m_user);
    setfsgid(m_groups.front());
    setfsuid(m_user);
    // Neither call reports that it failed.
    if (static_cast<uid_t>(setfsuid(kAsk)) == m_user &&
        static_cast<gid_t>(setfsgid(kAsk)) == m_groups.front())
        return;
    Drop();
    errno = EPERM;
    Fail(m_user);
}

void RightsOf::Drop() const noexcept {
    setfsuid(m_formerUser);
    setfsgid(m_formerGroup);
    SetGroups(m_formerGroups);
}

}  // namespace ZET::Deploy
