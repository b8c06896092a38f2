#include "deploy/undo/WayWithOthers.h"

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

OthersWork WayOf(const UndoOptions& options) {
    if (options.force && options.merge)
        throw UsageError(_("--force and --merge exclude each other (leave one of them out)"));
    if (options.force) return OthersWork::IsReplaced;
    return options.merge ? OthersWork::IsMerged : OthersWork::IsRefused;
}

OthersWork WayOf(const RollBackToOptions& options) {
    if (options.force && options.keepEdits)
        throw UsageError(_("--force and --keep-edits exclude each other (leave one of them out)"));
    if (options.merge && (options.force || options.keepEdits))
        throw UsageError(_("--merge excludes --force and --keep-edits (leave it out, or them)"));
    if (options.force) return OthersWork::IsReplaced;
    if (options.merge) return OthersWork::IsMerged;
    return options.keepEdits ? OthersWork::Stays : OthersWork::IsRefused;
}

}  // namespace ZET::Deploy
