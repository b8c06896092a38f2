#ifndef ZET_PLANNED_TARGET_H
#define ZET_PLANNED_TARGET_H

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "deploy/host/FileVersion.h"
#include "deploy/host/StagedText.h"
#include "deploy/lists/Targets.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/TargetCheck.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// What is in a target's place, compared with what commits recorded of it.
enum class FoundAs {
    Recorded,    ///< as recorded, or the product has had nothing to do with it
    Edited,      ///< committed, and changed or removed by somebody since
    Unrecorded,  ///< the product had to do with the file, but no commit recorded it as it is
    Reserved     ///< like `Unrecorded`, but with the text of its reserve: a commit was killed
};

/// What a commit would do to one target.
struct PlannedTarget : TargetPlace {
    Target target;
    std::shared_ptr<const StagedText> staged{};     ///< what it is to get; null: it stays as it is
    std::shared_ptr<const StagedText> rendering{};  ///< where `staged` is another text, merged with it
    bool isRenderingNew = false;                    ///< it is not the rendering that is known of the file
    FileOutcome::Result change = FileOutcome::Result::Unchanged;
    FoundAs foundAs = FoundAs::Recorded;
    bool isOriginalLost = false;    ///< what is there is the product's own work, which gets no reserve
    bool isMerged = false;          ///< the new text also has what others changed
    bool holdsMerge = false;        ///< an earlier commit merged what others changed in it
    bool isNewToRole = false;       ///< no commit of the role recorded it
    bool isUntold = false;          ///< written by a run that was cut short, which reported no services
    Role namedRole = Role::Client;  ///< whose command its notice names
    FileVersion version{};          ///< of what was there when the plan was made
    FileState before{};
    FileState after{};
    std::optional<CapturedFile> captured{};  ///< the former file, until it is recorded; none: not read

    bool IsChange() const { return change != FileOutcome::Result::Unchanged; }

    /// Whether the commit would change what somebody edited or removed since the product wrote it, or what
    /// still has somebody's edit in it.
    bool IsOthersWork() const {
        return IsChange() && (foundAs == FoundAs::Edited || HoldsUnkeptText() || DropsMerge());
    }

    /// Whether what an earlier commit merged would be lost.
    bool DropsMerge() const { return holdsMerge && rendering == nullptr; }

    /// Whether nothing but the file itself has what it holds.
    bool HoldsUnkeptText() const { return foundAs == FoundAs::Unrecorded && before.exists; }
};

/// What becomes of targets, as far as the plan knows, with diffs if they are wanted.
std::vector<FileOutcome> OutcomesOf(Deployment& product, std::span<const PlannedTarget> targets);

}  // namespace ZET::Deploy

#endif
