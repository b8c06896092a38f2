#ifndef ZET_LOGIN_USER_H
#define ZET_LOGIN_USER_H

#include <sys/types.h>

#include <optional>

namespace ZET::Deploy {

/// The user who logged in, whatever the process became since; none if nobody did, or nothing tells who.
std::optional<uid_t> LoginUser();

}  // namespace ZET::Deploy

#endif
