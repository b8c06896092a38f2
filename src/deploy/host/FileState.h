#ifndef ZET_FILE_STATE_H
#define ZET_FILE_STATE_H

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>
#include <string>

#include "deploy/host/FileVersion.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// Throws a `Failure` if it cannot tell.
FileState StateOf(const std::string& path);

/// The same for a name in an open directory; `path` is for the message.
FileState StateIn(int directory, const std::string& name, const std::string& path);

/// The status of an open file; `path` is for the message. Throws a `Failure` if it cannot be had.
struct stat StatusOfOpened(int descriptor, const std::string& path);

/// From a status that was read already; none if there is no such file.
FileState StateFrom(const std::optional<struct stat>& status);

/// The state and the version of one file, from a single look.
struct FileLook {
    FileState state;
    FileVersion version;
};
FileLook LookAt(const std::string& path);

/// The problem of a link that leads to nothing.
Problem ProblemOfLinkToNothing(const std::string& path);

/// The problem of something that is not a regular file where there has to be one.
Problem ProblemOfIrregular(const std::string& path, const FileState& state);

/// The problem of a file whose directory is something else.
Problem ProblemOfNoDirectory(const std::string& path);

/// What keeps the file of this name in an open directory from being replaced or removed although the
/// directory can be written; none if nothing does. `path` is for the message.
std::optional<Problem> CheckReplaceableIn(int directory, const std::string& name, const std::string& path);

/// Throws that problem of a file as a `Failure`, if there is one.
void RequireReplaceable(const std::string& path);

/// Whether nothing but the owner would change if one file took the other's place.
bool HaveSameModeAndBytes(const std::string& one, const std::string& other);

/// What differs, such as "mode 0644 -> 0600, owner 0:0 -> 1000:1000". For a file that did not exist, its new
/// mode and owner; empty if nothing differs, or if the file is to be removed.
std::string DescribeChange(const FileState& before, const FileState& after);

/// "0644", "0:0"
std::string ModeText(const FileState& state);
std::string OwnerText(const FileState& state);

}  // namespace ZET::Deploy

#endif
