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
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// What is at a target's place, beside what commits recorded of it.
enum class FoundAs {
    Recorded,    ///< likewise where the product has had nothing to do with the file
    Edited,      ///< committed, and changed or removed by somebody since
    Unrecorded,  ///< the product had to do with the file, but no commit recorded it as it is
    Reserved     ///< likewise, and it holds what its reserve holds: a commit was killed at it
};

/// What a commit would do to one target.
struct PlannedTarget {
    Target target;
    std::string path;                             ///< of the real file, links followed
    std::shared_ptr<const StagedText> staged;     ///< what it is to get; null: it stays as it is
    std::shared_ptr<const StagedText> rendering;  ///< where it gets another text: that is merged with it
    bool isRenderingNew = false;                  ///< not the one that is known of the file
    FileOutcome::Result change = FileOutcome::Result::Unchanged;
    FoundAs foundAs = FoundAs::Recorded;
    bool isOriginalLost = false;    ///< what is there is the product's own work, which gets no reserve
    bool isMerged = false;          ///< what others changed in it is in the new text, too
    bool holdsMerge = false;        ///< what others changed in it was merged by an earlier commit
    bool isNewToRole = false;       ///< no commit of the role recorded it
    bool isUntold = false;          ///< what a run that was cut short wrote, whose services nobody was told
    Role namedRole = Role::Client;  ///< the one whose command its notice names
    FileVersion version;            ///< of what was there when the plan was made
    FileState before;
    FileState after;
    std::optional<CapturedFile> captured;  ///< the same to be recorded, until it is; none: to be seen

    bool hasWorkingCopy = false;           ///< its template, when it was checked
    std::optional<mode_t> templateMode{};  ///< likewise, where it is a working copy and no link
    bool hasCompanion = false;             ///< a reserve, or a mark that there was nothing

    bool IsChange() const { return change != FileOutcome::Result::Unchanged; }

    /// Somebody edited or removed the file since the product wrote it, or what somebody edited is still in
    /// it.
    bool IsOthersWork() const {
        return IsChange() && (foundAs == FoundAs::Edited || HoldsUnkeptText() || DropsMerge());
    }

    /// What an earlier commit has merged would be gone.
    bool DropsMerge() const { return holdsMerge && rendering == nullptr; }

    /// Nothing but the file itself has what it holds.
    bool HoldsUnkeptText() const { return foundAs == FoundAs::Unrecorded && before.exists; }
};

/// What becomes of targets, as far as a plan knows; with the diffs, if they are wanted.
std::vector<FileOutcome> OutcomesOf(Deployment& product, std::span<const PlannedTarget> targets);

}  // namespace ZET::Deploy

#endif
