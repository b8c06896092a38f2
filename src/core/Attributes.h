#ifndef ZET_CORE_ATTRIBUTES_H
#define ZET_CORE_ATTRIBUTES_H

#include <sys/stat.h>

#include <string>

namespace ZET {

/// A file by its name, with its status.
struct StatedFile {
    const std::string& path;
    const struct stat& status;
};

/// Gives the regular file `receiver` what `donor` (a last link is followed) has of owner, group, POSIX ACL,
/// security label and user attributes; never integrity attributes, which hold for the donor's bytes only. The
/// receiver's mode is afterwards what its status says. What an ordinary user may not do and what the file
/// system does not know is logged as a warning; every other failure is an `EZETError`. A receiver that is
/// like the donor already is not touched.
void TakeOverAttributes(const StatedFile& donor, const StatedFile& receiver);

}  // namespace ZET

#endif
