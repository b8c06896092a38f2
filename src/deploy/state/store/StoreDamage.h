#ifndef ZET_STORE_DAMAGE_H
#define ZET_STORE_DAMAGE_H

#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

[[noreturn]] inline void FailOfDamage(const std::string& file, const std::string& what) {
    throw Damage({.file = file,
                  .text = Words("the history is damaged: %s", what),
                  .remedy = _("move it away: what was there before the product is kept beside the files; or "
                              "set ZET_HISTORY=no to edit without it")});
}

}  // namespace ZET::Deploy

#endif
