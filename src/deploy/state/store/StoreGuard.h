#ifndef ZET_STORE_GUARD_H
#define ZET_STORE_GUARD_H

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/Store.h"
#include "deploy/state/store/StoreDamage.h"
#include "posix/OpenLimit.h"

namespace ZET::Deploy {

/// Runs `call`, and says in words for the user what goes wrong with the file.
template <typename Call>
auto Store::Guarded(Call call) {
    try {
        return call();
    } catch (const DatabaseError& error) {
        if (error.IsDamage()) FailOfDamage(m_file, error.what());
        if (IsOfOpenLimit(error.ErrorNumber()))
            throw SystemFailure({.file = m_file, .text = _("cannot be opened")}, error.ErrorNumber());
        const char* const remedy = error.IsFull()       ? _("make room, or set ZET_HISTORY=no")
                                   : error.IsReadOnly() ? _("let it be written, or set ZET_HISTORY=no")
                                                        : _("see to its file system, or set ZET_HISTORY=no");
        throw Failure(
            {.file = m_file, .text = Words("the history cannot be used: %s", error.what()), .remedy = remedy},
            error.ErrorNumber());
    } catch (const DamagedRow& damage) {
        FailOfDamage(m_file, damage.what());
    }
}

}  // namespace ZET::Deploy

#endif
