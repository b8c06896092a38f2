#ifndef ZET_WRITTEN_FILES_H
#define ZET_WRITTEN_FILES_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/state/KnownFiles.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/WrittenFile.h"

namespace ZET::Deploy {

/// The file of a target that the list has for the host's role.
WrittenFile WrittenTarget(const Host& host, const Target& target);

/// A file that no list has in force: with what a list still has of it, or its path alone. None, with a
/// warning, if it leads out of the root directory.
std::optional<WrittenFile> WrittenByRecord(Deployment& product, const std::string& path);

/// A file in which the product has nothing but lines, none of which a list has in force.
WrittenFile WrittenLines(const Host& host, const std::string& path);

/// The files that a rollback of the host's role can take back.
struct WrittenFiles {
    std::vector<WrittenFile> files;
    bool isListMissing = false;  ///< the list cannot be used; only files on record are here
};

/// The files that the list has in force, and those that the role has committed. If the history was lost
/// since, a target that is not in force any more is found by its reserve and its notice.
WrittenFiles FindWrittenFiles(Deployment& product, const KnownFiles& known);

/// The files that either role edited in place, without those of `written`. Files of listed edits of which the
/// history knows nothing are found by their reserves; `withUntouched` adds those that hold nothing of the
/// product's.
std::vector<WrittenFile> FindEditedFiles(Deployment& product, const KnownFiles& known,
                                         const std::vector<WrittenFile>& written, bool withUntouched = false);

/// Those of `files` that `names` has, in the order of `names`. Throws a `UsageError` for a name that none of
/// them has.
std::vector<WrittenFile> Named(const Deployment& product, const std::vector<WrittenFile>& files,
                               const std::vector<std::string>& names);

}  // namespace ZET::Deploy

#endif
