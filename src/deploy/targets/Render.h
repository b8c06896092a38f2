#ifndef ZET_RENDER_H
#define ZET_RENDER_H

#include <memory>
#include <optional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/StagedText.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/SeenFile.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/Targets.h"
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

/// The same for a role; what the log has to say comes with the real rendering.
std::string RenderQuietly(Deployment& product, const Staging& staging, const std::string& templateName,
                          Role role);

/// A rendering beside the file whose place it would take.
struct ComparedRendering {
    std::shared_ptr<const StagedText> staged;  ///< null: what is there has it all, its owner among it
    bool isOther = false;                      ///< for certain: in mode or bytes
};

/// The same, unless it is there already. `modeOfCopy` is that of the working copy, if it is known. `staging`
/// must live as long as what is returned.
ComparedRendering RenderUnlessThere(Deployment& product, const Staging& staging,
                                    const std::string& templateName, Role role, const SeenFile& there,
                                    const std::optional<mode_t>& modeOfCopy = std::nullopt);

/// The same of a template that would have that text.
std::string RenderTemplateText(Deployment& product, const Staging& staging, Role role,
                               const std::string& templateName, const std::string& text);

/// Lets the module render a template into the file `name`, for the reader `path`, and keep nothing: a
/// `Replacement` is there for that. `values` wins over the template values.
void RenderOnce(Deployment& product, const std::string& templateName, const std::string& name,
                const std::string& path, const StringMap& values);

/// A target that is rendered for good.
struct TargetToRender {
    const std::string& templateName;
    const StagedText& staged;    ///< what it has to become
    mode_t mode;                 ///< likewise
    const FileVersion& version;  ///< of what it replaces
    Role role;
    bool isOwnText;                    ///< which no template makes: the staged text as it is
    bool hasWorkingCopy;               ///< its template, when it was checked
    bool isOriginalLost;               ///< what is there is kept as none
    std::optional<FileOwner> owner{};  ///< of a file that is new
};

/// Renders a target for good, in two steps: many originals are kept at once.
class TargetRendering {
  public:
    /// `place` was found right before; `target` must live as long as the object.
    TargetRendering(Deployment& product, FileInPlace place, const TargetToRender& target);

    /// A working copy that is missing is installed. What one that did not come to its end has kept is taken
    /// back.
    void KeepOriginal();

    /// With the original in its place. What comes out otherwise than in trial, and what somebody else wrote
    /// meanwhile, is a `Failure`; the target is as it was then.
    void Write();

    /// The original that is kept then; empty: none.
    std::string Reserve() const { return m_replacement.Reserve(); }

  private:
    void Render();
    void WriteStaged();

    Deployment& m_product;
    const FileInPlace m_place;
    const TargetToRender m_target;
    Replacement m_replacement;
};

}  // namespace ZET::Deploy

#endif
