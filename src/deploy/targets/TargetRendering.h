#ifndef ZET_TARGET_RENDERING_H
#define ZET_TARGET_RENDERING_H

#include <optional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/PlannedTarget.h"

namespace ZET::Deploy {

/// Renders a target for good, in two steps: many originals are kept at once.
class TargetRendering {
  public:
    /// `place` was found right before; `planned` must live as long as the object.
    TargetRendering(Deployment& product, FileInPlace place, const PlannedTarget& planned);

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

    Deployment& m_product;
    const FileInPlace m_place;
    const PlannedTarget& m_planned;
    const std::optional<FileOwner> m_owner;  ///< of a file that is new
    Replacement m_replacement;
};

}  // namespace ZET::Deploy

#endif
