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

/// Whether what the template renders to begins with the system's notice.
bool HasNotice(Deployment& product, const std::string& templateName);

/// The mode that a commit gives what the template renders to.
mode_t ModeOfRendering(Deployment& product, const std::string& templateName);

/// Renders a template in the private directory, to the bytes and mode that a commit would give its target;
/// `values` wins over the template values. Nothing outside the directory changes: a
/// missing working copy is not installed. Returns the path of the result. A failure of the module is a
/// `Failure`.
std::string RenderStaged(Deployment& product, const Staging& staging, const std::string& templateName,
                         const StringMap& values = {});

/// The same for a role; only errors are logged, since the real rendering logs the rest.
std::string RenderQuietly(Deployment& product, const Staging& staging, const std::string& templateName,
                          Role role);

/// A rendering beside the file whose place it would take.
struct ComparedRendering {
    std::shared_ptr<const StagedText> staged;  ///< null: what is there has it all, its owner among it
    bool isOther = false;                      ///< for certain: in mode or bytes
};

/// A template to be rendered on trial.
struct TrialRequest {
    const Staging& staging;  ///< must live as long as the rendering
    const std::string& templateName;
    Role role;
    bool needsText = false;              ///< even where the file has it
    std::optional<mode_t> modeOfCopy{};  ///< of the working copy, if it is known
};

/// Renders for a role, and unless the text is needed, keeps it only where the file differs from it.
ComparedRendering RenderUnlessThere(Deployment& product, const TrialRequest& request, const SeenFile& there);

/// As `RenderQuietly`, as if the template had this text.
std::string RenderTemplateText(Deployment& product, const Staging& staging, Role role,
                               const std::string& templateName, const std::string& text);

/// Has the module render a template into the file `name`, which messages call `path`, without keeping the
/// original: that is left to a `Replacement`. `values` wins over the template values.
void RenderOnce(Deployment& product, const std::string& templateName, const std::string& name,
                const std::string& path, const StringMap& values);

/// Likewise for a role, with the template values alone, and with a record of what was there before.
void RenderInPlace(Deployment& product, Role role, const std::string& templateName, const std::string& name,
                   const std::string& path);

/// As `RenderInPlace`, without that record.
void RenderWithoutRecord(Deployment& product, Role role, const std::string& templateName,
                         const std::string& name, const std::string& path);

}  // namespace ZET::Deploy

#endif
