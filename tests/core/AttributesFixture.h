#ifndef ZET_TESTS_CORE_ATTRIBUTES_FIXTURE_H
#define ZET_TESTS_CORE_ATTRIBUTES_FIXTURE_H

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETFiles.h"

namespace ZET::Test {

inline constexpr char kAcl[] = "system.posix_acl_access";
inline constexpr char kLabel[] = "security.selinux";

/// An ACL in the form that the system stores: owner, one named user, group, mask, others.
inline std::string Acl(unsigned user, unsigned userRights, unsigned mask) {
    std::string bytes("\x02\0\0\0", 4);
    const auto add = [&](unsigned tag, unsigned rights, unsigned id) {
        bytes += {static_cast<char>(tag), '\0', static_cast<char>(rights), '\0'};
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>((id >> shift) & 0xFF);
    };
    add(0x01, 6, 0xFFFFFFFF);
    add(0x02, userRights, user);
    add(0x04, 4, 0xFFFFFFFF);
    add(0x10, mask, 0xFFFFFFFF);
    add(0x20, 0, 0xFFFFFFFF);
    return bytes;
}

inline void Set(const std::string& path, const char* name, const std::string& value) {
    if (::setxattr(path.c_str(), name, value.data(), value.size(), 0) != 0)
        FAIL() << path << " " << name << ": error " << errno;
}

/// The attribute's value; "-" if there is none.
inline std::string Get(const std::string& path, const char* name) {
    char value[8192];
    const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
    return size < 0 ? "-" : std::string(value, static_cast<std::size_t>(size));
}

/// The rights in one kind of entry of a stored ACL.
inline int RightsIn(const std::string& acl, unsigned tag) {
    for (std::size_t at = 4; at + 8 <= acl.size(); at += 8)
        if (static_cast<unsigned char>(acl[at]) == tag) return acl[at + 2];
    return -1;
}

/// A file that is about to be replaced by its new text, which is in its temporary companion.
class Attributes : public testing::Test {
  protected:
    void SetUp() override {
        if (!IsRoot()) GTEST_SKIP() << "gives files to other users";
        WriteText(m_target, "old", 0644);
        WriteText(m_temporary, "new", 0640);
    }

    void Rename() { RenameFile(m_temporary, m_target); }

    /// Renames, and returns what that logs.
    std::string LogOfRename() {
        return LoggedBy([&] { Rename(); });
    }

    std::string Kept(const std::string& what) {
        return "zet: warning: Failed to keep " + what + " of file '" + m_temporary + "': ";
    }

    void Own(const std::string& path) { ASSERT_EQ(::chown(path.c_str(), kSomeUser, kSomeGroup), 0); }

    TemporaryDirectory m_directory;
    const std::string m_target = m_directory / "target";
    const std::string m_temporary = m_target + ".tmp";
    const std::string m_reserve = m_target + ".before_zet";
};

}  // namespace ZET::Test

#endif
