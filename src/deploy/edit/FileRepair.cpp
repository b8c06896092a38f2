#include "deploy/edit/FileRepair.h"

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/Words.h"
#include "deploy/state/OwnText.h"

namespace ZET::Deploy {

FileRepair::FileRepair(Deployment& product, const std::string& file)
    : m_edit(product, file), m_found(DiagnoseFile(product, file)) {}

FileOutcome FileRepair::Make(bool noBackup) {
    if (m_found.diagnosis.damages.empty()) return m_edit.LeaveUnchanged(_("no damage"));
    if (m_found.repair.empty()) {
        throw Failure({.file = m_found.path,
                       .text = _("has no damage that can be repaired in one way only, and was not changed"),
                       .remedy = _("choose a repair, and make it by hand")});
    }
    const mode_t mode = ModeOf(m_edit.Path());
    return m_edit.Make([&](const std::string& path) { SaveOwnText(path, m_found.diagnosis.repaired, mode); },
                       noBackup);
}

bool FileRepair::IsAnyLeft() const {
    const auto& damages = m_found.diagnosis.damages;
    return std::any_of(damages.begin(), damages.end(),
                       [](const Text::MarkerDamage& damage) { return damage.IsAmbiguous(); });
}

}  // namespace ZET::Deploy
