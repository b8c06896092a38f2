#ifndef ZET_WRITTEN_FILES_H
#define ZET_WRITTEN_FILES_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/state/KnownFiles.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/WrittenFile.h"

namespace ZET::Deploy {

/// A target of the list, where it is for the host's role.
WrittenFile WrittenTarget(const Host& host, const Target& target);

/// A file that no list has in force: what a list has of it all the same, or its path alone. None when it
/// leads out of the root directory, which is told.
std::optional<WrittenFile> WrittenByRecord(Deployment& product, const std::string& path);

/// A file in which nothing but lines is the product's, and no list has any of them in force.
WrittenFile WrittenLines(const Host& host, const std::string& path);

/// The files that commits of the host's role wrote: those on record, and targets that are not in force, of
/// which the history knows nothing, and which are what a commit made all the same.
std::vector<std::string> CommittedPaths(Deployment& product, const KnownFiles& known);

/// The files that a rollback of the host's role can be about.
struct WrittenFiles {
    std::vector<WrittenFile> files;
    bool isListMissing = false;  ///< it cannot be used, which was told: there are only those on record
};

/// Those of the list that are in force, and those that the role has committed.
WrittenFiles FindWrittenFiles(Deployment& product, const KnownFiles& known);

/// The files that were edited in place, by whichever role, without those of `written`. Files of listed edits
/// of which the history knows nothing are found by their reserves.
std::vector<WrittenFile> FindEditedFiles(Deployment& product, const KnownFiles& known,
                                         const std::vector<WrittenFile>& written);

/// Those of `files` that `names` has, in their order. A name that none has is a `UsageError`.
std::vector<WrittenFile> Named(const Deployment& product, const std::vector<WrittenFile>& files,
                               const std::vector<std::string>& names);

}  // namespace ZET::Deploy

#endif
