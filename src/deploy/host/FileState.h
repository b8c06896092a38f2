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

/// Not being able to tell is a `Failure`.
FileState StateOf(const std::string& path);

/// The same of a name in a directory that is held; `path` is for the message.
FileState StateIn(int directory, const std::string& name, const std::string& path);

/// Of a file that was looked at; none: there is no such file.
FileState StateFrom(const std::optional<struct stat>& status);

/// Both at once, of the same file.
struct FileLook {
    FileState state;
    FileVersion version;
};
FileLook LookAt(const std::string& path);

/// What is wrong with a link by whose name nothing is found.
Problem ProblemOfLinkToNothing(const std::string& path);

/// What is wrong with what is there, and is no regular file where one has to be.
Problem ProblemOfIrregular(const std::string& path, const FileState& state);

/// What is wrong where the file's directory is none.
Problem ProblemOfNoDirectory(const std::string& path);

/// What keeps a file from being replaced by another, or removed, though its directory can be written.
std::optional<Problem> CheckReplaceable(const std::string& path);

/// The same of a name in a directory that is held; `path` is for the message.
std::optional<Problem> CheckReplaceableIn(int directory, const std::string& name, const std::string& path);

/// The same as a `Failure`.
void RequireReplaceable(const std::string& path);

/// Whether nothing would change, but for the owner, if one took the other's place.
bool HaveSameModeAndBytes(const std::string& one, const std::string& other);

/// "mode 0644 -> 0600, owner 0:0 -> 1000:1000": what differs; all of it, without arrows, for a file that was
/// not there; empty when nothing differs or the file is going to be gone.
std::string DescribeChange(const FileState& before, const FileState& after);

/// "0644", "0:0"
std::string ModeText(const FileState& state);
std::string OwnerText(const FileState& state);

}  // namespace ZET::Deploy

#endif
