#ifndef ZET_RESERVES_H
#define ZET_RESERVES_H

#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"

/// Edits a file as a whole. `file` is as the caller wrote it.
namespace ZET::Deploy {

/// Takes the managed blocks out; a notice and kept former lines remain.
FileOutcome StripFile(Deployment& product, const std::string& file, const EditOptions& options);

/// Keeps the file as it is now, or records that there is none, unless that was done before.
FileOutcome ReserveFile(Deployment& product, const std::string& file);

/// Puts the reserve back. Without force in `options`, throws a `Failure` if that would lose changes that are
/// kept nowhere else.
FileOutcome RestoreFile(Deployment& product, const std::string& file, const EditOptions& options);

/// Drops the reserve.
FileOutcome ForgetReserve(Deployment& product, const std::string& file, const EditOptions& options);

}  // namespace ZET::Deploy

#endif
