#ifndef ZET_TARGET_RENDERING_H
#define ZET_TARGET_RENDERING_H

#include <optional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/PlannedTarget.h"

namespace ZET::Deploy {

/// Renders a target for good, in two steps, so that many originals can be kept at once.
class TargetRendering {
  public:
    /// `place` must have been found right before; `planned` must outlive the object.
    TargetRendering(Deployment& product, FileInPlace place, const PlannedTarget& planned);

    /// Makes the reserve, which goes again if the rendering does not come to its end, and installs a missing
    /// working copy.
    void KeepOriginal();

    /// Must be called once the original is in its place. Throws a `Failure`, and leaves the target as it was,
    /// if the text differs from the trial's, or if somebody else wrote the file meanwhile.
    void Write();

    /// The path of the original that is kept afterwards; empty if there is none.
    std::string Reserve() const { return m_replacement.Reserve(); }

  private:
    void Render();

    Deployment& m_product;
    const FileInPlace m_place;
    const PlannedTarget& m_planned;
    const std::optional<FileOwner> m_owner;  ///< for a file that is new
    Replacement m_replacement;
};

}  // namespace ZET::Deploy

#endif
