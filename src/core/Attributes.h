#ifndef ZET_CORE_ATTRIBUTES_H
#define ZET_CORE_ATTRIBUTES_H

#include <sys/stat.h>

#include <optional>
#include <string>

#include "posix/Descriptor.h"

namespace ZET::Core {

/// A regular file that is opened once; `path` is for messages.
struct AttributedFile {
    explicit AttributedFile(const std::string& name) : path(name) {}

    const std::string& path;
    Descriptor descriptor;
    struct stat status {};
    bool isPathOnly = false;  ///< opened with `O_PATH`, because this user may not read it
    bool isLinked = false;    ///< it was reached through a link
};

/// Opens the file for reading, following a link. False, with `errno`, if it cannot be read.
bool OpenToRead(AttributedFile& file);

/// Opens the regular file at `path`, following a link; none if there is none. Throws `EZETError` if that
/// cannot be determined.
std::optional<AttributedFile> OpenDonor(const std::string& path);

/// As `SyncFile`, also for a file opened with `O_PATH`.
void SyncAttributedFile(const AttributedFile& file);

/// Returns `mode`. If `donor` is a link or has a second name, drops set-user-ID and set-group-ID with a
/// warning: somebody else might have chosen whose rights the bits grant.
mode_t ModeAllowedBy(const AttributedFile& donor, mode_t mode);

/// Gives `receiver` the donor's owner, group, POSIX ACL, security label and user attributes, then `mode`.
/// Integrity attributes are never copied, since they hold for the donor's bytes only. If the owner could not
/// be set, set-user-ID and set-group-ID are dropped. What an ordinary user may not do, or the file system
/// does not support, is logged as a warning; every other failure is an `EZETError`. A receiver that already
/// matches is not touched.
void TakeOverAttributes(const AttributedFile& donor, const AttributedFile& receiver, mode_t mode);

}  // namespace ZET::Core

#endif
