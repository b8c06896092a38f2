#ifndef ZET_LOGIN_USER_H
#define ZET_LOGIN_USER_H

#include <sys/types.h>

#include <optional>

namespace ZET::Deploy {

/// Who logged in, whatever user the process became since; none: nobody did, or the system does not tell.
std::optional<uid_t> LoginUser();

}  // namespace ZET::Deploy

#endif
