#include "deploy/targets/TargetRendering.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/OwnText.h"
#include "deploy/targets/DiscreetLog.h"
#include "deploy/targets/NewOwner.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/TemplateFiles.h"

namespace ZET::Deploy {

TargetRendering::TargetRendering(Deployment& product, FileInPlace place, const PlannedTarget& planned)
    : m_product(product),
      m_place(std::move(place)),
      m_planned(planned),
      m_owner(NewOwnerOf(product.HostPaths(), planned.target, planned.path, planned.before)),
      m_replacement(product, m_place, planned.version, Replacement::Look::WasFound) {}

void TargetRendering::KeepOriginal() {
    if (!m_planned.isOriginalLost) m_replacement.MakeReserve();
    RemedyErrors(kRemedyOfRendering, [&] {
        if (!m_planned.hasWorkingCopy) InstallMissingCopy(m_product, m_planned.target.templateName);
    });
}

/// No template makes the text of a merge, so that it is written as it is.
void TargetRendering::Write() {
    if (!m_planned.isOriginalLost) m_replacement.ConfirmReserve();
    if (m_owner) m_replacement.GiveNewFileTo(*m_owner);
    if (m_planned.rendering == nullptr) return Render();
    m_replacement.MakeOfText(m_planned.staged->Text(), m_planned.after.mode);
}

void TargetRendering::Render() {
    const std::string& templateName = m_planned.target.templateName;
    const std::string& path = m_place.Path();
    const DiscreetLog log(m_product, m_product.HostSecrets(), templateName);
    const auto process = [&](const std::string& name) {
        const auto render = m_planned.isOriginalLost ? RenderWithoutRecord : RenderInPlace;
        render(m_product, m_planned.namedRole, templateName, name, path);
    };
    m_replacement.MakeOf(m_planned.after.mode, process, [&](int descriptor, const std::string& made) {
        if (m_planned.staged->IsIn(descriptor, made)) return;
        throw Failure({.file = path,
                       .text = _("is not written, since its template was changed after it was checked"),
                       .remedy = _("run the command again")});
    });
}

}  // namespace ZET::Deploy
