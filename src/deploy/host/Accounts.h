#ifndef ZET_ACCOUNTS_H
#define ZET_ACCOUNTS_H

#include <sys/types.h>

#include <optional>
#include <string>

#include "deploy/host/Paths.h"

/// The users and groups of the host: below another root those of the tree's own files, if it has them.
namespace ZET::Deploy {

struct User {
    uid_t number = 0;
    gid_t group = 0;
};

/// None if the host has no such user.
std::optional<User> UserNamed(const Paths& paths, const std::string& name);

/// None if the host has no such group.
std::optional<gid_t> GroupNamed(const Paths& paths, const std::string& name);

}  // namespace ZET::Deploy

#endif
