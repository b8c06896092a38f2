#ifndef ZET_CORE_ATTRIBUTES_H
#define ZET_CORE_ATTRIBUTES_H

#include <sys/stat.h>

#include <optional>
#include <string>

#include "posix/Descriptor.h"

namespace ZET::Core {

/// A regular file that was opened once; `path` is for messages.
struct AttributedFile {
    explicit AttributedFile(const std::string& name) : path(name) {}

    const std::string& path;
    Descriptor descriptor;
    struct stat status {};
    bool isPathOnly = false;  ///< opened by `O_PATH`: nobody may read it
    bool isLinked = false;    ///< a link led to it
};

/// Opens the file, a last link followed. False, with `errno`, when it cannot be read.
bool OpenToRead(AttributedFile& file);

/// The regular file at the end of `path`, a last link followed; nothing when there is none. Throws
/// `EZETError` when that cannot be told.
std::optional<AttributedFile> OpenDonor(const std::string& path);

/// As `SyncFile`.
void SyncAttributedFile(const AttributedFile& file);

/// `mode`; without set-user-ID and set-group-ID, and with a warning, unless the donor is the one file of its
/// name: through a link or another name, somebody else might have chosen whose rights the bits give.
mode_t ModeAllowedBy(const AttributedFile& donor, mode_t mode);

/// Gives `receiver` what `donor` has of owner, group, POSIX ACL, security label and user attributes; never
/// integrity attributes, which hold for the donor's bytes only; then `mode`. The owner comes first: where it
/// could not be given, set-user-ID and set-group-ID are left out. What an ordinary user may not do and what
/// the file system does not know is logged as a warning; every other failure is an `EZETError`. A receiver
/// that is like the donor already is not touched.
void TakeOverAttributes(const AttributedFile& donor, const AttributedFile& receiver, mode_t mode);

}  // namespace ZET::Core

#endif
