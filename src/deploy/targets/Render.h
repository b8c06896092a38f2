#ifndef ZET_RENDER_H
#define ZET_RENDER_H

#include <memory>
#include <optional>
#include <string>

#include "deploy/host/StagedText.h"
#include "deploy/host/Staging.h"
#include "deploy/state/SeenFile.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETTypes.h"

namespace ZET::Deploy {

/// Whether the template's rendering begins with the system's notice.
bool HasNotice(Deployment& product, const std::string& templateName);

/// The mode that a commit gives to the template's rendering.
mode_t ModeOfRendering(Deployment& product, const std::string& templateName);

/// Renders a template in the private directory, with the bytes and the mode that a commit would give to its
/// target. `values` win over the template values. Nothing outside of the directory changes: a missing working
/// copy is not installed. Returns the path of the result. Throws a `Failure` if the module fails.
std::string RenderStaged(Deployment& product, const Staging& staging, const std::string& templateName,
                         const StringMap& values);

/// The same for a role. Logs errors only, since the real rendering logs the rest.
std::string RenderQuietly(Deployment& product, const Staging& staging, const std::string& templateName,
                          Role role);

/// A rendering, compared with the file whose place it would take.
struct ComparedRendering {
    std::shared_ptr<const StagedText> staged;  ///< null: the file is as it would be, with its owner
    bool isOther = false;                      ///< mode or bytes differ for certain
};

/// A template to be rendered on trial.
struct TrialRequest {
    const Staging& staging;  ///< must outlive the rendering
    const std::string& templateName;
    Role role;
    bool needsText = false;              ///< even if the file has it already
    std::optional<mode_t> modeOfCopy{};  ///< of the working copy, if it is known
};

/// Renders for a role. Unless the text is needed, it is kept only if the file differs from it.
ComparedRendering RenderUnlessThere(Deployment& product, const TrialRequest& request, const SeenFile& there);

/// Like `RenderQuietly`, as if the template had this text.
std::string RenderTemplateText(Deployment& product, const Staging& staging, Role role,
                               const std::string& templateName, const std::string& text);

/// Has the module render a template into the file `name`, which messages call `path`. Does not keep the
/// original: that is left to a `Replacement`. `values` win over the template values.
void RenderOnce(Deployment& product, const std::string& templateName, const std::string& name,
                const std::string& path, const StringMap& values);

/// The same for a role, with the template values alone, and with a record of what was there before.
void RenderInPlace(Deployment& product, Role role, const std::string& templateName, const std::string& name,
                   const std::string& path);

/// Like `RenderInPlace`, but without that record.
void RenderWithoutRecord(Deployment& product, Role role, const std::string& templateName,
                         const std::string& name, const std::string& path);

}  // namespace ZET::Deploy

#endif
