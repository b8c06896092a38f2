#ifndef ZET_UNKEPT_TEXT_H
#define ZET_UNKEPT_TEXT_H

#include <string>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// Whether the file holds somebody else's work. A file without companions is about to get its reserve, and
/// counts as holding none.
bool HoldsOthersWork(Deployment& product, const std::string& path);

/// Throws a `Failure` if replacing the file would lose somebody else's changes: the reserve does not keep
/// them, and neither does the history, or it does not record this command. The reader knows the file as
/// `path`.
void RequireKeptText(Deployment& product, const std::string& path, bool isRecorded);

}  // namespace ZET::Deploy

#endif
