#ifndef ZET_DEPLOY_WORDS_H
#define ZET_DEPLOY_WORDS_H

#include "text/Words.h"  // IWYU pragma: export
#include "zet/deploy/Role.h"

namespace ZET::Deploy {
using Text::_;
using Text::Words;

/// "server" or "client", in the reader's language.
inline const char* RoleInWords(Role role) {
    return role == Role::Server ? _("server") : _("client");
}
}  // namespace ZET::Deploy

#endif
